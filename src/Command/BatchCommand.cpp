// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Commands.h"

#include "Batch/BatchExportCoordinator.h"
#include "Batch/BatchImporter.h"
#include "Command/Output.h"
#include "Command/RunSettings.h"
#include "Export/ExportPlanner.h"
#include "Export/ImageExporter.h"
#include "Imaging/CaptionDrawing.h"
#include "Imaging/ExportLayout.h"
#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"

#include <QJsonArray>

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

/// Tells the user, in lines or in JSON, what became of each photo.
class Reporter {
public:
    Reporter(bool json, ProgressLine& progress) : json_(json), progress_(progress) {}

    void failed(const BatchExportFailure& failure, const std::optional<FileUrl>& destination = {})
    {
        if (json_) {
            QJsonObject object = outcome(failure.source, "failed", destination);
            object.insert(QStringLiteral("message"), failure.message);
            printJson(object);
            return;
        }
        progress_.clear();
        printError(QStringLiteral("%1: %2").arg(failure.source.displayPath(), onOneLine(failure.message)));
    }

    void skipped(const FileUrl& source) { jsonOutcome(source, "skipped", {}); }
    void planned(const BatchExportJob& job)
    {
        if (!json_)
            printLine(QStringLiteral("%1 → %2%3")
                          .arg(job.photo.url.displayPath(), job.destination.displayPath(), sizeNote(job)));
        framed(job, "planned");
    }
    void ended(const BatchExportJob& job, const BatchExportOutcome& result)
    {
        if (const auto* failure = std::get_if<BatchExportOutcome::Failed>(&result.result))
            failed(failure->failure, job.destination);
        else if (std::holds_alternative<BatchExportOutcome::Canceled>(result.result))
            jsonOutcome(job.photo.url, "canceled", job.destination);
        else
            framed(job, "exported");
    }
    void canceledBeforePlanning(const FileUrl& source) { jsonOutcome(source, "canceled", {}); }

    void report(const BatchExportReport& report)
    {
        progress_.clear();
        if (!json_) {
            QString line = QStringLiteral("Framed %1 of %2 photos").arg(report.exported).arg(report.total);
            if (report.skipped > 0)
                line += QStringLiteral(", %1 skipped").arg(report.skipped);
            if (report.canceled > 0)
                line += QStringLiteral(", %1 canceled").arg(report.canceled);
            if (!report.failures.empty())
                line += QStringLiteral(", %1 failed").arg(report.failures.size());
            printLine(line + QLatin1Char('.'));
            return;
        }
        QJsonArray folders;
        QJsonArray folderBytes;
        bool allText = true;
        for (const FileUrl& folder : report.outputFolders) {
            folders.append(folder.displayPath());
            folderBytes.append(QString::fromLatin1(folder.path().toBase64()));
            allText = allText && folder.displayPath().toUtf8() == folder.path();
        }
        QJsonObject counts{{QStringLiteral("total"), qint64(report.total)},
                           {QStringLiteral("exported"), qint64(report.exported)},
                           {QStringLiteral("skipped"), qint64(report.skipped)},
                           {QStringLiteral("canceled"), qint64(report.canceled)},
                           {QStringLiteral("failures"), qint64(report.failures.size())},
                           {QStringLiteral("outputFolders"), folders}};
        if (!allText)
            counts.insert(QStringLiteral("outputFoldersBytes"), folderBytes);
        printJson({{QStringLiteral("report"), counts}});
    }

private:
    /// A photo that has its framed copy, or will have one, and what is wrong with its captions.
    void framed(const BatchExportJob& job, const char* name)
    {
        const std::vector<CaptionFault> faults = captionFaults(job);
        const auto overlaps = CaptionDrawing::overlaps(job.photo.pixelSize, job.recipe, job.photo.metadata);
        if (json_) {
            QJsonObject object = outcome(job.photo.url, name, job.destination);
            if (const std::optional<PixelSize> size = writtenSize(job)) {
                object.insert(QStringLiteral("width"), qint64(size->width));
                object.insert(QStringLiteral("height"), qint64(size->height));
            }
            insertFaults(object, faults, overlaps, job.recipe.captions.size());
            printJson(object);
            return;
        }
        const auto say = [&](const QString& what) {
            progress_.clear();
            printError(job.photo.url.displayPath() + QStringLiteral(": ") + what);
        };
        for (const auto& [number, cut] : faults) {
            const QString caption = job.recipe.captions.size() == 1 ? QStringLiteral("The caption")
                                                                    : QStringLiteral("Caption %1").arg(number);
            // What was left out comes last: it may hold what looks like a placeholder.
            const QString what = cut.leftOut.isEmpty() ? QStringLiteral("letters are cut off.")
                                                       : QStringLiteral("this is left out: ") + cut.leftOut;
            say(caption + QStringLiteral(" does not fit, ") + what);
        }
        for (const auto& [first, second] : overlaps)
            say(QStringLiteral("Captions %1 and %2 overlap.").arg(first + 1).arg(second + 1));
    }
    /// Absent where the photo can't be framed, which is told when it is tried.
    static std::optional<PixelSize> writtenSize(const BatchExportJob& job)
    try {
        return exportLayout(job.photo.pixelSize, job.recipe, job.settings.size).layout.canvasSize;
    } catch (const ImagePipelineError&) {
        return std::nullopt;
    }
    /// What the plan says of an output that may be smaller than photo and frame.
    static QString sizeNote(const BatchExportJob& job)
    {
        const std::optional<PixelSize> size = writtenSize(job);
        return size && job.settings.size != OutputSize() ? QStringLiteral(" (%1)").arg(size->formatted()) : QString();
    }

