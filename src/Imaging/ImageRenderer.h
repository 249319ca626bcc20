// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Requests.h"
#include "Imaging/RenderLayout.h"
#include "Models/ImportedPhoto.h"
#include "Models/OutputSize.h"
#include "Models/RenderRecipe.h"
#include "Platform/Pixels/Bitmap.h"

#include <stop_token>
#include <vector>

/// What is drawn in and on a frame, and in which order: background, photo, logo, captions. Preview and export share all
/// of it; only the scale differs. No state; any thread, with a QGuiApplication for captions.
namespace ferrow::ImageRenderer {

/// The logo as an overlay at its final size; none where there is no room for it. `logo` is premultiplied RGBA.
[[nodiscard]] std::vector<Engine::Overlay> drawLogo(const Bitmap& logo, const RenderLayout& layout,
                                                    const LogoConfiguration& configuration, double scale);

/// Everything an export or a preview draws, as values. `logo` may be null. The photo lies where the layout has it,
/// rounded to whole pixels. Throws Canceled.
[[nodiscard]] Engine::Composition composition(const RenderLayout& layout, const RenderRecipe& recipe,
                                              const PhotoMetadata& metadata, const Bitmap& logo, double scale,
                                              const std::stop_token& stop);

/// The same for an export of a photo of `pixelSize`, written at `size`, and for looking at its pixels. What is drawn is
/// drawn at that size, as in a preview, not reduced with the photo: so it is sharp. `grid` as for exportLayout().
/// Throws ImagePipelineError and Canceled.
[[nodiscard]] Engine::Composition exportComposition(PixelSize pixelSize, const RenderRecipe& recipe,
                                                    const PhotoMetadata& metadata, const Bitmap& logo,
                                                    const OutputSize& size, const std::stop_token& stop,
                                                    const BlockGrid& grid = {});

/// Where a render's scale comes from: full size, or the size of the picture at hand against the photo's.
enum class SourceScale { fullSize, fromSource };

/// The framed picture in memory, computed by the export's own compositor from `source` (8-bit RGB, upright, any size):
/// rgb8, or straight rgba8 where border or source can be transparent, in the output's color space. `logo` may be null.
/// Throws ImagePipelineError and Canceled.
[[nodiscard]] Bitmap render(const Bitmap& source, PixelSize originalSize, const RenderRecipe& recipe,
                            const PhotoMetadata& metadata, const Bitmap& logo, SourceScale sourceScale,
                            const std::stop_token& stop);

/// The same reduced to exactly `canvas`, a size with about the frame's proportions, for pictures so small that half a
/// pixel is seen: every edge lies between pixels where reducing the export to that size would take it.
[[nodiscard]] Bitmap renderReduced(const Bitmap& source, PixelSize originalSize, const RenderRecipe& recipe,
                                   const PhotoMetadata& metadata, const Bitmap& logo, PixelSize canvas,
                                   const std::stop_token& stop);

/// The largest size with the proportions of the framed photo that fits into `box`, at most the export's own. Throws
/// ImagePipelineError as validateRenderBounds() does, but for frames that are merely too large.
[[nodiscard]] PixelSize fittedCanvas(PixelSize originalSize, const RenderRecipe& recipe, PixelSize box);

} // namespace ferrow::ImageRenderer
