// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ExportSheets/ExportTexts.h"

#include "Imaging/KeptData.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Localization.h"
#include "Session/ExportCheck.h"
#include "Session/WindowTexts.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace ferrow::ExportTexts {

namespace {

QString profileText(const PhotoSession& session)
{
    std::optional<OutputColorProfile> common;
    for (const auto& photo : session.photos()) {
        if (!session.isIncluded(photo.id()))
            continue;
        const auto profile = session.resolvedRecipe(photo.id()).outputColorProfile;
        if (common && *common != profile)
            return QStringLiteral("several profiles");
        common = profile;
    }
    return rawValue(common.value_or(session.batchRecipe().outputColorProfile));
}

QString formatText(const ExportSettings& settings)
{
    if (settings.format == ExportFormat::jpeg && settings.keepsPhotoData)
        return QStringLiteral("JPEG, photo’s data kept");
    QString text = rawValue(settings.format);
    if (settings.writtenDepth() != BitDepth::eight)
        text += QStringLiteral(", %1 bit").arg(rawValue(settings.writtenDepth()));
    if (supportsQuality(settings.format))
        text += QStringLiteral(", quality %1").arg(std::lround(settings.quality * 100));
    return text;
}

bool isWhole(double number)
{
    return number == std::floor(number);
}

/// Empty for full size.
QString sizeText(const OutputSize& size)
{
    switch (size.limit) {
    case SizeLimit::none:
        break;
    case SizeLimit::longSide:
        return QStringLiteral("long side %1 px").arg(Localization::number(size.box.width));
    case SizeLimit::box:
        return QStringLiteral("within %1 px").arg(size.box.formatted());
    case SizeLimit::megapixels:
        return QStringLiteral("%1 MP").arg(Localization::number(size.megapixels, isWhole(size.megapixels) ? 0 : 2));
    }
    return {};
}

/// The photo that examples are made of.
std::vector<ImportedPhoto>::const_iterator examplePhoto(const PhotoSession& session)
{
    const auto& photos = session.photos();
    const auto isIncluded = [&](const ImportedPhoto& photo) { return session.isIncluded(photo.id()); };
    const auto selected = std::find_if(photos.begin(), photos.end(), [&](const ImportedPhoto& photo) {
        return isIncluded(photo) && photo.id() == session.selectedPhotoID();
    });
    return selected != photos.end() ? selected : std::find_if(photos.begin(), photos.end(), isIncluded);
}

QString failureCount(std::size_t count)
{
    return count == 1 ? QStringLiteral("1 failure")
                      : QStringLiteral("%1 failures").arg(Localization::number(std::int64_t(count)));
}

QString countsLine(const BatchExportReport& report)
{
    QStringList parts;
    for (const auto& count : reportCounts(report))
        parts << QStringLiteral("%1 %2").arg(Localization::number(count.count), count.word);
    return parts.join(QStringLiteral(", "));
}

} // namespace

QString subtitle(const PhotoSession& session, const ExportSettings& settings)
{
    const auto count = std::int64_t(session.includedCount());
    QStringList parts{WindowTexts::photoCount(count), formatText(settings), sizeText(settings.size),
                      profileText(session)};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(" · "));
}

QString folder(const FileUrl& folder, const FileUrl& home)
{
    const auto standard = folder.standardized();
    if (standard == home.standardized())
        return QStringLiteral("Home");
    const auto prefix = home.standardized().path() + '/';
    if (!standard.path().startsWith(prefix))
        return WindowTexts::place(standard);
    const auto inHome = standard.displayPath().mid(home.standardized().displayPath().size() + 1);
    return inHome.split(u'/', Qt::SkipEmptyParts).join(QStringLiteral(" / "));
}

QString folder(const FileUrl& folder)
{
    return ExportTexts::folder(folder, FileUrl::fromPath(QFile::encodeName(QDir::homePath())));
}

QString exampleName(const PhotoSession& session, const ExportSession& exportSession)
{
    const auto& photos = session.photos();
    const auto shown = examplePhoto(session);
    if (shown == photos.end())
        return {};
    const auto isIncluded = [&](const ImportedPhoto& photo) { return session.isIncluded(photo.id()); };
    return exampleFilename(exportSession.configuration().filenameTemplate, shown->url,
                           std::count_if(photos.begin(), shown, isIncluded), exportSession.settings().format);
}

QString exampleSize(const PhotoSession& session, const ExportSettings& settings)
try {
    const auto shown = examplePhoto(session);
    if (shown == session.photos().end())
        return {};
    const RenderRecipe& recipe = session.resolvedRecipe(shown->id());
    const PixelSize written = exportLayout(*shown, recipe, settings).layout.canvasSize;
    if (settings.size.limit == SizeLimit::none)
        return QStringLiteral("%1, as large as photo and frame").arg(written.formatted());
    const PixelSize full = RenderLayout::framedLayout(shown->pixelSize, recipe).canvasSize;
    if (written == full)
        return QStringLiteral("%1, never enlarged").arg(full.formatted());
    return QStringLiteral("%1 → %2").arg(full.formatted(), written.formatted());
} catch (const ImagePipelineError&) {
    return {}; // The check says why.
}

