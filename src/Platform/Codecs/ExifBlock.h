// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Codecs/ImageEncoder.h"

#include <QByteArray>

namespace ferrow {

/// The Exif block of an output as a little-endian TIFF structure (starting "II*\0", without any container's prefix):
/// orientation 1, the metadata's fields, and what Exif requires of every file (version, color space, pixel size,
/// resolution, component order and positioning). Texts end at a NUL and after 12,000 bytes. The same bytes go into
/// JPEG, PNG and HEIF.
[[nodiscard]] QByteArray makeExifBlock(const OutputMetadata& metadata, PixelSize size, bool isSrgb);

} // namespace ferrow
