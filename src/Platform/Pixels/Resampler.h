// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/Bitmap.h"

#include <QRectF>

/// High-quality scaling of 8-bit pictures. Color is weighted by alpha, so that transparent pixels never bleed.
namespace ferrow::Resampler {

/// The whole of `source` (8 bits a component, gray, rgb or rgba in any alpha state) drawn at exactly `size`. A
/// Lanczos-3 filter widened for reduction, area-exact. The result has the source's format and profile.
[[nodiscard]] Bitmap scaled(const Bitmap& source, PixelSize size);

/// Largest size with `size`'s proportions whose longest side is at most `maximumDimension`; never larger than `size`,
/// no side below 1.
[[nodiscard]] PixelSize fitted(PixelSize size, std::int64_t maximumDimension);

/// `source` drawn onto `target` where target is a rectangle in pixel coordinates with the origin at the top left that
/// need not lie on whole pixels: the result is the smallest whole-pixel bitmap covering it (first pixel at
/// floor(x), floor(y)), premultiplied RGBA, its edge pixels covered in proportion. `source` must be 8-bit RGB or RGBA.
[[nodiscard]] Bitmap drawn(const Bitmap& source, const QRectF& target);

} // namespace ferrow::Resampler
