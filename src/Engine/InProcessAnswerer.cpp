// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/InProcessAnswerer.h"

#include "Engine/Compositor.h"
#include "Engine/KeptFraming.h"
#include "Engine/MemoryNeed.h"
#include "Engine/PhotoRows.h"
#include "Engine/PictureSummary.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Pixels/AlphaArithmetic.h"
#include "Platform/Pixels/Resampler.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ferrow::Engine {

namespace {

std::int64_t bandRows(std::size_t rowBytes, std::int64_t height)
{
    return std::clamp<std::int64_t>(bandBytes / std::int64_t(rowBytes), 16, std::max<std::int64_t>(height, 16));
}

OutputType outputType(ExportFormat format)
{
    switch (format) {
    case ExportFormat::jpeg:
        return OutputType::jpeg;
    case ExportFormat::png:
        return OutputType::png;
    case ExportFormat::tiff:
        return OutputType::tiff;
    case ExportFormat::heic:
        break;
    }
    return OutputType::heif;
}

OpenedPhoto openExpectedPhoto(const SourceFile& source, PixelSize expected, PixelSize drawnAt)
{
    OpenedPhoto photo = openPhoto(source, decodingFor(drawnAt));
    if (photo.uprightSize() != expected)
        throw ImagePipelineError(ImagePipelineError::FullResolutionMismatch{expected, photo.uprightSize()});
    return photo;
}

/// An opened photo together with the compositor that frames it.
struct FramedPhoto {
    OpenedPhoto photo;
    ColorProfile canvas;
    PhotoRows rows;
    Compositor compositor;

    /// `bits` are those of the canvas's components: 8 or 16.
    FramedPhoto(const SourceFile& source, PixelSize expected, const Composition& composition, int bits = 8)
        : photo(openExpectedPhoto(source, expected, composition.photoSize)),
          canvas(outputColorSpace(photo.decoder->profile(), photo.decoder->format().model, composition.colorProfile)),
          rows(photo, canvas, composition.photoSize, bits),
          compositor(composition, &rows, canvas, needsAlpha(composition, rows.format()), bits)
    {
        if (composition.blurredPhoto)
            blurredDimension =
                BlurredPicture::enoughDimension(expected, compositor.size(), composition.blurredPhoto->sigma);
    }

    /// Bytes held at once by addBackground(), and then by the rows.
    [[nodiscard]] std::int64_t memoryNeed() const
    {
        const std::int64_t background =
            blurredDimension > 0 ? MemoryNeed::ofReducedPicture(photo, blurredDimension) : 0;
        return std::max(background, MemoryNeed::ofRows(photo, rows.size(), rows.format()));
    }

    /// Reads the photo once more, reduced, where it is its own background.
    void addBackground(const SourceFile& source, const Composition& composition, const std::stop_token& stop,
                       JobObserver& observer)
    {
        if (!composition.blurredPhoto)
            return;
        OpenedPhoto again = openPhoto(source, {.enoughDimension = blurredDimension, .tolerance = Tolerance::strict});
        const Bitmap reduced = reducedPicture(again, blurredDimension, canvas, [&] {
            throwIfCanceled(stop);
            observer.beforeBand();
        });
        compositor.setBackground(BlurredPicture(reduced, photo.uprightSize(), compositor.size(),
                                                composition.blurredPhoto->sigma, composition.blurredPhoto->light));
    }

    std::int64_t blurredDimension = 0; ///< Of the reduced photo that is blurred.
};

/// `summer`, where there is one, adds up what the encoder gets.
void writeBands(FramedPhoto& framed, ImageEncoder& encoder, PixelFormat outputFormat, PictureSummer* summer,
                const std::stop_token& stop, JobObserver& observer)
{
    const PixelSize size = framed.compositor.size();
    const bool flatten = framed.compositor.format().hasAlpha() && !outputFormat.hasAlpha();
    const auto stride = std::size_t(size.width) * std::size_t(framed.compositor.format().bytesPerPixel());
    const std::int64_t band = bandRows(stride, size.height);
    std::vector<std::byte> rows(stride * std::size_t(band));
    for (std::int64_t y = 0; y < size.height; y += band) {
        throwIfCanceled(stop);
        observer.beforeBand();
        const std::int64_t count = std::min(band, size.height - y);
        framed.compositor.compose(count, rows.data(), stride);
        if (y + count == size.height)
            observer.lastRowComposed();
        if (flatten)
            for (std::int64_t i = 0; i < count; ++i)
                flattenOverWhite(rows.data() + std::size_t(i) * stride, rows.data() + std::size_t(i) * stride,
                                 std::size_t(size.width));
        if (summer)
            summer->add(count, rows.data(), stride);
        encoder.writeRows(count, rows.data(), stride);
    }
}

/// In a color space that is known without reading a profile, for whoever shows it.
Bitmap viewable(const Bitmap& picture)
{
    return inColorSpace(picture, viewingColorSpace(picture.profile(), ColorModel::rgb));
}

Bitmap composedRegion(const RegionRequest& request, const std::stop_token& stop, JobObserver& observer)
{
    FramedPhoto framed(request.source, request.expectedSize, request.composition);
    observer.headerRead(jobSize(framed.photo, framed.memoryNeed()));
    framed.addBackground(request.source, request.composition, stop, observer);
    const PixelSize canvas = framed.compositor.size();
    const std::int64_t left = std::clamp<std::int64_t>(request.x, 0, canvas.width);
    const std::int64_t top = std::clamp<std::int64_t>(request.y, 0, canvas.height);
    const std::int64_t width = std::min(request.size.width, canvas.width - left);
    const std::int64_t height = std::min(request.size.height, canvas.height - top);
    Bitmap region({width, height}, framed.compositor.format(), framed.canvas);
    if (region.isNull())
        return region;

    const auto pixelBytes = std::size_t(framed.compositor.format().bytesPerPixel());
    const std::size_t stride = std::size_t(canvas.width) * pixelBytes;
    const std::int64_t band = bandRows(stride, canvas.height);
    std::vector<std::byte> rows(stride * std::size_t(band));
    for (std::int64_t y = 0; y < top + height; y += band) {
        throwIfCanceled(stop);
        observer.beforeBand();
        const std::int64_t count = std::min(band, top + height - y);
        framed.compositor.compose(count, rows.data(), stride);
        for (std::int64_t i = std::max<std::int64_t>(0, top - y); i < count; ++i)
            std::memcpy(region.row(y + i - top), rows.data() + std::size_t(i) * stride + std::size_t(left) * pixelBytes,
                        std::size_t(width) * pixelBytes);
    }
    return viewable(region);
}

/// The file has no name here: the caller knows it.
ImagePipelineError writingFailed(const QString& formatName, int errorNumber)
{
    return ImagePipelineError::OutputWriteFailed{formatName, SystemError{errorNumber, {}}};
}

} // namespace

