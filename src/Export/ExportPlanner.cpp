// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ExportPlanner.h"

#include "Platform/Base/Cancellation.h"
#include "Platform/Base/Localization.h"
#include "Platform/Base/SystemErrors.h"
#include "Platform/Files/VolumeNames.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <set>
#include <utility>

namespace ferrow {

namespace {

/// What tells places apart. A folder is known by its number, so that a way through links leads to the same one.
class PlaceKeys {
public:
    explicit PlaceKeys(const ExportPlanner& planner) : planner_(planner) {}

    [[nodiscard]] FileUrl of(const FileUrl& place)
    {
        const FileUrl folder = place.deletingLastPathComponent();
        const auto [entry, isNew] = folders_.try_emplace(folder);
        if (isNew)
            entry->second = {keyOf(folder), planner_.foldsNames(folder)};
        const QByteArray name = place.lastPathComponentBytes();
        return entry->second.key.appending(entry->second.folds ? VolumeNames::folded(name) : name);
    }

private:
    struct Folder {
        FileUrl key;
        bool folds = false;
    };

    [[nodiscard]] FileUrl keyOf(const FileUrl& folder) const
    {
        const std::optional<FileNumber> number = planner_.fileNumber(folder);
        if (!number)
            return folder;
        return FileUrl::fromPath('/' + QByteArray::number(quint64(number->device)) + ':' +
                                 QByteArray::number(quint64(number->inode)));
    }

    const ExportPlanner& planner_;
    std::unordered_map<FileUrl, Folder> folders_;
};

/// Where the photo's output goes by the configuration alone. Throws BatchPlanningError.
FileUrl destinationFolder(const FileUrl& photo, const BatchExportConfiguration& configuration)
{
    if (configuration.destinationMode == ExportDestinationMode::chosenFolder) {
        if (!configuration.chosenFolder)
            throw BatchPlanningError::missingDestination;
        return *configuration.chosenFolder;
    }
    const QString name = configuration.sourceSubfolderName.trimmed();
    if (!SafePathComponent::isValid(name))
        throw BatchPlanningError::invalidSubfolder;
    return photo.deletingLastPathComponent().appending(name.toUtf8());
}

/// Makes each folder ready once and remembers how that went: a batch has few folders and many photos, and a folder on a
/// network answers slowly.
class FolderReadiness {
public:
    FolderReadiness(const ExportPlanner& planner, ExportDestinationMode mode) : planner_(planner), mode_(mode) {}

    /// Throws what the operation threw.
    void require(const FileUrl& folder)
    {
        const auto [entry, isNew] = failures_.try_emplace(folder);
        if (isNew)
            entry->second = prepare(folder);
        if (entry->second)
            std::rethrow_exception(entry->second);
    }

private:
    std::exception_ptr prepare(const FileUrl& folder) const
    {
        try {
            if (mode_ == ExportDestinationMode::sourceSubfolder)
                planner_.createDirectory(folder);
            planner_.checkWritable(folder);
            return nullptr;
        } catch (...) {
            return std::current_exception();
        }
    }

    const ExportPlanner& planner_;
    ExportDestinationMode mode_;
    std::unordered_map<FileUrl, std::exception_ptr> failures_; ///< Null for a folder that is ready.
};

/// The photos that no output may replace, whatever the collision rule says.
class Originals {
public:
    Originals(const ExportPlanner& planner, PlaceKeys& keys, const std::vector<FileUrl>& originals)
        : planner_(planner), keys_(keys)
    {
        for (const FileUrl& url : originals)
            places_.insert(url.standardized());
    }

    /// Whether an original other than `own` stands at `place`, which may be spelled by way of linked folders or, where
    /// the volume folds case, in other letters. A photo's own is left to the exporter, which has the sentence for it.
    [[nodiscard]] bool hasAnother(const FileUrl& place, const FileUrl& own)
    {
        if (place == own.standardized())
            return false;
        if (places_.contains(place))
            return true;
        // Not every volume that folds case gives a file the same number under all its names.
        if (const FileUrl key = keys_.of(place); keysOfPlaces().contains(key))
            return key != keys_.of(own.standardized());
        const std::optional<FileNumber> number = planner_.fileNumber(place);
        return number && numbers().contains(*number) && number != planner_.fileNumber(own);
    }

private:
    const std::unordered_set<FileUrl>& keysOfPlaces()
    {
        if (keysOfPlaces_.empty())
            for (const FileUrl& place : places_)
                keysOfPlaces_.insert(keys_.of(place));
        return keysOfPlaces_;
    }

    const std::set<FileNumber>& numbers()
    {
        if (!numbers_) {
            numbers_.emplace();
            for (const FileUrl& place : places_)
                if (const std::optional<FileNumber> number = planner_.fileNumber(place))
                    numbers_->insert(*number);
        }
        return *numbers_;
    }

