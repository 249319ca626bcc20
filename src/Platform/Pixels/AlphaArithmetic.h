// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

/// Components and the alpha that they are weighted by: whole numbers, rounded to nearest.
namespace ferrow {

/// a × b ÷ the largest component, exact for all of 8 and of 16 bits: a component made premultiplied, or faded.
template <typename Component = std::uint8_t>
constexpr Component multiplied(std::uint32_t a, std::uint32_t b)
{
    constexpr int bits = std::numeric_limits<Component>::digits;
    const std::uint32_t product = a * b + (1U << (bits - 1));
    return Component((product + (product >> bits)) >> bits);
}

/// The component again that was premultiplied by `alpha`; the largest where `color` is more than alpha allows, 0 where
/// nothing is known of it. Both in the range of a component of 8 or 16 bits, for which 32 bits suffice.
template <typename Component>
constexpr Component straightened(std::uint32_t color, std::uint32_t alpha)
{
    constexpr std::uint32_t most = std::numeric_limits<Component>::max();
    return alpha == 0 ? Component{0} : static_cast<Component>(std::min(most, (color * most + alpha / 2) / alpha));
}

} // namespace ferrow
