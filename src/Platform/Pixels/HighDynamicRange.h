// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/RowConverter.h"

/// Pictures whose light reaches far beyond the white of a page (ITU-R BT.2100), shown in a space that ends there: white
/// is 203 cd/m² (ITU-R BT.2408), what is below 88 stays as it is, and what is brighter is drawn together by the curve
/// of ITU-R BT.2390, by one factor for all three components, so that hues stay. For the .cpp files of this folder
/// alone.
namespace ferrow {

/// Null where `to` converts through tables. `from` isHdr().
[[nodiscard]] std::unique_ptr<RowConverter> hdrRows(const ColorProfile& from, PixelFormat source, cmsHPROFILE to,
                                                    PixelFormat target);

} // namespace ferrow
