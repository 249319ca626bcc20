// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Codecs/TiffDirectory.h"
#include "Platform/Properties/PropertyMap.h"

namespace ferrow {

/// What the first directory and its Exif directory say: Orientation at the top, {TIFF} and {Exif} where they hold
/// anything. Serves Exif blocks and TIFF files alike. Throws InputOutputError.
[[nodiscard]] PropertyMap readExif(const TiffStructure& structure);

} // namespace ferrow
