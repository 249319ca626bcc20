// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/TiffRows.h"

#include "Platform/Codecs/ImageDecoder.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <vector>

namespace ferrow {

namespace {

/// Strips up to this size are decompressed whole: the library's fast inflater works on nothing less.
constexpr std::int64_t wholeStripBytes = 4 << 20;

/// Compressed bytes of the largest strip or tile that the file really holds, as the library reads them at once.
std::int64_t largestStoredChunk(const TiffInput& input)
{
    constexpr std::uint32_t mostChunks = 100'000;
    const std::uint32_t count =
        TIFFIsTiled(input.get()) ? TIFFNumberOfTiles(input.get()) : TIFFNumberOfStrips(input.get());
    std::uint64_t largest = 0;
    for (std::uint32_t i = 0; i < std::min(count, mostChunks); ++i)
        largest = std::max(largest, TIFFGetStrileByteCount(input.get(), i));
    return std::int64_t(std::min(largest, std::uint64_t(input.source().size())));
}

/// Uncompressed strips, read from the file without the library, which would hold a strip as a whole.
class StoredRows final : public TiffRows {
public:
    StoredRows(TiffInput& input, const TiffLayout& layout)
        : input_(input), layout_(layout), rowBytes_(layout.rowBytes(layout.size.width)),
          rowsPerRead_(std::clamp<std::int64_t>(readBytes / rowBytes_, 1, layout.chunkRows))
    {
    }

    std::int64_t heldBytes() const override { return rowsPerRead_ * rowBytes_ * layout_.planes(); }

    std::span<const TiffRun> row(std::int64_t y) override
    {
        if (y >= firstRow_ + rowCount_)
            readFrom(y);
        run_.pixels = layout_.size.width;
        run_.isLost = isLost_;
        for (int plane = 0; plane < layout_.planes(); ++plane)
            run_.planes[std::size_t(plane)] = rows_.data() + (plane * rowsPerRead_ + y - firstRow_) * rowBytes_;
        return {&run_, 1};
    }

private:
    static constexpr std::int64_t readBytes = 256 * 1024;

    void readFrom(std::int64_t y)
    {
        rows_.resize(std::size_t(heldBytes()));
        const std::int64_t chunk = y / layout_.chunkRows;
        const std::int64_t rowInChunk = y % layout_.chunkRows;
        firstRow_ = y;
        rowCount_ = std::min({rowsPerRead_, layout_.chunkRows - rowInChunk, layout_.size.height - y});
        isLost_ = false;
        for (int plane = 0; plane < layout_.planes(); ++plane) {
            const auto strip = std::uint32_t(plane * layout_.chunksDown() + chunk);
            const std::span into(rows_.data() + plane * rowsPerRead_ * rowBytes_, std::size_t(rowCount_ * rowBytes_));
            isLost_ = isLost_ || !readStrip(strip, rowInChunk * rowBytes_, into);
        }
        if (isLost_ && rowCount_ > 1) {
            // One row at a time from here on, to find the last that is there.
            rowsPerRead_ = 1;
            readFrom(y);
        }
    }

    bool readStrip(std::uint32_t strip, std::int64_t offsetInStrip, std::span<std::byte> into)
    {
        const std::uint64_t start = TIFFGetStrileOffset(input_.get(), strip);
        const std::uint64_t length = TIFFGetStrileByteCount(input_.get(), strip);
        const auto size = std::uint64_t(input_.source().size());
        if (start == 0 || start > size || std::uint64_t(offsetInStrip) + into.size() > length ||
            std::uint64_t(offsetInStrip) + into.size() > size - start)
            return false;
        try {
            if (input_.source().readAt(std::int64_t(start) + offsetInStrip, into) != into.size())
                return false;
        } catch (const InputOutputError&) {
            throw CodecError{CodecError::Reason::unreadable, {}};
        }
        if (TIFFIsByteSwapped(input_.get()))
            swapBytes(into);
        return true;
    }

