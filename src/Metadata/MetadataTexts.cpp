// SPDX-License-Identifier: GPL-3.0-or-later
#include "Metadata/MetadataTexts.h"

#include "Metadata/MetadataExtractor.h"

#include <QLocale>
#include <QRegularExpression>

namespace ferrow::MetadataTexts {

namespace {

QString dateText(const QDateTime& date)
{
    const QDateTime local = date.toLocalTime();
    const QTime time = local.time();
    const QString day = QLocale::c().toString(local.date(), QStringLiteral("yyyy-MM-dd"));
    if (time == QTime(0, 0))
        return day;
    return day +
           QLocale::c().toString(time, time.second() == 0 ? QStringLiteral(" HH:mm") : QStringLiteral(" HH:mm:ss"));
}

/// What people leave out is filled in: the seconds, or the time.
std::optional<QDateTime> typedDate(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(\\d{4})([-:])(\\d\\d)\\2(\\d\\d)(?:[ T](\\d\\d:\\d\\d)(:\\d\\d)?(.*))?\\z"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto part = [&match](int group, const QString& otherwise) {
        return match.capturedView(group).isEmpty() ? otherwise : match.captured(group);
    };
    return MetadataExtractor::parsedDate(QStringLiteral("%1-%2-%3T%4%5%6")
                                             .arg(match.captured(1), match.captured(3), match.captured(4),
                                                  part(5, QStringLiteral("00:00")), part(6, QStringLiteral(":00")),
                                                  match.captured(7)));
}

} // namespace

LocalizedErrorTexts localizedTexts(Error error)
{
    LocalizedErrorTexts texts;
    switch (error) {
    case Error::noDate:
        texts.errorDescription = QStringLiteral("Write the date as in 1987-06-21 or 1987-06-21 14:30.");
        break;
    case Error::tooLong:
        texts.errorDescription = QStringLiteral("This is too long: a value has at most 4,096 characters.");
        break;
    }
    return texts;
}

QString text(const MetadataValue& value)
{
    if (const auto* date = std::get_if<QDateTime>(&value))
        return dateText(*date);
    const auto* text = std::get_if<QString>(&value);
    return text ? *text : QString();
}

MetadataValue parsed(MetadataField field, const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return {};
    if (trimmed.size() > longestText)
        throw Error::tooLong;
    if (field != MetadataField::captureDate)
        return trimmed;
    const auto date = typedDate(trimmed);
    if (!date)
        throw Error::noDate;
    return *date;
}

} // namespace ferrow::MetadataTexts
