// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ValueHash.h"

#include <QString>

namespace ferrow {

/// Components nominally 0…1 in sRGB; kept as given, never clamped here.
struct RGBAColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static const RGBAColor white;
    static const RGBAColor black;

    /// "red 255, green 255, blue 255". The components must be finite: any other ends the program.
    [[nodiscard]] QString accessibilityDescription() const;

    bool operator==(const RGBAColor&) const = default;
};

inline constexpr RGBAColor RGBAColor::white{1, 1, 1, 1};
inline constexpr RGBAColor RGBAColor::black{0, 0, 0, 1};

void feed(ValueHash& hash, const RGBAColor& color);

} // namespace ferrow

template <>
struct std::hash<ferrow::RGBAColor> : ferrow::ValueHasher {
};
