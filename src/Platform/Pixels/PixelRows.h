// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/PixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
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

    static void setComponent(std::byte* pixel, int channel, Component value)
    {
        std::memcpy(pixel + std::size_t(channel) * sizeof(Component), &value, sizeof value);
    }
};

/// The nearest level of the other depth: 255 is 65535. More bits lose nothing on the way there and back.
template <typename To, typename From>
constexpr To levelAs(From value)
{
    if constexpr (sizeof(To) == sizeof(From))
        return value;
    else if constexpr (sizeof(To) > sizeof(From))
        return static_cast<To>(value * 257U);
    else
        return static_cast<To>((std::uint32_t{value} * 255 + 32767) / 65535);
}

template <typename Source, typename Target>
inline void carryAlpha(const std::byte* in, std::byte* out)
{
    using Component = typename Target::ComponentType;
    if constexpr (Target::hasAlpha && Source::hasAlpha)
        Target::setComponent(out, 3, levelAs<Component>(Source::component(in, Source::alphaChannel)));
    else if constexpr (Target::hasAlpha)
        Target::setComponent(out, 3, std::numeric_limits<Component>::max());
}

/// Calls function<Component>() with the type of a format's components.
template <typename Function>
void withComponent(PixelFormat format, const Function& function)
{
    if (format.bitsPerComponent == 16)
        function.template operator()<std::uint16_t>();
    else
        function.template operator()<std::uint8_t>();
}

namespace PixelTypes {

template <typename Source, typename Component, typename Function>
auto withTargetAlpha(PixelFormat target, const Function& function)
{
    return target.hasAlpha() ? function.template operator()<Source, PixelType<Component, 3, true>>()
                             : function.template operator()<Source, PixelType<Component, 3, false>>();
}

template <typename Source, typename Function>
auto withTarget(PixelFormat target, const Function& function)
{
    return target.bitsPerComponent == 16 ? withTargetAlpha<Source, std::uint16_t>(target, function)
                                         : withTargetAlpha<Source, std::uint8_t>(target, function);
}

template <typename Component, int colors, typename Function>
auto withAlphas(PixelFormat source, PixelFormat target, const Function& function)
{
    return source.hasAlpha() ? withTarget<PixelType<Component, colors, true>>(target, function)
                             : withTarget<PixelType<Component, colors, false>>(target, function);
}

} // namespace PixelTypes

/// Calls function<Source, Target>() with the types of a source of one or three components and of an RGB target.
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
