// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ExifBlock.h"
#include "Platform/Codecs/HeifHandles.h"
#include "Platform/Codecs/ImageEncoder.h"

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <string>
#include <thread>

namespace ferrow {
namespace {

/// Chosen by measurement: docs/heic-encoder.md.
constexpr const char* preset = "ultrafast";

/// Pictures thinner than this, in pixels, are given coding blocks of this size. The library's own choice of smaller
/// ones is not what HEVC allows, and refused by the encoder, where the other side is longer than some 4,000
/// pixels.
constexpr std::int64_t thinnestSide = 32;

/// Threads of one encoder. Two exports run at once as a rule, so that each gets half of the machine, and more than
/// four gain little.
std::string encodingThreads()
{
    return std::to_string(std::clamp(std::thread::hardware_concurrency() / 2, 1U, 4U));
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
    void makeEncoder();
    void makeImage();
    void setColorSpace();

    ByteSink& sink_;
    EncodeOptions options_;
    heif::Context context_;
    heif::Encoder encoder_;
    heif::Image image_;
    std::byte* pixels_ = nullptr;
    std::size_t pixelStride_ = 0;
    std::int64_t nextRow_ = 0;
};

HeifEncoder::HeifEncoder(ByteSink& sink, const EncodeOptions& options)
    : sink_(sink), options_(options), context_(heif_context_alloc())
{
    if (!context_ || options.size.width < 1 || options.size.height < 1 || options.size.longestSide() > heifMaximumSide)
        throw EncoderError{};
    makeEncoder();
    makeImage();
}

void HeifEncoder::makeEncoder()
{
    if (heif_have_encoder_for_format(heif_compression_HEVC) == 0)
        throw EncoderError{.isEncoderMissing = true};
    heif_encoder* encoder = nullptr;
    check(heif_context_get_encoder_for_format(context_.get(), heif_compression_HEVC, &encoder));
    encoder_.reset(encoder);
    const double quality = std::clamp(options_.quality, 0.0, 1.0);
    check(heif_encoder_set_lossy_quality(encoder, int(std::lround(quality * 100))));
    check(heif_encoder_set_parameter_string(encoder, "preset", preset));
    // The one sampling of colors that every reader of the format decodes.
    check(heif_encoder_set_parameter_string(encoder, "chroma", "420"));
    check(heif_encoder_set_parameter_string(encoder, "x265:pools", encodingThreads().c_str()));
    if (options_.size.shorterSide() < thinnestSide)
        check(heif_encoder_set_parameter_string(encoder, "x265:ctu", std::to_string(thinnestSide).c_str()));
}

void HeifEncoder::makeImage()
{
    const auto width = int(options_.size.width);
    const auto height = int(options_.size.height);
    heif_image* image = nullptr;
    check(heif_image_create(width, height, heif_colorspace_RGB,
                            options_.format.hasAlpha() ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB,
                            &image));
    image_.reset(image);
    check(heif_image_add_plane(image, heif_channel_interleaved, width, height, 8));
    int stride = 0;
    pixels_ = reinterpret_cast<std::byte*>(heif_image_get_plane(image, heif_channel_interleaved, &stride));
    pixelStride_ = std::size_t(stride);
    if (!pixels_)
        throw EncoderError{};
    setColorSpace();
}

/// The profile goes into the container, the coding of colors (and the nearest named space) into the coded stream.
/// Named spaces beside a profile in the container keep some readers from opening the file.
void HeifEncoder::setColorSpace()
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
    check(heif_image_set_nclx_color_profile(image_.get(), codePoints.get()));

    const QByteArray& icc = options_.profile.icc();
    check(heif_image_set_raw_color_profile(image_.get(), "prof", icc.constData(), std::size_t(icc.size())));
}

void HeifEncoder::writeRows(std::int64_t count, const std::byte* rows, std::size_t stride)
{
    const auto rowBytes = std::size_t(options_.size.width * options_.format.bytesPerPixel());
    for (; count > 0; --count, ++nextRow_, rows += stride)
        std::memcpy(pixels_ + std::size_t(nextRow_) * pixelStride_, rows, rowBytes);
}

void HeifEncoder::finish()
{
    heif_image_handle* handle = nullptr;
    check(heif_context_encode_image(context_.get(), image_.get(), encoder_.get(), nullptr, &handle));
    const heif::Handle owner(handle);
    image_.reset();
    const QByteArray exif =
        makeExifBlock(options_.metadata, options_.size, options_.profile.isEquivalentTo(ColorProfile::sRGB()));
    check(heif_context_add_exif_metadata(context_.get(), handle, exif.constData(), int(exif.size())));
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
