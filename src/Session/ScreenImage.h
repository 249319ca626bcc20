// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/Bitmap.h"

#include <QImage>

namespace ferrow {

/// `picture` (rgb8, or rgba8 straight or premultiplied) for painting, in sRGB. The image shares the bitmap's pixels
/// where these are sRGB already; else they are converted, which belongs on a worker thread. Null for no picture.
[[nodiscard]] QImage screenImage(const Bitmap& picture);

} // namespace ferrow
