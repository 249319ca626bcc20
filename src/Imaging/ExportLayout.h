// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Imaging/RenderLayout.h"
#include "Models/OutputSize.h"

namespace ferrow {

/// At this scale everything that a layout can be worked out for is within the bounds: sides of some thousand million
/// pixels.
inline constexpr double smallestScale = 1e-5;

/// The geometry of a framed output at the size it is written at, with the photo on whole pixels, so that its edges are
/// sharp.
struct ExportLayout {
    RenderLayout layout;
    double scale = 1; ///< Against full size.
};

/// The photo lies on `grid` where it keeps its size. Throws ImagePipelineError as validateRenderBounds() does, with the
/// limits on what is written.
[[nodiscard]] ExportLayout exportLayout(PixelSize photo, const RenderRecipe& recipe, const OutputSize& size,
                                        const BlockGrid& grid = {});

/// At full size, by which frames are judged; for a frame that is too large for that, at the size it is written at.
/// Throws as exportLayout() does.
[[nodiscard]] ExportLayout largestLayout(PixelSize photo, const RenderRecipe& recipe, const OutputSize& size);

} // namespace ferrow
