// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace ferrow {

/// Where a picture that is coded in blocks may lie, so that its blocks are blocks of the whole: at x + n · width,
/// y + m · height from the left and the top, for n and m from 0 on.
struct BlockGrid {
    std::int64_t width = 1; ///< In pixels, like everything here; at least 1.
    std::int64_t height = 1;
    std::int64_t x = 0; ///< Below `width`: what a turned picture's blocks hold beyond its left edge.
    std::int64_t y = 0;

    bool operator==(const BlockGrid&) const = default;
};

} // namespace ferrow
