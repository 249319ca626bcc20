// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/Localization.h"

#include "Platform/Base/Releaser.h"

#include <QTimeZone>

#include <unicode/ucol.h>
#include <unicode/udat.h>

#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

namespace ferrow::Localization {

namespace {

/// The environment's locale for a category, as "de_DE" or "sr_Latn_RS". The program's own C locale is left alone, since
/// codecs and parsers read numbers by it.
QByteArray environmentLocale(const char* category)
{
    QByteArray name;
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        name = qgetenv(variable);
        if (!name.isEmpty())
            break;
    }
    const QByteArray modifier = name.contains('@') ? name.mid(name.indexOf('@') + 1) : QByteArray();
    name = name.left(name.indexOf('@') < 0 ? name.size() : name.indexOf('@'));
    name = name.left(name.indexOf('.') < 0 ? name.size() : name.indexOf('.'));
    const char* script = modifier == "latin" ? "_Latn" : modifier == "cyrillic" ? "_Cyrl" : "";
    name.insert(name.indexOf('_') < 0 ? name.size() : name.indexOf('_'), script);
    // Besides its bare texts, the C locale has no grouping, and collators ignore their numeric mode in it.
    const bool known = !name.isEmpty() && QLocale(QString::fromLatin1(name)).language() != QLocale::C;
    return known ? name : QByteArray("en_US");
}

/// `value` in plain decimal, rounded half away from zero by the digits that it is written with: 2.675 to two digits is
/// 2.68, although the binary value lies below the tie.
double rounded(double value, int fractionDigits)
{
    std::array<char, 1100> buffer{}; // The longest fixed notation of a double has some 1,080 characters.
    const auto written =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(value), std::chars_format::fixed);
    std::string digits(buffer.data(), written.ptr);
    const std::size_t point = digits.find('.');
    const std::size_t kept = point + 1 + std::size_t(fractionDigits);
    if (point == std::string::npos || digits.size() <= kept)
        return value;
    bool carry = digits[kept] >= '5';
    digits.resize(kept);
    for (std::size_t i = digits.size(); carry && i-- > 0;) {
        if (digits[i] == '.')
            continue;
        carry = digits[i] == '9';
        digits[i] = carry ? '0' : char(digits[i] + 1);
    }
    if (carry)
        digits.insert(0, 1, '1');
    double result = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), result);
    return result == 0 ? 0 : std::copysign(result, value);
}

struct Unit {
    std::int64_t bytes;
    QLatin1StringView name;
};

