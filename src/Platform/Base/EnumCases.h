// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>
#include <type_traits>

namespace ferrow {

/// Whether the value is that of an enumerator. The enumeration must stand in a named namespace.
template <auto Value>
[[nodiscard]] constexpr bool isEnumerator()
{
    // The compilers write "Value = ferrow::Alpha::none" for an enumerator and "Value = (ferrow::Alpha)3" for any other.
    constexpr std::string_view signature = __PRETTY_FUNCTION__;
    constexpr std::string_view before = "Value = ";
    return signature[signature.find(before) + before.size()] != '(';
}

/// The last of the enumerators that count on from `First`: what a value that comes from outside is held against, so
/// that no range has to be mended when an enumerator is added.
template <auto First>
[[nodiscard]] constexpr auto lastEnumerator()
{
    using Enum = decltype(First);
    constexpr auto next = Enum(std::underlying_type_t<Enum>(First) + 1);
    if constexpr (isEnumerator<next>())
        return lastEnumerator<next>();
    else
        return First;
}

} // namespace ferrow
