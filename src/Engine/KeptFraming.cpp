// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/KeptFraming.h"

#include "Engine/CodecErrors.h"
#include "Engine/Compositor.h"
#include "Engine/PhotoRows.h"
#include "Engine/PictureSummary.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Codecs/JpegFraming.h"

namespace ferrow::Engine {

namespace {

/// Whether the photo is seen as it is, within a frame that hides what is behind it.
bool leavesPhotoWhole(const Composition& composition)
{
    return isBackgroundOpaque(composition) && !composition.blurredPhoto && !(composition.photoArea.radius > 0) &&
           composition.photoSize == PixelSize();
}

} // namespace

std::optional<PictureSummary> frameKeepingData(const FrameRequest& request, ByteSink& sink, const std::stop_token& stop,
                                               JobObserver& observer)
{
    const Composition& composition = request.composition;
    const OpenedPhoto photo = openPhoto(request.source, {.tolerance = Tolerance::strict});
    const PixelSize size = photo.uprightSize();
    if (size != request.expectedSize)
        throw ImagePipelineError(ImagePipelineError::FullResolutionMismatch{request.expectedSize, size});
    const std::optional<CodedData> data = codedDataOf(photo);
    if (request.format != ExportFormat::jpeg || !data || !data->keepsColors[std::size_t(composition.colorProfile)] ||
        !leavesPhotoWhole(composition))
        throw CannotKeep{};
    EncodeOptions options;
    options.size = composition.canvasSize;
    options.profile =
        outputColorSpace(photo.decoder->profile(), photo.decoder->format().model, composition.colorProfile);
    options.metadata = request.metadata;
    if (composition.photoX < 0 || composition.photoY < 0 || composition.photoX + size.width > options.size.width ||
        composition.photoY + size.height > options.size.height)
        throw ImagePipelineError(ImagePipelineError::renderingFailed);

    translated(Stage::pixels, [&] {
        JpegFraming framing(*photo.source, photo.orientation);
        const PixelSize stored = photo.decoder->storedSize();
        observer.headerRead({.pixels = stored.width * stored.height, .bytes = framing.heldBytes()});
        Compositor frame(composition, nullptr, options.profile, true);
        frame.leaveOpen(size);
        std::int64_t rowsLeft = options.size.height;
        JpegFraming::Cover cover;
        cover.columnsOverPhoto = [&](std::int64_t first, std::int64_t count) {
            return frame.columnsOverPhoto(first, count);
        };
        cover.read = [&](std::int64_t count, std::byte* out, std::size_t stride) {
            throwIfCanceled(stop);
            observer.beforeBand();
            frame.compose(count, out, stride);
            rowsLeft -= count;
            if (rowsLeft == 0)
                observer.lastRowComposed();
        };
        framing.write({composition.photoX, composition.photoY, size}, cover, sink, options);
    });
    if (!request.summarizes)
        return std::nullopt;
    return summaryToBeWritten(options.size, rgb8, options.profile);
}

} // namespace ferrow::Engine
