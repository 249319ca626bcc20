// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ContactSheet/SheetLayout.h"

#include "Widgets/Theme.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr int sheetInset = 11;
constexpr int cellGap = 4;
constexpr int cellInset = Space::group;
constexpr int pictureInset = Space::row;
/// Of a tile's height to its width.
constexpr double tileRatio = 0.8;

int columnsFor(int width, int wantedTile)
{
    const int inside = width - 2 * sheetInset + cellGap;
    return std::max(inside / (wantedTile + 2 * cellInset + cellGap), 1);
}

} // namespace

SheetLayout::SheetLayout(int width, int wantedTile, int textHeight, int count)
    : width_(width), count_(count), columns_(columnsFor(width, std::clamp(wantedTile, leastTile, greatestTile)))
{
    const int across = std::max((width - 2 * sheetInset + cellGap) / columns_ - cellGap, 2 * cellInset + 1);
    const int tileHeight = int(std::lround((across - 2 * cellInset) * tileRatio));
    cell_ = {across, cellInset + tileHeight + cellInset + textHeight + cellInset};
}

int SheetLayout::rowPitch() const
{
    return cell_.height() + cellGap;
}

int SheetLayout::height() const
{
    return count_ == 0 ? 0 : rows() * rowPitch() - cellGap + 2 * sheetInset;
}

QRect SheetLayout::cell(int index) const
{
    return {
        QPoint(sheetInset + index % columns_ * (cell_.width() + cellGap), sheetInset + index / columns_ * rowPitch()),
        cell_};
}

int SheetLayout::cellAt(const QPoint& point) const
{
    const int column = (point.x() - sheetInset) / (cell_.width() + cellGap);
    const int row = (point.y() - sheetInset) / rowPitch();
    const int index = row * columns_ + column;
    const bool isInside = point.x() >= sheetInset && point.y() >= sheetInset && column < columns_ && index < count_;
    return isInside && cell(index).contains(point) ? index : -1;
}

std::pair<int, int> SheetLayout::cellsBetween(int top, int bottom) const
{
    const int firstRow = std::max((top - sheetInset + cellGap) / rowPitch(), 0);
    const int lastRow = (std::max(bottom - sheetInset, 0) - 1) / rowPitch();
    return {std::min(firstRow * columns_, count_), std::min((lastRow + 1) * columns_, count_)};
}

QRect SheetLayout::tile(const QRect& cell)
{
    const int width = cell.width() - 2 * cellInset;
    return {cell.left() + cellInset, cell.top() + cellInset, width, int(std::lround(width * tileRatio))};
}

QRect SheetLayout::pictureRoom(const QRect& tile)
{
    return tile.adjusted(pictureInset, pictureInset, -pictureInset, -pictureInset);
}

int SheetLayout::tileForColumns(int by) const
{
    const int wanted = std::max(columns_ + by, 1);
    const int tile = (width_ - 2 * sheetInset + cellGap) / wanted - cellGap - 2 * cellInset;
    return std::clamp(tile, leastTile, greatestTile);
}

} // namespace ferrow