    void swapBytes(std::span<std::byte> bytes) const
    {
        const auto width = std::size_t(layout_.bits / 8);
        if (layout_.bits != 16 && layout_.bits != 32 && layout_.bits != 64)
            return;
        for (std::size_t i = 0; i + width <= bytes.size(); i += width)
            std::reverse(bytes.data() + i, bytes.data() + i + width);
    }

    TiffInput& input_;
    const TiffLayout& layout_;
    std::int64_t rowBytes_;
    std::int64_t rowsPerRead_;
    std::int64_t firstRow_ = 0;
    std::int64_t rowCount_ = 0;
    bool isLost_ = false;
    std::vector<std::byte> rows_;
    TiffRun run_;
};

/// Large compressed strips, decompressed row by row: only the compressed bytes are held. The planes of a planar picture
/// each have a library handle of their own, so that none ever has to start again.
class ScannedRows final : public TiffRows {
public:
    ScannedRows(TiffInput& input, const TiffLayout& layout)
        : layout_(layout), held_(largestStoredChunk(input) * layout.planes()),
          rowBytes_(layout.rowBytes(layout.size.width))
    {
        inputs_.push_back(&input);
    }

    std::int64_t heldBytes() const override { return held_; }

    std::span<const TiffRun> row(std::int64_t y) override
    {
        if (planes_.empty())
            openPlanes();
        if (y % layout_.chunkRows == 0)
            run_.isLost = false;
        run_.pixels = layout_.size.width;
        for (int plane = 0; plane < layout_.planes(); ++plane) {
            auto& bytes = planes_[std::size_t(plane)];
            run_.planes[std::size_t(plane)] = bytes.data();
            TiffInput& input = *inputs_[std::size_t(plane)];
            // Once a strip is broken the decompressor has lost its place until the next one.
            if (run_.isLost)
                continue;
            input.expectNoLoss();
            const bool read = TIFFReadScanline(input.get(), bytes.data(), std::uint32_t(y), std::uint16_t(plane)) == 1;
            run_.isLost = !read || input.lostData();
            if (run_.isLost)
                input.throwForeignCause();
        }
        return {&run_, 1};
    }

private:
    void openPlanes()
    {
        for (int plane = 1; plane < layout_.planes(); ++plane) {
            further_.push_back(std::make_unique<TiffInput>(inputs_.front()->source()));
            inputs_.push_back(further_.back().get());
        }
        if (TIFFScanlineSize64(inputs_.front()->get()) != std::uint64_t(rowBytes_))
            throw CodecError{CodecError::Reason::malformed, {}};
        planes_.assign(std::size_t(layout_.planes()), std::vector<std::byte>(std::size_t(rowBytes_)));
    }

    const TiffLayout& layout_;
    std::int64_t held_;
    std::int64_t rowBytes_;
    std::vector<TiffInput*> inputs_; ///< One a plane; the first is borrowed.
    std::vector<std::unique_ptr<TiffInput>> further_;
    std::vector<std::vector<std::byte>> planes_;
    TiffRun run_;
};

/// Tiles and small strips: all chunks that cross a row are decompressed and kept until the rows below them are reached.
class ChunkRows final : public TiffRows {
public:
    ChunkRows(TiffInput& input, const TiffLayout& layout)
        : input_(input), layout_(layout),
          chunkBytes_(std::int64_t(std::min(layout.isTiled ? TIFFTileSize64(input.get()) : TIFFStripSize64(input.get()),
                                            std::uint64_t(std::numeric_limits<std::int32_t>::max())))),
          held_(chunkBytes_ * layout.planes() * layout.chunksAcross() + largestStoredChunk(input))
    {
        const std::int64_t blocks = (layout.chunkWidth + layout.subsamplingX - 1) / layout.subsamplingX;
        lineBytes_ = layout.isInBlocks() ? blocks * (layout.subsamplingX * layout.subsamplingY + 2)
                                         : layout.rowBytes(layout.chunkWidth);
        linesPerChunk_ = (layout.chunkRows + layout.subsamplingY - 1) / layout.subsamplingY;
    }

    std::int64_t heldBytes() const override { return held_; }

