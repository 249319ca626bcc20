// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/Bitmap.h"

#include <QSizeF>

#include <cairo.h>

#include <functional>

/// What drawings that have no pixels of their own share. For the .cpp files of this folder alone.
namespace ferrow {

/// A drawing of `extent` (both sides finite and above 0, else CodecError: malformed) on nothing, longest side exactly
/// `dimension` pixels: premultiplied RGBA in sRGB. `draw` works in the drawing's own units, and answers whether it
/// could. Throws CodecError.
[[nodiscard]] Bitmap drawnByCairo(const QSizeF& extent, std::int64_t dimension,
                                  const std::function<bool(cairo_t*)>& draw);

} // namespace ferrow
