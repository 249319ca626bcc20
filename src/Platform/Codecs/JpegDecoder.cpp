// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/JpegGrid.h"
#include "Platform/Codecs/JpegReading.h"

#include <algorithm>
#include <cstring>

namespace ferrow {

namespace {

using Reason = CodecError::Reason;

ColorModel modelOf(int components)
{
    return components == 1 ? ColorModel::gray : components == 4 ? ColorModel::cmyk : ColorModel::rgb;
}

class JpegDecoder final : public ImageDecoder {
public:
    JpegDecoder(const ByteSource& source, const DecodeOptions& options) : source_(source), options_(options)
    {
        open(source.size());
    }

    [[nodiscard]] PixelSize storedSize() const override { return {codec().image_width, codec().image_height}; }
    [[nodiscard]] PixelSize size() const override
    {
        return beyondLibrary_ ? storedSize() : PixelSize{codec().output_width, codec().output_height};
    }
    [[nodiscard]] PixelFormat format() const override { return {modelOf(codec().num_components), 8, Alpha::none}; }
    [[nodiscard]] ColorProfile profile() const override { return profile_; }
    [[nodiscard]] std::int64_t heldBytes() const override
    {
        const bool holds =
            !beyondLibrary_ && (codec().progressive_mode || codec().comps_in_scan < codec().num_components);
        return holds ? reading_->blocks() * DCTSIZE2 * std::int64_t(sizeof(JCOEF)) : 0;
    }
    [[nodiscard]] std::optional<BlockGrid> blockGrid(int orientation) const override
    {
        return beyondLibrary_ ? std::nullopt : blockGridOf(codec(), orientation);
    }

    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override
    {
        if (beyondLibrary_)
            throw CodecError{Reason::tooLarge, {}};
        if (!started_)
            start();
        const std::int64_t before = codec().output_scanline;
        if (!broken_)
            readSome(count, out, stride);
        const std::int64_t delivered = broken_ ? codec().output_scanline - before : count;
        const std::size_t rowBytes = std::size_t(size().width) * std::size_t(format().bytesPerPixel());
        for (std::int64_t y = 0; y < count; ++y) {
            auto* row = reinterpret_cast<std::uint8_t*>(out + std::size_t(y) * stride);
            if (y >= delivered)
                fillGray(row, rowBytes);
            else if (inkInverted_)
                std::transform(row, row + rowBytes, row, [](std::uint8_t ink) { return std::uint8_t(255 - ink); });
        }
    }

    /// Half of every ink would be nearly black: gray is half of the black one alone.
    void fillGray(std::uint8_t* row, std::size_t bytes) const
    {
        std::memset(row, 0x80, bytes);
        if (format().model != ColorModel::cmyk)
            return;
        for (std::size_t i = 0; i < bytes; ++i)
            row[i] = i % 4 == 3 ? 0x80 : 0;
    }

    /// Behind the end marker lie junk and further pictures: none of it is ours.
    void finish() override
    {
        // Of several scans all was read before the first row.
        const bool isOneScan = !jpeg_has_multiple_scans(&reading_->codec);
        if (options_.tolerance == Tolerance::strict && isOneScan && reading_->leavesBytesUnused())
            throw CodecError{Reason::damaged, {}};
    }

private:
    [[nodiscard]] const jpeg_decompress_struct& codec() const { return reading_->codec; }

    void open(std::int64_t end)
    {
        reading_ = std::make_unique<JpegReading>(source_, options_.tolerance, end);
        beyondLibrary_ = !reading_->readHeader();
        const int components = codec().num_components;
        if (components != 1 && components != 3 && components != 4)
            throw CodecError{Reason::unsupported, QStringLiteral("%1-channel JPEG").arg(components)};
        if (beyondLibrary_)
            return;
        profile_ = ColorProfile::fromIcc(reading_->icc(), modelOf(components)).value_or(ColorProfile());
        // Adobe's programs, which set the custom, write inks inverted.
        inkInverted_ = components == 4 && codec().saw_Adobe_marker;
        reading_->codec.out_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
        chooseReduction();
    }

    void chooseReduction()
    {
        jpeg_decompress_struct& handle = reading_->codec;
        handle.scale_num = 1;
        for (handle.scale_denom = options_.enoughDimension > 0 ? options_.mostReduction : 1;; handle.scale_denom /= 2) {
            jpeg_calc_output_dimensions(&handle);
            if (handle.scale_denom == 1 || size().longestSide() >= options_.enoughDimension)
                return;
        }
    }

    void start()
    {
        started_ = true;
        try {
            reading_->start();
        } catch (const CodecError& error) {
            const std::int64_t end = reading_->followedUpTo();
            if (error.reason != Reason::damaged || options_.tolerance == Tolerance::strict || end == 0)
                throw;
            // A file cut amid the tables between two scans: what came before them is a picture.
            open(end);
            reading_->start();
        }
    }

    void readSome(std::int64_t count, std::byte* out, std::size_t stride)
    {
        try {
            reading_->readRows(count, out, stride);
        } catch (const CodecError& error) {
            const bool someRows = codec().output_scanline > 0;
            if (error.reason != Reason::damaged || options_.tolerance == Tolerance::strict || !someRows)
                throw;
            broken_ = true;
        }
    }

    const ByteSource& source_;
    DecodeOptions options_;
    std::unique_ptr<JpegReading> reading_;
    ColorProfile profile_;
    bool beyondLibrary_ = false;
    bool inkInverted_ = false;
    bool started_ = false;
    bool broken_ = false;
};

} // namespace

std::unique_ptr<ImageDecoder> openJpegDecoder(const ByteSource& source, const DecodeOptions& options)
{
    return std::make_unique<JpegDecoder>(source, options);
}

} // namespace ferrow