    std::span<const TiffRun> row(std::int64_t y) override
    {
        if (y % layout_.chunkRows == 0)
            readChunks(y / layout_.chunkRows);
        const std::int64_t rowInChunk = y % layout_.chunkRows;
        const std::int64_t line = rowInChunk / layout_.subsamplingY;
        for (std::size_t i = 0; i < runs_.size(); ++i) {
            TiffRun& run = runs_[i];
            run.blockRow = int(rowInChunk % layout_.subsamplingY);
            for (int plane = 0; plane < layout_.planes(); ++plane)
                run.planes[std::size_t(plane)] = chunkAt(std::int64_t(i), plane) + line * lineBytes_;
        }
        return runs_;
    }

private:
    std::byte* chunkAt(std::int64_t across, int plane)
    {
        return bytes_.data() + (across * layout_.planes() + plane) * chunkBytes_;
    }

    void prepare()
    {
        // What the library says a chunk decompresses to must hold what we are going to read from it.
        if (chunkBytes_ == std::numeric_limits<std::int32_t>::max())
            throw CodecError{CodecError::Reason::tooLarge, {}};
        if (chunkBytes_ < lineBytes_ * linesPerChunk_)
            throw CodecError{CodecError::Reason::malformed, {}};
        bytes_.resize(std::size_t(chunkBytes_ * layout_.planes() * layout_.chunksAcross()));
        for (std::int64_t x = 0; x < layout_.size.width; x += layout_.chunkWidth)
            runs_.push_back({x, std::min(layout_.chunkWidth, layout_.size.width - x)});
    }

    void readChunks(std::int64_t down)
    {
        if (runs_.empty())
            prepare();
        const std::int64_t across = layout_.chunksAcross();
        for (std::int64_t i = 0; i < across; ++i) {
            TiffRun& run = runs_[std::size_t(i)];
            run.isLost = false;
            for (int plane = 0; plane < layout_.planes() && !run.isLost; ++plane) {
                const std::int64_t index = (plane * layout_.chunksDown() + down) * across + i;
                run.isLost = !readChunk(std::uint32_t(index), down, chunkAt(i, plane));
            }
        }
    }

    bool readChunk(std::uint32_t index, std::int64_t down, std::byte* into)
    {
        input_.expectNoLoss();
        const std::int64_t rows = std::min(layout_.chunkRows, layout_.size.height - down * layout_.chunkRows);
        const std::int64_t lines = (rows + layout_.subsamplingY - 1) / layout_.subsamplingY;
        const tmsize_t wanted = layout_.isTiled ? chunkBytes_ : lines * lineBytes_;
        const tmsize_t read = layout_.isTiled ? TIFFReadEncodedTile(input_.get(), index, into, wanted)
                                              : TIFFReadEncodedStrip(input_.get(), index, into, wanted);
        if (read == wanted && !input_.lostData())
            return true;
        input_.throwForeignCause();
        return false;
    }

    TiffInput& input_;
    const TiffLayout& layout_;
    std::int64_t chunkBytes_;
    std::int64_t held_;
    std::int64_t lineBytes_ = 0; ///< Of a row of pixels, or of a row of YCbCr blocks.
    std::int64_t linesPerChunk_ = 0;
    std::vector<std::byte> bytes_;
    std::vector<TiffRun> runs_;
};

} // namespace

std::unique_ptr<TiffRows> openTiffRows(TiffInput& input, const TiffLayout& layout)
{
    const auto compression = input.tag<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    const auto fillOrder = input.tag<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
    if (layout.isTiled || layout.isInBlocks())
        return std::make_unique<ChunkRows>(input, layout);
    if (compression == COMPRESSION_NONE && fillOrder == FILLORDER_MSB2LSB)
        return std::make_unique<StoredRows>(input, layout);
    if (layout.rowBytes(layout.size.width) <= wholeStripBytes / layout.planes() / layout.chunkRows)
        return std::make_unique<ChunkRows>(input, layout);
    return std::make_unique<ScannedRows>(input, layout);
}

} // namespace ferrow