constexpr std::array<Unit, 4> units{{{1'000, QLatin1StringView("KB")},
                                     {1'000'000, QLatin1StringView("MB")},
                                     {1'000'000'000, QLatin1StringView("GB")},
                                     {1'000'000'000'000, QLatin1StringView("TB")}}};

/// Tenths of a unit, rounded half up.
std::int64_t tenths(std::int64_t bytes, const Unit& unit)
{
    const std::int64_t tenth = unit.bytes / 10;
    return bytes / tenth + (bytes % tenth * 2 >= tenth ? 1 : 0);
}

using Collator = std::unique_ptr<UCollator, Releaser<ucol_close>>;

Collator makeCollator()
{
    UErrorCode status = U_ZERO_ERROR;
    Collator collator(ucol_open(environmentLocale("LC_COLLATE").constData(), &status));
    if (U_FAILURE(status))
        return nullptr;
    ucol_setAttribute(collator.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
    ucol_setAttribute(collator.get(), UCOL_STRENGTH, UCOL_TERTIARY, &status);
    // Some locales pass over punctuation, and file names would then sort as if it were not there.
    ucol_setAttribute(collator.get(), UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, &status);
    return U_FAILURE(status) ? nullptr : std::move(collator);
}

/// Null where ICU has none.
const UCollator* collator()
{
    static thread_local const Collator made = makeCollator();
    return made.get();
}

using DateFormat = std::unique_ptr<UDateFormat, Releaser<udat_close>>;

/// Formats times of UTC, so that only one zone, Qt's, ever decides which day it was. `pattern` goes with UDAT_PATTERN.
DateFormat makeDateFormat(UDateFormatStyle style, const QByteArray& locale, const QString& pattern = {})
{
    static constexpr char16_t utc[] = u"Etc/UTC";
    const UDateFormatStyle time = style == UDAT_PATTERN ? UDAT_PATTERN : UDAT_NONE;
    UErrorCode status = U_ZERO_ERROR;
    DateFormat format(udat_open(time, style, locale.constData(), utc, -1,
                                reinterpret_cast<const UChar*>(pattern.utf16()), int(pattern.size()), &status));
    return U_FAILURE(status) ? nullptr : std::move(format);
}

/// Without a format, or where it fails, the day stands in ISO's form.
QString formatted(const UDateFormat* format, const QDateTime& date)
{
    if (!date.isValid())
        return {};
    const QDateTime here = date.toLocalTime();
    if (!format)
        return here.date().toString(Qt::ISODate);
    const auto milliseconds =
        static_cast<UDate>(QDateTime(here.date(), here.time(), QTimeZone::utc()).toMSecsSinceEpoch());
    QString text(128, Qt::Uninitialized);
    for (;;) {
        UErrorCode status = U_ZERO_ERROR;
        const int length = udat_format(format, milliseconds, reinterpret_cast<UChar*>(text.data()), int(text.size()),
                                       nullptr, &status);
        const bool fits = length <= text.size();
        text.resize(length);
        if (fits)
            return U_FAILURE(status) ? here.date().toString(Qt::ISODate) : text;
    }
}

} // namespace

// What follows is made once a thread, as collators are: they and formats are costly to make and not safe to share.

QLocale numberLocale()
{
    static thread_local const QLocale locale(QString::fromLatin1(environmentLocale("LC_NUMERIC")));
    return locale;
}

QString number(std::int64_t value)
{
    return numberLocale().toString(static_cast<qlonglong>(value));
}

QString number(double value, int fractionDigits)
{
    if (!std::isfinite(value))
        return numberLocale().toString(value);
    return numberLocale().toString(rounded(value, fractionDigits), 'f', fractionDigits);
}

QString fileSize(std::int64_t bytes)
{
    if (bytes < units.front().bytes)
        return number(bytes) + (bytes == 1 ? QStringLiteral(" byte") : QStringLiteral(" bytes"));
    // 999,950 bytes are 1,000.0 KB when rounded, and shown as the next unit.
    std::size_t unit = 0;
    while (unit + 1 < units.size() && tenths(bytes, units[unit]) >= 10'000)
        ++unit;
    const std::int64_t count = tenths(bytes, units[unit]);
    const QString text = count % 10 == 0 ? number(count / 10) : number(double(count) / 10, 1);
    return text + QLatin1Char(' ') + units[unit].name;
}

QString shortDate(const QDateTime& date)
{
    static thread_local const DateFormat format = makeDateFormat(UDAT_SHORT, environmentLocale("LC_TIME"));
    return formatted(format.get(), date);
}

QString abbreviatedDate(const QDateTime& date)
{
    static thread_local const DateFormat format = makeDateFormat(UDAT_MEDIUM, environmentLocale("LC_TIME"));
    return formatted(format.get(), date);
}

QString longDate(const QDateTime& date)
{
    static thread_local const DateFormat format = makeDateFormat(UDAT_LONG, environmentLocale("LC_TIME"));
    return formatted(format.get(), date);
}

QString date(const QDateTime& date, const QString& pattern)
{
    // A batch has one pattern, for all its photos.
    static thread_local std::pair<QString, DateFormat> last;
    if (!last.second || last.first != pattern)
        last = {pattern, makeDateFormat(UDAT_PATTERN, environmentLocale("LC_TIME") + "@calendar=gregorian", pattern)};
    return formatted(last.second.get(), date);
}

int standardCompare(const QString& left, const QString& right)
{
    if (!collator())
        return QString::compare(left, right);
    return ucol_strcoll(collator(), reinterpret_cast<const UChar*>(left.utf16()), int(left.size()),
                        reinterpret_cast<const UChar*>(right.utf16()), int(right.size()));
}

QByteArray sortKey(const QString& text)
{
    if (!collator()) {
        QByteArray units;
        for (const QChar unit : text)
            units.append(char(unit.row())).append(char(unit.cell()));
        return units;
    }
    std::array<std::uint8_t, 512> room{};
    const auto* const units = reinterpret_cast<const UChar*>(text.utf16());
    const int length = ucol_getSortKey(collator(), units, int(text.size()), room.data(), int(room.size()));
    if (std::size_t(length) <= room.size())
        return QByteArray(reinterpret_cast<const char*>(room.data()), length);
    QByteArray key(length, Qt::Uninitialized);
    ucol_getSortKey(collator(), units, int(text.size()), reinterpret_cast<std::uint8_t*>(key.data()), length);
    return key;
}

std::optional<QDateTime> localTime(QDate date, QTime time)
{
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    constexpr qint64 day = 86'400'000;
    const auto offsetAt = [](qint64 moment) {
        return qint64{QDateTime::fromMSecsSinceEpoch(moment).offsetFromUtc()} * 1'000;
    };
    // What QDateTime makes of a wall-clock time that does not exist, or exists twice, differs between its versions, so
    // only its way from moments to offsets is used. A day's distance lies on either side of the time in every zone.
    const qint64 wallClock = QDateTime(date, time, QTimeZone::utc()).toMSecsSinceEpoch();
    const qint64 offsetBefore = offsetAt(wallClock - day);
    const qint64 offsetAfter = offsetAt(wallClock + day);
    const bool existsBefore = offsetAt(wallClock - offsetBefore) == offsetBefore;
    const bool existsAfter = offsetAt(wallClock - offsetAfter) == offsetAfter;
    // A time before the change, and the first of two. A time in the gap exists neither way; counted with the old offset
    // it lands behind the gap, as far as it lay inside.
    const qint64 offset = existsBefore || !existsAfter ? offsetBefore : offsetAfter;
    return QDateTime::fromMSecsSinceEpoch(wallClock - offset);
}

} // namespace ferrow::Localization