    const ExportPlanner& planner_;
    PlaceKeys& keys_;
    std::unordered_set<FileUrl> places_;
    // Asked for late: few batches replace anything.
    std::unordered_set<FileUrl> keysOfPlaces_;
    std::optional<std::set<FileNumber>> numbers_;
};

BatchExportFailure failureOf(const ImportedPhoto& photo, const std::exception_ptr& error)
{
    return {.filename = photo.filename(), .message = UserFacingError::message(error), .source = photo.url};
}

std::vector<FileUrl> sortedAsFileBrowsersDo(const std::unordered_set<FileUrl>& folders)
{
    std::vector<FileUrl> sorted(folders.begin(), folders.end());
    // Paths that the locale finds equal stand in the order of their bytes, so that plans repeat.
    std::ranges::sort(sorted);
    Localization::standardSort(sorted, &FileUrl::displayPath);
    return sorted;
}

} // namespace

struct ExportNaming::Implementation {
    Implementation(const ExportPlanner& operations, const BatchExportConfiguration& settings, ExportFormat format,
                   const std::vector<FileUrl>& originals)
        : planner(operations), configuration(settings), extension(filenameExtension(format)), keys(operations),
          readiness(operations, settings.destinationMode), protectedOnes(operations, keys, originals)
    {
        reserved.key = [this](const FileUrl& place) { return keys.of(place); };
        reserved.fileNumber = operations.fileNumber;
    }

    const ExportPlanner& planner;
    BatchExportConfiguration configuration;
    QString extension;
    PlaceKeys keys;
    FolderReadiness readiness;
    Originals protectedOnes;
    ReservedDestinations reserved;
    std::unordered_set<FileUrl> folders;
};

ExportNaming::ExportNaming(const ExportPlanner& planner, const BatchExportConfiguration& configuration,
                           ExportFormat format, const std::vector<FileUrl>& originals,
                           const std::vector<FileUrl>& written)
    : implementation_(std::make_unique<Implementation>(planner, configuration, format, originals))
{
    for (const FileUrl& place : written) {
        implementation_->reserved.add(place);
        if (configuration.collisionRule == CollisionRule::replace)
            static_cast<void>(implementation_->reserved.claimFile(place));
    }
}

ExportNaming::~ExportNaming() = default;

std::optional<BatchCollisionResolver::Resolution> ExportNaming::place(const FileUrl& photo, std::int64_t index,
                                                                      const std::stop_token& stop)
{
    Implementation& my = *implementation_;
    const FileUrl folder = destinationFolder(photo, my.configuration);
    my.readiness.require(folder);
    // Before names are given out: a folder whose photos are all skipped is still one that the user wants to see.
    my.folders.insert(folder.standardized());

    const QByteArray name = FilenameTemplate::filename(my.configuration.filenameTemplate, photo, index, my.extension);
    const FileUrl proposed = folder.appending(name).standardized();
    CollisionRule rule = my.configuration.collisionRule;
    if (rule == CollisionRule::replace && my.protectedOnes.hasAnother(proposed, photo))
        rule = CollisionRule::appendNumber;
    return BatchCollisionResolver::destination(proposed, rule, my.reserved, [&](const FileUrl& place) {
        throwIfCanceled(stop);
        return my.planner.fileExists(place);
    });
}

std::vector<FileUrl> ExportNaming::outputFolders() const
{
    return sortedAsFileBrowsersDo(implementation_->folders);
}

BatchExportPlan ExportPlanner::plan(const ExportRequest& request, const std::stop_token& stop) const
{
    std::vector<FileUrl> originals;
    if (needsOriginals(request.configuration.collisionRule)) {
        originals = request.originals;
        std::ranges::transform(request.photos, std::back_inserter(originals), &ImportedPhoto::url);
    }
    ExportNaming naming(*this, request.configuration, request.settings.format, originals, request.written);
    BatchExportPlan plan;
    for (std::size_t index = 0; index < request.photos.size(); ++index) {
        throwIfCanceled(stop);
        const ImportedPhoto& photo = request.photos[index];
        if (request.only && !request.only->contains(photo.id()))
            continue;
        std::optional<BatchCollisionResolver::Resolution> resolution;
        try {
            resolution = naming.place(photo.url, std::int64_t(index), stop);
        } catch (const Canceled&) {
            throw;
        } catch (...) {
            plan.failures.push_back(failureOf(photo, std::current_exception()));
            continue;
        }
        if (!resolution) {
            ++plan.skipped;
            plan.skippedPhotos.push_back(photo.url);
            continue;
        }
        plan.jobs.push_back({.photo = photo,
                             .recipe = request.framing.recipeFor(photo.id()),
                             .settings = request.settings,
                             .destination = resolution->url,
                             .replaceExisting = resolution->replaceExisting});
    }
    plan.outputFolders = naming.outputFolders();
    return plan;
}

} // namespace ferrow
