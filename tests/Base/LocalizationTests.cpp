// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/Localization.h"

#include "Platform/Base/PixelSize.h"
#include "Support/TestSupport.h"

#include <algorithm>
#include <ctime>
#include <thread>

namespace ferrow::test {
namespace {

using namespace Localization;

/// Sets a variable for its lifetime.
class Environment {
public:
    Environment(const char* name, const QByteArray& value) : name_(name), before_(qgetenv(name))
    {
        qputenv(name_, value);
        ::tzset();
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment()
    {
        qputenv(name_, before_);
        ::tzset();
    }

private:
    const char* name_;
    QByteArray before_;
};

/// Locales are read once a thread.
template <typename Action>
auto inLocale(const QByteArray& locale, Action action)
{
    const Environment all("LC_ALL", locale);
    decltype(action()) result{};
    std::thread([&] { result = action(); }).join();
    return result;
}

TEST(Localization, roundsDecimalsHalfAwayFromZero)
{
    struct Row {
        double value;
        int digits;
        const char* text;
    };
    const Row rows[] = {
        {0.25, 1, "0.3"},
        {-0.25, 1, "-0.3"},
        {2.675, 2, "2.68"},
        {1.005, 2, "1.01"},
        {0.15, 1, "0.2"},
        {0.35, 1, "0.4"},
        {1.45, 1, "1.5"},
        {0.5, 0, "1"},
        {-2.5, 0, "-3"},
        {2.4999, 0, "2"},
        {0.04, 1, "0.0"},
        {-0.04, 1, "0.0"},
        {9.96, 1, "10.0"},
        {999.95, 1, "1,000.0"},
        {99.5, 0, "100"},
        {1234567.25, 1, "1,234,567.3"},
        {1.0 / 3, 1, "0.3"},
        {5e-324, 1, "0.0"},
        {35, 0, "35"},
        {23.5, 1, "23.5"},
        {1e21, 0, "1,000,000,000,000,000,000,000"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(number(row.value, row.digits), QString::fromLatin1(row.text)) << row.value;
}

TEST(Localization, writesFileSizes)
{
    const std::pair<std::int64_t, const char*> rows[] = {
        {0, "0 bytes"},
        {1, "1 byte"},
        {999, "999 bytes"},
        {1'000, "1 KB"},
        {1'049, "1 KB"},
        {1'050, "1.1 KB"},
        {999'949, "999.9 KB"},
        {999'950, "1 MB"},
        {512'300'000, "512.3 MB"},
        {2'000'000'000, "2 GB"},
        {999'950'000'000, "1 TB"},
        {INT64_MAX, "9,223,372 TB"},
    };
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(fileSize(bytes), QString::fromLatin1(text));
    EXPECT_EQ(inLocale("de_DE.UTF-8", [] { return fileSize(1'500); }), QStringLiteral("1,5 KB"));
}

TEST(Localization, followsTheEnvironmentAndTakesTheCLocaleForEnglish)
{
    const QDateTime day(QDate(2024, 3, 5), QTime(23, 30));
    const auto all = [&] {
        return number(std::int64_t{1234567}) + u'|' + number(0.5, 1) + u'|' + abbreviatedDate(day);
    };
    for (const char* plain : {"C", "POSIX", "C.UTF-8", "en_US.UTF-8", "no such locale"})
        EXPECT_EQ(inLocale(plain, all), QStringLiteral("1,234,567|0.5|Mar 5, 2024")) << plain;
    EXPECT_EQ(inLocale("de_DE.UTF-8", all), QStringLiteral("1.234.567|0,5|05.03.2024"));
    EXPECT_EQ(inLocale("sv_SE@euro", all), QStringLiteral("1\u00A0234\u00A0567|0,5|5 mars 2024"));
    // LC_ALL goes before the category, the category before LANG.
    const Environment numeric("LC_NUMERIC", "de_DE.UTF-8");
    const Environment language("LANG", "fr_FR.UTF-8");
    EXPECT_EQ(inLocale("", all), QStringLiteral("1.234.567|0,5|5 mars 2024"));
    EXPECT_EQ((PixelSize{6000, 4000}.formatted()), QStringLiteral("6,000 × 4,000"));
}

TEST(Localization, ordersAsFileBrowsersDo)
{
    const QStringList expected{
        QStringLiteral("/p/IMG_2.jpg"),  QStringLiteral("/p/img_9.jpg"), QStringLiteral("/p/IMG_10.jpg"),
        QStringLiteral("/p/img_10.jpg"), QStringLiteral("/p/Shoot 2"),   QStringLiteral("/p/shoot 10"),
        QStringLiteral("/p/zebra"),      QStringLiteral("/p/Ångström"),
    };
    QStringList english = expected;
    // Case decides only between names that are otherwise equal, small letters first; Å is a kind of A in English.
    english.move(7, 0);
    english.swapItemsAt(3, 4);
    const auto sorted = [&] {
        QStringList names = expected;
        std::reverse(names.begin(), names.end());
        std::stable_sort(names.begin(), names.end(),
                         [](const QString& a, const QString& b) { return standardCompare(a, b) < 0; });
        return names;
    };
    for (const char* locale : {"C", "en_US.UTF-8"})
        EXPECT_EQ(inLocale(locale, sorted), english) << locale;
    QStringList swedish = english;
    swedish.move(0, 7);
    EXPECT_EQ(inLocale("sv_SE.UTF-8", sorted), swedish);
    EXPECT_LT(standardCompare(QStringLiteral("a-b"), QStringLiteral("ab")), 0);
    EXPECT_EQ(standardCompare(QStringLiteral("IMG_2"), QStringLiteral("IMG_02")), 0);
}

TEST(Localization, placesWallClockTimes)
{
    struct Row {
        const char* name;
        const char* zone;
        const char* wallClock;
        const char* moment; ///< In UTC; empty for none.
    };
    const Row rows[] = {
        {"winter", "Europe/Berlin", "2024-01-15T12:00:00", "2024-01-15T11:00:00Z"},
        {"summer", "Europe/Berlin", "2024-07-15T12:00:00", "2024-07-15T10:00:00Z"},
        {"before the gap", "Europe/Berlin", "2024-03-31T01:59:59", "2024-03-31T00:59:59Z"},
        {"in the gap", "Europe/Berlin", "2024-03-31T02:30:00", "2024-03-31T01:30:00Z"}, // Reads 03:30.
        {"behind the gap", "Europe/Berlin", "2024-03-31T03:00:00", "2024-03-31T01:00:00Z"},
        {"before the repeat", "Europe/Berlin", "2024-10-27T01:59:59", "2024-10-26T23:59:59Z"},
        {"repeated", "Europe/Berlin", "2024-10-27T02:30:00", "2024-10-27T00:30:00Z"},
        {"behind the repeat", "Europe/Berlin", "2024-10-27T03:00:00", "2024-10-27T02:00:00Z"},
        {"gap, west", "America/New_York", "2024-03-10T02:30:00", "2024-03-10T07:30:00Z"},
        {"repeated, west", "America/New_York", "2024-11-03T01:30:00", "2024-11-03T05:30:00Z"},
        {"half an hour", "Australia/Lord_Howe", "2024-10-06T02:15:00", "2024-10-05T15:45:00Z"},
        {"a day left out", "Pacific/Apia", "2011-12-30T12:00:00", "2011-12-30T22:00:00Z"},
        {"the day before it", "Pacific/Apia", "2011-12-29T23:00:00", "2011-12-30T09:00:00Z"},
        {"the day behind it", "Pacific/Apia", "2011-12-31T00:30:00", "2011-12-30T10:30:00Z"},
        {"old photo in summer time", "America/New_York", "1960-07-01T12:00:00", "1960-07-01T16:00:00Z"},
        {"no such day", "Europe/Berlin", "2023-02-29T12:00:00", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Environment zone("TZ", row.zone);
        const QString text = QString::fromLatin1(row.wallClock);
        const auto moment =
            localTime(QDate::fromString(text.left(10), Qt::ISODate), QTime::fromString(text.mid(11), Qt::ISODate));
        EXPECT_EQ(moment ? moment->toUTC().toString(Qt::ISODate) : QString(), QString::fromLatin1(row.moment));
    }
    EXPECT_FALSE(localTime(QDate(2024, 1, 1), QTime(24, 0)));
    const Environment zone("TZ", "Europe/Berlin");
    EXPECT_EQ(localTime(QDate(2024, 3, 31), QTime(2, 30))->time(), QTime(3, 30));
}

TEST(Localization, datesAMomentByTheSystemsZone)
{
    const QDateTime moment(QDate(2024, 12, 31), QTime(23, 30), Qt::UTC);
    EXPECT_EQ(abbreviatedDate(moment), QStringLiteral("Jan 1, 2025"));
    EXPECT_EQ(abbreviatedDate(QDateTime()), QString());
}

} // namespace
} // namespace ferrow::test
