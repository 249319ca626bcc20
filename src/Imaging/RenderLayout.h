// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Platform/Base/BlockGrid.h"
#include "Platform/Base/PixelSize.h"

#include <QRectF>
#include <QSizeF>

#include <optional>

namespace ferrow {

/// The geometry of one framed output. Coordinates have their origin at the bottom left corner of the canvas, y growing
/// upwards, in output pixels: a QRectF's (x, y) is a rectangle's bottom left corner here.
struct RenderLayout {
    PixelSize canvasSize;
    QRectF imageRect;
    QRectF drawRect;            ///< Equal to imageRect.
    double borderThickness = 0; ///< Of the side where it is thickest, with what the shape adds.

    /// At full resolution: the photo with its border, then what the shape adds beside or above and below them. Canvas
    /// and photo have whole pixels. The border must be finite: validateRenderBounds() comes first. With a `grid`, on
    /// which the photo is to lie, the border's left and top go to the nearest place on it, and so do the sides opposite
    /// that equal them; what a shape adds before the photo is a whole number of steps, its canvas stays in shape.
    [[nodiscard]] static RenderLayout framedLayout(PixelSize imageSize, const RenderRecipe& recipe,
                                                   const BlockGrid& grid = {});
    /// Full resolution, then scaled by at least a millionth.
    [[nodiscard]] static RenderLayout calculate(PixelSize sourceSize, const RenderRecipe& recipe, double scale);
    [[nodiscard]] RenderLayout scaled(double scale) const;

    [[nodiscard]] QRectF canvasRect() const;
    /// In pixel rows counted from the top.
    [[nodiscard]] QRectF fromTop(const QRectF& rect) const;

    bool operator==(const RenderLayout&) const = default;
};

/// Where a caption or logo at `position` may lie. Paddings in output pixels, not negative. A border position keeps the
/// vertical padding from the canvas's outer edge alone and reaches to the photo.
[[nodiscard]] QRectF captionArea(CaptionPosition position, const QRectF& imageRect, const QRectF& canvasRect,
                                 double horizontalPadding, double verticalPadding);

/// A box of `size` placed in `area`: border positions hug the outer padding line.
[[nodiscard]] QRectF anchoredRect(const QSizeF& size, const QRectF& area, CaptionPosition position);

/// Where the logo is drawn; absent when there is no room for as much as a pixel.
[[nodiscard]] std::optional<QRectF> logoRect(PixelSize logoSize, const RenderLayout& layout,
                                             const LogoConfiguration& configuration, double scale);

/// Largest framed output: pixels a side and in all.
inline constexpr double maximumOutputSide = 50'000;
inline constexpr double maximumOutputPixels = 200'000'000;

/// Throws ImagePipelineError (invalidRenderRecipe, unreasonableOutputDimensions) before anything is allocated.
void validateRenderBounds(PixelSize originalSize, const RenderRecipe& recipe, double scale);

/// Rounded to nearest, at least 0; anything not finite is the largest integer.
[[nodiscard]] std::int64_t finiteInteger(double value);

} // namespace ferrow
