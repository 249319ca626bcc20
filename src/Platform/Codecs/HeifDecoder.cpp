// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifBoxes.h"
#include "Platform/Codecs/HeifHandles.h"
#include "Platform/Codecs/ImageDecoder.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace ferrow {
namespace {

/// Longest side that the library is let to decode, in pixels: what its own check of sizes can be raised to without
/// overflowing. Larger pictures are reported with their size, but never decoded.
constexpr int largestSide = 65'535;

/// Tiles that are decoded at once. More take more memory and little less time.
constexpr int decodingThreads = 2;

[[noreturn]] void fail(CodecError::Reason reason)
{
    throw CodecError{reason, {}};
}

/// What the library reads from: a position in the source, and whether the system refused to read.
struct Reader {
    const ByteSource& source;
    std::int64_t position = 0;
    bool hasFailed = false;
};

std::int64_t positionOf(void* reader)
{
    return static_cast<Reader*>(reader)->position;
}

int read(void* into, std::size_t size, void* user)
{
    auto& reader = *static_cast<Reader*>(user);
    try {
        const std::size_t count = reader.source.readAt(reader.position, {static_cast<std::byte*>(into), size});
        reader.position += static_cast<std::int64_t>(count);
        return count == size ? 0 : 1;
    } catch (...) {
        reader.hasFailed = true;
        return 1;
    }
}

int seek(std::int64_t position, void* user)
{
    static_cast<Reader*>(user)->position = position;
    return 0;
}

heif_reader_grow_status waitForSize(std::int64_t size, void* user)
{
    return size <= static_cast<Reader*>(user)->source.size() ? heif_reader_grow_status_size_reached
                                                             : heif_reader_grow_status_size_beyond_eof;
}

constexpr heif_reader readerFunctions{1, positionOf, read, seek, waitForSize};

CodecError::Reason reasonFor(const heif_error& error, CodecError::Reason otherwise)
{
    if (error.code == heif_error_Memory_allocation_error)
        return CodecError::Reason::tooLarge;
    if (error.code == heif_error_Unsupported_feature || error.code == heif_error_Unsupported_filetype)
        return CodecError::Reason::unsupported;
    return otherwise;
}

void check(const heif_error& error, const Reader& reader, CodecError::Reason otherwise)
{
    if (error.code == heif_error_Ok)
        return;
    if (reader.hasFailed)
        fail(CodecError::Reason::unreadable);
    const auto reason = reasonFor(error, otherwise);
    throw CodecError{reason, reason == CodecError::Reason::unsupported ? QStringLiteral("HEIF image of an unknown kind")
                                                                       : QString()};
}

ColorProfile profileOfCodePoints(const heif_color_profile_nclx& codePoints)
{
    switch (codePoints.color_primaries) {
    case heif_color_primaries_ITU_R_BT_709_5:
        return ColorProfile::sRGB();
    case heif_color_primaries_SMPTE_EG_432_1:
        return ColorProfile::displayP3();
    case heif_color_primaries_ITU_R_BT_2020_2_and_2100_0:
        return ColorProfile::rec2020();
    default:
        return {};
    }
}

ColorProfile profileOf(const heif_image_handle* handle)
{
    constexpr std::size_t largestProfile = 16'000'000;
    const std::size_t size = heif_image_handle_get_raw_color_profile_size(handle);
    if (size > 0 && size <= largestProfile) {
        QByteArray icc(static_cast<qsizetype>(size), Qt::Uninitialized);
        if (heif_image_handle_get_raw_color_profile(handle, icc.data()).code == heif_error_Ok) {
            if (auto profile = ColorProfile::fromIcc(icc, ColorModel::rgb))
                return *std::move(profile);
        }
    }
    heif_color_profile_nclx* codePoints = nullptr;
    if (heif_image_handle_get_nclx_color_profile(handle, &codePoints).code != heif_error_Ok)
        return {};
    return profileOfCodePoints(*heif::CodePoints(codePoints));
}

heif_chroma interleaving(const PixelFormat& format)
{
    if (format.bitsPerComponent == 8)
        return format.hasAlpha() ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    return format.hasAlpha() ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
}

/// Colour as it was before it was multiplied by alpha; both components have the same depth.
std::uint32_t withoutAlpha(std::uint32_t color, std::uint32_t alpha, std::uint32_t most)
{
    return alpha == 0 ? 0 : std::min(most, (color * most + alpha / 2) / alpha);
}

/// One row of 8-bit components, in place.
void unpremultiply8(std::byte* pixel, std::int64_t width)
{
    for (std::int64_t x = 0; x < width; ++x, pixel += 4) {
        const auto alpha = std::to_integer<std::uint32_t>(pixel[3]);
        for (int i = 0; i < 3; ++i)
            pixel[i] = static_cast<std::byte>(withoutAlpha(std::to_integer<std::uint32_t>(pixel[i]), alpha, 255));
    }
}

/// A picture that the library can't be asked for. Its size is for the caller, who has limits to hold it against.
class OversizeDecoder final : public ImageDecoder {
public:
    explicit OversizeDecoder(PixelSize size) : size_(size) {}

