// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/LittleCms.h"

/// The color spaces that photographs commonly come in, and how to tell that a profile describes one of them.
namespace ferrow {

enum class Curve { sRGB, rec709, gamma18, gamma22, adobeGamma, dotGain20 };

struct Chromaticity {
    double x;
    double y;
};

struct RgbSpace {
    const char* name;
    Chromaticity red;
    Chromaticity green;
    Chromaticity blue;
    Chromaticity white;
    Curve curve;
};

/// The definition of one of the RGB spaces; sRGB for anything else.
[[nodiscard]] const RgbSpace& rgbSpace(WellKnown space);
[[nodiscard]] const char* nameOf(WellKnown space);

/// From stored numbers to light.
[[nodiscard]] LittleCms::Curve decodingCurve(const LittleCms::Context& context, Curve curve);

/// The space as the color library's own profile, adapted to D50 with Bradford's matrix.
[[nodiscard]] LittleCms::Profile virtualProfile(const LittleCms::Context& context, const RgbSpace& space);

/// The space that a picture in this profile can be said to be in without a visible difference.
[[nodiscard]] WellKnown recognize(cmsHPROFILE profile, ColorModel model);

} // namespace ferrow
