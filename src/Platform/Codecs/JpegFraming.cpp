// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/JpegFraming.h"

#include "Platform/Codecs/BlockTransform.h"
#include "Platform/Codecs/CoverBand.h"
#include "Platform/Codecs/JpegGrid.h"
#include "Platform/Codecs/JpegReading.h"
#include "Platform/Codecs/JpegWriting.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <numeric>
#include <vector>

namespace ferrow {

namespace {

using BlockTransform::Samples;
using BlockTransform::Table;
using BlockTransform::Turn;

constexpr std::int64_t blockSide = std::int64_t(BlockTransform::side);

std::int64_t quotientRoundedUp(std::int64_t length, std::int64_t unit)
{
    return (length + unit - 1) / unit;
}

/// A component of the output.
struct Component {
    int source = -1; ///< The photo's; none for the colors of a gray one.
    int across = 1;  ///< Sampling factors, upright.
    int down = 1;
    int cellWidth = 1; ///< Pixels a sample.
    int cellHeight = 1;
    Table table{};
    std::int64_t photoColumns = 0; ///< The photo's blocks, upright and with those that fill its last MCUs.
    std::int64_t photoRows = 0;
    JDIMENSION columns = 0;                           ///< The output's blocks, with those that fill its last MCUs.
    std::vector<BlockTransform::Coefficients> blocks; ///< A row of MCUs of the output.
    std::vector<JBLOCKROW> rows;
};

/// A level less 128 of the color at `pixel`, as component `index` has it.
double sampleOf(const std::uint8_t* pixel, std::size_t index, bool isRgb)
{
    if (isRgb)
        return pixel[index] - 128.0;
    const double red = pixel[0];
    const double green = pixel[1];
    const double blue = pixel[2];
    const double luma = 0.299 * red + 0.587 * green + 0.114 * blue;
    return index == 0 ? luma - 128 : index == 1 ? (blue - luma) / 1.772 : (red - luma) / 1.402;
}

} // namespace

class JpegFraming::Work {
public:
    Work(const ByteSource& source, int orientation)
        : reading_(source, Tolerance::strict, source.size()), turn_(Turn::of(orientation))
    {
        if (!reading_.readHeader())
            throw CodecError{CodecError::Reason::tooLarge, {}};
        const std::optional<BlockGrid> grid = blockGridOf(reading_.codec, orientation);
        if (!grid)
            throw CannotKeep{};
        grid_ = *grid;
    }

    [[nodiscard]] BlockGrid grid() const { return grid_; }

    [[nodiscard]] std::int64_t heldBytes()
    {
        const bool streams = !turn_.swaps && !turn_.fromBottom && !jpeg_has_multiple_scans(&reading_.codec);
        return streams ? 0 : reading_.blocks() * DCTSIZE2 * std::int64_t(sizeof(JCOEF));
    }

    void write(const PhotoPlace& photo, const Cover& cover, ByteSink& sink, const EncodeOptions& options)
    {
        originX_ = photo.x - grid_.x;
        originY_ = photo.y - grid_.y;
        if (originX_ < 0 || originY_ < 0 || originX_ % grid_.width != 0 || originY_ % grid_.height != 0)
            throw CannotKeep{};
        drawn_ = &cover;
        cover_.emplace(options.size, grid_, photo);
        reading_.startBlocks(heldBytes() > 0 ? JpegReading::Keep::allRows : JpegReading::Keep::oneRow);
        isRgb_ = reading_.codec.jpeg_color_space == JCS_RGB;
        addComponents();
        writeFile(sink, options);
    }

private:
    void addComponents()
    {
        const jpeg_decompress_struct& photo = reading_.codec;
        const auto [across, down] = samplingUnit(photo);
        const int most = photo.num_components;
        const std::int64_t mcusAcross =
            quotientRoundedUp(photo.image_width, blockSide * (photo.max_h_samp_factor / across));
        const std::int64_t mcusDown =
            quotientRoundedUp(photo.image_height, blockSide * (photo.max_v_samp_factor / down));
        for (int i = 0; i < 3; ++i) {
            // A gray photo's colors have its own table, and full resolution: the frame may have any color.
            const jpeg_component_info& info = photo.comp_info[std::min(i, most - 1)];
            Component& component = components_[std::size_t(i)];
            component.source = i < most ? i : -1;
            component.across = info.h_samp_factor / across;
            component.down = info.v_samp_factor / down;
            component.photoColumns = mcusAcross * component.across;
            component.photoRows = mcusDown * component.down;
            Table stored{};
            std::copy_n(info.quant_table->quantval, BlockTransform::area, stored.begin());
            component.table = BlockTransform::turned(stored, turn_);
            if (turn_.swaps) {
                std::swap(component.across, component.down);
                std::swap(component.photoColumns, component.photoRows);
            }
            component.cellWidth = int(grid_.width) / int(blockSide) / component.across;
            component.cellHeight = int(grid_.height) / int(blockSide) / component.down;
        }
    }

