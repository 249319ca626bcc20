// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/FrameProportions.h"

#include "Imaging/RenderLayout.h"
#include "Models/ErrorTexts.h"

namespace ferrow {

std::optional<FrameProportions> FrameProportions::of(const RenderRecipe& recipe, PixelSize photo)
try {
    validateRenderBounds(photo, recipe, 1);
    const RenderLayout layout = RenderLayout::framedLayout(photo, recipe);
    const QRectF& image = layout.imageRect;
    const QRectF canvas = layout.canvasRect();
    // The layout's y grows upwards.
    return FrameProportions{photo,
                            {.top = canvas.bottom() - image.bottom(),
                             .right = canvas.right() - image.right(),
                             .bottom = image.top() - canvas.top(),
                             .left = image.left() - canvas.left()}};
} catch (const ImagePipelineError&) {
    return std::nullopt;
}

} // namespace ferrow
