// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/Bitmap.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>

namespace ferrow {

TEST(Bitmap, startsZeroedAndIsShared)
{
    Bitmap bitmap({7, 3}, {ColorModel::cmyk, 16, Alpha::straight});
    EXPECT_GE(bitmap.stride(), 70U);
    for (std::int64_t y = 0; y < 3; ++y)
        for (std::size_t x = 0; x < 70; ++x)
            EXPECT_EQ(bitmap.row(y)[x], std::byte{0});
    const Bitmap copy = bitmap.withProfile(ColorProfile::lab());
    bitmap.row(2)[69] = std::byte{9};
    EXPECT_EQ(copy.row(2)[69], std::byte{9});
    EXPECT_EQ(copy.profile(), ColorProfile::lab());
    EXPECT_TRUE(bitmap.profile().isEmpty());
}

TEST(Bitmap, refusesSizesThatNoMemoryHolds)
{
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    for (const PixelSize size : {PixelSize{most, 1}, {1, most}, {most / 4, 4}, {1LL << 32, 1LL << 32}})
        EXPECT_THROW(Bitmap(size, rgba8), std::bad_alloc) << size.width << " x " << size.height;
    for (const PixelSize size : {PixelSize{0, 1}, {1, 0}, {-1, -1}})
        EXPECT_TRUE(Bitmap(size, rgba8).isNull());
}

} // namespace ferrow
