// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ImageExporter.h"

#include "Engine/Answerer.h"
#include "Engine/PictureSummary.h"
#include "Imaging/ImageLoader.h"
#include "Imaging/ImageRenderer.h"
#include "Imaging/KeptData.h"
#include "Models/ErrorTexts.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/VolumeNames.h"
#include "Platform/Pixels/Resampler.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace ferrow::ImageExporter {

namespace {

/// Whether `destination` may be `source` in other letters: not every volume that folds case gives a file the same
/// number under all its names.
bool mayBeFoldedName(const FileUrl& source, const FileUrl& destination)
{
    const FileUrl folder = destination.deletingLastPathComponent();
    return VolumeNames::folded(source.lastPathComponentBytes()) ==
               VolumeNames::folded(destination.lastPathComponentBytes()) &&
           isSameFile(source.deletingLastPathComponent(), folder) && lookUp(destination) == 0 &&
           VolumeNames::mayFold(folder);
}

void guardDestination(const FileUrl& source, const FileUrl& destination, bool replaceExisting)
{
    if (!source.hasFileSystemRepresentation() || !destination.hasFileSystemRepresentation())
        throw ImagePipelineError(ImagePipelineError::OutputWriteFailed{});
    if (resolvingLinks(source) == resolvingLinks(destination) || isSameFile(source, destination) ||
        mayBeFoldedName(source, destination))
        throw ImagePipelineError(ImagePipelineError::destinationIsSource);
    if (!replaceExisting && lookUp(destination) == 0)
        throw ImagePipelineError(ImagePipelineError::destinationExists);
}

OutputMetadata outputMetadata(const PhotoMetadata& metadata)
{
    OutputMetadata output;
    output.make = metadata.cameraMake;
    output.model = metadata.cameraModel;
    output.artist = metadata.artist;
    output.copyright = metadata.copyright;
    if (metadata.captureDate)
        output.dateTimeOriginal =
            QLocale::c().toString(metadata.captureDate->toLocalTime(), QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    return output;
}

double usableQuality(double quality)
{
    return std::isnan(quality) ? 0.0 : std::clamp(quality, 0.0, 1.0);
}

/// Makes the file that will be the output. What may keep it from its name is found here, before the photo is framed.
/// Throws SystemError.
StagedFile stage(const FileUrl& destination, bool replaceExisting, const ExportSettings& settings)
{
    StagedFile staged =
        StagedFile::create(destination.deletingLastPathComponent(), filenameExtension(settings.format).toUtf8());
    const QByteArray name = destination.lastPathComponentBytes();
    staged.checkName(name);
    if (replaceExisting)
        staged.takeModeOf(name);
    return staged;
}

ImagePipelineError writeFailed(int errorNumber, const FileUrl& destination, const ExportSettings& settings)
{
    return ImagePipelineError::OutputWriteFailed{rawValue(settings.format), SystemError{errorNumber, destination}};
}

void flush(StagedFile& staged, const FileUrl& destination, const ExportSettings& settings)
try {
    staged.flushAndClose();
} catch (const SystemError& error) {
    throw writeFailed(error.errorNumber, destination, settings);
}

OpenedFile reopened(const StagedFile& staged, const FileUrl& destination, const ExportSettings& settings)
try {
    return staged.reopened();
} catch (const SystemError& error) {
    throw writeFailed(error.errorNumber, destination, settings);
}

void placeOutput(StagedFile& staged, const FileUrl& destination, bool replaceExisting, const ExportSettings& settings)
{
    int errorNumber = 0;
    switch (staged.place(destination.lastPathComponentBytes(), replaceExisting, &errorNumber)) {
    case PlacementResult::placed:
        return;
    case PlacementResult::destinationExists:
        throw ImagePipelineError(ImagePipelineError::destinationExists);
    case PlacementResult::failed:
        throw writeFailed(errorNumber, destination, settings);
    }
}

/// What the engine has to know for all pixels and for some. `source` stays open while it answers.
template <typename Request>
Request requestFor(const OpenedFile& source, const ImportedPhoto& photo, const RenderRecipe& recipe, const Bitmap& logo,
                   const OutputSize& size, const std::stop_token& stop, const BlockGrid& grid = {})
{
    Request request;
    request.source = {source.descriptor(), source.size()};
    request.expectedSize = photo.pixelSize;
    request.composition =
        ImageRenderer::exportComposition(photo.pixelSize, recipe, photo.captionMetadata(), logo, size, stop, grid);
    return request;
}

Engine::FrameRequest frameRequest(const OpenedFile& source, const ImportedPhoto& photo, const RenderRecipe& recipe,
                                  const ExportSettings& settings, const std::stop_token& stop,
                                  const std::optional<FileUrl>& managedLogoDirectory)
{
    const Bitmap logo = ManagedLogoStore::loadIfEnabled(recipe.logo, managedLogoDirectory, stop).value_or(Bitmap());
    const std::optional<BlockGrid> grid = keptGrid(photo, recipe, settings);
    auto request =
        requestFor<Engine::FrameRequest>(source, photo, recipe, logo, settings.size, stop, grid.value_or(BlockGrid()));
    request.keepsPhotoData = grid.has_value();
    request.format = settings.format;
    request.quality = usableQuality(settings.quality);
    request.depth = settings.writtenDepth();
    request.metadata = outputMetadata(photo.metadata);
    request.summarizes = settings.checksWritten;
    return request;
}

WrittenPhoto frame(Engine::FrameRequest request, const OpenedFile& source, const std::stop_token& stop)
{
    WrittenPhoto written;
    try {
        written.summary = Engine::answerer().frame(request, stop);
        written.data = request.keepsPhotoData ? PhotoData::kept : PhotoData::codedAnew;
    } catch (const CannotKeep&) {
        request.keepsPhotoData = false;
        if (const int errorNumber = emptied(request.outputDescriptor))
            throw ImagePipelineError(
                ImagePipelineError::OutputWriteFailed{rawValue(request.format), SystemError{errorNumber, {}}});
        written.summary = Engine::answerer().frame(request, stop);
    }
    // If somebody wrote to the file meanwhile, its pixels may be those of two pictures.
    if (source.currentIdentity() != source.identity())
        throw ImagePipelineError(ImagePipelineError::decodingFailed);
    return written;
}

Bitmap logoIfThere(const std::optional<LogoConfiguration>& configuration, const std::stop_token& stop)
{
    try {
        return ManagedLogoStore::loadIfEnabled(configuration, {}, stop).value_or(Bitmap());
    } catch (const LogoAssetError&) {
        return {};
    } catch (const SystemError&) {
        return {};
    }
}

Bitmap reduced(const Bitmap& picture, double scale)
{
    if (scale >= 1 || picture.isNull())
        return picture;
    const auto length = [scale](std::int64_t pixels) {
        return std::max<std::int64_t>(1, std::llround(double(pixels) * scale));
    };
    return Resampler::scaled(picture, {length(picture.size().width), length(picture.size().height)});
}

} // namespace

WrittenPhoto writePhoto(const OpenedFile& source, const ImportedPhoto& photo, const RenderRecipe& recipe,
                        const ExportSettings& settings, int outputDescriptor, const std::stop_token& stop,
                        const std::optional<FileUrl>& managedLogoDirectory)
{
    Engine::FrameRequest request = frameRequest(source, photo, recipe, settings, stop, managedLogoDirectory);
    request.outputDescriptor = outputDescriptor;
    return frame(request, source, stop);
}

void checkWritten(const OpenedFile& written, const Engine::PictureSummary& composed, const ExportSettings& settings,
                  const std::stop_token& stop)
{
    bool isSame = false;
    try {
        const Engine::PictureSummary read =
            Engine::answerer().readBack({{written.descriptor(), written.size()}, settings.format}, stop);
        isSame = Engine::isSamePicture(composed, read, settings.format, usableQuality(settings.quality));
    } catch (const ImagePipelineError& error) {
        if (error == ImagePipelineError(ImagePipelineError::workerUnavailable))
            throw;
    }
    if (!isSame)
        throw ImagePipelineError(ImagePipelineError::writtenFileDiffers);
}

PhotoData exportPhoto(const BatchExportJob& job, const std::stop_token& stop,
                      const std::optional<FileUrl>& managedLogoDirectory, const std::function<void()>& framed)
{
    const ImportedPhoto& photo = job.photo;
    throwIfCanceled(stop);
    guardDestination(photo.url, job.destination, job.replaceExisting);
    const OpenedFile source = ImageLoader::openSource(photo.url);
    // All that can fail without the output comes before there is one.
    Engine::FrameRequest request = frameRequest(source, photo, job.recipe, job.settings, stop, managedLogoDirectory);
    StagedFile staged = stage(job.destination, job.replaceExisting, job.settings);
    request.outputDescriptor = staged.descriptor();
    WrittenPhoto written;
    try {
        written = frame(request, source, stop);
    } catch (ImagePipelineError& error) {
        // Who writes to a descriptor does not know the file that the user does.
        if (auto* failed = std::get_if<ImagePipelineError::OutputWriteFailed>(&error.value); failed && failed->reason)
            failed->reason->file = job.destination;
        throw;
    }
    if (framed && !written.summary)
        framed();
    flush(staged, job.destination, job.settings);
    if (written.summary)
        checkWritten(reopened(staged, job.destination, job.settings), *written.summary, job.settings, stop);
    placeOutput(staged, job.destination, job.replaceExisting, job.settings);
    return written.data;
}

Bitmap region(const ImportedPhoto& photo, const RenderRecipe& recipe, const QRect& region, double scale,
              const std::stop_token& stop)
{
    const OpenedFile source = ImageLoader::openSource(photo.url);
    auto request = requestFor<Engine::RegionRequest>(source, photo, recipe, logoIfThere(recipe.logo, stop), {}, stop);
    request.x = region.x();
    request.y = region.y();
    request.size = {region.width(), region.height()};
    const Bitmap pixels = Engine::answerer().composeRegion(request, stop);
    throwIfCanceled(stop);
    return reduced(pixels, scale);
}

} // namespace ferrow::ImageExporter