    void writeFile(ByteSink& sink, const EncodeOptions& options)
    {
        JpegWriting writing(sink);
        writing.owner = this;
        // The library's own array would hold the whole picture; here rows come as it asks for them.
        writing.codec.mem->access_virt_barray = [](j_common_ptr common, jvirt_barray_ptr array, JDIMENSION first,
                                                   JDIMENSION, boolean) {
            auto& writes = *static_cast<JpegWriting*>(common->client_data);
            auto& component = *reinterpret_cast<Component*>(array);
            if (!static_cast<Work*>(writes.owner)->hasRow(first / JDIMENSION(component.down)))
                writes.giveUp();
            return component.rows.data();
        };
        std::array<jvirt_barray_ptr, 3> arrays{};
        for (std::size_t i = 0; i < arrays.size(); ++i)
            arrays[i] = reinterpret_cast<jvirt_barray_ptr>(&components_[i]);
        writing.run([&, this] {
            writeHeader(writing.codec, options.size);
            jpeg_write_coefficients(&writing.codec, arrays.data());
        });
        for (std::size_t i = 0; i < components_.size(); ++i)
            makeRoom(components_[i], cover_->columns());
        writing.writeSegments(options);
        try {
            writing.finish();
        } catch (const EncoderError&) {
            if (failure_)
                std::rethrow_exception(failure_);
            throw;
        }
    }

    /// Tables, factors and identifiers; no JFIF segment, and Adobe's for RGB, which nothing else tells.
    void writeHeader(jpeg_compress_struct& codec, PixelSize canvas)
    {
        codec.image_width = JDIMENSION(canvas.width);
        codec.image_height = JDIMENSION(canvas.height);
        codec.input_components = int(components_.size());
        codec.in_color_space = isRgb_ ? JCS_RGB : JCS_YCbCr;
        jpeg_set_defaults(&codec);
        jpeg_set_colorspace(&codec, codec.in_color_space);
        codec.write_JFIF_header = FALSE;
        for (std::size_t i = 0; i < components_.size(); ++i) {
            const Component& component = components_[i];
            jpeg_component_info& info = codec.comp_info[i];
            info.h_samp_factor = component.across;
            info.v_samp_factor = component.down;
            info.quant_tbl_no = tableNumber(i);
            JQUANT_TBL*& table = codec.quant_tbl_ptrs[info.quant_tbl_no];
            if (!table)
                table = jpeg_alloc_quant_table(reinterpret_cast<j_common_ptr>(&codec));
            std::copy(component.table.begin(), component.table.end(), table->quantval);
        }
    }

    /// Equal tables are written once.
    [[nodiscard]] int tableNumber(std::size_t index) const
    {
        std::size_t first = 0;
        while (components_[first].table != components_[index].table)
            ++first;
        return int(first);
    }

    static void makeRoom(Component& component, std::int64_t mcus)
    {
        component.columns = JDIMENSION(mcus * component.across);
        component.blocks.resize(std::size_t(component.columns) * std::size_t(component.down));
        for (int i = 0; i < component.down; ++i)
            component.rows.push_back(
                reinterpret_cast<JBLOCKROW>(&component.blocks[std::size_t(component.columns) * std::size_t(i)]));
    }

    /// Called amid the library's work: nothing may be thrown through it.
    bool hasRow(std::int64_t row) noexcept
    {
        if (row < nextRow_)
            return true;
        try {
            makeRow(nextRow_++);
            return true;
        } catch (...) {
            failure_ = std::current_exception();
            return false;
        }
    }

    void makeRow(std::int64_t row)
    {
        cover_->read(*drawn_);
        for (std::size_t i = 0; i < components_.size(); ++i)
            for (int down = 0; down < components_[i].down; ++down)
                makeBlocks(i, row, down);
        const std::int64_t photoHeight = components_[0].photoRows / components_[0].down;
        const bool isLastOfPhoto = row + 1 - originY_ / grid_.height == photoHeight;
        if (isLastOfPhoto)
            reading_.finishBlocks();
    }

    void makeBlocks(std::size_t index, std::int64_t row, int down)
    {
        Component& component = components_[index];
        const std::int64_t photoRow = (row - originY_ / grid_.height) * component.down + down;
        const std::int64_t photoColumn = originX_ / grid_.width * component.across;
        const bool hasPhoto = photoRow >= 0 && photoRow < component.photoRows;
        // Most of a picture: blocks of an upright photo that nothing covers.
        const JBLOCKROW upright = hasPhoto && component.source >= 0 && turn_ == Turn{}
                                      ? reading_.blockRow(component.source, photoRow)
                                      : nullptr;
        BlockTransform::Coefficients* out = &component.blocks[std::size_t(down) * component.columns];
        for (std::int64_t column = 0; column < component.columns; ++column, ++out) {
            const std::int64_t from = column - photoColumn;
            const bool isPhoto = hasPhoto && from >= 0 && from < component.photoColumns;
            const bool isBare = isPhoto && cover_->isBare(column / component.across);
            if (isBare && upright)
                copyBlock(upright[from], *out);
            else if (isBare)
                readPhoto(component, photoRow, from, *out);
            else
                *out = blockAt(index, column, down, isPhoto ? photoRow : -1, from);
        }
    }

