// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/PixelFormat.h"

#include <cstdint>

/// Which pictures are written in tiles.
namespace ferrow::heif {

/// In pixels, of a picture that is coded in tiles: docs/heic-encoder.md.
inline constexpr std::int64_t tileSide = 512;

/// Transparency is a picture of its own, for which grids have no way that all readers know. With more than 8 bits tiles
/// were not tried.
[[nodiscard]] bool isTiled(PixelSize size, PixelFormat format);

} // namespace ferrow::heif
