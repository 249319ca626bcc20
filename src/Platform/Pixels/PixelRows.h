// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/PixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// Pixel formats as types, so that the loops over pixels are compiled for each of them.
namespace ferrow {

/// A format of gray, RGB or Lab pixels.
template <typename Component, int colors, bool alpha>
struct PixelType {
    using ComponentType = Component;
    static constexpr bool isGray = colors == 1;
    static constexpr bool hasAlpha = alpha;
    static constexpr int alphaChannel = colors;
    static constexpr std::size_t bytes = sizeof(Component) * (colors + (alpha ? 1 : 0));

    static Component component(const std::byte* pixel, int channel)
    {
        Component value;
        std::memcpy(&value, pixel + std::size_t(channel) * sizeof(Component), sizeof value);
        return value;
    }
};

inline std::byte eightBits(std::uint8_t value)
{
    return std::byte{value};
}
/// The nearest level: 65535 is 255.
inline std::byte eightBits(std::uint16_t value)
{
    return static_cast<std::byte>((std::uint32_t{value} * 255 + 32767) / 65535);
}

template <typename Source, typename Target>
inline void carryAlpha(const std::byte* in, std::byte* out)
{
    if constexpr (Target::hasAlpha && Source::hasAlpha)
        out[3] = eightBits(Source::component(in, Source::alphaChannel));
    else if constexpr (Target::hasAlpha)
        out[3] = std::byte{255};
}

namespace PixelTypes {

template <typename Component, int colors, typename Function>
auto withAlphas(PixelFormat source, PixelFormat target, const Function& function)
{
    const auto chosen = [&]<bool alpha>() {
        using Source = PixelType<Component, colors, alpha>;
        return target.hasAlpha() ? function.template operator()<Source, PixelType<std::uint8_t, 3, true>>()
                                 : function.template operator()<Source, PixelType<std::uint8_t, 3, false>>();
    };
    return source.hasAlpha() ? chosen.template operator()<true>() : chosen.template operator()<false>();
}

} // namespace PixelTypes

/// Calls function<Source, Target>() with the types of a source of one or three components and of an RGB target of 8
/// bits.
template <typename Function>
auto withPixelTypes(PixelFormat source, PixelFormat target, const Function& function)
{
    const bool deep = source.bitsPerComponent == 16;
    if (source.colorChannels() == 1)
        return deep ? PixelTypes::withAlphas<std::uint16_t, 1>(source, target, function)
                    : PixelTypes::withAlphas<std::uint8_t, 1>(source, target, function);
    return deep ? PixelTypes::withAlphas<std::uint16_t, 3>(source, target, function)
                : PixelTypes::withAlphas<std::uint8_t, 3>(source, target, function);
}

} // namespace ferrow
