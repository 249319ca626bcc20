// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/BlockGrid.h"

#include <cstdio>
#include <optional>
#include <utility>

#include <jpeglib.h>

// For the codecs over libjpeg alone.
namespace ferrow {

/// Across and down: what all sampling factors of a picture are multiples of. They only count against each other; a
/// gray picture's don't count at all.
[[nodiscard]] std::pair<int, int> samplingUnit(const jpeg_decompress_struct& picture);

/// Where blocks of a picture whose header was read may lie, turned upright; none where its coded data can't stand
/// beside other: inks, and components that don't lie on one grid.
[[nodiscard]] std::optional<BlockGrid> blockGridOf(const jpeg_decompress_struct& picture, int orientation);

} // namespace ferrow