    PixelSize storedSize() const override { return size_; }
    PixelSize size() const override { return size_; }
    PixelFormat format() const override { return rgb8; }
    ColorProfile profile() const override { return {}; }
    std::int64_t heldBytes() const override { return 0; }
    void readRows(std::int64_t, std::byte*, std::size_t) override { fail(CodecError::Reason::tooLarge); }
    void finish() override { fail(CodecError::Reason::tooLarge); }

private:
    PixelSize size_;
};

class HeifDecoder final : public ImageDecoder {
public:
    HeifDecoder(const ByteSource& source, const DecodeOptions& options);

    PixelSize storedSize() const override { return size_; }
    PixelSize size() const override { return size_; }
    PixelFormat format() const override { return format_; }
    ColorProfile profile() const override { return profile_; }
    std::int64_t heldBytes() const override { return size_.width * size_.height * format_.bytesPerPixel(); }
    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override;
    void finish() override { image_.reset(); }

private:
    void decode();
    void copyRow(std::int64_t y, std::byte* out) const;
    void scaleRow(const std::byte* row, std::byte* out) const;

    Tolerance tolerance_;
    Reader reader_;
    heif::Context context_;
    heif::Handle handle_;
    PixelSize size_;
    PixelFormat format_;
    ColorProfile profile_;

