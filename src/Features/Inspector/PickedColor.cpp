// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PickedColor.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

double inStepsOf255(double component)
{
    return std::round(component * 255) / 255;
}

double hueOf(double red, double green, double blue, double greatest, double span)
{
    double sixth = 0;
    if (greatest == red)
        sixth = (green - blue) / span;
    else if (greatest == green)
        sixth = 2 + (blue - red) / span;
    else
        sixth = 4 + (red - green) / span;
    return sixth < 0 ? sixth / 6 + 1 : sixth / 6;
}

} // namespace

PickedColor PickedColor::from(const RGBAColor& color, const PickedColor& before)
{
    const double red = std::clamp(color.red, 0.0, 1.0);
    const double green = std::clamp(color.green, 0.0, 1.0);
    const double blue = std::clamp(color.blue, 0.0, 1.0);
    const double greatest = std::max({red, green, blue});
    const double span = greatest - std::min({red, green, blue});

    PickedColor picked = before;
    picked.brightness = greatest;
    picked.alpha = std::clamp(color.alpha, 0.0, 1.0);
    if (greatest > 0)
        picked.saturation = span / greatest;
    if (span > 0)
        picked.hue = hueOf(red, green, blue, greatest, span);
    return picked;
}

RGBAColor PickedColor::color() const
{
    const double around = (hue - std::floor(hue)) * 6;
    // Each component is the same trapezoid over the circle, a third of the way apart from the next.
    const auto component = [&](double start) {
        const double place = std::fmod(start + around, 6.0);
        const double missing = std::clamp(std::min(place, 4 - place), 0.0, 1.0);
        return inStepsOf255(brightness * (1 - saturation * missing));
    };
    return {component(5), component(3), component(1), inStepsOf255(alpha)};
}

PickedColor PickedColor::moved(double saturationBy, double brightnessBy) const
{
    PickedColor result = *this;
    result.saturation = std::clamp(saturation + saturationBy, 0.0, 1.0);
    result.brightness = std::clamp(brightness + brightnessBy, 0.0, 1.0);
    return result;
}

RGBAColor NamedColor::color(double alpha) const
{
    return {double(rgb >> 16 & 0xFF) / 255, double(rgb >> 8 & 0xFF) / 255, double(rgb & 0xFF) / 255, alpha};
}

std::optional<std::size_t> namedColorIndex(const RGBAColor& color)
{
    const auto close = [](double a, double b) { return std::abs(a - b) < 0.5 / 255; };
    for (std::size_t i = 0; i < namedColors.size(); ++i) {
        const RGBAColor named = namedColors[i].color();
        if (close(named.red, color.red) && close(named.green, color.green) && close(named.blue, color.blue))
            return i;
    }
    return std::nullopt;
}

} // namespace ferrow