InspectAnswer InProcessAnswerer::inspect(const InspectRequest& request, const std::stop_token& stop)
{
    throwIfCanceled(stop);
    OpenedPhoto photo =
        openPhoto(request.source, {.enoughDimension = request.maximumDimension, .tolerance = Tolerance::tolerant});
    InspectAnswer answer;
    answer.type = photo.type;
    answer.storedSize = photo.decoder->storedSize();
    answer.uprightSize = photo.uprightSize();
    answer.properties = photo.properties;
    answer.colorProfileName = photo.decoder->profile().name();
    answer.codedData = codedDataOf(photo);
    if (request.maximumDimension > 0) {
        observer_->headerRead(jobSize(photo, MemoryNeed::ofReducedPicture(photo, request.maximumDimension)));
        answer.picture = reducedPicture(photo, request.maximumDimension,
                                        viewingColorSpace(photo.decoder->profile(), photo.decoder->format().model));
    }
    return answer;
}

std::optional<PictureSummary> InProcessAnswerer::frame(const FrameRequest& request, const std::stop_token& stop)
{
    throwIfCanceled(stop);
    const QString formatName = rawValue(request.format);
    try {
        ByteSink sink(request.outputDescriptor);
        if (request.keepsPhotoData)
            return frameKeepingData(request, sink, stop, *observer_);
        const int bits = componentBits(request.depth);
        FramedPhoto framed(request.source, request.expectedSize, request.composition, bits);
        const bool keepsAlpha = framed.compositor.format().hasAlpha() && request.format != ExportFormat::jpeg;
        const PixelFormat written = rgbFormat(bits, keepsAlpha);
        const std::int64_t encoderBytes =
            MemoryNeed::ofEncoder(request.format, request.composition.canvasSize, written);
        observer_->headerRead(jobSize(framed.photo, framed.memoryNeed() + encoderBytes));
        framed.addBackground(request.source, request.composition, stop, *observer_);
        EncodeOptions options;
        options.size = framed.compositor.size();
        options.format = written;
        options.profile = framed.canvas;
        options.quality = request.quality;
        options.metadata = request.metadata;
        const std::unique_ptr<ImageEncoder> encoder = openEncoder(outputType(request.format), sink, options);
        std::optional<PictureSummer> summer;
        if (request.summarizes)
            summer = summerFor(options.size, options.format, request.format);
        writeBands(framed, *encoder, options.format, summer ? &*summer : nullptr, stop, *observer_);
        framed.rows.finish();
        encoder->finish();
        if (!summer)
            return std::nullopt;
        PictureSummary summary = summaryToBeWritten(options.size, options.format, options.profile);
        summary.pixels = summer->take();
        return summary;
    } catch (const EncoderError& error) {
        if (error.isEncoderMissing)
            throw ImagePipelineError(ImagePipelineError::encoderMissing);
        if (error.errorNumber == 0)
            throw ImagePipelineError(ImagePipelineError::EncodingFailed{formatName});
        throw writingFailed(formatName, error.errorNumber);
    } catch (const InputOutputError& error) {
        throw writingFailed(formatName, error.errorNumber);
    } catch (const std::bad_alloc&) {
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    }
}

PictureSummary InProcessAnswerer::readBack(const ReadBackRequest& request, const std::stop_token& stop)
{
    throwIfCanceled(stop);
    try {
        return readSummary(request, stop, *observer_);
    } catch (const std::bad_alloc&) {
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    }
}

Bitmap InProcessAnswerer::composeRegion(const RegionRequest& request, const std::stop_token& stop)
{
    throwIfCanceled(stop);
    try {
        return composedRegion(request, stop, *observer_);
    } catch (const std::bad_alloc&) {
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    }
}

LogoAnswer InProcessAnswerer::rasterizeLogo(const LogoRequest& request, const std::stop_token& stop)
{
    throwIfCanceled(stop);
    if (!logos_)
        throw LogoAssetError{.value = LogoAssetError::Case::workerUnavailable};
    return logos_(request, *observer_);
}

} // namespace ferrow::Engine
