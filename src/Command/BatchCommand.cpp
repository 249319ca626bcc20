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
#include "Platform/Base/Localization.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <exception>
#include <numeric>
#include <utility>

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

/// What a run has besides its photos.
struct Run {
    const Arguments& arguments;
    const Settings& settings;
    const CorrectionFile& corrections;
    Reporter& reporter;
    ProgressLine& progress;
    const std::stop_token& stop;

    /// What is said of a single photo wins over what is said of all.
    void correct(ImportedPhoto& photo) const
    {
        photo.corrections = corrections.of(photo.url);
        photo.corrections.insert(arguments.corrections.begin(), arguments.corrections.end());
    }
};

/// Says what a run would do, photo by photo: of a million, only the names are kept.
class Planning {
public:
    explicit Planning(const Run& run, const BatchImportScan& scan)
        : run_(run), scan_(scan), naming_(planner_, run.settings.configuration, run.settings.exportSettings.format,
                                          originals(run.settings.configuration.collisionRule, scan))
    {
        report_.total = std::int64_t(scan.candidates.size() + scan.unsupported.size() + scan.unreadable.size());
    }

    /// Answers the exit status.
    int run()
    {
        const auto planAll = [this](const PlanFile::Add& add) {
            const std::vector<FileUrl> photos = inOrder(BatchImporter::inListOrder(scan_.candidates));
            BatchImporter::loadEach(
                photos, readingConcurrency(run_.settings.configuration),
                [](const FileUrl& url, const std::stop_token& stopped) { return ImageLoader::load(url, 0, stopped); },
                [&](std::size_t index, BatchImporter::Outcome outcome) {
                    plan(photos[index], std::move(outcome), add);
                },
                readingProgress(run_.progress, photos.size()), run_.stop);
            for (const BatchExportFailure& failure : BatchImporter::refused(scan_))
                fail(failure, add);
            throwIfCanceled(run_.stop);
        };
        const std::optional<FileUrl>& file = run_.arguments.planFile;
        try {
            if (file)
                PlanFile::write(*file, head(), planAll);
            else
                planAll([](const PlannedPhoto&) {});
        } catch (const Canceled&) {
            report_.canceled = report_.total - report_.skipped - failures_;
        }
        report_.outputFolders = naming_.outputFolders();
        run_.reporter.tellKeptData();
        if (run_.arguments.json || run_.stop.stop_requested())
            run_.reporter.report(report_, failures_);
        else if (file)
            printLine(QStringLiteral("Planned %1 of %2 photos.").arg(planned_).arg(report_.total));
        if (run_.stop.stop_requested())
            return interrupted;
        return failures_ > 0 ? somePhotoFailed : allDone;
    }

private:
    /// `photos` stand in the order of their names. For an order by date each is read for that alone, and once more when
    /// it is planned: nothing else is kept of a long list.
    [[nodiscard]] std::vector<FileUrl> inOrder(std::vector<FileUrl> photos) const
    {
        const PhotoOrder& order = run_.settings.order;
        std::vector<std::int64_t> ranks;
        ranks.reserve(photos.size());
        ImportedPhoto ranked;
        for (; ranks.size() < photos.size(); ++ranked.addedAt)
            ranks.push_back(orderRank(ranked, order)); // Undated, until it has been read.
        if (order.key == PhotoOrder::Key::captureDate)
            BatchImporter::loadEach(
                photos, readingConcurrency(run_.settings.configuration),
                [](const FileUrl& url, const std::stop_token& stopped) { return ImageLoader::load(url, 0, stopped); },
                [&](std::size_t index, BatchImporter::Outcome outcome) {
                    if (auto* photo = std::get_if<ImportedPhoto>(&outcome)) {
                        run_.correct(*photo);
                        ranks[index] = orderRank(*photo, order);
                    }
                },
                {}, run_.stop);
        std::vector<std::size_t> places(photos.size());
        std::iota(places.begin(), places.end(), 0U);
        const bool hasNamesDownwards = order.key == PhotoOrder::Key::name && order.isDescending;
        std::ranges::stable_sort(places, [&](std::size_t left, std::size_t right) {
            if (ranks[left] != ranks[right] || !hasNamesDownwards)
                return ranks[left] < ranks[right];
            return Localization::standardCompare(photos[left].lastPathComponent(), photos[right].lastPathComponent()) >
                   0;
        });
        std::vector<FileUrl> ordered;
        ordered.reserve(photos.size());
        for (const std::size_t place : places)
            ordered.push_back(std::move(photos[place]));
        return ordered;
    }

    static std::vector<FileUrl> originals(CollisionRule rule, const BatchImportScan& scan)
    {
        if (!needsOriginals(rule))
            return {};
        std::vector<FileUrl> all = scan.candidates;
        // What can't be read is still somebody's photo.
        all.insert(all.end(), scan.unsupported.begin(), scan.unsupported.end());
        return all;
    }

    static ExportPlanner withoutNewFolders()
    {
        ExportPlanner planner;
        planner.createDirectory = [](const FileUrl&) {};
        return planner;
    }