    heif::Image image_; ///< Empty before the first row.
    const std::byte* pixels_ = nullptr;
    std::size_t pixelStride_ = 0;
    int bits_ = 8; ///< Of the decoded components, in the low end of 16 bits where there are more than 8.
    bool isPremultiplied_ = false;
    std::int64_t nextRow_ = 0;
};

HeifDecoder::HeifDecoder(const ByteSource& source, const DecodeOptions& options)
    : tolerance_(options.tolerance), reader_{source}, context_(heif_context_alloc())
{
    if (!context_)
        fail(CodecError::Reason::tooLarge);
    heif_context_set_maximum_image_size_limit(context_.get(), largestSide);
    heif_context_set_max_decoding_threads(context_.get(), decodingThreads);
    check(heif_context_read_from_reader(context_.get(), &readerFunctions, &reader_, nullptr), reader_,
          CodecError::Reason::malformed);
    heif_image_handle* handle = nullptr;
    check(heif_context_get_primary_image_handle(context_.get(), &handle), reader_, CodecError::Reason::malformed);
    handle_.reset(handle);

    size_ = {heif_image_handle_get_width(handle), heif_image_handle_get_height(handle)};
    const int bits = heif_image_handle_get_luma_bits_per_pixel(handle);
    if (size_.width < 1 || size_.height < 1 || bits < 1)
        fail(CodecError::Reason::malformed);
    format_.bitsPerComponent = bits > 8 ? 16 : 8;
    format_.alpha = heif_image_handle_has_alpha_channel(handle) != 0 ? Alpha::straight : Alpha::none;
    profile_ = profileOf(handle);
}

void HeifDecoder::decode()
{
    const heif::DecodingOptions options(heif_decoding_options_alloc());
    if (!options)
        fail(CodecError::Reason::tooLarge);
    options->strict_decoding = tolerance_ == Tolerance::strict ? 1 : 0;
    heif_image* image = nullptr;
    const heif_error error =
        heif_decode_image(handle_.get(), &image, heif_colorspace_RGB, interleaving(format_), options.get());
    image_.reset(image);
    check(error, reader_, CodecError::Reason::damaged);

    int stride = 0;
    const std::uint8_t* pixels = heif_image_get_plane_readonly(image, heif_channel_interleaved, &stride);
    bits_ = heif_image_get_bits_per_pixel_range(image, heif_channel_interleaved);
    const PixelSize decoded{heif_image_get_width(image, heif_channel_interleaved),
                            heif_image_get_height(image, heif_channel_interleaved)};
    const bool isExpectedDepth = format_.bitsPerComponent == 8 ? bits_ == 8 : bits_ > 8 && bits_ <= 16;
    // The library hands back whatever size the coded stream has.
    if (!pixels || decoded != size_ || heif_image_get_chroma_format(image) != interleaving(format_) || !isExpectedDepth)
        fail(CodecError::Reason::damaged);
    pixels_ = reinterpret_cast<const std::byte*>(pixels);
    pixelStride_ = static_cast<std::size_t>(stride);
    isPremultiplied_ = format_.hasAlpha() && heif_image_is_premultiplied_alpha(image) != 0;
    handle_.reset();
    context_.reset();
}

void HeifDecoder::readRows(std::int64_t count, std::byte* out, std::size_t stride)
{
    try {
        if (!image_)
            decode();
    } catch (const std::bad_alloc&) {
        fail(CodecError::Reason::tooLarge);
    }
    for (; count > 0; --count, out += stride)
        copyRow(nextRow_++, out);
}

void HeifDecoder::copyRow(std::int64_t y, std::byte* out) const
{
    const std::byte* row = pixels_ + static_cast<std::size_t>(y) * pixelStride_;
    if (format_.bitsPerComponent == 16) {
        scaleRow(row, out);
        return;
    }
    std::memcpy(out, row, static_cast<std::size_t>(size_.width * format_.bytesPerPixel()));
    if (isPremultiplied_)
        unpremultiply8(out, size_.width);
}

void HeifDecoder::scaleRow(const std::byte* row, std::byte* out) const
{
    const std::uint32_t most = (1U << bits_) - 1;
    const int channels = format_.channels();
    const std::int64_t count = size_.width * channels;
    const auto sample = [&](std::int64_t i) {
        return std::min(most, std::to_integer<std::uint32_t>(row[2 * i]) |
                                  std::to_integer<std::uint32_t>(row[2 * i + 1]) << 8);
    };
    for (std::int64_t i = 0; i < count; ++i) {
        std::uint32_t value = sample(i);
        if (isPremultiplied_ && i % channels != channels - 1)
            value = withoutAlpha(value, sample(i - i % channels + channels - 1), most);
        const auto scaled = static_cast<std::uint16_t>((value * 65'535 + most / 2) / most);
        std::memcpy(out + 2 * i, &scaled, 2);
    }
}

} // namespace

std::unique_ptr<ImageDecoder> openHeifDecoder(const ByteSource& source, const DecodeOptions& options)
{
    const PixelSize declared = checkHeifBoxes(source);
    if (declared.longestSide() > largestSide)
        return std::make_unique<OversizeDecoder>(declared);
    try {
        return std::make_unique<HeifDecoder>(source, options);
    } catch (const std::bad_alloc&) {
        fail(CodecError::Reason::tooLarge);
    }
}

} // namespace ferrow
