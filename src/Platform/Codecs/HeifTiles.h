// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Codecs/HeifHandles.h"

#include <cstdint>
#include <optional>

/// Grids of tiles, a tile at a time: what libheif has from 1.19 on. With an older one none of this does anything, and
/// pictures are read and written as wholes.
namespace ferrow::heif {

/// How a picture lies on its tiles, all turned as it is shown.
struct TileGrid {
    std::int64_t columns = 0;
    std::int64_t rows = 0;
    PixelSize tile;
    /// Pixels of the first column and the first row of tiles that lie outside of the picture.
    std::int64_t left = 0;
    std::int64_t top = 0;
};

/// Of the grid behind `handle`, a picture of `size` that is turned or mirrored at most. Nothing where it must be
/// decoded as a whole.
[[nodiscard]] std::optional<TileGrid> tileGridOf(const heif_image_handle* handle, PixelSize size);

/// As planes of red, green and blue.
[[nodiscard]] heif_error decodeTile(const heif_image_handle* handle, heif_image** image,
                                    const heif_decoding_options* options, std::int64_t column, std::int64_t row);

inline constexpr bool canWriteTiles = LIBHEIF_NUMERIC_VERSION >= 0x01130000;

/// Begins a picture of `size` that tiles are added to, and makes it the primary one.
[[nodiscard]] heif_error addGrid(heif_context* context, PixelSize size, std::int64_t columns, std::int64_t rows,
                                 heif_image_handle** grid);
[[nodiscard]] heif_error addTile(heif_context* context, heif_image_handle* grid, std::int64_t column, std::int64_t row,
                                 const heif_image* image, heif_encoder* encoder);

} // namespace ferrow::heif