    /// One block of the output. `photoRow` is below 0 where there is no photo.
    BlockTransform::Coefficients blockAt(std::size_t index, std::int64_t column, int down, std::int64_t photoRow,
                                         std::int64_t photoColumn)
    {
        const Component& component = components_[index];
        const std::int64_t width = blockSide * component.cellWidth;
        const std::int64_t height = blockSide * component.cellHeight;
        const Covering covering = cover_->covering(column * width, down * height, width, height);
        const std::uint8_t* pixels = cover_->pixel(column * width, down * height);
        BlockTransform::Coefficients block{};
        if (covering == Covering::flat) {
            block[0] = BlockTransform::flatLevel(sampleOf(pixels, index, isRgb_), component.table[0]);
            return block;
        }
        if (photoRow >= 0)
            readPhoto(component, photoRow, photoColumn, block);
        if (covering == Covering::none)
            return block;
        const Samples below = photoRow >= 0 ? BlockTransform::samples(block.data(), component.table) : Samples{};
        return BlockTransform::coefficients(covered(below, pixels, component, index), component.table);
    }

    /// The photo's samples with what covers them, in the component's own terms: mixing is the same there, and a sample
    /// of color is covered as much as its pixels are.
    [[nodiscard]] Samples covered(const Samples& photo, const std::uint8_t* pixels, const Component& component,
                                  std::size_t index) const
    {
        const double share = 1.0 / (component.cellWidth * component.cellHeight);
        Samples result{};
        for (std::size_t i = 0; i < result.size(); ++i) {
            const std::size_t top = i / BlockTransform::side * std::size_t(component.cellHeight);
            const std::size_t left = i % BlockTransform::side * std::size_t(component.cellWidth);
            double opacity = 0;
            double color = 0;
            for (std::size_t y = top; y < top + std::size_t(component.cellHeight); ++y)
                for (std::size_t x = left; x < left + std::size_t(component.cellWidth); ++x) {
                    const std::uint8_t* pixel = pixels + y * cover_->stride() + x * CoverBand::pixelBytes;
                    const double alpha = pixel[3] / 255.0;
                    opacity += alpha;
                    color += alpha == 0 ? 0 : alpha * sampleOf(pixel, index, isRgb_);
                }
            result[i] = (1 - opacity * share) * photo[i] + color * share;
        }
        return result;
    }

    /// A block of the upright photo; zeros of a component that it does not have.
    void readPhoto(const Component& component, std::int64_t row, std::int64_t column, BlockTransform::Coefficients& out)
    {
        out = {};
        if (component.source < 0)
            return;
        std::int64_t storedRow = turn_.swaps ? column : row;
        std::int64_t storedColumn = turn_.swaps ? row : column;
        const std::int64_t storedRows = turn_.swaps ? component.photoColumns : component.photoRows;
        const std::int64_t storedColumns = turn_.swaps ? component.photoRows : component.photoColumns;
        storedRow = turn_.fromBottom ? storedRows - 1 - storedRow : storedRow;
        storedColumn = turn_.fromRight ? storedColumns - 1 - storedColumn : storedColumn;
        copyBlock(reading_.blockRow(component.source, storedRow)[storedColumn], out);
        if (turn_ != Turn{})
            out = BlockTransform::turned(out.data(), turn_);
    }

    static void copyBlock(const JCOEF* stored, BlockTransform::Coefficients& out)
    {
        if (!BlockTransform::isCodable(stored))
            throw CannotKeep{};
        std::memcpy(out.data(), stored, sizeof out);
    }

    JpegReading reading_;
    Turn turn_;
    BlockGrid grid_;
    std::int64_t originX_ = 0; ///< Of the photo's first block on the canvas, in pixels.
    std::int64_t originY_ = 0;
    bool isRgb_ = false;
    std::array<Component, 3> components_{};
    const Cover* drawn_ = nullptr;
    std::optional<CoverBand> cover_;
    std::int64_t nextRow_ = 0;
    std::exception_ptr failure_;
};

JpegFraming::JpegFraming(const ByteSource& source, int orientation) : work_(std::make_unique<Work>(source, orientation))
{
}

JpegFraming::~JpegFraming() = default;

BlockGrid JpegFraming::grid() const
{
    return work_->grid();
}

std::int64_t JpegFraming::heldBytes() const
{
    return work_->heldBytes();
}

void JpegFraming::write(const PhotoPlace& photo, const Cover& cover, ByteSink& sink, const EncodeOptions& options)
{
    work_->write(photo, cover, sink, options);
}

} // namespace ferrow
