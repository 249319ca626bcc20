// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Commands.h"

#include "Batch/BatchExportCoordinator.h"
#include "Batch/BatchImporter.h"
#include "Command/Output.h"
#include "Command/Reporter.h"
#include "Command/RunSettings.h"
#include "Export/ExportPlanner.h"
#include "Export/ImageExporter.h"
#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"

#include <algorithm>

namespace ferrow::Command {

namespace {

/// A folder that takes no files is told of before thousands of photos are read. Throws SystemError.
void prepareOutputFolder(const Settings& settings, bool dryRun)
{
    if (settings.configuration.destinationMode != ExportDestinationMode::chosenFolder)
        return;
    const FileUrl& folder = *settings.configuration.chosenFolder;
    if (!dryRun)
        createFolder(folder);
    checkFolderWritable(folder);
}

BatchImportResult importBatch(const BatchImportScan& scan, ProgressLine& progress, const std::stop_token& stop)
{
    return BatchImporter::importScanned(
        scan, [](const FileUrl& url, const std::stop_token& stopped) { return ImageLoader::load(url, 0, stopped); },
        [&](std::size_t done) {
            progress.show(QStringLiteral("Reading"), std::int64_t(done), std::int64_t(scan.candidates.size()), {});
        },
        stop);
}

BatchExportPlan makePlan(const BatchImportResult& batch, const Settings& settings, bool dryRun,
                         const std::stop_token& stop)
{
    ExportPlanner planner;
    if (dryRun)
        planner.createDirectory = [](const FileUrl&) {};
    ExportRequest request{.photos = batch.photos,
                          .configuration = settings.configuration,
                          .settings = settings.exportSettings,
                          .framing = {.batch = settings.recipe}};
    // What could not be read is still somebody's photo.
    for (const BatchExportFailure& failure : batch.failures)
        request.originals.push_back(failure.source);
    return planner.plan(request, stop);
}

std::vector<BatchExportOutcome> exportJobs(const BatchExportPlan& plan, const Settings& settings,
                                           const std::optional<FileUrl>& managedLogoFolder, std::int64_t settled,
                                           std::int64_t total, Reporter& reporter, ProgressLine& progress,
                                           const std::stop_token& stop)
{
    std::int64_t completed = settled;
    if (!plan.jobs.empty())
        progress.show(QStringLiteral("Framing"), completed, total, plan.jobs.front().photo.filename());
    auto outcomes = BatchExportCoordinator::run(
        plan.jobs, settings.configuration.maximumConcurrentExports,
        [&](const BatchExportJob& job, const std::stop_token& token) {
            ImageExporter::exportPhoto(job, token, managedLogoFolder);
        },
        [&](const BatchExportOutcome& outcome) {
            reporter.ended(plan.jobs[outcome.jobIndex], outcome);
            progress.show(QStringLiteral("Framing"), ++completed, total, outcome.filename());
        },
        stop);
    for (const BatchExportOutcome& outcome : BatchExportCoordinator::neverStarted(plan.jobs, outcomes)) {
        reporter.ended(plan.jobs[outcome.jobIndex], outcome);
        outcomes.push_back(outcome);
    }
    return outcomes;
}

int exitStatus(const BatchExportReport& report, const std::stop_token& stop)
{
    if (stop.stop_requested())
        return interrupted;
    return report.failures.empty() ? allDone : somePhotoFailed;
}

int reportAllCanceled(const BatchImportResult& batch, Reporter& reporter)
{
    BatchExportReport report;
    report.canceled = std::int64_t(batch.photos.size() + batch.unread.size());
    report.total = report.canceled + std::int64_t(batch.failures.size());
    report.failures = batch.failures;
    for (const ImportedPhoto& photo : batch.photos)
        reporter.canceledBeforePlanning(photo.url);
    for (const FileUrl& photo : batch.unread)
        reporter.canceledBeforePlanning(photo);
    reporter.report(report);
    return interrupted;
}

} // namespace

int runBatch(const Arguments& arguments, const std::stop_token& stop)
{
    Settings settings = resolvedSettings(arguments);
    const BatchExportConfiguration& configuration = settings.configuration;
    if (configuration.destinationMode == ExportDestinationMode::chosenFolder && !configuration.chosenFolder)
        throw UsageError{QStringLiteral("--output: name a folder for the framed copies, or use --beside.")};
    const RunLogo logo(arguments, settings);
    const BatchImportScan scan = BatchImporter::scan(arguments.roots);
    if (!scan.candidates.empty())
        prepareOutputFolder(settings, arguments.dryRun);

    warnOfMissingFonts(settings.recipe);
    ProgressLine progress(!arguments.quiet);
    Reporter reporter(arguments.json, progress);
    const BatchImportResult batch = importBatch(scan, progress, stop);
    for (const BatchExportFailure& failure : batch.failures)
        reporter.failed(failure);
    if (stop.stop_requested())
        return reportAllCanceled(batch, reporter);

    BatchExportPlan plan;
    try {
        plan = makePlan(batch, settings, arguments.dryRun, stop);
    } catch (const Canceled&) {
        return reportAllCanceled(batch, reporter);
    }
    for (const BatchExportFailure& failure : plan.failures)
        reporter.failed(failure);
    for (const FileUrl& photo : plan.skippedPhotos)
        reporter.skipped(photo);
    const auto total = std::int64_t(batch.photos.size() + batch.failures.size());
    const auto settled = std::int64_t(batch.failures.size() + plan.failures.size()) + plan.skipped;
    std::vector<BatchExportOutcome> outcomes;
    if (arguments.dryRun)
        for (const BatchExportJob& job : plan.jobs)
            reporter.planned(job);
    else
        outcomes = exportJobs(plan, settings, logo.managedFolder(), settled, total, reporter, progress, stop);

    plan.failures.insert(plan.failures.begin(), batch.failures.begin(), batch.failures.end());
    const BatchExportReport report = BatchExportCoordinator::report(plan, total, outcomes);
    if (!arguments.dryRun || arguments.json)
        reporter.report(report);
    return exitStatus(report, stop);
}

} // namespace ferrow::Command
