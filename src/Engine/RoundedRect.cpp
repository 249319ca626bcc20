// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/RoundedRect.h"

#include <algorithm>
#include <cmath>

namespace ferrow::Engine {

namespace {

/// Half the chord of a circle around the origin at that distance from it; 0 outside.
double halfChord(double radius, double distance)
{
    return distance < radius ? std::sqrt((radius - distance) * (radius + distance)) : 0;
}

/// The area under a circle around the origin, above the axis, from there to `x`.
double areaUnderArc(double radius, double x)
{
    return (x * halfChord(radius, x) + radius * radius * std::asin(std::min(x / radius, 1.0))) / 2;
}

/// What a circle around the origin has of the rectangle from (x0, y0) to (x1, y1), none of them negative.
double areaInCircle(double radius, double x0, double x1, double y0, double y1)
{
    if (x0 >= x1 || y0 >= y1)
        return 0;
    // Up to `full` the circle leaves the rectangle above its upper edge, from `none` on below its lower one.
    const double full = std::clamp(halfChord(radius, y1), x0, x1);
    const double none = std::clamp(halfChord(radius, y0), x0, x1);
    const double cut = none > full ? areaUnderArc(radius, none) - areaUnderArc(radius, full) - y0 * (none - full) : 0;
    return (full - x0) * (y1 - y0) + std::clamp(cut, 0.0, (none - full) * (y1 - y0));
}

} // namespace

RoundedRect RoundedRect::outset(double distance) const
{
    return {left - distance, top - distance, right + distance, bottom + distance, radius > 0 ? radius + distance : 0};
}

RowCoverage::RowCoverage(const RoundedRect& area, std::int64_t row) : area_(area)
{
    area_.radius = std::clamp(area.radius, 0.0, std::min(area.right - area.left, area.bottom - area.top) / 2);
    const double radius = area_.radius;
    const double upperCenter = area_.top + radius;
    const double lowerCenter = area_.bottom - radius;
    const double y0 = std::max(double(row), area_.top);
    const double y1 = std::min(double(row) + 1, area_.bottom);
    if (y0 >= y1 || area_.left >= area_.right)
        return;
    height_ = y1 - y0;
    straight_ = std::max(std::min(y1, lowerCenter) - std::max(y0, upperCenter), 0.0);
    upper_ = {std::max(upperCenter - y1, 0.0), std::max(upperCenter - y0, 0.0)};
    lower_ = {std::max(y0 - lowerCenter, 0.0), std::max(y1 - lowerCenter, 0.0)};

    // Where the row is widest and where it is narrowest, inward from the rectangle's sides.
    const double nearest =
        straight_ > 0 ? 0 : std::min(upper_.end > 0 ? upper_.begin : radius, lower_.end > 0 ? lower_.begin : radius);
    const double outer = radius - halfChord(radius, nearest);
    const double inner = radius - halfChord(radius, std::max(upper_.end, lower_.end));
    begin_ = std::int64_t(std::floor(area_.left + outer));
    end_ = std::int64_t(std::ceil(area_.right - outer));
    runBegin_ = std::int64_t(std::ceil(area_.left + inner));
    runEnd_ = std::max(runBegin_, std::int64_t(std::floor(area_.right - inner)));
}

double RowCoverage::ofColumns(const Range& columns) const
{
    const auto corner = [&](const Range& rows) {
        return areaInCircle(area_.radius, columns.begin, columns.end, rows.begin, rows.end);
    };
    return (columns.end - columns.begin) * straight_ + corner(upper_) + corner(lower_);
}

double RowCoverage::at(std::int64_t pixel) const
{
    if (pixel >= runBegin_ && pixel < runEnd_)
        return height_;
    if (pixel < begin_ || pixel >= end_)
        return 0;
    const double x0 = std::max(double(pixel), area_.left);
    const double x1 = std::min(double(pixel) + 1, area_.right);
    const double leftCenter = area_.left + area_.radius;
    const double rightCenter = area_.right - area_.radius;
    const double between = std::max(std::min(x1, rightCenter) - std::max(x0, leftCenter), 0.0) * height_;
    const Range left{std::max(leftCenter - x1, 0.0), std::max(leftCenter - x0, 0.0)};
    const Range right{std::max(x0 - rightCenter, 0.0), std::max(x1 - rightCenter, 0.0)};
    return std::clamp(between + ofColumns(left) + ofColumns(right), 0.0, 1.0);
}

} // namespace ferrow::Engine
