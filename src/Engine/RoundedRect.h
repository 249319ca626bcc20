// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace ferrow::Engine {

/// A rectangle whose corners are quarters of a circle. In pixels from the canvas's top left corner, not necessarily
/// whole ones.
struct RoundedRect {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    double radius = 0; ///< Of the corners; at most half the shorter side.

    /// As far outside of this one everywhere: round corners grow by the distance, square ones stay square.
    [[nodiscard]] RoundedRect outset(double distance) const;

    bool operator==(const RoundedRect&) const = default;
};

/// How much of each pixel of one row lies inside a rounded rectangle: exact areas, 0…1.
class RowCoverage {
public:
    RowCoverage(const RoundedRect& area, std::int64_t row);

    /// Outside of [begin, end) nothing is covered.
    [[nodiscard]] std::int64_t begin() const { return begin_; }
    [[nodiscard]] std::int64_t end() const { return end_; }
    /// All pixels of [runBegin, runEnd) are covered alike, by runCoverage(). Empty where there are none.
    [[nodiscard]] std::int64_t runBegin() const { return runBegin_; }
    [[nodiscard]] std::int64_t runEnd() const { return runEnd_; }
    [[nodiscard]] double runCoverage() const { return height_; }
    /// Whether every pixel of the run lies inside altogether.
    [[nodiscard]] bool isRunFull() const { return height_ >= 1; }

    [[nodiscard]] double at(std::int64_t pixel) const;

private:
    /// From `begin` to `end` in a corner's own coordinates: outward from the circle's center.
    struct Range {
        double begin = 0;
        double end = 0;
    };

    [[nodiscard]] double ofColumns(const Range& columns) const;

    RoundedRect area_;
    double height_ = 0;   ///< Of the row, as far as it lies between top and bottom.
    double straight_ = 0; ///< Of that, what lies beside no corner.
    Range upper_;         ///< What lies beside the corners at the top, and
    Range lower_;         ///< at the bottom.
    std::int64_t begin_ = 0;
    std::int64_t end_ = 0;
    std::int64_t runBegin_ = 0;
    std::int64_t runEnd_ = 0;
};

} // namespace ferrow::Engine
