// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/JpegGrid.h"

#include "Platform/Codecs/BlockTransform.h"

#include <numeric>

namespace ferrow {

std::pair<int, int> samplingUnit(const jpeg_decompress_struct& picture)
{
    int across = 0;
    int down = 0;
    for (int i = 0; i < picture.num_components; ++i) {
        across = std::gcd(across, picture.comp_info[i].h_samp_factor);
        down = std::gcd(down, picture.comp_info[i].v_samp_factor);
    }
    return {across, down};
}

std::optional<BlockGrid> blockGridOf(const jpeg_decompress_struct& picture, int orientation)
{
    const bool isPlain = picture.jpeg_color_space == JCS_GRAYSCALE || picture.jpeg_color_space == JCS_YCbCr ||
                         picture.jpeg_color_space == JCS_RGB;
    if (!isPlain || (picture.num_components != 1 && picture.num_components != 3))
        return std::nullopt;
    const auto [unitAcross, unitDown] = samplingUnit(picture);
    int blocksInMcu = 0;
    for (int i = 0; i < picture.num_components; ++i) {
        const jpeg_component_info& component = picture.comp_info[i];
        if (picture.max_h_samp_factor % component.h_samp_factor != 0 ||
            picture.max_v_samp_factor % component.v_samp_factor != 0)
            return std::nullopt;
        blocksInMcu += component.h_samp_factor / unitAcross * (component.v_samp_factor / unitDown);
    }
    if (blocksInMcu > C_MAX_BLOCKS_IN_MCU)
        return std::nullopt;

    BlockGrid grid{.width = picture.max_h_samp_factor / unitAcross * DCTSIZE,
                   .height = picture.max_v_samp_factor / unitDown * DCTSIZE};
    const BlockTransform::Turn turn = BlockTransform::Turn::of(orientation);
    // What fills the last MCUs of the file comes first, where it is turned.
    const auto filling = [](std::int64_t length, std::int64_t unit) { return (unit - length % unit) % unit; };
    grid.x = turn.fromRight ? filling(picture.image_width, grid.width) : 0;
    grid.y = turn.fromBottom ? filling(picture.image_height, grid.height) : 0;
    return turn.swaps ? BlockGrid{grid.height, grid.width, grid.y, grid.x} : grid;
}

} // namespace ferrow
