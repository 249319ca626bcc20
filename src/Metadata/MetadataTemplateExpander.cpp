// SPDX-License-Identifier: GPL-3.0-or-later
#include "Metadata/MetadataTemplateExpander.h"

#include "Platform/Base/Localization.h"

#include <QRegularExpression>
#include <QStringList>

namespace ferrow::MetadataTemplateExpander {

namespace {

/// In UTF-16 units, far more than any picture shows. A stored template can repeat a long description by the thousand.
constexpr qsizetype longestCaption = 100'000;

QString dateText(const QDateTime& date, const DateFormat& format)
{
    switch (format.style) {
    case DateStyle::shortDate:
        return Localization::shortDate(date);
    case DateStyle::medium:
        return Localization::abbreviatedDate(date);
    case DateStyle::longDate:
        return Localization::longDate(date);
    case DateStyle::iso:
        return date.toLocalTime().date().toString(Qt::ISODate);
    case DateStyle::custom:
        return Localization::date(date, format.pattern);
    }
    return {};
}

/// A token's value, or what stands in for it.
QString shownText(const CaptionToken& token, const PhotoMetadata& metadata)
{
    const QString value = tokenValue(token, metadata).value_or(QString());
    return token.ifMissing.isEmpty() || !value.trimmed().isEmpty() ? value : token.ifMissing;
}

/// Every token replaced by its value. Values are not looked through again: a title may hold braces.
QString replacedTokens(const QString& captionTemplate, const PhotoMetadata& metadata)
{
    QString text;
    qsizetype position = 0;
    qsizetype close = 0; // Looked for once: a template may have nothing but opening braces.
    while (position < captionTemplate.size() && text.size() < longestCaption) {
        const qsizetype brace = captionTemplate.indexOf(u'{', position);
        if (close <= brace)
            close = captionTemplate.indexOf(u'}', brace);
        if (brace < 0 || close < 0)
            break;
        text += QStringView(captionTemplate).mid(position, brace - position);
        position = brace + 1;

        const auto read = CaptionToken::read(QStringView(captionTemplate).mid(position, close - position));
        if (!read.token) {
            text += u'{';
            continue;
        }
        text += shownText(*read.token, metadata);
        position = close + 1;
    }
    text += QStringView(captionTemplate).mid(position);
    return text.left(longestCaption);
}

bool isTrimmed(QChar character)
{
    return character.isSpace() || character == u'\u00B7' || character == u'|' || character == u'\u2014' ||
           character == u'-';
}

/// What a missing value leaves behind at the ends of a line goes; in the middle it stays.
QString tidiedLine(QString line)
{
    static const QRegularExpression blanks(QStringLiteral("[ \\t]+"));
    line.replace(blanks, QStringLiteral(" "));
    qsizetype start = 0;
    qsizetype end = line.size();
    while (start < end && isTrimmed(line.at(start)))
        ++start;
    while (end > start && isTrimmed(line.at(end - 1)))
        --end;
    return line.mid(start, end - start);
}

} // namespace

QString expand(const QString& captionTemplate, const PhotoMetadata& metadata)
{
    static const QRegularExpression lineBreak(QStringLiteral("[\\n\\x{0B}\\x{0C}\\r\\x{85}\\x{2028}\\x{2029}]"));
    QStringList lines;
    for (const QString& line : replacedTokens(captionTemplate, metadata).split(lineBreak)) {
        const QString tidied = tidiedLine(line);
        if (!tidied.isEmpty())
            lines.append(tidied);
    }
    return lines.join(u'\n');
}

std::optional<QString> tokenValue(const CaptionToken& token, const PhotoMetadata& metadata)
{
    switch (token.token) {
    case MetadataToken::filename:
        return metadata.filename;
    case MetadataToken::captureDate:
        return metadata.captureDate ? std::optional(dateText(*metadata.captureDate, token.date)) : std::nullopt;
    case MetadataToken::camera:
        return metadata.camera();
    case MetadataToken::cameraMake:
        return metadata.cameraMake;
    case MetadataToken::cameraModel:
        return metadata.cameraModel;
    case MetadataToken::lens:
        return metadata.lens;
    case MetadataToken::focalLength:
        return metadata.focalLength;
    case MetadataToken::aperture:
        return metadata.aperture;
    case MetadataToken::shutterSpeed:
        return metadata.shutterSpeed;
    case MetadataToken::iso:
        return metadata.iso;
    case MetadataToken::exposureCompensation:
        return metadata.exposureCompensation;
    case MetadataToken::artist:
        return metadata.artist;
    case MetadataToken::copyright:
        return metadata.copyright;
    case MetadataToken::title:
        return metadata.title;
    case MetadataToken::caption:
        return metadata.caption;
    case MetadataToken::year:
        return metadata.captureYear();
    }
    return std::nullopt;
}

bool isMissing(MetadataToken token, const PhotoMetadata& metadata)
{
    return tokenValue(token, metadata).value_or(QString()).trimmed().isEmpty();
}

bool isLeftOut(const CaptionToken& token, const PhotoMetadata& metadata)
{
    return token.ifMissing.isEmpty() && isMissing(token.token, metadata);
}

} // namespace ferrow::MetadataTemplateExpander
