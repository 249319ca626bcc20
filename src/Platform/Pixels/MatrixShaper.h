// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/RowConverter.h"

namespace ferrow {

/// RGB to RGB where both profiles are three curves and a matrix, as nearly all of photographs are. Several times as
/// fast as the color library, and within one level of its floating-point result, of 16 bits within half a level. Null
/// when a profile is otherwise.
[[nodiscard]] std::unique_ptr<RowConverter> shapedRows(cmsHPROFILE from, PixelFormat source, cmsHPROFILE to,
                                                       PixelFormat target);

} // namespace ferrow