    struct CaptionFault {
        std::size_t number = 1;
        TextCut cut;
    };
    static std::vector<CaptionFault> captionFaults(const BatchExportJob& job)
    {
        std::vector<CaptionFault> faults;
        for (std::size_t i = 0; i < job.recipe.captions.size(); ++i)
            if (const TextCut cut =
                    CaptionDrawing::cut(job.photo.pixelSize, job.recipe, job.recipe.captions[i], job.photo.metadata);
                cut.isCut())
                faults.push_back({i + 1, cut});
        return faults;
    }
    /// A photo's only caption needs no number; of several, all that are cut come in a list.
    static void insertFaults(QJsonObject& object, const std::vector<CaptionFault>& faults,
                             const std::vector<CaptionDrawing::Overlap>& overlaps, std::size_t captions)
    {
        QJsonArray cuts;
        for (const auto& [number, cut] : faults) {
            QJsonObject entry{{QStringLiteral("leftOut"), cut.leftOut}, {QStringLiteral("letters"), cut.cutsLetters}};
            if (cuts.isEmpty())
                object.insert(QStringLiteral("captionCut"), entry);
            entry.insert(QStringLiteral("caption"), qint64(number));
            cuts.append(entry);
        }
        if (captions > 1 && !cuts.isEmpty())
            object.insert(QStringLiteral("captionCuts"), cuts);
        QJsonArray pairs;
        for (const auto& [first, second] : overlaps)
            pairs.append(QJsonArray{qint64(first + 1), qint64(second + 1)});
        if (!pairs.isEmpty())
            object.insert(QStringLiteral("captionOverlaps"), pairs);
    }
    static QJsonObject outcome(const FileUrl& source, const char* name, const std::optional<FileUrl>& destination)
    {
        QJsonObject object = pathObject(source);
        object.insert(QStringLiteral("outcome"), QString::fromLatin1(name));
        if (destination)
            insertPath(object, QStringLiteral("destination"), *destination);
        return object;
    }
    void jsonOutcome(const FileUrl& source, const char* name, const std::optional<FileUrl>& destination)
    {
        if (json_)
            printJson(outcome(source, name, destination));
    }

    bool json_;
    ProgressLine& progress_;
};

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
