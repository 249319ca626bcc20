// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/PhotoSurroundings.h"

#include "Platform/Pixels/PixelRows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace ferrow::Engine {

namespace {

/// Beyond so many standard deviations a shadow has no level left.
constexpr double shadowReach = 4;
constexpr double samplesPerSigma = 3;

/// `color` with `alpha` over one pixel: opaque, or straight.
template <typename Component>
void blend(const PhotoSurroundings::Pixel& color, float alpha, Component* target, bool hasAlpha)
{
    constexpr float most = std::numeric_limits<Component>::max();
    const float below = hasAlpha ? float(target[3]) / most * (1 - alpha) : 1 - alpha;
    const float sum = alpha + below;
    for (std::size_t c = 0; c < 3; ++c)
        target[c] = Component((color[c] * alpha + float(target[c]) * below) / sum + 0.5F);
    if (hasAlpha)
        target[3] = Component(std::min(sum, 1.0F) * most + 0.5F);
}

/// Blends `color` over the row's columns from `first` to `last`, as much as `alphaAt` says of each.
template <typename AlphaAt>
void blendColumns(const PhotoSurroundings::Pixel& color, std::int64_t first, std::int64_t last, PixelFormat format,
                  std::byte* row, const AlphaAt& alphaAt)
{
    withComponent(format, [&]<typename Component>() {
        const int channels = format.channels();
        auto* target = reinterpret_cast<Component*>(row) + first * channels;
        for (std::int64_t x = first; x < last; ++x, target += channels)
            if (const float alpha = alphaAt(x); alpha > 0)
                blend(color, alpha, target, format.hasAlpha());
    });
}

/// How much of each cell of a grid over `area` the shape covers.
std::vector<float> cellCoverage(const RoundedRect& shape, const SoftField<float>::Placement& grid, PixelSize cells)
{
    const auto inCells = [&](double value, double origin) { return (value - origin) / grid.cellWidth; };
    const RoundedRect scaled{inCells(shape.left, grid.left), inCells(shape.top, grid.top),
                             inCells(shape.right, grid.left), inCells(shape.bottom, grid.top),
                             shape.radius / grid.cellWidth};
    std::vector<float> samples;
    samples.reserve(std::size_t(cells.width * cells.height));
    for (std::int64_t y = 0; y < cells.height; ++y) {
        const RowCoverage coverage(scaled, y);
        for (std::int64_t x = 0; x < cells.width; ++x)
            samples.push_back(float(coverage.at(x)));
    }
    return samples;
}

} // namespace

bool PhotoSurroundings::areNeeded(const Composition& composition)
{
    return composition.line || composition.shadow;
}

PhotoSurroundings::PhotoSurroundings(const Composition& composition, const Pixel& lineColor)
    : width_(composition.canvasSize.width), photo_(composition.photoArea), line_(composition.line),
      lineColor_(lineColor)
{
    if (!composition.shadow)
        return;
    const PhotoShadow& shadow = *composition.shadow;
    shadowOpacity_ = shadow.opacity;
    const double cell = std::max(shadow.sigma / samplesPerSigma, 1.0);
    RoundedRect cast = photo_;
    cast.top += shadow.offset;
    cast.bottom += shadow.offset;
    shadowArea_ = cast.outset(shadowReach * shadow.sigma + 2 * cell);
    const auto cells = [cell](double length) { return std::int64_t(std::ceil(length / cell)); };
    const PixelSize size{cells(shadowArea_.right - shadowArea_.left), cells(shadowArea_.bottom - shadowArea_.top)};
    const SoftField<float>::Placement grid{shadowArea_.left, shadowArea_.top, cell, cell};
    shadow_.emplace(cellCoverage(cast, grid, size), size, grid, shadow.sigma, width_);
}

void PhotoSurroundings::drawRow(std::int64_t row, PixelFormat format, std::byte* out)
{
    if (shadow_)
        drawShadow(row, format, out);
    if (line_)
        drawLine(row, format, out);
}

void PhotoSurroundings::drawShadow(std::int64_t row, PixelFormat format, std::byte* out)
{
    if (double(row) < shadowArea_.top || double(row) >= shadowArea_.bottom)
        return;
    shadow_->moveTo(row);
    const RowCoverage photo(photo_, row);
    const auto first = std::max<std::int64_t>(std::int64_t(std::floor(shadowArea_.left)), 0);
    const auto last = std::min(std::int64_t(std::ceil(shadowArea_.right)), width_);
    const auto opacity = float(shadowOpacity_);
    constexpr Pixel black{};
    const auto draw = [&](std::int64_t from, std::int64_t to) {
        blendColumns(black, from, to, format, out, [&](std::int64_t x) { return shadow_->at(x) * opacity; });
    };
    if (!photo.isRunFull()) {
        draw(first, last);
        return;
    }
    draw(first, std::min(photo.runBegin(), last));
    draw(std::max(photo.runEnd(), first), last);
}

void PhotoSurroundings::drawLine(std::int64_t row, PixelFormat format, std::byte* out) const
{
    const RoundedRect inner = photo_.outset(line_->distance);
    const RowCoverage outside(inner.outset(line_->thickness), row);
    const RowCoverage inside(inner, row);
    const RowCoverage photo(photo_, row);
    const float opacity = lineColor_[3];
    const auto draw = [&](std::int64_t from, std::int64_t to) {
        blendColumns(lineColor_, from, to, format, out, [&](std::int64_t x) {
            // The photo comes on top: its share of a pixel that both have is not the line's to fill.
            const double left = 1 - photo.at(x);
            const double share = outside.at(x) - inside.at(x);
            return share > 0 && left > 0 ? opacity * float(std::min(share / left, 1.0)) : 0.0F;
        });
    };
    const std::int64_t first = std::max<std::int64_t>(outside.begin(), 0);
    const std::int64_t last = std::min(outside.end(), width_);
    if (!inside.isRunFull()) {
        draw(first, last);
        return;
    }
    draw(first, std::min(inside.runBegin(), last));
    draw(std::max(inside.runEnd(), first), last);
}

} // namespace ferrow::Engine
