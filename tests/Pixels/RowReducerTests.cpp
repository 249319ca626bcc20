// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/RowReducer.h"

#include "Pixels/TestProfiles.h"
#include "Support/Pictures.h"

#include <cmath>
#include <numbers>

namespace ferrow {

namespace {

using test::component;

Bitmap reduced(const Bitmap& source, PixelSize size, double width, double height)
{
    RowReducer reducer(source.size(), width, height, size, source.format(), source.profile());
    Bitmap result(size, source.format(), source.profile());
    for (std::int64_t y = 0, fed = 0; y < size.height; ++y) {
        while (!reducer.isReady())
            reducer.feed(source.row(fed++));
        reducer.take(result.row(y));
    }
    return result;
}

Bitmap reduced(const Bitmap& source, PixelSize size)
{
    return reduced(source, size, double(source.size().width), double(source.size().height));
}

/// The kernel by its definition, for a pixel as far from the middle as `x` lobes.
double lanczos3(double x)
{
    const double angle = std::numbers::pi * x;
    return x == 0 ? 1 : std::abs(x) >= 3 ? 0 : 3 * std::sin(angle) * std::sin(angle / 3) / (angle * angle);
}

/// One pixel of the result: the sum over all pixels of the source, in two dimensions at once. Alpha is last.
std::array<double, 4> directly(const Bitmap& source, PixelSize size, double width, double height, std::int64_t x,
                               std::int64_t y)
{
    const double across = width / double(size.width);
    const double down = height / double(size.height);
    const double most = (1 << source.format().bitsPerComponent) - 1;
    std::array<double, 4> sums{};
    double weights = 0;
    for (std::int64_t v = 0; v < source.size().height; ++v)
        for (std::int64_t u = 0; u < source.size().width; ++u) {
            const double weight = lanczos3((double(u) + 0.5) / across - (double(x) + 0.5)) *
                                  lanczos3((double(v) + 0.5) / down - (double(y) + 0.5));
            const double alpha = source.format().hasAlpha() ? component(source, u, v, 3) / most : 1;
            weights += weight;
            sums[3] += weight * alpha;
            for (int c = 0; c < 3; ++c)
                sums[std::size_t(c)] +=
                    weight * alpha * TestProfiles::StoredSRGB::light(component(source, u, v, c) / most);
        }
    const double alpha = std::clamp(sums[3] / weights, 0.0, 1.0);
    for (std::size_t c = 0; c < 3; ++c)
        sums[c] = most * TestProfiles::StoredSRGB::level(std::clamp(sums[c] / weights / alpha, 0.0, 1.0));
    sums[3] = most * alpha;
    return sums;
}

} // namespace

TEST(RowReducer, isTheFilterByItsDefinitionOnLight)
{
    struct Row {
        const char* name;
        PixelSize source;
        PixelSize result;
        double lastColumn = 1; ///< How much of the last column and row the picture covers.
        double lastRow = 1;
    };
    const Row rows[] = {{"three quarters", {64, 48}, {48, 36}},
                        {"a third, rounded", {67, 49}, {22, 16}},
                        {"one direction alone", {40, 30}, {40, 11}},
                        {"a panorama", {600, 5}, {60, 1}},
                        {"down to a pixel", {31, 44}, {1, 1}},
                        {"one column, an odd number of rows", {1, 37}, {1, 9}},
                        {"one row", {37, 1}, {9, 1}},
                        {"half a pixel too many, as codecs decode", {33, 26}, {21, 17}, 0.5, 0.5}};
    for (const PixelFormat format : {rgb8, rgba8, rgb16, rgba16})
        for (const Row& row : rows) {
            SCOPED_TRACE(testing::Message() << row.name << ' ' << format.bytesPerPixel());
            const Bitmap source = test::noise(row.source, format, 7);
            const double width = double(row.source.width) - 1 + row.lastColumn;
            const double height = double(row.source.height) - 1 + row.lastRow;
            const Bitmap result = reduced(source, row.result, width, height);
            for (std::int64_t y = 0; y < row.result.height; ++y)
                for (std::int64_t x = 0; x < row.result.width; ++x) {
                    const auto expected = directly(source, row.result, width, height, x, y);
                    // What can't be seen has no color.
                    for (int c = expected[3] < (format.bitsPerComponent == 16 ? 257 : 1) ? 3 : 0; c < format.channels();
                         ++c)
                        ASSERT_NEAR(component(result, x, y, c), expected[std::size_t(c)], 0.75)
                            << x << ", " << y << ", component " << c;
                }
        }
}

TEST(RowReducer, keepsEveryLevelExactlyAndThatOfFinePatternsInLight)
{
    for (const ColorProfile& space : {ColorProfile::sRGB(), ColorProfile::of(WellKnown::proPhoto)})
        for (int level = 0; level < 256; ++level) {
            const Bitmap flat = test::flat({19, 14}, rgb8, {level, 255 - level, level / 2}, space);
            EXPECT_TRUE(
                test::samePixels(reduced(flat, {7, 5}), test::flat({7, 5}, rgb8, {level, 255 - level, level / 2})))
                << level;
        }
    Bitmap lines = test::flat({90, 90}, rgb8, {0, 0, 0});
    for (std::int64_t y = 0; y < 90; y += 2)
        std::memset(lines.row(y), 255, 90 * 3);
    EXPECT_NEAR(component(reduced(lines, {20, 20}), 10, 10, 0), 188, 2) << "half the light, not half the level";
}

TEST(RowReducer, seesNothingOfWhatIsTransparent)
{
    Bitmap source = test::flat({64, 8}, rgba8, {255, 0, 0, 0});
    for (std::int64_t y = 0; y < 8; ++y)
        for (std::int64_t x = 0; x < 32; ++x)
            std::memcpy(source.row(y) + x * 4, "\0\0\xff\xff", 4);
    const Bitmap result = reduced(source, {13, 3});
    for (std::int64_t x = 0; x < 13; ++x)
        if (component(result, x, 1, 3) > 0) {
            EXPECT_EQ(component(result, x, 1, 0), 0) << x;
            EXPECT_EQ(component(result, x, 1, 2), 255) << x;
        }
    EXPECT_EQ(component(result, 0, 0, 3), 255);
    EXPECT_EQ(component(result, 12, 2, 3), 0);
}

} // namespace ferrow
