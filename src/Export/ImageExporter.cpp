// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ImageExporter.h"

#include "Engine/Answerer.h"
#include "Imaging/ImageLoader.h"
#include "Imaging/ImageRenderer.h"
#include "Models/ErrorTexts.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FilePlacement.h"

#include <QLocale>

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ferrow::ImageExporter {

namespace {

/// The path with its links resolved as far as they exist: the last component may be missing.
FileUrl resolved(const FileUrl& url)
{
    const FileUrl standardized = url.standardized();
    const auto real = [](const FileUrl& place) {
        const std::unique_ptr<char, decltype(&std::free)> path(::realpath(place.path().constData(), nullptr),
                                                               &std::free);
        return path ? std::optional(FileUrl::fromPath(QByteArray(path.get()))) : std::nullopt;
    };
    if (const auto whole = real(standardized))
        return *whole;
    const auto folder = real(standardized.deletingLastPathComponent());
    return folder ? folder->appending(standardized.lastPathComponentBytes()) : standardized;
}

/// Two spellings of one file on a volume that folds case are seen by their inode alone.
bool isSameFile(const FileUrl& left, const FileUrl& right)
{
    struct stat leftState {};
    struct stat rightState {};
    return ::stat(left.path().constData(), &leftState) == 0 && ::stat(right.path().constData(), &rightState) == 0 &&
           leftState.st_dev == rightState.st_dev && leftState.st_ino == rightState.st_ino;
}

bool exists(const FileUrl& url)
{
    struct stat state {};
    return ::lstat(url.path().constData(), &state) == 0;
}

void guardDestination(const FileUrl& source, const FileUrl& destination, bool replaceExisting)
{
    if (!source.hasFileSystemRepresentation() || !destination.hasFileSystemRepresentation())
        throw ImagePipelineError(ImagePipelineError::OutputWriteFailed{});
    if (resolved(source) == resolved(destination) || isSameFile(source, destination))
        throw ImagePipelineError(ImagePipelineError::destinationIsSource);
    if (!replaceExisting && exists(destination))
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

StagedFile stage(const FileUrl& destination, const ExportSettings& settings)
{
    try {
        return StagedFile::create(destination.deletingLastPathComponent(), filenameExtension(settings.format).toUtf8());
    } catch (const SystemError&) {
        throw ImagePipelineError(ImagePipelineError::EncodingFailed{rawValue(settings.format)});
    }
}

void flush(StagedFile& staged, const ExportSettings& settings)
{
    try {
        staged.flushAndClose();
    } catch (const SystemError&) {
        throw ImagePipelineError(ImagePipelineError::EncodingFailed{rawValue(settings.format)});
    }
}

void placeOutput(const StagedFile& staged, const FileUrl& destination, bool replaceExisting,
                 const ExportSettings& settings)
{
    switch (place(staged.url(), destination, replaceExisting)) {
    case PlacementResult::placed:
        return;
    case PlacementResult::destinationExists:
        throw ImagePipelineError(ImagePipelineError::destinationExists);
    case PlacementResult::failed:
        throw ImagePipelineError(ImagePipelineError::OutputWriteFailed{rawValue(settings.format)});
    }
}

} // namespace

void exportPhoto(const ImportedPhoto& photo, const RenderRecipe& recipe, const ExportSettings& settings,
                 const FileUrl& destination, bool replaceExisting, const std::stop_token& stop,
                 const std::optional<FileUrl>& managedLogoDirectory)
{
    throwIfCancelled(stop);
    guardDestination(photo.url, destination, replaceExisting);
    const OpenedFile source = ImageLoader::openSource(photo.url);
    const Bitmap logo = ManagedLogoStore::loadIfEnabled(recipe.logo, managedLogoDirectory, stop).value_or(Bitmap());

    Engine::FrameRequest request;
    request.source = {source.descriptor(), source.size()};
    request.expectedSize = photo.pixelSize;
    request.composition = ImageRenderer::exportComposition(photo.pixelSize, recipe, photo.metadata, logo, stop);
    request.format = settings.format;
    request.quality = usableQuality(settings.quality);
    request.metadata = outputMetadata(photo.metadata);

    StagedFile staged = stage(destination, settings);
    request.outputDescriptor = staged.descriptor();
    Engine::answerer().frame(request, stop);
    // Pixels of a file that somebody wrote to meanwhile may be of two minds.
    if (source.currentIdentity() != source.identity())
        throw ImagePipelineError(ImagePipelineError::decodingFailed);
    flush(staged, settings);
    placeOutput(staged, destination, replaceExisting, settings);
}

} // namespace ferrow::ImageExporter
