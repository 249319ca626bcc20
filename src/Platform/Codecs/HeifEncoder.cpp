// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ExifBlock.h"
#include "Platform/Codecs/HeifHandles.h"
#include "Platform/Codecs/HeifTiles.h"
#include "Platform/Codecs/HeifTiling.h"
#include "Platform/Codecs/ImageEncoder.h"

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace ferrow {
namespace {

using heif::tileSide;

/// Chosen by measurement: docs/heic-encoder.md.
constexpr const char* preset = "ultrafast";

/// Pictures thinner than this, in pixels, are given coding blocks of this size. The library's own choice of smaller
/// ones is not what HEVC allows, and refused by the encoder, where the other side is longer than some 4,000
/// pixels.
constexpr std::int64_t thinnestSide = 32;

/// Of a component where more than 8 are wanted. The encoder also takes 12, which few readers of the format do.
constexpr int deepBits = 10;

heif_chroma chromaOf(PixelFormat format)
{
    if (format.bitsPerComponent == 16)
        return format.hasAlpha() ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    return format.hasAlpha() ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
}

/// From 16 bits to the nearest of ten, which the library wants in the lower bits of little-endian words.
void copyDeepRow(const std::uint16_t* in, std::byte* out, std::size_t components)
{
    constexpr std::uint32_t most = (1U << deepBits) - 1;
    for (std::size_t i = 0; i < components; ++i, out += 2)
        qToLittleEndian(std::uint16_t((in[i] * most + 32767) / 65535), out);
}

std::int64_t tilesAlong(std::int64_t side)
{
    return (side + tileSide - 1) / tileSide;
}

/// Threads of one encoder. Two exports run at once as a rule, so that each gets half of the machine, and more than
/// four gain little.
std::string encodingThreads()
{
    return std::to_string(std::clamp(std::thread::hardware_concurrency() / 2, 1U, 4U));
}

/// The encoder that this file's settings were measured with.
bool isPreferred(const heif_encoder_descriptor* descriptor)
{
    return std::strcmp(heif_encoder_descriptor_get_id_name(descriptor), "x265") == 0;
}

/// The preferred one, or else whichever the library holds best; it is used as that is set up. None where there is none.
const heif_encoder_descriptor* findEncoder()
{
    std::array<const heif_encoder_descriptor*, 8> found{};
    const int count = heif_get_encoder_descriptors(heif_compression_HEVC, nullptr, found.data(), int(found.size()));
    const auto end = found.begin() + std::clamp(count, 0, int(found.size()));
    const auto preferred = std::find_if(found.begin(), end, isPreferred);
    return preferred != end ? *preferred : found.front();
}

void check(const heif_error& error)
{
    if (error.code != heif_error_Ok)
        throw EncoderError{};
}

/// What the library writes to, and why that failed.
struct Writer {
    ByteSink& sink;
    int errorNumber = 0;
};

heif_error write(heif_context*, const void* data, std::size_t size, void* user)
{
    auto& writer = *static_cast<Writer*>(user);
    try {
        writer.sink.write({static_cast<const std::byte*>(data), size});
        return {heif_error_Ok, heif_suberror_Unspecified, "Success"};
    } catch (const InputOutputError& error) {
        writer.errorNumber = error.errorNumber;
    } catch (...) {
    }
    return {heif_error_Encoding_error, heif_suberror_Cannot_write_output_data, "Cannot write"};
}

class HeifEncoder final : public ImageEncoder {
public:
    HeifEncoder(ByteSink& sink, const EncodeOptions& options);

    void writeRows(std::int64_t count, const std::byte* rows, std::size_t stride) override;
    void finish() override;

private:
    /// The library's memory for the pixels of a picture or tile.
    struct Target {
        heif::Image image;
        std::byte* pixels = nullptr;
        std::size_t stride = 0;
    };

    void makeEncoder();
    [[nodiscard]] Target makeTarget(PixelSize size) const;
    void setColorSpace(heif_image* image) const;
    void encodeTiles();
    void encodeWhole();

    ByteSink& sink_;
    EncodeOptions options_;
    std::size_t rowBytes_;
    heif::Context context_;
    heif::Encoder encoder_;
    heif::Handle handle_;         ///< Of the whole picture, once the library knows of it.
    Target whole_;                ///< Of a picture that is coded as one.
    std::vector<std::byte> rows_; ///< Of one that is coded in tiles: those of one row of tiles.
    std::int64_t nextRow_ = 0;
};

HeifEncoder::HeifEncoder(ByteSink& sink, const EncodeOptions& options)
    : sink_(sink), options_(options), rowBytes_(std::size_t(options.size.width * options.format.bytesPerPixel())),
      context_(heif_context_alloc())
{
    if (!context_ || options.size.width < 1 || options.size.height < 1 || options.size.longestSide() > heifMaximumSide)
        throw EncoderError{};
    makeEncoder();
    if (!heif::isTiled(options.size, options.format)) {
        whole_ = makeTarget(options.size);
        return;
    }
    rows_.resize(rowBytes_ * std::size_t(tileSide));
    heif_image_handle* grid = nullptr;
    const heif_error error = heif::addGrid(context_.get(), options.size, tilesAlong(options.size.width),
                                           tilesAlong(options.size.height), &grid);
    handle_.reset(grid);
    check(error);
}

void HeifEncoder::makeEncoder()
{
    const heif_encoder_descriptor* descriptor = findEncoder();
    if (!descriptor)
        throw EncoderError{.isEncoderMissing = true};
    heif_encoder* encoder = nullptr;
    check(heif_context_get_encoder(context_.get(), descriptor, &encoder));
    encoder_.reset(encoder);
    const double quality = std::clamp(options_.quality, 0.0, 1.0);
    check(heif_encoder_set_lossy_quality(encoder, int(std::lround(quality * 100))));
    if (!isPreferred(descriptor))
        return;
    check(heif_encoder_set_parameter_string(encoder, "preset", preset));
    // The one sampling of colors that every reader of the format decodes.
    check(heif_encoder_set_parameter_string(encoder, "chroma", "420"));
    check(heif_encoder_set_parameter_string(encoder, "x265:pools", encodingThreads().c_str()));
    if (options_.size.shorterSide() < thinnestSide)
        check(heif_encoder_set_parameter_string(encoder, "x265:ctu", std::to_string(thinnestSide).c_str()));
}

HeifEncoder::Target HeifEncoder::makeTarget(PixelSize size) const
{
    heif_image* image = nullptr;
    check(heif_image_create(int(size.width), int(size.height), heif_colorspace_RGB, chromaOf(options_.format), &image));
    Target target{heif::Image(image)};
    const int bits = options_.format.bitsPerComponent == 16 ? deepBits : 8;
    check(heif_image_add_plane(image, heif_channel_interleaved, int(size.width), int(size.height), bits));
    int stride = 0;
    target.pixels = reinterpret_cast<std::byte*>(heif_image_get_plane(image, heif_channel_interleaved, &stride));
    target.stride = std::size_t(stride);
    if (!target.pixels)
        throw EncoderError{};
    setColorSpace(image);
    return target;
}

/// The profile goes into the container, the coding of colors (and the nearest named space) into the coded stream.
/// Named spaces beside a profile in the container keep some readers from opening the file.
void HeifEncoder::setColorSpace(heif_image* image) const
{
    const heif::CodePoints codePoints(heif_nclx_color_profile_alloc());
    if (!codePoints)
        throw EncoderError{};
    const bool isP3 = options_.profile.isEquivalentTo(ColorProfile::displayP3());
    const bool isKnown = isP3 || options_.profile.isEquivalentTo(ColorProfile::sRGB());
    codePoints->color_primaries = isP3      ? heif_color_primaries_SMPTE_EG_432_1
                                  : isKnown ? heif_color_primaries_ITU_R_BT_709_5
                                            : heif_color_primaries_unspecified;
    codePoints->transfer_characteristics =
        isKnown ? heif_transfer_characteristic_IEC_61966_2_1 : heif_transfer_characteristic_unspecified;
    codePoints->matrix_coefficients = heif_matrix_coefficients_ITU_R_BT_601_6;
    codePoints->full_range_flag = 1;
    check(heif_image_set_nclx_color_profile(image, codePoints.get()));

    const QByteArray& icc = options_.profile.icc();
    check(heif_image_set_raw_color_profile(image, "prof", icc.constData(), std::size_t(icc.size())));
}

void HeifEncoder::writeRows(std::int64_t count, const std::byte* rows, std::size_t stride)
{
    for (; count > 0; --count, rows += stride) {
        if (rows_.empty()) {
            std::byte* const out = whole_.pixels + std::size_t(nextRow_++) * whole_.stride;
            if (options_.format.bitsPerComponent == 8)
                std::memcpy(out, rows, rowBytes_);
            else
                copyDeepRow(reinterpret_cast<const std::uint16_t*>(rows), out, rowBytes_ / 2);
            continue;
        }
        std::memcpy(rows_.data() + std::size_t(nextRow_++ % tileSide) * rowBytes_, rows, rowBytes_);
        if (nextRow_ % tileSide == 0 || nextRow_ == options_.size.height)
            encodeTiles();
    }
}

/// All tiles have one size: beyond the picture's edges the last pixels are repeated.
void HeifEncoder::encodeTiles()
{
    const std::int64_t row = (nextRow_ - 1) / tileSide;
    const std::int64_t lastRow = (nextRow_ - 1) % tileSide;
    const auto pixelBytes = std::size_t(options_.format.bytesPerPixel());
    for (std::int64_t column = 0; column < tilesAlong(options_.size.width); ++column) {
        const Target tile = makeTarget({tileSide, tileSide});
        const auto shown = std::size_t(std::min(tileSide, options_.size.width - column * tileSide));
        for (std::int64_t y = 0; y < tileSide; ++y) {
            std::byte* out = tile.pixels + std::size_t(y) * tile.stride;
            std::memcpy(out,
                        rows_.data() + std::size_t(std::min(y, lastRow)) * rowBytes_ +
                            std::size_t(column * tileSide) * pixelBytes,
                        shown * pixelBytes);
            for (std::size_t x = shown; x < std::size_t(tileSide); ++x)
                std::memcpy(out + x * pixelBytes, out + (shown - 1) * pixelBytes, pixelBytes);
        }
        check(heif::addTile(context_.get(), handle_.get(), column, row, tile.image.get(), encoder_.get()));
    }
}

void HeifEncoder::encodeWhole()
{
    heif_image_handle* handle = nullptr;
    check(heif_context_encode_image(context_.get(), whole_.image.get(), encoder_.get(), nullptr, &handle));
    handle_.reset(handle);
    whole_ = {};
    if (options_.format.bitsPerComponent == 16 && heif_image_handle_get_luma_bits_per_pixel(handle) != deepBits)
        throw EncoderError{}; // Not every encoder has as many.
}

void HeifEncoder::finish()
{
    if (rows_.empty())
        encodeWhole();
    rows_ = {};
    const QByteArray exif =
        makeExifBlock(options_.metadata, options_.size, options_.profile.isEquivalentTo(ColorProfile::sRGB()));
    check(heif_context_add_exif_metadata(context_.get(), handle_.get(), exif.constData(), int(exif.size())));
    Writer writer{sink_};
    heif_writer functions{1, write};
    if (heif_context_write(context_.get(), &functions, &writer).code != heif_error_Ok)
        throw EncoderError{writer.errorNumber};
    try {
        sink_.flush();
    } catch (const InputOutputError& error) {
        throw EncoderError{error.errorNumber};
    }
}

} // namespace

std::unique_ptr<ImageEncoder> openHeifEncoder(ByteSink& sink, const EncodeOptions& options)
{
    return std::make_unique<HeifEncoder>(sink, options);
}

} // namespace ferrow
