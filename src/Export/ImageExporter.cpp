// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ImageExporter.h"

#include "Engine/Answerer.h"
#include "Export/VolumeNames.h"
#include "Imaging/ImageLoader.h"
#include "Imaging/ImageRenderer.h"
#include "Models/ErrorTexts.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FilePlacement.h"

#include <QLocale>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
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

/// Whether `destination` may be `source` in other letters: not every volume that folds case gives a file the same
/// number under all its names.
bool mayBeFoldedName(const FileUrl& source, const FileUrl& destination)
{
    const FileUrl folder = destination.deletingLastPathComponent();
    return VolumeNames::folded(source.lastPathComponentBytes()) ==
               VolumeNames::folded(destination.lastPathComponentBytes()) &&
           isSameFile(source.deletingLastPathComponent(), folder) && exists(destination) &&
           VolumeNames::mayFold(folder);
}

void guardDestination(const FileUrl& source, const FileUrl& destination, bool replaceExisting)
{
    if (!source.hasFileSystemRepresentation() || !destination.hasFileSystemRepresentation())
        throw ImagePipelineError(ImagePipelineError::OutputWriteFailed{});
    if (resolved(source) == resolved(destination) || isSameFile(source, destination) ||
        mayBeFoldedName(source, destination))
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

/// The file that will be the output, with all that can go wrong with it before the photo is framed behind it. Throws
/// SystemError.
StagedFile stage(const FileUrl& destination, bool replaceExisting, const ExportSettings& settings)
{
    StagedFile staged =
        StagedFile::create(destination.deletingLastPathComponent(), filenameExtension(settings.format).toUtf8());
    const QByteArray name = destination.lastPathComponentBytes();
    staged.checkName(name);
    if (replaceExisting && S_ISDIR(staged.takeModeOf(name)))
        throw SystemError{EISDIR, destination};
    return staged;
}

ImagePipelineError writeFailed(int errorNumber, const FileUrl& destination, const ExportSettings& settings)
{
    return ImagePipelineError::OutputWriteFailed{rawValue(settings.format), SystemError{errorNumber, destination}};
}

/// The engine writes to a descriptor: what failed there is told of the file that the user knows.
void frame(const Engine::FrameRequest& request, const FileUrl& destination, const std::stop_token& stop)
try {
    Engine::answerer().frame(request, stop);
} catch (ImagePipelineError& error) {
    if (auto* failed = std::get_if<ImagePipelineError::OutputWriteFailed>(&error.value); failed && failed->reason)
        failed->reason->file = destination;
    throw;
}

void flush(StagedFile& staged, const FileUrl& destination, const ExportSettings& settings)
try {
    staged.flushAndClose();
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

    StagedFile staged = stage(destination, replaceExisting, settings);
    request.outputDescriptor = staged.descriptor();
    frame(request, destination, stop);
    // Pixels of a file that somebody wrote to meanwhile may be of two minds.
    if (source.currentIdentity() != source.identity())
        throw ImagePipelineError(ImagePipelineError::decodingFailed);
    flush(staged, destination, settings);
    placeOutput(staged, destination, replaceExisting, settings);
}

} // namespace ferrow::ImageExporter
