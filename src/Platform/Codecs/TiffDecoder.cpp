// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ImageDecoder.h"

#include "Platform/Codecs/TiffDirectory.h"
#include "Platform/Codecs/TiffInput.h"
#include "Platform/Codecs/TiffLayout.h"
#include "Platform/Codecs/TiffRows.h"
#include "Platform/Codecs/TiffSamples.h"

#include <algorithm>
#include <memory>
#include <new>

namespace ferrow {

namespace {

/// Read past our own walk: the library would hand out what it believes, whatever its length.
ColorProfile readProfile(const ByteSource& source, ColorModel model)
{
    constexpr std::int64_t longestProfile = 16'000'000;
    const auto structure = TiffStructure::open(source);
    const auto directory = structure ? structure->firstDirectory() : std::nullopt;
    const TiffEntry* entry = directory ? directory->find(TIFFTAG_ICCPROFILE) : nullptr;
    if (!entry || entry->length > longestProfile)
        return {};
    return ColorProfile::fromIcc(structure->bytes(*entry, longestProfile), model).value_or(ColorProfile());
}

/// 0 for what is no more than some rows: all decoders hold those, and none counts them.
std::int64_t beyondSomeRows(std::int64_t bytes, const TiffLayout& layout)
{
    constexpr std::int64_t someRows = 64;
    constexpr std::int64_t alwaysBearable = 8 << 20;
    const std::int64_t rows = someRows * layout.size.width * layout.format().bytesPerPixel();
    return bytes <= std::max(rows, alwaysBearable) ? 0 : bytes;
}

class TiffDecoder final : public ImageDecoder {
public:
    TiffDecoder(const ByteSource& source, const DecodeOptions& options)
        : input_(source), layout_(readTiffLayout(input_)), tolerance_(options.tolerance),
          profile_(readProfile(source, layout_.format().model)), rows_(openTiffRows(input_, layout_)), samples_(layout_)
    {
    }

    PixelSize storedSize() const override { return layout_.size; }
    PixelSize size() const override { return layout_.size; }
    PixelFormat format() const override { return layout_.format(); }
    ColorProfile profile() const override { return profile_; }
    std::int64_t heldBytes() const override { return beyondSomeRows(rows_->heldBytes(), layout_); }

    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override;
    void finish() override;

private:
    TiffInput input_;
    TiffLayout layout_;
    Tolerance tolerance_;
    ColorProfile profile_;
    std::unique_ptr<TiffRows> rows_;
    TiffSamples samples_;
    std::int64_t nextRow_ = 0;
    bool hasPicture_ = false; ///< Some of what was delivered came from the file.
};

void TiffDecoder::readRows(std::int64_t count, std::byte* out, std::size_t stride)
{
    const int pixelBytes = layout_.format().bytesPerPixel();
    try {
        for (; count > 0; --count, out += stride) {
            for (const TiffRun& run : rows_->row(nextRow_)) {
                if (run.isLost && tolerance_ == Tolerance::strict)
                    throw CodecError{CodecError::Reason::damaged, {}};
                samples_.convert(run, out + run.x * pixelBytes);
                hasPicture_ = hasPicture_ || !run.isLost;
            }
            ++nextRow_;
        }
    } catch (const std::bad_alloc&) {
        throw CodecError{CodecError::Reason::tooLarge, {}};
    }
}

void TiffDecoder::finish()
{
    if (!hasPicture_)
        throw CodecError{CodecError::Reason::damaged, {}};
}

} // namespace

std::unique_ptr<ImageDecoder> openTiffDecoder(const ByteSource& source, const DecodeOptions& options)
{
    try {
        checkTiffDirectory(source);
        return std::make_unique<TiffDecoder>(source, options);
    } catch (const InputOutputError&) {
        throw CodecError{CodecError::Reason::unreadable, {}};
    } catch (const std::bad_alloc&) {
        throw CodecError{CodecError::Reason::tooLarge, {}};
    }
}

} // namespace ferrow
