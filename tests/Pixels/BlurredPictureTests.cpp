// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/BlurredPicture.h"

#include "Platform/Pixels/Resampler.h"
#include "Support/Pictures.h"

#include <array>
#include <cmath>
#include <vector>

namespace ferrow {

namespace {

using test::component;

double lightOf(int level)
{
    const double value = level / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double levelOf(double light)
{
    return 255 * (light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
}

/// Dark on the left, bright on the right, a small lamp and a colored bar.
Bitmap scene(PixelSize size)
{
    Bitmap picture = test::flat(size, rgb8, {30, 40, 60});
    const auto paint = [&](std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1,
                           std::array<int, 3> color) {
        for (std::int64_t y = y0; y < y1; ++y)
            for (std::int64_t x = x0; x < x1; ++x)
                for (std::size_t c = 0; c < 3; ++c)
                    picture.row(y)[std::size_t(x) * 3 + c] = std::byte(color[c]);
    };
    paint(size.width / 2, 0, size.width, size.height, {220, 215, 190});
    paint(size.width / 6, size.height / 4, size.width / 6 + 5, size.height / 4 + 5, {255, 255, 255});
    paint(0, size.height - size.height / 7, size.width, size.height, {200, 20, 10});
    return picture;
}

Bitmap blurred(const Bitmap& picture, PixelSize canvas, double sigma, double light = 1, PixelFormat format = rgb8)
{
    const std::int64_t enough = BlurredPicture::enoughDimension(picture.size(), canvas, sigma);
    const Bitmap reduced = Resampler::scaled(picture, Resampler::fitted(picture.size(), enough));
    BlurredPicture rows(reduced, picture.size(), canvas, sigma, light);
    Bitmap result(canvas, format);
    for (std::int64_t y = 0; y < canvas.height; ++y) {
        rows.moveTo(y);
        rows.read(0, canvas.width, format, result.row(y));
    }
    return result;
}

/// The definition: light of the picture's pixels, each weighted by its distance; beyond the edges they repeat.
double direct(const Bitmap& picture, double x, double y, int channel, double sigma)
{
    double sum = 0;
    double all = 0;
    const auto radius = std::int64_t(std::ceil(4 * sigma));
    for (std::int64_t v = std::int64_t(y) - radius; v <= std::int64_t(y) + radius; ++v)
        for (std::int64_t u = std::int64_t(x) - radius; u <= std::int64_t(x) + radius; ++u) {
            const double dx = double(u) + 0.5 - x;
            const double dy = double(v) + 0.5 - y;
            const double weight = std::exp(-(dx * dx + dy * dy) / (2 * sigma * sigma));
            const auto inside = [](std::int64_t place, std::int64_t size) {
                return std::clamp<std::int64_t>(place, 0, size - 1);
            };
            sum += weight * lightOf(component(picture, inside(u, picture.size().width),
                                              inside(v, picture.size().height), channel));
            all += weight;
        }
    return sum / all;
}

} // namespace

TEST(BlurredPicture, isTheGaussianOfLight)
{
    const struct {
        const char* name;
        PixelSize picture;
        PixelSize canvas;
        double sigma; ///< In canvas pixels.
        double tolerance;
    } rows[] = {
        {"as large as the canvas", {180, 120}, {180, 120}, 8, 2},
        {"hardly blurred", {180, 120}, {180, 120}, 2, 4},
        {"wide", {180, 120}, {180, 120}, 30, 2},
        {"enlarged, cut off left and right", {180, 120}, {240, 240}, 16, 2},
        {"enlarged, cut off above and below", {120, 180}, {240, 160}, 12, 2},
        {"of a large picture", {900, 600}, {900, 600}, 30, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Bitmap picture = scene(row.picture);
        const Bitmap result = blurred(picture, row.canvas, row.sigma, 0.75);
        const double scale = std::max(double(row.canvas.width) / double(row.picture.width),
                                      double(row.canvas.height) / double(row.picture.height));
        const auto inPicture = [scale](std::int64_t place, std::int64_t canvas, std::int64_t size) {
            return (double(place) + 0.5 - double(canvas) / 2) / scale + double(size) / 2;
        };
        double worst = 0;
        for (int i = 0; i < 12 * 9; ++i) {
            const std::int64_t x = (i % 12) * (row.canvas.width - 1) / 11;
            const std::int64_t y = (i / 12) * (row.canvas.height - 1) / 8;
            for (int c = 0; c < 3; ++c) {
                const double light = direct(picture, inPicture(x, row.canvas.width, row.picture.width),
                                            inPicture(y, row.canvas.height, row.picture.height), c, row.sigma / scale);
                worst = std::max(worst, std::abs(component(result, x, y, c) - levelOf(0.75 * light)));
            }
        }
        EXPECT_LE(worst, row.tolerance);
    }
}

TEST(BlurredPicture, takesAnyShapeAndKeepsAlpha)
{
    for (const PixelSize picture : {PixelSize{1, 1}, {1, 500}, {3'000, 2}, {7, 5}})
        for (const PixelSize canvas : {PixelSize{1, 1}, {300, 40}, {3, 200}})
            for (const double sigma : {0.0, 0.3, 50.0, 1e6}) {
                const Bitmap flat = test::flat(picture, rgb8, {90, 160, 30});
                const Bitmap result = blurred(flat, canvas, sigma);
                for (const auto& [x, y] :
                     {std::pair<std::int64_t, std::int64_t>(0, 0), {canvas.width - 1, canvas.height - 1}})
                    ASSERT_NEAR(component(result, x, y, 1), 160, 1) << "nothing darkens at an edge";
            }
    EXPECT_LE(BlurredPicture::enoughDimension({20'000, 10'000}, {21'000, 11'000}, 0), 1'025) << "half a megapixel";
    EXPECT_EQ(BlurredPicture::enoughDimension({20, 10}, {21, 11}, 0), 20);

    // Red, and nothing at all: half a pixel beyond the seam, an eighth of σ, 45 % of the red is left, and no darker.
    Bitmap half = test::flat({80, 20}, rgba8, {250, 0, 0, 255});
    for (std::int64_t y = 0; y < 20; ++y)
        std::memset(half.row(y) + 40 * 4, 0, 40 * 4);
    const Bitmap result = blurred(half, {80, 20}, 4, 1, rgba8);
    EXPECT_NEAR(component(result, 40, 10, 3), 0.45 * 255, 2);
    EXPECT_NEAR(component(result, 40, 10, 0), 250, 1);
    EXPECT_EQ(component(result, 79, 10, 3), 0);
}

} // namespace ferrow
