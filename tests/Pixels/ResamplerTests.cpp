// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/Resampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <numbers>
#include <random>
#include <vector>

namespace ferrow {

namespace {

constexpr PixelFormat gray8{ColorModel::gray, 8, Alpha::none};

using Painter = std::function<std::vector<int>(std::int64_t x, std::int64_t y)>;

Bitmap painted(PixelSize size, PixelFormat format, const Painter& painter)
{
    Bitmap bitmap(size, format);
    const auto channels = static_cast<std::size_t>(format.channels());
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width; ++x) {
            const std::vector<int> color = painter(x, y);
            for (std::size_t channel = 0; channel < channels; ++channel)
                bitmap.row(y)[static_cast<std::size_t>(x) * channels + channel] =
                    static_cast<std::byte>(color[channel]);
        }
    return bitmap;
}

std::vector<int> pixel(const Bitmap& bitmap, std::int64_t x, std::int64_t y)
{
    const auto channels = static_cast<std::size_t>(bitmap.format().channels());
    std::vector<int> color;
    for (std::size_t channel = 0; channel < channels; ++channel)
        color.push_back(std::to_integer<int>(bitmap.row(y)[static_cast<std::size_t>(x) * channels + channel]));
    return color;
}

double mean(const Bitmap& bitmap, std::size_t channel)
{
    double sum = 0;
    for (std::int64_t y = 0; y < bitmap.size().height; ++y)
        for (std::int64_t x = 0; x < bitmap.size().width; ++x)
            sum += pixel(bitmap, x, y)[channel];
    return sum / static_cast<double>(bitmap.size().width * bitmap.size().height);
}

int largestDifference(const Bitmap& one, const Bitmap& other, std::size_t channels)
{
    int largest = 0;
    for (std::int64_t y = 0; y < one.size().height; ++y)
        for (std::int64_t x = 0; x < one.size().width; ++x)
            for (std::size_t channel = 0; channel < channels; ++channel)
                largest = std::max(largest, std::abs(pixel(one, x, y)[channel] - pixel(other, x, y)[channel]));
    return largest;
}

Painter noise(unsigned seed)
{
    auto random = std::make_shared<std::mt19937>(seed);
    return [random](std::int64_t, std::int64_t) {
        const auto level = [&] { return static_cast<int>((*random)() % 256); };
        return std::vector<int>{level(), level(), level(), level()};
    };
}

} // namespace

TEST(Resampler, keepsConstantPicturesExactly)
{
    const struct {
        const char* what;
        PixelFormat format;
        std::vector<int> color;
    } rows[]{
        {"grey", gray8, {77}},
        {"white", rgb8, {255, 255, 255}},
        {"colour", rgb8, {1, 128, 254}},
        {"straight", rgba8, {1, 128, 254, 3}},
        {"premultiplied", rgba8Premultiplied, {1, 30, 60, 60}},
    };
    for (const auto& row : rows)
        for (const PixelSize size : {PixelSize{40, 30}, {33, 1}, {1, 1}, {7, 300}, {201, 97}}) {
            SCOPED_TRACE(std::string(row.what) + ' ' + std::to_string(size.width) + 'x' + std::to_string(size.height));
            const Bitmap source = painted({97, 53}, row.format, [&](auto, auto) { return row.color; });
            const Bitmap result = Resampler::scaled(source, size);
            ASSERT_EQ(result.size(), size);
            ASSERT_EQ(result.format(), row.format);
            for (std::int64_t y = 0; y < size.height; ++y)
                for (std::int64_t x = 0; x < size.width; ++x)
                    ASSERT_EQ(pixel(result, x, y), row.color) << x << ", " << y;
        }
    const Bitmap wide = painted({5000, 2}, rgb8, [](auto, auto) { return std::vector<int>{9, 99, 199}; });
    EXPECT_EQ(pixel(Resampler::scaled(wide, {1, 1}), 0, 0), (std::vector<int>{9, 99, 199}));
}

