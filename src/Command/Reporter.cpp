// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Reporter.h"

#include "Imaging/CaptionDrawing.h"
#include "Models/ErrorTexts.h"

#include <QJsonArray>

#include <algorithm>

namespace ferrow::Command {

std::optional<PixelSize> writtenSize(const BatchExportJob& job)
try {
    return exportLayout(job.photo, job.recipe, job.settings).layout.canvasSize;
} catch (const ImagePipelineError&) {
    return std::nullopt;
}

namespace {

/// What the plan says of an output that may be smaller than photo and frame.
QString sizeNote(const BatchExportJob& job)
{
    const std::optional<PixelSize> size = writtenSize(job);
    return size && job.settings.size != OutputSize() ? QStringLiteral(" (%1)").arg(size->formatted()) : QString();
}

struct CaptionFault {
    std::size_t number = 1;
    TextCut cut;
};

std::vector<CaptionFault> captionFaults(const BatchExportJob& job)
{
    const PhotoMetadata metadata = job.photo.captionMetadata();
    std::vector<CaptionFault> faults;
    for (std::size_t i = 0; i < job.recipe.captions.size(); ++i)
        if (const TextCut cut = CaptionDrawing::cut(job.photo.pixelSize, job.recipe, job.recipe.captions[i], metadata,
                                                    job.settings.size);
            cut.isCut())
            faults.push_back({i + 1, cut});
    return faults;
}

std::vector<std::size_t> overLogo(const BatchExportJob& job, PixelSize logo)
{
    return CaptionDrawing::overLogo(job.photo.pixelSize, job.recipe, job.photo.captionMetadata(), logo,
                                    job.settings.size);
}

/// A photo's only caption needs no number; of several, all that are cut come in a list.
void insertFaults(QJsonObject& object, const std::vector<CaptionFault>& faults,
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

QJsonObject outcome(const FileUrl& source, const char* name, const std::optional<FileUrl>& destination)
{
    QJsonObject object = pathObject(source);
    object.insert(QStringLiteral("outcome"), QString::fromLatin1(name));
    if (destination)
        insertPath(object, QStringLiteral("destination"), *destination);
    return object;
}

} // namespace

void printCaptionFaults(const BatchExportJob& job, const QString& photo, PixelSize logo)
{
    const auto say = [&](const QString& what) { printError(photo + QStringLiteral(": ") + what); };
    const auto named = [&](std::size_t number) {
        return job.recipe.captions.size() == 1 ? QStringLiteral("The caption")
                                               : QStringLiteral("Caption %1").arg(number);
    };
    for (const auto& [number, cut] : captionFaults(job)) {
        // What was left out comes last: it may hold what looks like a placeholder.
        const QString what = cut.leftOut.isEmpty() ? QStringLiteral("letters are cut off.")
                                                   : QStringLiteral("this is left out: ") + cut.leftOut;
        say(named(number) + QStringLiteral(" does not fit, ") + what);
    }
    for (const auto& [first, second] :
         CaptionDrawing::overlaps(job.photo.pixelSize, job.recipe, job.photo.captionMetadata(), job.settings.size))
        say(QStringLiteral("Captions %1 and %2 overlap.").arg(first + 1).arg(second + 1));
    for (const std::size_t caption : overLogo(job, logo))
        say(named(caption + 1) + QStringLiteral(" overlaps the logo."));
}

void Reporter::failed(const BatchExportFailure& failure, const std::optional<FileUrl>& destination)
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

void Reporter::skipped(const FileUrl& source, const std::optional<FileUrl>& destination)
{
    tell(source, "skipped", destination);
}

void Reporter::planned(const BatchExportJob& job)
{
    if (!json_)
        printLine(
            QStringLiteral("%1 → %2%3").arg(job.photo.url.displayPath(), job.destination.displayPath(), sizeNote(job)));
    framed(job, "planned");
}

void Reporter::ended(const BatchExportJob& job, const BatchExportOutcome& result)
{
    if (const auto* failure = std::get_if<BatchExportOutcome::Failed>(&result.result))
        failed(failure->failure, job.destination);
    else if (std::holds_alternative<BatchExportOutcome::Canceled>(result.result))
        tell(job.photo.url, "canceled", job.destination);
    else
        framed(job, "exported");
}

void Reporter::canceledBeforePlanning(const FileUrl& source)
{
    tell(source, "canceled", {});
}

void Reporter::report(const BatchExportReport& report)
{
    this->report(report, std::int64_t(report.failures.size()));
}

void Reporter::report(const BatchExportReport& report, std::int64_t failures)
{
    progress_.clear();
    if (!json_) {
        QString line = QStringLiteral("Framed %1 of %2 photos").arg(report.exported).arg(report.total);
        if (report.skipped > 0)
            line += QStringLiteral(", %1 skipped").arg(report.skipped);
        if (report.canceled > 0)
            line += QStringLiteral(", %1 canceled").arg(report.canceled);
        if (failures > 0)
            line += QStringLiteral(", %1 failed").arg(failures);
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
    QJsonObject counts{
        {QStringLiteral("total"), qint64(report.total)},     {QStringLiteral("exported"), qint64(report.exported)},
        {QStringLiteral("skipped"), qint64(report.skipped)}, {QStringLiteral("canceled"), qint64(report.canceled)},
        {QStringLiteral("failures"), qint64(failures)},      {QStringLiteral("outputFolders"), folders}};
    if (kept_)
        counts.insert(QStringLiteral("photoData"), keptCounts());
    if (!allText)
        counts.insert(QStringLiteral("outputFoldersBytes"), folderBytes);
    printJson({{QStringLiteral("report"), counts}});
}

void Reporter::couldNotKeep(const FileUrl& source)
{
    const std::lock_guard lock(mutex_);
    notKept_.insert(source);
}

void Reporter::countKept(const BatchExportJob& job, QJsonObject& object)
{
    if (!job.settings.keepsPhotoData || job.settings.format != ExportFormat::jpeg)
        return;
    if (!kept_)
        kept_.emplace();
    kept_->quality = job.settings.quality;
    auto obstacle = obstacleToKeeping(job.photo, job.recipe, job.settings.size);
    {
        const std::lock_guard lock(mutex_);
        if (!obstacle && notKept_.contains(job.photo.url))
            obstacle = KeepObstacle::data;
    }
    object.insert(QStringLiteral("photoData"), obstacle ? QStringLiteral("codedAnew") : QStringLiteral("kept"));
    if (obstacle) {
        ++kept_->codedAnew[*obstacle];
        object.insert(QStringLiteral("photoDataObstacle"), rawValue(*obstacle));
        return;
    }
    ++kept_->kept;
    if (const auto moved = movedBorder(job.photo, job.recipe, job.settings)) {
        ++kept_->moved;
        kept_->farthest = std::max(kept_->farthest, moved->distance());
        object.insert(QStringLiteral("borderMovedBy"), qint64(moved->distance()));
    }
}

QJsonObject Reporter::keptCounts() const
{
    QJsonObject codedAnew;
    for (const auto& [obstacle, count] : kept_->codedAnew)
        codedAnew.insert(rawValue(obstacle), qint64(count));
    return {{QStringLiteral("kept"), qint64(kept_->kept)},
            {QStringLiteral("codedAnew"), codedAnew},
            {QStringLiteral("bordersMoved"), qint64(kept_->moved)},
            {QStringLiteral("farthestMovedBy"), qint64(kept_->farthest)}};
}

void Reporter::tellKeptData()
{
    if (!kept_ || json_)
        return;
    progress_.clear();
    if (kept_->moved > 0)
        printError(QStringLiteral("Borders moved onto the photo's blocks: %1, by up to %2 pixels.")
                       .arg(kept_->moved)
                       .arg(kept_->farthest));
    std::int64_t count = 0;
    QStringList reasons;
    for (const auto& [obstacle, photos] : kept_->codedAnew) {
        count += photos;
        reasons.append(QStringLiteral("%1 %2").arg(photos).arg(reasonText(obstacle)));
    }
    if (count > 0)
        printError(QStringLiteral("Photos that can't keep their data, coded at quality %1: %2 (%3).")
                       .arg(kept_->quality)
                       .arg(count)
                       .arg(reasons.join(QStringLiteral(", "))));
}

/// A photo that has its framed copy, or will have one, and what is wrong with its captions.
void Reporter::framed(const BatchExportJob& job, const char* name)
{
    QJsonObject object = outcome(job.photo.url, name, job.destination);
    countKept(job, object);
    if (json_) {
        if (const std::optional<PixelSize> size = writtenSize(job)) {
            object.insert(QStringLiteral("width"), qint64(size->width));
            object.insert(QStringLiteral("height"), qint64(size->height));
        }
        insertFaults(
            object, captionFaults(job),
            CaptionDrawing::overlaps(job.photo.pixelSize, job.recipe, job.photo.captionMetadata(), job.settings.size),
            job.recipe.captions.size());
        QJsonArray covering;
        for (const std::size_t caption : overLogo(job, logo_))
            covering.append(qint64(caption + 1));
        if (!covering.isEmpty())
            object.insert(QStringLiteral("captionsOverLogo"), covering);
        printJson(object);
        return;
    }
    progress_.clear();
    printCaptionFaults(job, job.photo.url.displayPath(), logo_);
}

void Reporter::tell(const FileUrl& source, const char* name, const std::optional<FileUrl>& destination)
{
    if (json_)
        printJson(outcome(source, name, destination));
}

} // namespace ferrow::Command
