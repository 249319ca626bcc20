// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/PixelFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace ferrow {

/// What is kept of a picture's pixels so that they are known again: a few kilobytes, whatever its size.
struct PictureSums {
    /// Of one cell of a grid over the picture, in 256ths of a level.
    struct Cell {
        std::array<std::uint16_t, 4> means{}; ///< A channel each; 0 for channels that are not there.
        /// How much neighbors differ on average, across and down, the channel where they differ most. Lossy formats
        /// move the mean of what is busy: they take color from groups of pixels, and what that makes brighter than
        /// white or darker than black is cut off.
        std::uint16_t activity = 0;

        bool operator==(const Cell&) const = default;
    };

    std::uint64_t digest = 0;     ///< Of all bytes, where the picture has to come back as it was.
    std::vector<Cell> cells = {}; ///< Row by row, where it comes back roughly; else empty.

    bool operator==(const PictureSums&) const = default;
};

/// Adds up a picture's rows as they pass.
class PictureSummer {
public:
    enum class Kind { exact, rough };

    /// Cells a side at most, and their pixels a side at least where the picture has as many: less than a few blocks of
    /// a lossy format say little.
    static constexpr std::int64_t gridSide = 32;
    static constexpr std::int64_t cellSide = 32;

    /// Roughly, a `format` of 16 bits a component comes to what it would with 8.
    PictureSummer(PixelSize size, PixelFormat format, Kind kind);

    /// The next `count` rows from the top, `stride` bytes apart.
    void add(std::int64_t count, const std::byte* rows, std::size_t stride);
    /// After the last row.
    [[nodiscard]] PictureSums take();

private:
    void addRoughly(const std::byte* row);
    void addLevels(const std::uint8_t* row);
    void closeCells();

    PixelSize size_;
    PixelFormat format_;
    Kind kind_;
    std::size_t rowBytes_;
    std::size_t rowLevels_; ///< Components of a row.
    std::int64_t columns_;
    std::int64_t gridRows_;
    std::int64_t changeStep_; ///< Changes are taken of one row in so many.
    std::int64_t y_ = 0;
    std::uint64_t digest_ = 0;
    std::vector<std::uint32_t> levels_;   ///< Of the cells' row so far, a sum for each byte of a row.
    std::vector<std::uint32_t> changes_;  ///< Likewise, to the neighbors.
    std::vector<std::uint8_t> reduced_;   ///< A row of 16 bits with 8.
    std::vector<std::uint8_t> rowBefore_; ///< Kept for the rows that changes are taken of.
    std::int64_t levelRows_ = 0;
    std::int64_t changeRows_ = 0;
    std::vector<PictureSums::Cell> cells_;
};

/// Whether the picture that was read may be the one that was written roughly: each cell's means lie as close as
/// `tolerance` levels, and a share of its activity, allow.
[[nodiscard]] bool areClose(const PictureSums& written, const PictureSums& read, double tolerance);

} // namespace ferrow
