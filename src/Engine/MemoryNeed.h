// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/PhotoRows.h"
#include "Models/RenderRecipe.h"
#include "Platform/Base/PixelSize.h"

#include <cstdint>

/// How many bytes a job will hold at once, from the header alone and before any of them is asked for. A few megabytes
/// for rows under way are left out.
namespace ferrow::Engine::MemoryNeed {

/// To hand out all rows upright, `size` pixels of them in `format`.
[[nodiscard]] std::int64_t ofRows(const OpenedPhoto& photo, PixelSize size, PixelFormat format);
/// To make the picture of reducedPicture().
[[nodiscard]] std::int64_t ofReducedPicture(const OpenedPhoto& photo, std::int64_t maximumDimension);
[[nodiscard]] std::int64_t ofEncoder(ExportFormat format, PixelSize canvas, PixelFormat pixels);
/// No photo of that many pixels takes more, whatever is made of it; an encoder comes on top.
[[nodiscard]] std::int64_t mostOfPhoto(std::int64_t pixels);
/// A PDF page or an SVG drawn at that length.
[[nodiscard]] std::int64_t ofPage(std::int64_t maximumDimension);

} // namespace ferrow::Engine::MemoryNeed
