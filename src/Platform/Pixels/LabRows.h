// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/RowConverter.h"

namespace ferrow {

/// D50 Lab to RGB by formula. Null when the target converts through tables.
[[nodiscard]] std::unique_ptr<RowConverter> labRows(PixelFormat source, cmsHPROFILE to, PixelFormat target);

} // namespace ferrow
