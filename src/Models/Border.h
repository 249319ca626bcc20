// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/RGBAColor.h"
#include "Models/ValueHash.h"
#include "Platform/Base/PixelSize.h"

#include <QString>

#include <optional>

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

/// A length with its unit: output pixels at full size, or percent of the photo's shorter side.
struct Length {
    double value = 0;
    BorderUnit unit = BorderUnit::pixels;

    /// For a photo of `size`, not rounded; a negative value counts as 0.
    [[nodiscard]] double pixels(PixelSize size) const;
    /// Switches the unit and keeps what a photo of `size` shows; 0 for an empty one.
    [[nodiscard]] Length converted(BorderUnit to, PixelSize size) const;

    bool operator==(const Length&) const = default;
};

/// The ratio that the canvas grows to. It never shrinks below photo and border, and the photo is never cropped.
struct FrameShape {
    double width = 1; ///< Only the ratio of the two counts; both above 0.
    double height = 1;
    bool turnsWithPhoto = false; ///< Width and height change places for photos that lie the other way.
    /// Where photo and border stand in the room added: -100 at its top (or left), 0 in the middle, 100 at its bottom
    /// (or right).
    double balance = 0;

    /// Width ÷ height for that photo. A square one lies no way, and turns nothing.
    [[nodiscard]] double ratioFor(PixelSize photo) const;

    bool operator==(const FrameShape&) const = default;
};

/// The photo itself as its background, filling the canvas.
struct BlurredBackground {
    double blur = 40; ///< 0…100; the standard deviation in thousandths of the enlarged photo's shorter side.
    double dim = 25;  ///< 0…100 %: how much of its light is taken.

    bool operator==(const BlurredBackground&) const = default;
};

/// A line around the photo, in the border.
struct FrameLine {
    Length thickness{6, BorderUnit::pixels};
    Length distance{48, BorderUnit::pixels}; ///< From the photo's edge outward to the line's inner edge.
    RGBAColor color = RGBAColor::black;

    bool operator==(const FrameLine&) const = default;
};

/// How the photo ends where the border begins.
struct PhotoEdge {
    Length cornerRadius;
    bool hasShadow = false;

    bool operator==(const PhotoEdge&) const = default;
};

/// What surrounds the photo.
struct Border {
    BorderUnit unit = BorderUnit::pixels; ///< Of `width` and `sides`.
    double width = 120;                   ///< Output pixels at full size, or percent of the photo's shorter side.
    RGBAColor color = RGBAColor::white;
    std::optional<SideLengths> sides = std::nullopt;                   ///< In place of `width`.
    std::optional<BlurredBackground> blurredBackground = std::nullopt; ///< In place of `color`.
    std::optional<FrameShape> shape = std::nullopt;                    ///< Absent: as photo and border are.
    std::optional<FrameLine> line = std::nullopt;
    PhotoEdge photoEdge = {};

    /// In pixels around a photo of `size`, not rounded and before the shape adds its room; a negative length counts as
    /// 0.
    [[nodiscard]] SideLengths around(PixelSize size) const;
    /// Switches the unit of every length and keeps what a photo of `size` shows.
    void convert(BorderUnit to, PixelSize size);

    bool operator==(const Border&) const = default;
};

template <>
struct CodedCases<BorderUnit> {
    static constexpr std::array<CodedCase<BorderUnit>, 2> table{
        {{BorderUnit::pixels, u"Pixels"}, {BorderUnit::percent, u"Percent"}}};
};

void feed(ValueHash& hash, const SideLengths& lengths);
void feed(ValueHash& hash, const Length& length);
void feed(ValueHash& hash, const FrameShape& shape);
void feed(ValueHash& hash, const BlurredBackground& background);
void feed(ValueHash& hash, const FrameLine& line);
void feed(ValueHash& hash, const PhotoEdge& edge);
void feed(ValueHash& hash, const Border& border);

} // namespace ferrow

template <>
struct std::hash<ferrow::Border> : ferrow::ValueHasher {
};
