// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/RGBAColor.h"
#include "Models/ValueHash.h"
#include "Platform/Base/PixelSize.h"

#include <QString>

namespace ferrow {

enum class BorderUnit { pixels, percent };
/// "px" or "%".
[[nodiscard]] QString suffix(BorderUnit unit);

/// A length at each side of a picture.
struct SideLengths {
    double top = 0;
    double right = 0;
    double bottom = 0;
    double left = 0;

    bool operator==(const SideLengths&) const = default;
};

/// What surrounds the photo.
struct Border {
    BorderUnit unit = BorderUnit::pixels;
    double width = 120; ///< Output pixels at full size, or percent of the photo's shorter side.
    RGBAColor color = RGBAColor::white;

    /// In pixels around a photo of `size`, not rounded; a negative width counts as 0.
    [[nodiscard]] SideLengths around(PixelSize size) const;
    /// Switches the unit and keeps the thickness that a photo of `size` shows.
    void convert(BorderUnit to, PixelSize size);

    bool operator==(const Border&) const = default;
};

template <>
struct CodedCases<BorderUnit> {
    static constexpr std::array<CodedCase<BorderUnit>, 2> table{
        {{BorderUnit::pixels, u"Pixels"}, {BorderUnit::percent, u"Percent"}}};
};

void feed(ValueHash& hash, const Border& border);

} // namespace ferrow

template <>
struct std::hash<ferrow::Border> : ferrow::ValueHasher {
};
