// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/BatchRun.h"
#include "Command/Commands.h"
#include "Command/PlanFile.h"
#include "Command/RunSettings.h"
#include "Export/ImageExporter.h"
#include "Export/WrittenPicture.h"
#include "Imaging/ImageLoader.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"
#include "Shared/UserFacingError.h"

#include <exception>
#include <unordered_map>

namespace ferrow::Command {

namespace {

/// The part of a plan that this run has, and what is known of it before a photo is read.
struct Part {
    std::vector<FileUrl> sources;
    std::unordered_map<FileUrl, const PlannedPhoto*> planned; ///< By source.
    BatchExportPlan plan;
    std::int64_t total = 0;
};

Part partOf(const PlanFile& file)
{
    Part part;
    part.total = std::int64_t(file.photos.size());
    for (const PlannedPhoto& photo : file.photos)
        if (photo.destination) {
            part.sources.push_back(photo.source);
            part.planned.emplace(photo.source, &photo);
        } else if (photo.failure.isEmpty()) {
            part.plan.skippedPhotos.push_back(photo.source);
            ++part.plan.skipped;
        } else {
            part.plan.failures.push_back(
                {.filename = photo.source.lastPathComponent(), .message = photo.failure, .source = photo.source});
        }
    return part;
}

/// The folders that the plan found missing were not made then.
class Folders {
public:
    /// Empty, or why the folder can't be had.
    QString make(const FileUrl& folder)
    {
        const auto [entry, isNew] = reasons_.try_emplace(folder);
        if (isNew)
            try {
                createFolder(folder);
            } catch (...) {
                entry->second = UserFacingError::message(std::current_exception());
            }
        return entry->second;
    }

private:
    std::unordered_map<FileUrl, QString> reasons_;
};

void addJobs(Part& part, const BatchImportResult& read, const Settings& settings)
{
    Folders folders;
    part.plan.failures.insert(part.plan.failures.end(), read.failures.begin(), read.failures.end());
    for (ImportedPhoto photo : read.photos) {
        const PlannedPhoto& planned = *part.planned.at(photo.url);
        photo.corrections = planned.corrections;
        const QString reason = folders.make(planned.destination->deletingLastPathComponent());
        if (reason.isEmpty())
            part.plan.jobs.push_back(
                {photo, settings.recipe, settings.exportSettings, *planned.destination, planned.replaceExisting});
        else
            part.plan.failures.push_back({.filename = photo.filename(), .message = reason, .source = photo.url});
    }
}

/// Whether an earlier run of the plan has framed the photo.
bool isFramed(const PlannedPhoto& planned, ExportFormat format, const std::stop_token& stop)
{
    if (lookUp(*planned.destination) != 0)
        return false;
    if (planned.replaced && ReplacedFile::at(*planned.destination) == planned.replaced)
        return false;
    return isWholePicture(*planned.destination, format, planned.size, stop);
}

} // namespace

int runPlan(const Arguments& arguments, const std::stop_token& stop)
{
    const PlanFile file = PlanFile::read(arguments.roots.front(), arguments.shard);
    Settings settings;
    settings.recipe = file.head.payload.recipe();
    file.head.payload.applyTo(settings.exportSettings, settings.configuration);
    for (const auto& change : arguments.changes)
        change(settings);
    Arguments logoArguments;
    logoArguments.logoFile = file.head.logo;
    const RunLogo logo(logoArguments, settings);
    warnOfMissingFonts(settings.recipe);

    ProgressLine progress(!arguments.quiet);
    Reporter reporter(arguments.json, progress, logo.size(settings));
    Part part = partOf(file);
    const BatchImportResult read = BatchImporter::load(
        part.sources, readingConcurrency(settings.configuration),
        [](const FileUrl& url, const std::stop_token& stopped) { return ImageLoader::load(url, 0, stopped); },
        readingProgress(progress, part.sources.size()), stop);
    addJobs(part, read, settings);

    for (const BatchExportFailure& failure : part.plan.failures)
        reporter.failed(failure);
    for (const FileUrl& photo : part.plan.skippedPhotos)
        reporter.skipped(photo);
    for (const FileUrl& photo : read.unread)
        reporter.canceledBeforePlanning(photo);
    const auto settled = std::int64_t(part.plan.failures.size()) + part.plan.skipped;
    const auto outcomes = runJobs(
        part.plan.jobs, settings.configuration.maximumConcurrentExports, settled, part.total,
        [&](const BatchExportJob& job, const std::stop_token& token, const std::function<void()>& framed) {
            if (arguments.resumes && isFramed(*part.planned.at(job.photo.url), job.settings.format, token))
                return;
            if (ImageExporter::exportPhoto(job, token, logo.managedFolder(), framed) == PhotoData::codedAnew)
                reporter.couldNotKeep(job.photo.url);
        },
        reporter, progress, stop);
    BatchExportReport report = BatchExportCoordinator::report(part.plan, part.total, outcomes);
    report.canceled += std::int64_t(read.unread.size());
    reporter.tellKeptData();
    reporter.report(report);
    return exitStatus(report, stop);
}

} // namespace ferrow::Command
