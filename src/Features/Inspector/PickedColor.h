// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"

#include <QString>

#include <array>
#include <optional>

namespace ferrow {

/// A color as its picker sees it. Hue, saturation and brightness are kept beside the color that comes of them, since
/// grays have no hue and black has neither: a hue set while the color is gray is there once it gets stronger.
struct PickedColor {
    double hue = 0; ///< 0…1 round the circle. Like all of these.
    double saturation = 0;
    double brightness = 1;
    double alpha = 1;

    /// The picker's place for a color. What the color does not tell is taken from `before`. Components outside 0…1
    /// count as the nearest end.
    [[nodiscard]] static PickedColor from(const RGBAColor& color, const PickedColor& before);

    /// In steps of 1/255, so that the hex text says all of it.
    [[nodiscard]] RGBAColor color() const;
    /// Moved on the field of saturation and brightness, not beyond its edges.
    [[nodiscard]] PickedColor moved(double saturationBy, double brightnessBy) const;

    bool operator==(const PickedColor&) const = default;
};

/// A color that is offered by name.
struct NamedColor {
    const char16_t* name;
    std::uint32_t rgb; ///< 0xRRGGBB.

    [[nodiscard]] QString displayName() const { return QString::fromUtf16(name); }
    [[nodiscard]] RGBAColor color(double alpha = 1) const;
};

/// Papers and mats from light to dark, then tones that go with photos: two rows of seven.
inline constexpr std::array<NamedColor, 14> namedColors{{{u"White", 0xFFFFFF},
                                                         {u"Ivory", 0xF4F1EA},
                                                         {u"Linen", 0xEAE6DC},
                                                         {u"Light Gray", 0xD9D9D9},
                                                         {u"Gray", 0xA8A8A8},
                                                         {u"Dark Gray", 0x6E6E6E},
                                                         {u"Charcoal", 0x3A3A3A},
                                                         {u"Black", 0x000000},
                                                         {u"Mist", 0xC9D3D8},
                                                         {u"Sand", 0xE9C98A},
                                                         {u"Bronze", 0xB98A5A},
                                                         {u"Oxblood", 0x6E3B2E},
                                                         {u"Pine", 0x3F4F45},
                                                         {u"Midnight", 0x22303C}}};

/// Which of them a color is, whatever its alpha.
[[nodiscard]] std::optional<std::size_t> namedColorIndex(const RGBAColor& color);

} // namespace ferrow
