// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/CaptionChips.h"

#include "Metadata/MetadataTemplateExpander.h"

#include <QStringList>

#include <algorithm>

namespace ferrow::CaptionChips {

namespace {

QString shownText(QString text)
{
    if (text.trimmed().isEmpty())
        text.replace(u' ', u'\u2423');
    text.replace(u'\n', u'\u21B5');
    return text;
}

/// Separators are told by name: a screen reader passes over a dot.
QString spokenTitle(const CaptionSegment& segment)
{
    switch (kindOf(segment.content)) {
    case Kind::text:
        return std::get<QString>(segment.content);
    case Kind::token:
        return displayName(std::get<CaptionToken>(segment.content).token);
    case Kind::separator: {
        const QString name = displayName(std::get<CaptionSeparator>(segment.content));
        return name.section(QStringLiteral("  "), 0, 0);
    }
    }
    return {};
}

QString kindName(Kind kind)
{
    switch (kind) {
    case Kind::text:
        return QStringLiteral("text");
    case Kind::token:
        return QStringLiteral("token");
    case Kind::separator:
        return QStringLiteral("separator");
    }
    return {};
}

QString place(const Segments& segments, int index)
{
    return QStringLiteral("%1 of %2").arg(index + 1).arg(segments.size());
}

} // namespace

Kind kindOf(const CaptionSegment::Content& content)
{
    return static_cast<Kind>(content.index());
}

Segments inserted(Segments segments, int gap, CaptionSegment segment)
{
    segments.insert(segments.begin() + gap, std::move(segment));
    return segments;
}

Segments removed(Segments segments, int index)
{
    segments.erase(segments.begin() + index);
    return segments;
}

Segments replaced(Segments segments, int index, CaptionSegment::Content content)
{
    segments.at(std::size_t(index)).content = std::move(content);
    return segments;
}

Segments moved(Segments segments, int index, int gap)
{
    const auto place = segments.begin() + index;
    CaptionSegment chip = std::move(*place);
    segments.erase(place);
    segments.insert(segments.begin() + (gap > index ? gap - 1 : gap), std::move(chip));
    return segments;
}

int indexAfterMove(int index, int gap)
{
    return gap > index ? gap - 1 : gap;
}

QString label(const CaptionSegment& segment)
{
    switch (kindOf(segment.content)) {
    case Kind::text:
        return shownText(std::get<QString>(segment.content));
    case Kind::token:
        return displayName(std::get<CaptionToken>(segment.content).token);
    case Kind::separator:
        return chipLabel(std::get<CaptionSeparator>(segment.content));
    }
    return {};
}

QString optionsLabel(const CaptionSegment& segment)
{
    QStringList options;
    if (const auto* token = std::get_if<CaptionToken>(&segment.content)) {
        if (token->date.style != DateStyle::medium)
            options.append(displayName(token->date.style));
        if (!token->ifMissing.isEmpty())
            options.append(QStringLiteral("or ") + shownText(token->ifMissing));
    }
    return options.join(u' ');
}

QString title(const CaptionSegment& segment)
{
    switch (kindOf(segment.content)) {
    case Kind::text:
        return QStringLiteral("Text");
    case Kind::token:
        return displayName(std::get<CaptionToken>(segment.content).token);
    case Kind::separator:
        return QStringLiteral("Separator");
    }
    return {};
}

QString tip(const CaptionSegment& segment, const std::optional<PhotoMetadata>& metadata)
{
    if (const auto* text = std::get_if<QString>(&segment.content))
        return *text;
    const auto* token = std::get_if<CaptionToken>(&segment.content);
    if (!token)
        return label(segment);
    if (!metadata)
        return title(segment);
    if (!MetadataTemplateExpander::isMissing(token->token, *metadata))
        return QStringLiteral("%1: %2").arg(title(segment), *MetadataTemplateExpander::tokenValue(*token, *metadata));
    return token->ifMissing.isEmpty()
               ? QStringLiteral("%1: missing in this photo").arg(title(segment))
               : QStringLiteral("%1: missing in this photo, which reads “%2”").arg(title(segment), token->ifMissing);
}

QString spokenName(const Segments& segments, int index)
{
    const CaptionSegment& segment = segments.at(std::size_t(index));
    return QStringLiteral("%1, %2, %3")
        .arg(spokenTitle(segment), kindName(kindOf(segment.content)), place(segments, index));
}

QString spokenOptions(const CaptionSegment& segment)
{
    QStringList options;
    if (const auto* token = std::get_if<CaptionToken>(&segment.content)) {
        if (token->date.style != DateStyle::medium)
            options.append(QStringLiteral("Style: %1.").arg(displayName(token->date.style)));
        if (!token->ifMissing.isEmpty())
            options.append(QStringLiteral("If missing: %1.").arg(token->ifMissing));
    }
    return options.join(u' ');
}

QString spokenPlace(const Segments& segments, int index)
{
    return QStringLiteral("%1, %2").arg(spokenTitle(segments.at(std::size_t(index))), place(segments, index));
}

std::vector<MetadataToken> missingTokens(const Segments& segments, const PhotoMetadata& metadata)
{
    std::vector<MetadataToken> missing;
    for (const CaptionSegment& segment : segments) {
        const auto* token = std::get_if<CaptionToken>(&segment.content);
        if (token && MetadataTemplateExpander::isLeftOut(*token, metadata) &&
            std::ranges::find(missing, token->token) == missing.end())
            missing.push_back(token->token);
    }
    return missing;
}

QString missingNote(const std::vector<MetadataToken>& missing)
{
    QStringList names;
    for (const MetadataToken token : missing)
        names.append(displayName(token));
    if (names.isEmpty())
        return {};
    if (names.size() == 1)
        return QStringLiteral("%1 is missing here and is left out.").arg(names.first());
    const QString last = names.takeLast();
    return QStringLiteral("%1 and %2 are missing here and are left out.").arg(names.join(QStringLiteral(", ")), last);
}

Reading reading(const Segments& segments, const std::optional<PhotoMetadata>& metadata)
{
    if (!metadata)
        return {QStringLiteral("Select a photo to see what it says."), true};
    if (segments.empty())
        return {QStringLiteral("Nothing yet."), true};
    const QString text = MetadataTemplateExpander::expand(CaptionSegment::templateOf(segments), *metadata);
    return text.isEmpty() ? Reading{QStringLiteral("Nothing for this photo."), true} : Reading{text, false};
}

} // namespace ferrow::CaptionChips
