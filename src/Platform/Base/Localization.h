// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

#include <cstdint>
#include <optional>

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

/// ICU's medium date without time: "Mar 5, 2024" in US English.
[[nodiscard]] QString abbreviatedDate(const QDateTime& date);

/// The file browser's order: digit runs by value, letter case secondary. Negative, 0 or positive. A total order over
/// different texts except where ICU itself finds them equal; sort stably.
[[nodiscard]] int standardCompare(const QString& left, const QString& right);

/// Local wall-clock time of the system's zone as a point in time. A time inside a spring gap moves forward by the gap;
/// a repeated time takes the first. Absent when no such day or time exists in the calendar.
[[nodiscard]] std::optional<QDateTime> localTime(QDate date, QTime time);

} // namespace ferrow::Localization