    [[nodiscard]] PlanHead head() const
    {
        const Settings& settings = run_.settings;
        const std::optional<FileUrl>& logo = run_.arguments.logoFile;
        return {.payload = PresetPayload::make(settings.recipe, settings.exportSettings, settings.configuration),
                .logo = logo ? std::optional(logo->standardized()) : std::nullopt};
    }

    void plan(const FileUrl& url, BatchImporter::Outcome outcome, const PlanFile::Add& add)
    {
        if (auto* photo = std::get_if<ImportedPhoto>(&outcome))
            plan(std::move(*photo), add);
        else if (const auto* failure = std::get_if<BatchExportFailure>(&outcome))
            fail(*failure, add);
        else
            run_.reporter.canceledBeforePlanning(url);
    }

    void plan(ImportedPhoto photo, const PlanFile::Add& add)
    {
        run_.correct(photo);
        std::optional<BatchCollisionResolver::Resolution> place;
        try {
            place = naming_.place(photo.url, index_++, run_.stop);
        } catch (const Canceled&) {
            return run_.reporter.canceledBeforePlanning(photo.url);
        } catch (...) {
            return fail({.filename = photo.filename(),
                         .message = UserFacingError::message(std::current_exception()),
                         .source = photo.url},
                        add);
        }
        if (!place) {
            ++report_.skipped;
            run_.reporter.skipped(photo.url);
            return add({.source = photo.url});
        }
        ++planned_;
        const BatchExportJob job{std::move(photo), run_.settings.recipe, run_.settings.exportSettings, place->url,
                                 place->replaceExisting};
        if (run_.arguments.dryRun || run_.arguments.json)
            run_.reporter.planned(job);
        add({.source = job.photo.url,
             .destination = job.destination,
             .size = writtenSize(job).value_or(PixelSize()),
             .replaceExisting = job.replaceExisting,
             .corrections = job.photo.corrections,
             .replaced = job.replaceExisting ? ReplacedFile::at(job.destination) : std::nullopt});
    }

    void fail(const BatchExportFailure& failure, const PlanFile::Add& add)
    {
        ++failures_;
        run_.reporter.failed(failure);
        add({.source = failure.source, .failure = onOneLine(failure.message)});
    }

    const Run& run_;
    const BatchImportScan& scan_;
    ExportPlanner planner_ = withoutNewFolders();
    ExportNaming naming_;
    std::int64_t index_ = 0; ///< Of the next photo that can be read.
    std::int64_t planned_ = 0;
    std::int64_t failures_ = 0;
    BatchExportReport report_;
};

BatchExportPlan makePlan(BatchImportResult& batch, const Settings& settings, const std::stop_token& stop)
{
    ExportRequest request{.photos = std::move(batch.photos),
                          .configuration = settings.configuration,
                          .settings = settings.exportSettings,
                          .framing = {.batch = settings.recipe}};
    // What could not be read is still somebody's photo.
    for (const BatchExportFailure& failure : batch.failures)
        request.originals.push_back(failure.source);
    try {
        return ExportPlanner().plan(request, stop);
    } catch (const Canceled&) {
        batch.photos = std::move(request.photos);
        throw;
    }
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
    const Run run{arguments, settings, corrections, reporter, progress, stop};
    if (writesNone)
        return Planning(run, scan).run();
    const std::jthread fonts = loadingFonts(settings.recipe);

    BatchImportResult batch = BatchImporter::importScanned(
        scan, [](const FileUrl& url, const std::stop_token& stopped) { return ImageLoader::load(url, 0, stopped); },
        readingProgress(progress, scan.candidates.size()), stop, readingConcurrency(configuration));
    for (ImportedPhoto& photo : batch.photos)
        run.correct(photo);
    for (std::size_t i = 0; i < batch.photos.size(); ++i)
        batch.photos[i].addedAt = std::int64_t(i);
    if (settings.order != PhotoOrder())
        sortPhotos(batch.photos, settings.order);
    for (const BatchExportFailure& failure : batch.failures)
        reporter.failed(failure);
    if (stop.stop_requested())
        return reportAllCanceled(batch, reporter);

    const auto total = std::int64_t(batch.photos.size() + batch.failures.size());
    BatchExportPlan plan;
    try {
        plan = makePlan(batch, settings, stop);
    } catch (const Canceled&) {
        return reportAllCanceled(batch, reporter);
    }
    for (const BatchExportFailure& failure : plan.failures)
        reporter.failed(failure);
    for (const FileUrl& photo : plan.skippedPhotos)
        reporter.skipped(photo);
    const auto settled = std::int64_t(batch.failures.size() + plan.failures.size()) + plan.skipped;
    const std::vector<BatchExportOutcome> outcomes = runJobs(
        plan.jobs, configuration.maximumConcurrentExports, settled, total,
        [&](const BatchExportJob& job, const std::stop_token& token, const std::function<void()>& framed) {
            if (ImageExporter::exportPhoto(job, token, logo.managedFolder(), framed) == PhotoData::codedAnew)
                reporter.couldNotKeep(job.photo.url);
        },
        reporter, progress, stop);

    plan.failures.insert(plan.failures.begin(), batch.failures.begin(), batch.failures.end());
    const BatchExportReport report = BatchExportCoordinator::report(plan, total, outcomes);
    reporter.tellKeptData();
    reporter.report(report);
    return exitStatus(report, stop);
}

} // namespace ferrow::Command