QString keptDataHint(const PhotoSession& session, const ExportSettings& settings)
{
    if (settings.format != ExportFormat::jpeg)
        return QStringLiteral("Only JPEG can keep the photo’s data.");
    if (!settings.keepsPhotoData)
        return QStringLiteral("Keep Photo’s Data codes only the frame; at Full Size.");
    const auto shown = examplePhoto(session);
    const auto moved = shown == session.photos().end()
                           ? std::nullopt
                           : movedBorder(*shown, session.resolvedRecipe(shown->id()), settings);
    const auto step = [](std::int64_t from, std::int64_t to) {
        return QStringLiteral("%1 → %2 px").arg(Localization::number(from), Localization::number(to));
    };
    if (!moved)
        return QStringLiteral("Where photos can’t keep their data, quality counts.");
    if (moved->fromLeft == moved->fromTop && moved->toLeft == moved->toTop)
        return QStringLiteral("Border %1").arg(step(moved->fromLeft, moved->toLeft));
    return QStringLiteral("Border left %1, top %2")
        .arg(step(moved->fromLeft, moved->toLeft), step(moved->fromTop, moved->toTop));
}

QString reportTitle(const BatchExportReport& report)
{
    const auto title = report.canceled > 0 ? QStringLiteral("Export stopped") : QStringLiteral("Export finished");
    if (report.failures.empty())
        return title;
    return QStringLiteral("%1, with %2").arg(title, failureCount(report.failures.size()));
}

bool isAllWell(const BatchExportReport& report)
{
    return report.failures.empty() && report.skipped == 0 && report.canceled == 0;
}

QString allWellSentence(const BatchExportReport& report)
{
    return QStringLiteral("%1 exported").arg(WindowTexts::photoCount(report.exported));
}

QString whereTo(const std::vector<FileUrl>& folders)
{
    if (folders.empty())
        return {};
    if (folders.size() == 1)
        return QStringLiteral("in %1").arg(folder(folders.front()));
    return QStringLiteral("in %1 folders").arg(Localization::number(std::int64_t(folders.size())));
}

QString reason(const BatchExportFailure& failure)
{
    return failure.message.simplified();
}

std::vector<ReportRow> reportRows(const BatchExportReport& report, const std::vector<FileUrl>& skippedPhotos)
{
    using Kind = ReportRow::Kind;
    std::vector<ReportRow> rows;
    if (!report.failures.empty())
        rows.push_back({Kind::heading, QStringLiteral("Failed"), {}, {}});
    for (const auto& failure : report.failures)
        rows.push_back({Kind::failed, failure.filename, reason(failure), failure.source});
    if (!skippedPhotos.empty())
        rows.push_back({Kind::heading, QStringLiteral("Skipped"), {}, {}});
    for (const auto& photo : skippedPhotos)
        rows.push_back(
            {Kind::skipped, photo.lastPathComponent(), QStringLiteral("Its output file exists already."), photo});
    return rows;
}

std::vector<FileUrl> failedPhotos(const BatchExportReport& report)
{
    std::vector<FileUrl> photos;
    std::unordered_set<FileUrl> seen;
    for (const auto& failure : report.failures)
        if (!failure.source.isEmpty() && seen.insert(failure.source).second)
            photos.push_back(failure.source);
    return photos;
}

QString reportText(const BatchExportReport& report, const std::vector<FileUrl>& skippedPhotos)
{
    QStringList lines{reportTitle(report), countsLine(report)};
    for (const auto& row : reportRows(report, skippedPhotos))
        if (row.kind == ReportRow::Kind::heading)
            lines << QString() << row.title;
        else if (row.kind == ReportRow::Kind::failed)
            lines << QStringLiteral("%1: %2").arg(row.title, row.detail);
        else
            lines << row.title;
    return lines.join(u'\n') + u'\n';
}

std::vector<ReportCount> reportCounts(const BatchExportReport& report)
{
    using Kind = ReportCount::Kind;
    std::vector<ReportCount> counts{{Kind::exported, report.exported, QStringLiteral("exported")},
                                    {Kind::skipped, report.skipped, QStringLiteral("skipped")},
                                    {Kind::failed, std::int64_t(report.failures.size()), QStringLiteral("failed")}};
    if (report.canceled > 0)
        counts.push_back({Kind::canceled, report.canceled, QStringLiteral("canceled")});
    return counts;
}

} // namespace ferrow::ExportTexts
