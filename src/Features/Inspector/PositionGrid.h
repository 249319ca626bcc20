// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FrameProportions.h"
#include "Models/RenderRecipe.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

/// The fifteen places of captions and logos as a grid of five rows of three, from the top border down to the bottom
/// one.
namespace ferrow::PositionGrid {

inline constexpr int columns = 3;
inline constexpr int rows = 5;
inline constexpr int spots = columns * rows;

/// Reading order from the top left.
[[nodiscard]] CaptionPosition at(int index);
[[nodiscard]] int indexOf(CaptionPosition position);
/// The place so many columns and rows away; it stays at the edges.
[[nodiscard]] CaptionPosition moved(CaptionPosition position, int columnsBy, int rowsBy);

/// "Center" or "Bottom right".
[[nodiscard]] QString title(CaptionPosition position);
/// "Bottom border" or "On the image".
[[nodiscard]] QString place(CaptionPosition position);
/// "left, bottom border": in the middle of a sentence.
[[nodiscard]] QString inWords(CaptionPosition position);
/// "Bottom left": short for where room is, also in a border.
[[nodiscard]] QString corner(CaptionPosition position);
/// "Center, bottom border, 14 of 15".
[[nodiscard]] QString spoken(CaptionPosition position);

/// The little picture of photo and border, in logical pixels. In true proportion as far as the spots have room.
struct Picture {
    QRectF canvas;
    QRectF photo;
    [[nodiscard]] QPointF spot(int index) const;
};

/// Proportion of the photo in the picture: extreme formats would leave no room for the spots, or for the rest.
[[nodiscard]] double shownAspectRatio(double aspectRatio);
/// A picture in the middle of `width`; its height follows, within limits.
[[nodiscard]] Picture picture(double width, const FrameProportions& frame);
/// The index of the spot whose target of 28 holds `point`, or -1.
[[nodiscard]] int spotAt(const Picture& picture, QPointF point);

} // namespace ferrow::PositionGrid
