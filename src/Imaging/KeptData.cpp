// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/KeptData.h"

#include "Engine/Compositor.h"
#include "Models/ErrorTexts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ferrow {

namespace {

/// Whether the frame is written at full size, and has room on the grid. A frame that can't be written at all is another
/// matter.
bool staysWhole(const ImportedPhoto& photo, const RenderRecipe& recipe, const OutputSize& size)
try {
    const auto [layout, scale] = exportLayout(photo.pixelSize, recipe, size, photo.codedData->grid);
    const auto width = double(layout.canvasSize.width);
    const auto height = double(layout.canvasSize.height);
    return scale == 1 && std::max(width, height) <= maximumOutputSide && width * height <= maximumOutputPixels;
} catch (const ImagePipelineError&) {
    return true;
}

std::int64_t wholePixels(double length)
{
    return std::llround(length);
}

} // namespace

QString reasonText(KeepObstacle obstacle)
{
    switch (obstacle) {
    case KeepObstacle::notJpeg:
        return QStringLiteral("not JPEG");
    case KeepObstacle::coding:
        return QStringLiteral("inks or an unusual coding");
    case KeepObstacle::colorProfile:
        return QStringLiteral("another color profile");
    case KeepObstacle::size:
        return QStringLiteral("made smaller");
    case KeepObstacle::blurredBackground:
        return QStringLiteral("a blurred background");
    case KeepObstacle::translucentBorder:
        return QStringLiteral("a translucent border");
    case KeepObstacle::roundCorners:
        return QStringLiteral("round corners");
    case KeepObstacle::data:
        return QStringLiteral("data beyond what can be written");
    }
    return {};
}

std::optional<KeepObstacle> obstacleToKeeping(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                              const OutputSize& size)
{
    if (photo.type != FileType::jpeg)
        return KeepObstacle::notJpeg;
    if (!photo.codedData)
        return KeepObstacle::coding;
    if (!photo.codedData->keepsColors[std::size_t(recipe.outputColorProfile)])
        return KeepObstacle::colorProfile;
    if (!staysWhole(photo, recipe, size))
        return KeepObstacle::size;
    if (recipe.border.blurredBackground)
        return KeepObstacle::blurredBackground;
    if (!Engine::isBackgroundOpaque({.borderColor = recipe.border.color}))
        return KeepObstacle::translucentBorder;
    if (recipe.border.photoEdge.cornerRadius.pixels(photo.pixelSize) > 0)
        return KeepObstacle::roundCorners;
    return std::nullopt;
}

std::optional<BlockGrid> keptGrid(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                  const ExportSettings& settings)
{
    if (!settings.keepsPhotoData || settings.format != ExportFormat::jpeg ||
        obstacleToKeeping(photo, recipe, settings.size))
        return std::nullopt;
    return photo.codedData->grid;
}

ExportLayout exportLayout(const ImportedPhoto& photo, const RenderRecipe& recipe, const ExportSettings& settings)
{
    return exportLayout(photo.pixelSize, recipe, settings.size,
                        keptGrid(photo, recipe, settings).value_or(BlockGrid()));
}

std::int64_t MovedBorder::distance() const
{
    return std::max(std::abs(toLeft - fromLeft), std::abs(toTop - fromTop));
}

std::optional<MovedBorder> movedBorder(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                       const ExportSettings& settings)
try {
    if (!keptGrid(photo, recipe, settings))
        return std::nullopt;
    const RenderLayout from = exportLayout(photo.pixelSize, recipe, settings.size).layout;
    const RenderLayout to = exportLayout(photo, recipe, settings).layout;
    const QRectF before = from.fromTop(from.imageRect);
    const QRectF after = to.fromTop(to.imageRect);
    const MovedBorder moved{wholePixels(before.x()), wholePixels(after.x()), wholePixels(before.y()),
                            wholePixels(after.y())};
    return moved.distance() > 0 ? std::optional(moved) : std::nullopt;
} catch (const ImagePipelineError&) {
    return std::nullopt;
}

} // namespace ferrow