TEST(Resampler, transparentPixelsDoNotBleed)
{
    // Opaque blue beside invisible red: no red may show anywhere, nor any darkening of the blue.
    const Bitmap source = painted({64, 8}, rgba8, [](std::int64_t x, auto) {
        return x < 32 ? std::vector<int>{0, 0, 255, 255} : std::vector<int>{255, 0, 0, 0};
    });
    for (const PixelSize size : {PixelSize{13, 3}, {100, 20}}) {
        const Bitmap result = Resampler::scaled(source, size);
        for (std::int64_t x = 0; x < size.width; ++x) {
            const std::vector<int> color = pixel(result, x, 1);
            if (color[3] > 0) {
                EXPECT_EQ(color[0], 0) << x;
                EXPECT_EQ(color[2], 255) << x;
            }
        }
        EXPECT_EQ(pixel(result, 0, 0)[3], 255);
        EXPECT_EQ(pixel(result, size.width - 1, 0)[3], 0);
    }
}

TEST(Resampler, treatsBothDirectionsAlike)
{
    const Painter random = noise(5);
    std::vector<std::vector<int>> colors;
    for (int i = 0; i < 50 * 30; ++i)
        colors.push_back(random(0, 0));
    const auto at = [&](std::int64_t x, std::int64_t y) { return colors[static_cast<std::size_t>(y * 50 + x)]; };
    for (const PixelSize size : {PixelSize{19, 11}, {83, 64}}) {
        const Bitmap plain = Resampler::scaled(painted({50, 30}, rgb8, at), size);
        const Bitmap turned =
            Resampler::scaled(painted({50, 30}, rgb8, [&](auto x, auto y) { return at(49 - x, 29 - y); }), size);
        int largest = 0;
        for (std::int64_t y = 0; y < size.height; ++y)
            for (std::int64_t x = 0; x < size.width; ++x)
                largest = std::max(largest, std::abs(pixel(plain, x, y)[1] -
                                                     pixel(turned, size.width - 1 - x, size.height - 1 - y)[1]));
        EXPECT_LE(largest, 1);
    }
}

TEST(Resampler, keepsTheBrightnessAndDropsWhatIsTooFine)
{
    const Bitmap random = painted({301, 200}, rgb8, noise(9));
    const Bitmap reduced = Resampler::scaled(random, {40, 27});
    for (std::size_t channel = 0; channel < 3; ++channel)
        EXPECT_NEAR(mean(random, channel), mean(reduced, channel), 1.0);

    // Stripes of one pixel would turn into coarse ones if pixels were merely picked.
    const Bitmap stripes =
        painted({300, 20}, gray8, [](auto x, auto) { return std::vector<int>{x % 2 == 0 ? 0 : 255}; });
    const Bitmap flat = Resampler::scaled(stripes, {91, 20});
    for (std::int64_t x = 4; x < 87; ++x)
        EXPECT_NEAR(pixel(flat, x, 10)[0], 127.5, 4) << x;

    // A slow wave must come through at its place and height.
    const auto wave = [](double position) { return 127.5 + 100 * std::sin(position * 2 * std::numbers::pi * 5); };
    const Bitmap waves = painted({400, 3}, gray8, [&](auto x, auto) {
        return std::vector<int>{static_cast<int>(std::lround(wave((static_cast<double>(x) + 0.5) / 400)))};
    });
    for (const std::int64_t width : {130, 1000}) {
        const Bitmap result = Resampler::scaled(waves, {width, 3});
        for (std::int64_t x = width / 50; x < width - width / 50; ++x)
            EXPECT_NEAR(pixel(result, x, 1)[0], wave((static_cast<double>(x) + 0.5) / static_cast<double>(width)), 2.5)
                << x << " of " << width;
    }
}

