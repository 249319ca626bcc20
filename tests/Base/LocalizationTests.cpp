// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/Localization.h"

#include "Support/TestSupport.h"

#include <QTimeZone>

#include <algorithm>
#include <functional>
#include <memory>
#include <thread>

namespace ferrow::test {
namespace {

using namespace Localization;
using namespace Qt::StringLiterals;

/// Sets a variable while the answer lives.
auto environment(const char* name, const QByteArray& value)
{
    const auto restore = [name, before = qgetenv(name)](const void*) { qputenv(name, before); };
    qputenv(name, value);
    return std::unique_ptr<const void, decltype(restore)>(name, restore);
}

/// Locales are read once a thread.
template <typename Action>
auto inLocale(const QByteArray& locale, Action action)
{
    const auto all = environment("LC_ALL", locale);
    decltype(action()) result{};
    std::thread([&] { result = action(); }).join();
    return result;
}

TEST(Localization, roundsDecimalsHalfAwayFromZero)
{
    const auto numbers = [](int digits, std::initializer_list<double> values) {
        QStringList texts;
        for (const double value : values)
            texts += number(value, digits);
        return texts.join(u' ');
    };
    EXPECT_EQ(numbers(0, {0.5, -2.5, 2.4999, 35, 1e15}), u"1 -3 2 35 1,000,000,000,000,000"_s);
    EXPECT_EQ(numbers(1, {0.25, -0.25, 1.0 / 3, -0.04, 5e-324, 9.96}), u"0.3 -0.3 0.3 0.0 0.0 10.0"_s);
    EXPECT_EQ(numbers(1, {999.95, 1234567.25}), u"1,000.0 1,234,567.3"_s);
    EXPECT_EQ(numbers(2, {2.675, 1.005}), u"2.68 1.01"_s);
}

TEST(Localization, writesFileSizes)
{
    QStringList sizes;
    for (const std::int64_t bytes :
         {0L, 1L, 999L, 1'000L, 1'049L, 1'050L, 999'949L, 999'950L, 999'950'000'000L, INT64_MAX})
        sizes += fileSize(bytes);
    EXPECT_EQ(sizes.join(u'|'), u"0 bytes|1 byte|999 bytes|1 KB|1 KB|1.1 KB|999.9 KB|1 MB|1 TB|9,223,372 TB"_s);
}

TEST(Localization, followsTheEnvironmentAndTakesTheCLocaleForEnglish)
{
    const QDateTime day(QDate(2024, 12, 31), QTime(23, 30), QTimeZone::utc()); // The next where the tests run.
    const auto all = [&] {
        return number(std::int64_t{1234567}) + u'|' + fileSize(1'500) + u'|' + abbreviatedDate(day);
    };
    for (const char* plain : {"C", "C.UTF-8", "en_US.UTF-8", "no such locale"})
        EXPECT_EQ(inLocale(plain, all), u"1,234,567|1.5 KB|Jan 1, 2025"_s) << plain;
    EXPECT_EQ(inLocale("sv_SE@euro", all), u"1\u00A0234\u00A0567|1,5 KB|1 jan. 2025"_s);
    // LC_ALL goes before the category, the category before LANG.
    const auto numeric = environment("LC_NUMERIC", "de_DE.UTF-8");
    const auto language = environment("LANG", "fr_FR.UTF-8");
    EXPECT_EQ(inLocale("", all), u"1.234.567|1,5 KB|1 janv. 2025"_s);
    EXPECT_EQ(abbreviatedDate(QDateTime()), QString());
}

TEST(Localization, writesDatesInEveryLength)
{
    const QDateTime day(QDate(2024, 12, 31), QTime(5, 6, 7), QTimeZone::utc());
    const auto all = [&] {
        return shortDate(day) + u'|' + longDate(day) + u'|' + date(day, u"d MMMM y"_s) + u'|' +
               date(QDateTime(), u"y"_s);
    };
    EXPECT_EQ(inLocale("C", all), u"12/31/24|December 31, 2024|31 December 2024|"_s);
    EXPECT_EQ(inLocale("de_DE.UTF-8", all), u"31.12.24|31. Dezember 2024|31 Dezember 2024|"_s);
    // Its own calendar counts otherwise; a pattern's years are those of the year token.
    const QString thai = inLocale("th_TH.UTF-8", all);
    EXPECT_TRUE(thai.contains(u"2567|31 "_s) && thai.contains(u" 2024|"_s)) << thai.toStdString();
    const QString often = u"EEEEMMMM"_s.repeated(12);
    EXPECT_EQ(date(day, often), u"TuesdayDecember"_s.repeated(12)) << "longer than most";
}

TEST(Localization, ordersAsFileBrowsersDo)
{
    // Case decides only between names that are otherwise equal, small letters first; Å is a kind of A in English.
    const QStringList english{u"/p/Ångström"_s, u"/p/IMG_2"_s,   u"/p/img_9"_s,    u"/p/img_10"_s,
                              u"/p/IMG_10"_s,   u"/p/Shoot 2"_s, u"/p/shoot 10"_s, u"/p/zebra"_s};
    QStringList swedish = english;
    swedish.move(0, 7);
    const auto sorted = [&] {
        QStringList names(english.rbegin(), english.rend());
        std::sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return standardCompare(a, b) < 0; });
        return names;
    };
    const auto sortedByKeys = [&] {
        std::vector<QString> names(english.rbegin(), english.rend());
        standardSort(names, std::identity());
        return QStringList(names.begin(), names.end());
    };
    EXPECT_EQ(inLocale("C", sorted), english);
    EXPECT_EQ(inLocale("sv_SE.UTF-8", sorted), swedish);
    EXPECT_EQ(inLocale("C", sortedByKeys), english);
    EXPECT_EQ(inLocale("sv_SE.UTF-8", sortedByKeys), swedish);
    EXPECT_EQ(sortKey(u"IMG_2"_s), sortKey(u"IMG_02"_s));
    EXPECT_LT(sortKey(QString(1000, u'a') + u'1'), sortKey(QString(1000, u'a') + u'2'));
    EXPECT_LT(standardCompare(u"a-b"_s, u"ab"_s), 0);
    EXPECT_EQ(standardCompare(u"IMG_2"_s, u"IMG_02"_s), 0);
}

TEST(Localization, placesWallClockTimes)
{
    const auto utcOf = [](const char* zone, const char* wallClock) {
        const auto here = environment("TZ", zone);
        const QDateTime parsed = QDateTime::fromString(QString::fromLatin1(wallClock), u"yyyy-MM-dd HH:mm"_s);
        const auto moment = localTime(parsed.date(), parsed.time());
        return moment ? moment->toUTC().toString(u"yyyy-MM-dd HH:mm"_s).toStdString() : "";
    };
    const char* const berlin = "Europe/Berlin";
    const char* const newYork = "America/New_York";
    EXPECT_EQ(utcOf(berlin, "2024-01-15 12:00"), "2024-01-15 11:00");
    EXPECT_EQ(utcOf(berlin, "2024-07-15 12:00"), "2024-07-15 10:00");
    EXPECT_EQ(utcOf(berlin, "2024-03-31 02:30"), "2024-03-31 01:30"); // In the gap: reads 03:30.
    EXPECT_EQ(utcOf(newYork, "2024-03-10 02:30"), "2024-03-10 07:30");
    EXPECT_EQ(utcOf(berlin, "2024-03-31 03:00"), "2024-03-31 01:00");
    EXPECT_EQ(utcOf(berlin, "2024-10-27 01:59"), "2024-10-26 23:59");
    EXPECT_EQ(utcOf(berlin, "2024-10-27 02:30"), "2024-10-27 00:30"); // The first of two.
    EXPECT_EQ(utcOf(newYork, "2024-11-03 01:30"), "2024-11-03 05:30");
    EXPECT_EQ(utcOf(berlin, "2024-10-27 03:00"), "2024-10-27 02:00");
    EXPECT_EQ(utcOf("Pacific/Apia", "2011-12-30 12:00"), "2011-12-30 22:00"); // A day left out.
    EXPECT_EQ(utcOf(newYork, "1960-07-01 12:00"), "1960-07-01 16:00");
    EXPECT_EQ(utcOf(berlin, "2023-02-29 12:00"), "");
}

} // namespace
} // namespace ferrow::test
