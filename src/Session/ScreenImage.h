// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/Border.h"
#include "Platform/Pixels/Bitmap.h"

#include <QImage>
#include <QSize>
#include <QSizeF>

/// Pictures on their way to the screen. What converts or scales takes tens of milliseconds for a preview, and belongs
/// on a worker thread. A null picture gives a null one.
namespace ferrow {

/// `picture` (rgb8, or rgba8 straight; where it is sRGB premultiplied too) for painting, in sRGB. Shares the bitmap's
/// pixels where these need no conversion.
[[nodiscard]] QImage screenImage(const Bitmap& picture);

/// The pixels as windows have them, so that painting them is a copy.
[[nodiscard]] QImage paintableImage(const QImage& image);
[[nodiscard]] QImage paintableImage(const Bitmap& picture);
/// The same at exactly `size`, by the filter that exports use.
[[nodiscard]] QImage paintableImage(const Bitmap& picture, QSize size);

/// What a frame of `canvas` has for a background where the photo is blurred, as a small picture of that shape that is
/// to be drawn smoothly: near enough until there is a render.
[[nodiscard]] QImage blurredStandIn(const QImage& photo, const BlurredBackground& background, QSizeF canvas);

} // namespace ferrow
