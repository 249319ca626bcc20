// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/WindowTexts.h"

#include "Metadata/MetadataTemplateExpander.h"
#include "Platform/Base/Localization.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace ferrow::WindowTexts {

namespace {

/// Failures that an alert lists; the rest is a number.
constexpr std::size_t listedFailures = 5;

constexpr std::chrono::seconds tooEarlyToTell{3};
constexpr std::int64_t secondsStep = 5;
/// From here on seconds are no help.
constexpr std::int64_t minutesFrom = 120; // Seconds.

QString number(std::int64_t value)
{
    return Localization::number(value);
}

/// "120" or "2.5": a length as fields show it.
QString measure(const Length& length)
{
    return Localization::number(length.value, length.unit == BorderUnit::percent ? 1 : 0);
}

QString withUnit(const QString& number, BorderUnit unit)
{
    return QStringLiteral("%1 %2").arg(number, suffix(unit));
}

/// With as many decimals as it has, two at most.
QString ratioNumber(double value)
{
    int decimals = 0;
    while (decimals < 2 && std::abs(value - std::round(value)) >= 0.005) {
        value *= 10;
        ++decimals;
    }
    return Localization::number(value / std::pow(10, decimals), decimals);
}

QString nameOf(const CaptionSegment& segment)
{
    if (const auto* token = std::get_if<CaptionToken>(&segment.content))
        return displayName(token->token);
    if (const auto* separator = std::get_if<CaptionSeparator>(&segment.content))
        return rawValue(*separator);
    return std::get<QString>(segment.content);
}

} // namespace

QString photoCount(std::int64_t count)
{
    return count == 1 ? QStringLiteral("1 photo") : QStringLiteral("%1 photos").arg(number(count));
}

QString willBeExported(std::int64_t included, std::int64_t total)
{
    return QStringLiteral("%1 of %2 will be exported").arg(number(included), number(total));
}

QString exported(std::int64_t exported, std::int64_t total)
{
    return QStringLiteral("%1 of %2 exported").arg(number(exported), number(total));
}

QString outOf(std::int64_t part, std::int64_t total)
{
    return QStringLiteral("%1 of %2").arg(number(part), number(total));
}

QString sizeChange(PixelSize source, PixelSize output)
{
    return QStringLiteral("%1 → %2 px").arg(source.formatted(), output.formatted());
}

std::optional<QString> remainingTime(std::chrono::milliseconds elapsed, std::int64_t done, std::int64_t left)
{
    if (elapsed < tooEarlyToTell || done < 1 || left < 1)
        return std::nullopt;
    const double seconds = double(elapsed.count()) / 1'000 * double(left) / double(done);
    const auto rounded =
        std::max(std::int64_t(std::ceil(seconds / double(secondsStep))), std::int64_t(1)) * secondsStep;
    if (rounded < minutesFrom)
        return QStringLiteral("about %1 seconds left").arg(number(rounded));
    return QStringLiteral("about %1 minutes left").arg(number((rounded + 30) / 60));
}

QString exporting(std::int64_t completed, std::int64_t total)
{
    return QStringLiteral("Exporting %1 of %2").arg(number(std::min(completed + 1, total)), number(total));
}

QString exportButton(std::int64_t count)
{
    return count == 1 ? QStringLiteral("Export 1 Photo") : QStringLiteral("Export %1 Photos").arg(number(count));
}

QString place(const FileUrl& url)
{
    const QStringList parts = url.standardized().displayPath().split(u'/');
    // "/run/user/1000/doc/4f3a21c0/Holidays/a.jpg", or "/run/flatpak/doc/…".
    const qsizetype store = parts.value(1) != u"run"       ? -1
                            : parts.value(2) == u"user"    ? 4
                            : parts.value(2) == u"flatpak" ? 3
                                                           : -1;
    if (store < 0 || parts.value(store) != u"doc" || parts.size() < store + 3)
        return url.displayPath();
    return parts.mid(store + 2).join(u'/');
}

std::optional<PresentedError> importMessage(const ImportOutcome& outcome)
{
    PresentedError presented;
    if (outcome.hadNothingNew) {
        presented.title = QStringLiteral("No New Photos");
        presented.message = QStringLiteral("The selection contained no new supported images.");
        return presented;
    }
    if (outcome.failures.empty())
        return std::nullopt;
    presented.title = QStringLiteral("Some Files Weren’t Added");
    const std::size_t listed = std::min(outcome.failures.size(), listedFailures);
    for (std::size_t i = 0; i < listed; ++i) {
        const BatchExportFailure& failure = outcome.failures[i];
        presented.files.push_back(
            {failure.filename, failure.message.section(u'\n', 0, 0), failure.message.section(u'\n', 1).simplified()});
    }
    if (const std::size_t rest = outcome.failures.size() - listed; rest > 0)
        presented.message = QStringLiteral("…and %1 more.").arg(number(std::int64_t(rest)));
    return presented;
}

