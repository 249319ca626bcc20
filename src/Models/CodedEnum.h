// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <array>
#include <optional>
#include <span>

namespace ferrow {

/// An enumeration's cases in declaration order with their raw values: what files hold and, for most, what users read.
/// Each coded enumeration specializes this with `static constexpr std::array<Case, n> table`.
template <typename Enum>
struct CodedCases;

template <typename Enum>
struct CodedCase {
    Enum value;
    const char16_t* rawValue;
};

/// The raw value of a case.
template <typename Enum>
[[nodiscard]] QString rawValue(Enum value)
{
    for (const auto& entry : CodedCases<Enum>::table)
        if (entry.value == value)
            return QString::fromUtf16(entry.rawValue);
    return {};
}

/// The case with exactly this raw value; absent for any other text.
template <typename Enum>
[[nodiscard]] std::optional<Enum> fromRawValue(QStringView text)
{
    for (const auto& entry : CodedCases<Enum>::table)
        if (text == QStringView(entry.rawValue))
            return entry.value;
    return std::nullopt;
}

/// All cases in declaration order: the order of menus.
template <typename Enum>
[[nodiscard]] constexpr auto allCases()
{
    std::array<Enum, CodedCases<Enum>::table.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i)
        cases[i] = CodedCases<Enum>::table[i].value;
    return cases;
}

} // namespace ferrow
