// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QSize>

namespace ferrow {

/// The pixels as windows have them, so that painting them is a copy.
[[nodiscard]] QImage paintableImage(const QImage& image);

/// The same at exactly `size`, by the filter that exports use. `image` is RGB888 or straight RGBA8888, as screenImage()
/// gives it. Tens of milliseconds for a preview: belongs on a worker thread.
[[nodiscard]] QImage scaledPaintableImage(const QImage& image, QSize size);

} // namespace ferrow
