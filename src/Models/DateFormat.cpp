// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/DateFormat.h"

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

/// The longest form of each part of a date. Zones and eras are none: photos don't say them.
constexpr std::pair<char16_t, int> parts[] = {{u'y', 4}, {u'M', 5}, {u'L', 5}, {u'd', 2}, {u'E', 5},
                                              {u'H', 2}, {u'h', 2}, {u'm', 2}, {u's', 2}, {u'a', 1}};

bool isLetter(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

/// Of a letter that is repeated `times`.
QString partFault(QChar letter, qsizetype times)
{
    const auto part = std::ranges::find(parts, letter.unicode(), &std::pair<char16_t, int>::first);
    if (part == std::end(parts))
        return QStringLiteral("“%1” is no part of a date. Words go between apostrophes, as in 'at'.").arg(letter);
    if (times > part->second)
        return QStringLiteral("“%1” is repeated too often: “%2” is its longest form.")
            .arg(letter, QString(part->second, letter));
    return {};
}

} // namespace

QString displayName(DateStyle style)
{
    switch (style) {
    case DateStyle::shortDate:
        return QStringLiteral("Short");
    case DateStyle::medium:
        return QStringLiteral("Medium");
    case DateStyle::longDate:
        return QStringLiteral("Long");
    case DateStyle::iso:
        return QStringLiteral("ISO");
    case DateStyle::custom:
        return QStringLiteral("Custom");
    }
    return {};
}

QString DateFormat::patternFault(QStringView pattern)
{
    if (pattern.size() > longestPattern)
        return QStringLiteral("A date pattern has at most %1 characters.").arg(longestPattern);
    bool hasPart = false;
    bool isQuoted = false;
    for (qsizetype at = 0; at < pattern.size();) {
        const QChar character = pattern[at];
        qsizetype end = at + 1;
        if (character == u'\'') {
            isQuoted = !isQuoted;
        } else if (!isQuoted && isLetter(character)) {
            while (end < pattern.size() && pattern[end] == character)
                ++end;
            if (QString fault = partFault(character, end - at); !fault.isEmpty())
                return fault;
            hasPart = true;
        }
        at = end;
    }
    if (isQuoted)
        return QStringLiteral("The words behind an apostrophe need another one at their end.");
    return hasPart ? QString() : QStringLiteral("A date pattern needs a part of a date, as in d MMMM yyyy.");
}

void feed(ValueHash& hash, const DateFormat& format)
{
    feed(hash, format.style);
    feed(hash, format.pattern);
}

} // namespace ferrow
