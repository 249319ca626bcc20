// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetModels.h"

#include <QString>

namespace ferrow {

/// "40 px · caption · no logo · JPEG". A logo counts when it is configured, whether or not it is switched on.
[[nodiscard]] QString payloadSummary(const PresetPayload& payload);

/// The border of a little frame that is drawn with a shorter side of `side`, in the same unit: wider than to scale, so
/// that thin can be told from wide, and never so wide that no photo is left.
[[nodiscard]] double drawnBorderWidth(const Border& border, double side);

} // namespace ferrow