QString scopeHint(const PhotoSession& session)
{
    const ImportedPhoto* photo = session.selectedPhoto();
    if (session.recipeScope() == RecipeScope::batch) {
        const auto count = std::int64_t(session.photos().size());
        if (count == 0)
            return QStringLiteral("Changes apply to every photo you add.");
        return count == 1 ? QStringLiteral("Changes apply to the photo.")
                          : QStringLiteral("Changes apply to all %1 photos.").arg(number(count));
    }
    if (!photo)
        return QStringLiteral("No photo is selected: changes apply to the batch.");
    return session.hasOwnRecipe(photo->id()) ? QStringLiteral("%1 has its own framing.").arg(photo->filename())
                                             : QStringLiteral("%1 is framed like the batch.").arg(photo->filename());
}

QString ownFramingUnused(std::size_t count)
{
    const QString whose = count == 1 ? QStringLiteral("has its own framing") : QStringLiteral("have their own framing");
    return QStringLiteral("%1 %2, not used while %3 is chosen")
        .arg(photoCount(std::int64_t(count)), whose, rawValue(RecipeScope::batch));
}

QString ratio(const FrameShape& shape)
{
    return QStringLiteral("%1:%2").arg(ratioNumber(shape.width), ratioNumber(shape.height));
}

QString borderWidths(const Border& border)
{
    QStringList numbers{measure({border.width, border.unit})};
    if (border.sides) {
        const SideLengths& sides = *border.sides;
        numbers.clear();
        for (const double side : {sides.top, sides.right, sides.bottom, sides.left})
            numbers.append(measure({side, border.unit}));
    }
    // Equal as they are read.
    if (numbers.count(numbers.first()) == numbers.size())
        numbers.resize(1);
    return withUnit(numbers.join(QStringLiteral(", ")), border.unit);
}

QStringList borderFeatures(const Border& border)
{
    QStringList features;
    if (border.shape)
        features.append(ratio(*border.shape));
    if (border.blurredBackground)
        features.append(QStringLiteral("blurred photo"));
    if (border.line)
        features.append(QStringLiteral("line"));
    if (const Length& radius = border.photoEdge.cornerRadius; radius.value > 0)
        features.append(QStringLiteral("%1 corners").arg(withUnit(measure(radius), radius.unit)));
    if (border.photoEdge.hasShadow)
        features.append(QStringLiteral("shadow"));
    return features;
}

QString photoEdgeSummary(const PhotoEdge& edge)
{
    const Length& radius = edge.cornerRadius;
    return QStringLiteral("%1, %2").arg(radius.value > 0 ? withUnit(measure(radius), radius.unit)
                                                         : QStringLiteral("Square"),
                                        edge.hasShadow ? QStringLiteral("shadow") : QStringLiteral("no shadow"));
}

QString borderSummary(const Border& border)
{
    QStringList parts = borderFeatures(border);
    if (!border.shape)
        parts.prepend(QStringLiteral("As Photo"));
    parts.prepend(borderWidths(border));
    return parts.join(QStringLiteral(" · "));
}

QString captionSummary(const Caption& caption, const PhotoMetadata* metadata)
{
    if (metadata)
        return MetadataTemplateExpander::expand(caption.captionTemplate(), *metadata).simplified();
    QString names;
    for (const CaptionSegment& segment : caption.segments)
        names += nameOf(segment);
    return names.simplified();
}

QString captionsSummary(const std::vector<Caption>& captions, const PhotoMetadata* metadata)
{
    QStringList texts;
    for (const Caption& caption : captions)
        if (const QString text = captionSummary(caption, metadata); !text.isEmpty())
            texts.append(text);
    return texts.join(QStringLiteral(" / "));
}

QString captionCutNote(const TextCut& cut)
{
    constexpr qsizetype longest = 80;
    if (cut.leftOut.isEmpty())
        return cut.cutsLetters ? QStringLiteral("Doesn’t fit: letters are cut off.") : QString();
    const QString leftOut =
        cut.leftOut.size() <= longest ? cut.leftOut : cut.leftOut.left(longest) + QStringLiteral("…");
    return QStringLiteral("Doesn’t fit: “%1” is left out.").arg(leftOut);
}

QString fontName(CaptionFont font)
{
    switch (font) {
    case CaptionFont::serif:
        return QStringLiteral("Serif");
    case CaptionFont::avenirNext:
        return QStringLiteral("Geometric");
    case CaptionFont::system:
    case CaptionFont::rounded:
    case CaptionFont::monospaced:
        break;
    }
    return rawValue(font);
}

QString logoSummary(const RenderRecipe& recipe)
{
    return recipe.logo ? recipe.logo->asset.displayName : QString();
}

QString outputSummary(const ExportSettings& settings, const RenderRecipe& recipe)
{
    return rawValue(settings.format) + QStringLiteral(" · ") + rawValue(recipe.outputColorProfile);
}

} // namespace ferrow::WindowTexts
