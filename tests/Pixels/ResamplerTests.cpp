// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/Resampler.h"

#include "Support/Pictures.h"

#include <cmath>

namespace ferrow {

namespace {

using namespace test;
constexpr PixelFormat gray8{ColorModel::gray, 8, Alpha::none};

template <typename Level>
Bitmap painted(PixelSize size, PixelFormat format, Level level)
{
    Bitmap bitmap(size, format);
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width; ++x)
            for (int channel = 0; channel < format.channels(); ++channel)
                bitmap.row(y)[x * format.channels() + channel] = std::byte(level(x, y, channel));
    return bitmap;
}

} // namespace

TEST(Resampler, keepsConstantPicturesExactly)
{
    constexpr PixelSize large{97, 53};
    for (const Bitmap& source : {flat(large, gray8, {77}), flat(large, rgb8, {1, 128, 255}),
                                 flat(large, rgba8, {1, 128, 254, 3}), flat({5000, 2}, rgb8, {9, 99, 199})})
        for (const PixelSize size : {PixelSize{40, 30}, {33, 1}, {1, 1}, {7, 300}, {201, 97}}) {
            const auto same = [&](auto, auto, int channel) { return component(source, 0, 0, channel); };
            EXPECT_TRUE(samePixels(Resampler::scaled(source, size), painted(size, source.format(), same)))
                << testing::PrintToString(size) << " in " << source.format().channels() << " channels";
        }
}

TEST(Resampler, transparentPixelsDoNotBleed)
{
    // Opaque blue beside invisible red: no red may show anywhere, nor any darkening of the blue.
    const Bitmap source = painted({64, 8}, rgba8, [](auto x, auto, int c) { return (x < 32 ? c >= 2 : c == 0) * 255; });
    for (const PixelSize size : {PixelSize{13, 3}, {100, 20}}) {
        const Bitmap result = Resampler::scaled(source, size);
        for (std::int64_t x = 0; x < size.width; ++x) {
            const bool isSeen = component(result, x, 1, 3) > 0;
            EXPECT_TRUE(!isSeen || (component(result, x, 1, 0) == 0 && component(result, x, 1, 2) == 255)) << x;
        }
        EXPECT_EQ(component(result, 0, 0, 3), 255);
    }
}

TEST(Resampler, keepsSlowWavesAndDropsWhatIsTooFine)
{
    const auto at = [](std::int64_t pixel, std::int64_t side) { return (double(pixel) + 0.5) / double(side); };
    const auto height = [](double x) { return 50 * std::sin(x * 30); };
    for (const PixelFormat format : {gray8, rgb8, rgba8, rgba8Premultiplied}) {
        const Bitmap waves = painted({400, 400}, format, [&](auto x, auto y, int channel) {
            return channel == 3 ? 255 : std::lround(128 + height(at(x, 400)) + height(at(y, 400)));
        });
        for (const PixelSize size : {PixelSize{130, 1000}, {1000, 130}}) {
            const Bitmap result = Resampler::scaled(waves, size);
            for (std::int64_t y = size.height / 50; y < size.height - size.height / 50; ++y)
                for (std::int64_t x = size.width / 50; x < size.width - size.width / 50; ++x)
                    ASSERT_NEAR(component(result, x, y, 0),
                                128 + height(at(x, size.width)) + height(at(y, size.height)), 2.5)
                        << x << ", " << y << " in " << format.channels() << " channels";
        }
    }
    // Stripes of one pixel would turn into coarse ones if pixels were merely picked.
    const Bitmap stripes = painted({300, 20}, gray8, [](auto x, auto, int) { return x % 2 * 255; });
    for (std::int64_t x = 4; x < 87; ++x)
        EXPECT_NEAR(component(Resampler::scaled(stripes, {91, 20}), x, 10, 0), 127.5, 4) << x;
}

TEST(Resampler, fitsWithinTheLongestSide)
{
    EXPECT_EQ(Resampler::fitted({6000, 4000}, 1600), (PixelSize{1600, 1067}));
    EXPECT_EQ(Resampler::fitted({4000, 6000}, 280), (PixelSize{187, 280}));
    EXPECT_EQ(Resampler::fitted({100, 50}, 280), (PixelSize{100, 50}));
    EXPECT_EQ(Resampler::fitted({50000, 3}, 280), (PixelSize{280, 1}));
    EXPECT_EQ(Resampler::fitted({200, 100}, 0), (PixelSize{1, 1}));
}

TEST(Resampler, drawsAsItIsAndCoversEdgePixelsInProportion)
{
    const Bitmap source = noise({9, 7}, rgb8);
    const auto opaque = [&](auto x, auto y, int c) { return c == 3 ? 255 : component(source, x, y, c); };
    EXPECT_TRUE(samePixels(Resampler::drawn(source, QRectF(3, -4, 9, 7)), painted({9, 7}, rgba8Premultiplied, opaque)));

    const Bitmap white = flat({50, 40}, rgb8, {255, 255, 255});
    const Bitmap glass = flat({50, 40}, rgba8, {255, 0, 255, 100});
    // From 10.25 to 14.5 across and from -0.5 to 1.8 down.
    constexpr double across[]{0.75, 1, 1, 1, 0.5};
    constexpr double down[]{0.5, 1, 0.8};
    for (const Bitmap& picture : {white, glass}) {
        const auto share = [&](auto x, auto y, int channel) {
            const int most = !picture.format().hasAlpha() ? 255 : channel == 1 ? 0 : 100;
            return std::lround(most * across[x] * down[y]);
        };
        const Bitmap drawn = Resampler::drawn(picture, QRectF(10.25, -0.5, 4.25, 2.3));
        EXPECT_TRUE(samePixels(drawn, painted({5, 3}, rgba8Premultiplied, share))) << picture.format().channels();
    }
    EXPECT_EQ(component(Resampler::drawn(white, QRectF(5.2, 5.2, 0.5, 0.5)), 0, 0, 3), 64);
    EXPECT_EQ(Resampler::drawn(white, QRectF(0.5, 0.5, 500, 400)).size(), (PixelSize{501, 401}));
    EXPECT_TRUE(Resampler::drawn(white, QRectF(1, 1, 0, 5)).isNull());
}

} // namespace ferrow
