// SPDX-License-Identifier: GPL-3.0-or-later
#include "Text/TextTestSupport.h"

namespace ferrow::test {
namespace {

Bitmap square(int side, int from, int to)
{
    Bitmap bitmap({side, side}, rgba8Premultiplied);
    for (int y = from; y < to; ++y)
        std::fill(bitmap.row(y) + from * 4, bitmap.row(y) + to * 4, std::byte{255});
    return bitmap;
}

/// Share of a Gaussian below `x`.
double share(double x, double sigma)
{
    return 0.5 * (1 + std::erf(x / sigma / std::sqrt(2.0)));
}

TEST(DropShadow, fallsOffAsAGaussianDoes)
{
    for (const double sigma : {0.7, 1.5, 4.0}) {
        const Bitmap shadow = dropShadow(square(100, 30, 70), sigma, 0.55);
        for (const auto& [x, y] : {std::pair(50, 50), {30, 50}, {29, 50}, {26, 40}, {70, 71}, {33, 33}, {28, 69}}) {
            const auto along = [&](double at) { return share(at + 0.5 - 30, sigma) - share(at + 0.5 - 70, sigma); };
            // Weights are taken at pixel centers, which shows in the narrowest only.
            EXPECT_NEAR(pixel(shadow, x, y)[3], 255 * 0.55 * along(x) * along(y), sigma < 1 ? 4 : 1.2)
                << sigma << " at " << x << ", " << y;
            EXPECT_EQ(pixel(shadow, x, y)[0], 0);
        }
    }
    // A shape that fills its bitmap has a shadow fading at the edge, to a half of a half in the corner.
    EXPECT_NEAR(pixel(dropShadow(square(40, 0, 40), 3, 1), 0, 0)[3], 255 * std::pow(share(0.5, 3), 2), 1.2);
    const Bitmap shadow = dropShadow(square(9, 3, 6), 0, 0.5); // Without a blur it is the shape in black.
    EXPECT_EQ(pixel(shadow, 4, 4), (std::array{0, 0, 0, 128}));
    EXPECT_EQ(pixel(shadow, 2, 4), (std::array{0, 0, 0, 0}));
    EXPECT_TRUE(dropShadow(Bitmap(), 2, 1).isNull());
}

} // namespace
} // namespace ferrow::test
