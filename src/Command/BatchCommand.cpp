// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Commands.h"

#include "Command/BatchRun.h"
#include "Command/Corrections.h"
#include "Command/PlanFile.h"
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

/// What is said of a single photo wins over what is said of all.
void correct(std::vector<ImportedPhoto>& photos, const MetadataCorrections& all, const CorrectionFile& single)
{
    for (ImportedPhoto& photo : photos) {
        photo.corrections = single.of(photo.url);
        photo.corrections.insert(all.begin(), all.end());
    }
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

/// What a run of the plan would do, for others to do.
void writePlan(const FileUrl& file, const Arguments& arguments, const Settings& settings, const BatchExportPlan& plan)
{
    PlanFile written{.payload = PresetPayload::make(settings.recipe, settings.exportSettings, settings.configuration),
                     .logo = arguments.logoFile ? std::optional(arguments.logoFile->standardized()) : std::nullopt};
    written.photos.reserve(plan.jobs.size() + plan.skippedPhotos.size() + plan.failures.size());
    for (const BatchExportJob& job : plan.jobs)
        written.photos.push_back({.source = job.photo.url,
                                  .destination = job.destination,
                                  .size = writtenSize(job).value_or(PixelSize()),
                                  .replaceExisting = job.replaceExisting,
                                  .corrections = job.photo.corrections,
                                  .replaced = job.replaceExisting ? ReplacedFile::at(job.destination) : std::nullopt});
    for (const FileUrl& photo : plan.skippedPhotos)
        written.photos.push_back({.source = photo});
    for (const BatchExportFailure& failure : plan.failures)
        written.photos.push_back({.source = failure.source, .failure = onOneLine(failure.message)});
    written.write(file);
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
    const bool writesNone = arguments.dryRun || arguments.planFile;
    if (configuration.destinationMode == ExportDestinationMode::chosenFolder && !configuration.chosenFolder)
        throw UsageError{QStringLiteral("--output: name a folder for the framed copies, or use --beside.")};
    const RunLogo logo(arguments, settings);
    const CorrectionFile corrections =
        arguments.correctionsFile ? CorrectionFile(*arguments.correctionsFile) : CorrectionFile();
    const BatchImportScan scan = BatchImporter::scan(arguments.roots);
    if (!scan.candidates.empty())
        prepareOutputFolder(settings, writesNone);

    warnOfMissingFonts(settings.recipe);
    corrections.tellUnused(scan.candidates);
    ProgressLine progress(!arguments.quiet);
    Reporter reporter(arguments.json, progress, logo.size(settings));
    BatchImportResult batch = BatchImporter::importScanned(
        scan, [](const FileUrl& url, const std::stop_token& stopped) { return ImageLoader::load(url, 0, stopped); },
        readingProgress(progress, scan.candidates.size()), stop);
    correct(batch.photos, arguments.corrections, corrections);
    for (const BatchExportFailure& failure : batch.failures)
        reporter.failed(failure);
    if (stop.stop_requested())
        return reportAllCanceled(batch, reporter);

    BatchExportPlan plan;
    try {
        plan = makePlan(batch, settings, writesNone, stop);
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
    if (arguments.dryRun || (arguments.planFile && arguments.json))
        for (const BatchExportJob& job : plan.jobs)
            reporter.planned(job);
    if (!writesNone)
        outcomes = runJobs(
            plan.jobs, configuration.maximumConcurrentExports, settled, total,
            [&](const BatchExportJob& job, const std::stop_token& token) {
                if (ImageExporter::exportPhoto(job, token, logo.managedFolder()) == PhotoData::codedAnew)
                    reporter.couldNotKeep(job.photo.url);
            },
            reporter, progress, stop);

    plan.failures.insert(plan.failures.begin(), batch.failures.begin(), batch.failures.end());
    if (arguments.planFile)
        writePlan(*arguments.planFile, arguments, settings, plan);
    const BatchExportReport report = BatchExportCoordinator::report(plan, total, outcomes);
    reporter.tellKeptData();
    if (!writesNone || arguments.json)
        reporter.report(report);
    else if (arguments.planFile)
        printLine(QStringLiteral("Planned %1 of %2 photos.").arg(plan.jobs.size()).arg(total));
    return exitStatus(report, stop);
}

} // namespace ferrow::Command
