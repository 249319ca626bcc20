// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifTiles.h"

namespace ferrow::heif {

#if LIBHEIF_NUMERIC_VERSION >= 0x01130000

namespace {

/// The library reports what the edge tiles show of the picture in place of what lies outside of it, so that only
/// whether it reports anything tells at which end that lies.
std::optional<std::int64_t> outside(std::uint32_t reported, std::int64_t tiles, std::int64_t tileSide,
                                    std::int64_t side)
{
    const std::int64_t padding = tiles * tileSide - side;
    if (padding < 0 || padding >= tileSide)
        return std::nullopt;
    return reported == 0 ? 0 : padding;
}

} // namespace

std::optional<TileGrid> tileGridOf(const heif_image_handle* handle, PixelSize size)
{
    heif_image_tiling tiling{};
    tiling.version = 1;
    // Transparency has tiles of its own, which need not be like these.
    if (heif_image_handle_has_alpha_channel(handle) != 0 ||
        heif_image_handle_get_image_tiling(handle, 1, &tiling).code != heif_error_Ok ||
        size != PixelSize{tiling.image_width, tiling.image_height})
        return std::nullopt;
    TileGrid grid{tiling.num_columns, tiling.num_rows, {tiling.tile_width, tiling.tile_height}};
    const auto left = outside(tiling.left_offset, grid.columns, grid.tile.width, size.width);
    const auto top = outside(tiling.top_offset, grid.rows, grid.tile.height, size.height);
    if (grid.columns * grid.rows < 2 || !left || !top)
        return std::nullopt;
    grid.left = *left;
    grid.top = *top;
    return grid;
}

heif_error decodeTile(const heif_image_handle* handle, heif_image** image, const heif_decoding_options* options,
                      std::int64_t column, std::int64_t row)
{
    return heif_image_handle_decode_image_tile(handle, image, heif_colorspace_RGB, heif_chroma_444, options,
                                               std::uint32_t(column), std::uint32_t(row));
}

heif_error addGrid(heif_context* context, PixelSize size, std::int64_t columns, std::int64_t rows,
                   heif_image_handle** grid)
{
    const EncodingOptions options(heif_encoding_options_alloc());
    const heif_error error =
        heif_context_add_grid_image(context, std::uint32_t(size.width), std::uint32_t(size.height),
                                    std::uint32_t(columns), std::uint32_t(rows), options.get(), grid);
    return error.code == heif_error_Ok ? heif_context_set_primary_image(context, *grid) : error;
}

heif_error addTile(heif_context* context, heif_image_handle* grid, std::int64_t column, std::int64_t row,
                   const heif_image* image, heif_encoder* encoder)
{
    return heif_context_add_image_tile(context, grid, std::uint32_t(column), std::uint32_t(row), image, encoder);
}

#else

namespace {
constexpr heif_error unavailable{heif_error_Unsupported_feature, heif_suberror_Unspecified, "No tiles"};
} // namespace

std::optional<TileGrid> tileGridOf(const heif_image_handle*, PixelSize)
{
    return std::nullopt;
}

heif_error decodeTile(const heif_image_handle*, heif_image**, const heif_decoding_options*, std::int64_t, std::int64_t)
{
    return unavailable;
}

heif_error addGrid(heif_context*, PixelSize, std::int64_t, std::int64_t, heif_image_handle**)
{
    return unavailable;
}

heif_error addTile(heif_context*, heif_image_handle*, std::int64_t, std::int64_t, const heif_image*, heif_encoder*)
{
    return unavailable;
}

#endif

} // namespace ferrow::heif
