// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/CoverBand.h"

#include "Platform/Codecs/BlockTransform.h"

#include <algorithm>
#include <cstring>

namespace ferrow {

namespace {

constexpr std::int64_t cellSide = std::int64_t(BlockTransform::side);

} // namespace

CoverBand::CoverBand(PixelSize canvas, const BlockGrid& grid, const PhotoPlace& photo)
    : canvas_(canvas), grid_(grid), photo_(photo), columns_((canvas.width + grid.width - 1) / grid.width),
      stride_(std::size_t(columns_ * grid.width) * pixelBytes), pixels_(stride_ * std::size_t(grid.height)),
      bare_(std::size_t(columns_)), cells_(std::size_t(columns_ * (grid.width / cellSide) * (grid.height / cellSide)))
{
}

void CoverBand::read(const JpegFraming::Cover& cover)
{
    const std::int64_t count = std::min(grid_.height, canvas_.height - top_);
    findBare(cover, count);
    clearPhoto(count);
    cover.read(count, reinterpret_cast<std::byte*>(pixels_.data()), stride_);
    extend(count);
    const std::int64_t cellsOfMcu = grid_.width / cellSide;
    const std::int64_t across = columns_ * cellsOfMcu;
    for (std::int64_t column = 0; column < across; ++column)
        for (std::int64_t row = 0; !isBare(column / cellsOfMcu) && row < grid_.height / cellSide; ++row)
            cells_[std::size_t(row * across + column)] = cellAt(column * cellSide, row * cellSide);
    top_ += grid_.height;
}

void CoverBand::findBare(const JpegFraming::Cover& cover, std::int64_t count)
{
    const bool isWithin = top_ >= photo_.y && top_ + grid_.height <= photo_.y + photo_.size.height;
    const auto [from, to] = isWithin ? cover.columnsOverPhoto(top_, count) : std::pair<std::int64_t, std::int64_t>();
    for (std::int64_t column = 0; column < columns_; ++column) {
        const std::int64_t left = column * grid_.width;
        const std::int64_t right = left + grid_.width;
        const bool isClear = from >= to || right <= from || left >= to;
        bare_[std::size_t(column)] = isWithin && isClear && left >= photo_.x && right <= photo_.x + photo_.size.width;
    }
}

void CoverBand::clearPhoto(std::int64_t count)
{
    const std::int64_t first = std::max<std::int64_t>(photo_.y - top_, 0);
    const std::int64_t last = std::min(photo_.y + photo_.size.height - top_, count);
    for (std::int64_t column = 0; first < last && column < columns_; ++column) {
        const std::int64_t left = std::max(column * grid_.width, photo_.x);
        const std::int64_t right = std::min((column + 1) * grid_.width, photo_.x + photo_.size.width);
        for (std::int64_t y = first; !isBare(column) && left < right && y < last; ++y)
            std::memset(&pixels_[std::size_t(y) * stride_ + std::size_t(left) * pixelBytes], 0,
                        std::size_t(right - left) * pixelBytes);
    }
}

void CoverBand::extend(std::int64_t count)
{
    for (std::int64_t y = 0; y < grid_.height; ++y) {
        std::uint8_t* row = &pixels_[std::size_t(y) * stride_];
        if (y >= count)
            std::memcpy(row, row - stride_, stride_);
        for (std::size_t at = std::size_t(canvas_.width) * pixelBytes; y < count && at < stride_; at += pixelBytes)
            std::memcpy(row + at, row + at - pixelBytes, pixelBytes);
    }
}

Covering CoverBand::cellAt(std::int64_t x, std::int64_t y) const
{
    // A row of one color is equal to itself moved by a pixel.
    constexpr std::size_t length = std::size_t(cellSide) * pixelBytes;
    unsigned alphas = 0;
    bool isFlat = true;
    for (std::int64_t i = 0; i < cellSide; ++i) {
        const std::uint8_t* row = pixel(x, y + i);
        for (std::size_t at = pixelBytes - 1; at < length; at += pixelBytes)
            alphas |= row[at];
        isFlat = isFlat && std::memcmp(row, row + pixelBytes, length - pixelBytes) == 0 &&
                 std::memcmp(row, pixel(x, y), pixelBytes) == 0;
    }
    if (alphas == 0)
        return Covering::none;
    return isFlat && pixel(x, y)[pixelBytes - 1] == 255 ? Covering::flat : Covering::some;
}

Covering CoverBand::covering(std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height) const
{
    const std::int64_t across = columns_ * (grid_.width / cellSide);
    const Covering first = cells_[std::size_t(y / cellSide * across + x / cellSide)];
    for (std::int64_t row = y; row < y + height; row += cellSide)
        for (std::int64_t column = x; column < x + width; column += cellSide) {
            const bool isAlike = cells_[std::size_t(row / cellSide * across + column / cellSide)] == first;
            const bool isSameColor =
                first != Covering::flat || std::memcmp(pixel(column, row), pixel(x, y), pixelBytes) == 0;
            if (!isAlike || !isSameColor)
                return Covering::some;
        }
    return first;
}

} // namespace ferrow
