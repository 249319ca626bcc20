// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetModels.h"

#include <QString>

namespace ferrow {

/// "40 px · caption · no logo · JPEG". A logo counts when it is configured, be it switched on or not.
[[nodiscard]] QString payloadSummary(const PresetPayload& payload);

/// How thick the border of a drawn frame is whose shorter side is `side` long, in the same unit: enough to tell thin
/// from wide, more than true to scale, and never so much that no photo is left.
[[nodiscard]] double drawnBorderWidth(const PresetPayload& payload, double side);

} // namespace ferrow
