// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/StarterFrames.h"

#include <QImage>
#include <QSize>

#include <stop_token>

namespace ferrow {

/// A landscape that is drawn here, framed as a preview would be, as large as it goes into `box` (pixels), in sRGB.
/// `scene` says which landscape; any number. Takes as long as the first use of a font does: for worker threads. Throws
/// ImagePipelineError and Canceled.
[[nodiscard]] QImage starterPicture(const StarterFrame& frame, int scene, QSize box, const std::stop_token& stop);

} // namespace ferrow
