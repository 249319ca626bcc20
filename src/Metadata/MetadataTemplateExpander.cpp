// SPDX-License-Identifier: GPL-3.0-or-later
#include "Metadata/MetadataTemplateExpander.h"

#include "Platform/Base/Localization.h"

#include <QRegularExpression>
#include <QStringList>

namespace ferrow::MetadataTemplateExpander {

namespace {

/// In UTF-16 units, far more than any picture shows. A stored template can repeat a long description by the thousand.
constexpr qsizetype longestCaption = 100'000;

/// Every token replaced by its value. Values are not looked through again: a title may hold braces.
QString replacedTokens(const QString& captionTemplate, const PhotoMetadata& metadata)
{
    QString text;
    qsizetype position = 0;
    while (position < captionTemplate.size() && text.size() < longestCaption) {
        const qsizetype brace = captionTemplate.indexOf(u'{', position);
        if (brace < 0)
            break;
        text += QStringView(captionTemplate).mid(position, brace - position);
        position = brace + 1;

        const QStringView rest = QStringView(captionTemplate).mid(brace);
        const auto& cases = CodedCases<MetadataToken>::table;
        const auto token = std::find_if(cases.begin(), cases.end(), [&](const auto& candidate) {
            return rest.startsWith(templateValue(candidate.value));
        });
        if (token == cases.end()) {
            text += u'{';
            continue;
        }
        text += tokenValue(token->value, metadata).value_or(QString());
        position = brace + templateValue(token->value).size();
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

std::optional<QString> tokenValue(MetadataToken token, const PhotoMetadata& metadata)
{
    switch (token) {
    case MetadataToken::filename:
        return metadata.filename;
    case MetadataToken::captureDate:
        return metadata.captureDate ? std::optional(Localization::abbreviatedDate(*metadata.captureDate))
                                    : std::nullopt;
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

} // namespace ferrow::MetadataTemplateExpander
