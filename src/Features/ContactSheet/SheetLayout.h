// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <utility>

namespace ferrow {

/// Where the cells of a contact sheet lie, in logical pixels from the top left corner of the whole sheet. As many
/// columns as have room for a tile of the wanted width, then stretched to fill the sheet's width.
class SheetLayout {
public:
    static constexpr int leastTile = 120;
    static constexpr int greatestTile = 400;

    SheetLayout() = default;
    /// `textHeight` is that of what stands below a tile.
    SheetLayout(int width, int wantedTile, int textHeight, int count);

    [[nodiscard]] int columns() const { return columns_; }
    [[nodiscard]] int rows() const { return (count_ + columns_ - 1) / columns_; }
    [[nodiscard]] int height() const;
    /// From the top of one row to the next.
    [[nodiscard]] int rowPitch() const;
    [[nodiscard]] QRect cell(int index) const;
    /// -1 for none.
    [[nodiscard]] int cellAt(const QPoint& point) const;
    /// The first cell, and the one after the last, of the rows that show between two heights.
    [[nodiscard]] std::pair<int, int> cellsBetween(int top, int bottom) const;

    /// Of any cell of this sheet.
    [[nodiscard]] static QRect tile(const QRect& cell);
    [[nodiscard]] QSize tileSize() const { return tile(cell(0)).size(); }
    /// Room for the framed picture within a tile.
    [[nodiscard]] static QRect pictureRoom(const QRect& tile);

    /// The wanted width of a tile for one column more (`by` > 0) or fewer, within the limits.
    [[nodiscard]] int tileForColumns(int by) const;

private:
    int width_ = 0;
    int count_ = 0;
    int columns_ = 1;
    QSize cell_{1, 1};
};

} // namespace ferrow
