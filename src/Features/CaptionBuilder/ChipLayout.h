// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>

#include <vector>

/// Where chips lie and where a dragged one would go. Logical pixels, from the well's top left corner, lines running
/// from left to right.
namespace ferrow::ChipLayout {

struct Measures {
    int width = 0; ///< Of the well, insets included.
    int inset = 6;
    int gap = 6; ///< Between chips and between lines.
    int height = 28;
};

/// Chips of these widths side by side, in a new line where they do not fit. One wider than a line is cut to it.
[[nodiscard]] std::vector<QRect> chipRects(const std::vector<int>& widths, const Measures& measures);

[[nodiscard]] int lineCount(const std::vector<QRect>& rects);
/// Of a well of that many lines; at least one.
[[nodiscard]] int wellHeight(int lines, const Measures& measures);

struct Gap {
    int index = 0;
    QRect caret; ///< 2 wide, as high as a chip.

    bool operator==(const Gap&) const = default;
};
/// The gap nearest to the point: in the line that it lies in, else in the nearest. The end of a line and the start of
/// the next are one index; the caret tells which is meant.
[[nodiscard]] Gap gapAt(const std::vector<QRect>& rects, const Measures& measures, const QPoint& point);

/// The chip in the line above (`lines` -1) or below (1) that is nearest across; `index` itself where there is none.
[[nodiscard]] int chipAcross(const std::vector<QRect>& rects, int index, int lines);

} // namespace ferrow::ChipLayout
