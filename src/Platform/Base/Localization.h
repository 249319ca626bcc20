// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QLocale>
#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

/// Texts and order as the user's desktop writes them. Numbers follow LC_NUMERIC, dates LC_TIME, order LC_COLLATE; C and
/// POSIX count as en_US. Safe from any thread; each reads the environment's locale once.
namespace ferrow::Localization {

[[nodiscard]] QLocale numberLocale();

/// Whole number in the user's grouping.
[[nodiscard]] QString number(std::int64_t value);
/// `fractionDigits` digits behind the decimal separator, rounded half away from zero, in the user's grouping.
[[nodiscard]] QString number(double value, int fractionDigits);

/// Size of a file: factor 1,000, units bytes, KB, MB, GB, TB, at most one decimal from KB on ("512.3 MB").
[[nodiscard]] QString fileSize(std::int64_t bytes);

/// ICU's dates without time, each empty for no date. "3/5/24" in US English.
[[nodiscard]] QString shortDate(const QDateTime& date);
/// "Mar 5, 2024".
[[nodiscard]] QString abbreviatedDate(const QDateTime& date);
/// "March 5, 2024".
[[nodiscard]] QString longDate(const QDateTime& date);
/// By a pattern as Unicode's UTS #35 has them: names and digits are the locale's, the calendar is the Gregorian.
[[nodiscard]] QString date(const QDateTime& date, const QString& pattern);

/// The file browser's order: digit runs by value, letter case secondary. Negative, 0 or positive. A total order over
/// different texts except where ICU itself finds them equal; sort stably.
[[nodiscard]] int standardCompare(const QString& left, const QString& right);

/// Bytes that compare, as unsigned numbers, as standardCompare() does the texts.
[[nodiscard]] QByteArray sortKey(const QString& text);

/// Sorts stably in that order by the text of each item, whose key is made once: comparing happens far more often.
template <typename Item, typename TextOf>
void standardSort(std::vector<Item>& items, const TextOf& textOf)
{
    std::vector<std::pair<QByteArray, std::size_t>> keys;
    keys.reserve(items.size());
    for (const Item& item : items)
        keys.emplace_back(sortKey(std::invoke(textOf, item)), keys.size());
    std::ranges::sort(keys); // Equal keys stand in the order of their items.
    std::vector<Item> sorted;
    sorted.reserve(items.size());
    for (const auto& key : keys)
        sorted.push_back(std::move(items[key.second]));
    items = std::move(sorted);
}

/// Local wall-clock time of the system's zone as a point in time. A time inside a spring gap moves forward by the gap;
/// a repeated time takes the first. Absent when no such day or time exists in the calendar.
[[nodiscard]] std::optional<QDateTime> localTime(QDate date, QTime time);

} // namespace ferrow::Localization
