// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetModels.h"

#include <QRectF>
#include <QString>

namespace ferrow {

/// "40 px · caption · no logo · JPEG". A logo counts when it is configured, whether or not it is switched on.
[[nodiscard]] QString payloadSummary(const PresetPayload& payload);

/// A little frame, as it is drawn in a box. Lengths are larger than to scale, so that thin can be told from wide, and
/// never so large that no photo is left.
struct DrawnFrame {
    QRectF canvas;
    QRectF photo;
    QRectF line; ///< Empty without one.
    double cornerRadius = 0;
};
/// Around a usual photo.
[[nodiscard]] DrawnFrame drawnFrame(const Border& border, const QRectF& box);

} // namespace ferrow