TEST(Resampler, allFormatsGiveTheSamePicture)
{
    const Painter random = noise(17);
    const Bitmap opaque = painted({120, 90}, rgb8, random);
    const auto withAlpha = [&](PixelFormat format) {
        return painted({120, 90}, format, [&](auto x, auto y) {
            std::vector<int> color = pixel(opaque, x, y);
            color.push_back(255);
            return color;
        });
    };
    for (const PixelSize size : {PixelSize{31, 24}, {200, 151}}) {
        const Bitmap wanted = Resampler::scaled(opaque, size);
        EXPECT_LE(largestDifference(Resampler::scaled(withAlpha(rgba8), size), wanted, 3), 1);
        EXPECT_LE(largestDifference(Resampler::scaled(withAlpha(rgba8Premultiplied), size), wanted, 3), 1);
    }
}

TEST(Resampler, fitsWithinTheLongestSide)
{
    const struct {
        PixelSize size;
        std::int64_t most;
        PixelSize fitted;
    } rows[]{
        {{6000, 4000}, 1600, {1600, 1067}},
        {{4000, 6000}, 280, {187, 280}},
        {{100, 50}, 280, {100, 50}},
        {{280, 1}, 280, {280, 1}},
        {{50000, 3}, 280, {280, 1}},
        {{3000, 3000}, 1, {1, 1}},
        {{200, 100}, 0, {1, 1}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Resampler::fitted(row.size, row.most), row.fitted) << row.size.width << 'x' << row.size.height;
}

TEST(Resampler, drawsOnWholePixelsAsItIs)
{
    const Bitmap source = painted({9, 7}, rgb8, noise(2));
    const Bitmap drawn = Resampler::drawn(source, QRectF(3, -4, 9, 7));
    ASSERT_EQ(drawn.size(), (PixelSize{9, 7}));
    EXPECT_EQ(drawn.format(), rgba8Premultiplied);
    EXPECT_EQ(largestDifference(drawn, source, 3), 0);
    EXPECT_EQ(pixel(drawn, 8, 6)[3], 255);
}

TEST(Resampler, coversEdgePixelsInProportion)
{
    const Bitmap white = painted({50, 40}, rgb8, [](auto, auto) { return std::vector<int>{255, 255, 255}; });
    const Bitmap glass = painted({50, 40}, rgba8, [](auto, auto) { return std::vector<int>{255, 0, 255, 100}; });
    // From 10.25 to 14.5 across and from -0.5 to 1.8 down.
    const QRectF target(10.25, -0.5, 4.25, 2.3);
    const Bitmap drawn = Resampler::drawn(white, target);
    ASSERT_EQ(drawn.size(), (PixelSize{5, 3}));
    const std::array<double, 5> across{0.75, 1, 1, 1, 0.5};
    const std::array<double, 3> down{0.5, 1, 0.8};
    for (std::int64_t y = 0; y < 3; ++y)
        for (std::int64_t x = 0; x < 5; ++x) {
            const double share = across[static_cast<std::size_t>(x)] * down[static_cast<std::size_t>(y)];
            const int level = static_cast<int>(std::lround(255 * share));
            EXPECT_EQ(pixel(drawn, x, y), (std::vector<int>{level, level, level, level})) << x << ", " << y;
            const std::vector<int> color = pixel(Resampler::drawn(glass, target), x, y);
            EXPECT_NEAR(color[3], 100 * share, 0.51);
            EXPECT_NEAR(color[0], 100 * share, 0.51);
            EXPECT_EQ(color[1], 0);
        }

    const Bitmap speck = Resampler::drawn(white, QRectF(5.2, 5.2, 0.5, 0.5)); // Within a single pixel.
    ASSERT_EQ(speck.size(), (PixelSize{1, 1}));
    EXPECT_EQ(pixel(speck, 0, 0)[3], 64);
    const Bitmap enlarged = Resampler::drawn(white, QRectF(0.5, 0.5, 500, 400));
    EXPECT_EQ(enlarged.size(), (PixelSize{501, 401}));
    EXPECT_NEAR(mean(enlarged, 3) * 501 * 401 / 255, 500 * 400, 10);
    EXPECT_TRUE(Resampler::drawn(white, QRectF(1, 1, 0, 5)).isNull());
}

} // namespace ferrow
