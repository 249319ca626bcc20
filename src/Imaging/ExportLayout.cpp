// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ExportLayout.h"

#include "Models/ErrorTexts.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

/// A span within 0…`most`, at least a pixel long.
std::pair<double, double> onWholePixels(double begin, double length, std::int64_t most)
{
    const double first = std::clamp(std::round(begin), 0.0, double(most - 1));
    return {first, std::clamp(std::round(begin + length), first + 1, double(most)) - first};
}

QRectF onWholePixels(const QRectF& rect, PixelSize canvas)
{
    const auto [x, width] = onWholePixels(rect.x(), rect.width(), canvas.width);
    const auto [y, height] = onWholePixels(rect.y(), rect.height(), canvas.height);
    return {x, y, width, height};
}

} // namespace

ExportLayout exportLayout(PixelSize photo, const RenderRecipe& recipe, const OutputSize& size, const BlockGrid& grid)
{
    validateRenderBounds(photo, recipe, size.limit == SizeLimit::none ? 1 : smallestScale);
    const RenderLayout full = RenderLayout::framedLayout(photo, recipe, grid);
    const double scale = size.scaleFor(full.canvasSize);
    validateRenderBounds(photo, recipe, scale);
    if (scale == 1)
        return {full, 1};
    ExportLayout reduced{full.scaled(scale), scale};
    reduced.layout.imageRect = onWholePixels(reduced.layout.imageRect, reduced.layout.canvasSize);
    reduced.layout.drawRect = onWholePixels(reduced.layout.drawRect, reduced.layout.canvasSize);
    return reduced;
}

ExportLayout largestLayout(PixelSize photo, const RenderRecipe& recipe, const OutputSize& size)
try {
    return exportLayout(photo, recipe, {});
} catch (const ImagePipelineError&) {
    return exportLayout(photo, recipe, size);
}

} // namespace ferrow
