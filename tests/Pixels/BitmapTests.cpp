// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/Bitmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <new>

namespace ferrow {

TEST(Bitmap, startsZeroedAndRefusesSizesThatNoMemoryHolds)
{
    const Bitmap bitmap({7, 3}, {ColorModel::cmyk, 16, Alpha::straight});
    EXPECT_EQ(std::count(bitmap.row(0), bitmap.row(3), std::byte{0}), bitmap.stride() * 3);
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    for (const PixelSize size : {PixelSize{most, 1}, {1, most}, {most / 4, 4}, {1LL << 32, 1LL << 32}})
        EXPECT_THROW(Bitmap(size, rgba8), std::bad_alloc) << size.width << " x " << size.height;
    for (const PixelSize size : {PixelSize{0, 1}, {1, 0}, {-1, -1}})
        EXPECT_TRUE(Bitmap(size, rgba8).isNull());
}

} // namespace ferrow
