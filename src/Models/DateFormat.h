// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/ValueHash.h"

#include <QString>

namespace ferrow {

/// The first three are the user's locale's, `iso` and `custom` are in the same order everywhere.
enum class DateStyle { shortDate, medium, longDate, iso, custom };

/// Label in lists and on chips: "Long".
[[nodiscard]] QString displayName(DateStyle style);

/// How a point in time is written.
struct DateFormat {
    DateStyle style = DateStyle::medium;
    QString pattern; ///< Of `custom` alone, and without a fault.

    /// Of a pattern, in UTF-16 units. What it shows is then no longer than some 2,000.
    static constexpr qsizetype longestPattern = 100;
    /// Why a text is no pattern, a sentence; empty where it is one. The letters are those of Unicode's date patterns
    /// (UTS #35): y, M or L, d, E, H or h, m, s and a, repeated as often as they have forms. Other letters of a to z
    /// stand between apostrophes.
    [[nodiscard]] static QString patternFault(QStringView pattern);

    bool operator==(const DateFormat&) const = default;
};

template <>
struct CodedCases<DateStyle> {
    static constexpr std::array<CodedCase<DateStyle>, 5> table{{{DateStyle::shortDate, u"short"},
                                                                {DateStyle::medium, u"medium"},
                                                                {DateStyle::longDate, u"long"},
                                                                {DateStyle::iso, u"iso"},
                                                                {DateStyle::custom, u"custom"}}};
};

void feed(ValueHash& hash, const DateFormat& format);

} // namespace ferrow
