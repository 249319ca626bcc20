// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/Compositor.h"

#include "Support/Pictures.h"

#include <cmath>
#include <numbers>

namespace ferrow::Engine {

namespace {

using test::component;

double areaOf(const RoundedRect& shape)
{
    return (shape.right - shape.left) * (shape.bottom - shape.top) -
           (4 - std::numbers::pi) * shape.radius * shape.radius;
}

/// Rows of one picture, again and again from its top.
class PictureRows : public RowSource {
public:
    explicit PictureRows(Bitmap picture) : picture_(std::move(picture)) {}

    [[nodiscard]] PixelSize size() const override { return picture_.size(); }
    [[nodiscard]] PixelFormat format() const override { return picture_.format(); }
    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override
    {
        for (; count > 0; --count, out += stride)
            std::memcpy(out, picture_.row(next_++),
                        std::size_t(picture_.size().width * picture_.format().bytesPerPixel()));
    }

private:
    Bitmap picture_;
    std::int64_t next_ = 0;
};

/// A composition around a photo of that size, with borders of `border` and corners of that radius.
Composition around(PixelSize photo, std::int64_t border, double radius, const RGBAColor& color)
{
    Composition composition{{photo.width + 2 * border, photo.height + 2 * border}, color, border, border, {}};
    composition.photoArea = {double(border), double(border), double(border + photo.width),
                             double(border + photo.height), radius};
    return composition;
}

/// With `bits` a component, of a photo of 8.
Bitmap composed(const Composition& composition, const Bitmap& photo, std::int64_t band = 1000, int bits = 8)
{
    PictureRows rows(bits == 8 ? photo : test::widened(photo));
    Compositor compositor(composition, &rows, ColorProfile::sRGB(), needsAlpha(composition, photo.format()), bits);
    Bitmap canvas(compositor.size(), compositor.format(), ColorProfile::sRGB());
    if (composition.blurredPhoto)
        compositor.setBackground(BlurredPicture(photo, photo.size(), canvas.size(), composition.blurredPhoto->sigma,
                                                composition.blurredPhoto->light));
    for (std::int64_t y = 0; y < canvas.size().height; y += band)
        compositor.compose(std::min(band, canvas.size().height - y), canvas.row(y), canvas.stride());
    return canvas;
}

/// The sum of one channel's levels, of 255.
double sumOf(const Bitmap& picture, int channel)
{
    double sum = 0;
    for (std::int64_t y = 0; y < picture.size().height; ++y)
        for (std::int64_t x = 0; x < picture.size().width; ++x)
            sum += component(picture, x, y, channel);
    return sum / 255;
}

} // namespace

TEST(PhotoSurroundings, lookTheSameInEitherDepth)
{
    struct Row {
        const char* name;
        PixelFormat photo;
        double borderAlpha;
        bool isBlurred;
    };
    for (const Row& row : {Row{"opaque", rgb8, 1, false},
                           {"blurred", rgb8, 1, true},
                           {"transparent", rgba8, 0.4, false},
                           {"transparent and blurred", rgba8, 1, true}}) {
        SCOPED_TRACE(row.name);
        const Bitmap photo = test::noise({60, 40}, row.photo);
        Composition composition = around(photo.size(), 20, 9.5, {0.2, 0.4, 0.6, row.borderAlpha});
        composition.line = {4, 2.5, {0.9, 0.1, 0.3, 0.7}};
        composition.shadow = {3, 2, 0.45};
        if (row.isBlurred)
            composition.blurredPhoto = {6, 0.8};
        composition.overlays.push_back({test::flat({30, 12}, rgba8Premultiplied, {90, 20, 100, 128}), 10, 15, 0.8});
        const Bitmap plain = composed(composition, photo);
        const Bitmap deep = composed(composition, photo, 7, 16);
        ASSERT_EQ(deep.format(), rgbFormat(16, plain.format().hasAlpha()));
        const int channels = plain.format().channels();
        for (std::int64_t y = 0; y < plain.size().height; ++y)
            for (std::int64_t x = 0; x < plain.size().width; ++x) {
                // Where next to nothing is seen, 8 bits know little of its color.
                const bool isFaint = channels == 4 && component(plain, x, y, 3) < 64;
                for (int c = isFaint ? 3 : 0; c < channels; ++c)
                    ASSERT_NEAR(component(deep, x, y, c) / 257.0, component(plain, x, y, c), channels == 4 ? 5 : 1.6)
                        << x << ' ' << y << ' ' << c;
            }
    }
}

TEST(RowCoverage, isTheExactAreaInEachPixel)
{
    const struct {
        const char* name;
        RoundedRect shape;
    } rows[] = {
        {"whole pixels, square", {3, 2, 20, 14, 0}},           {"whole pixels, round", {3, 2, 20, 14, 5}},
        {"a part of a radius", {3, 2, 20, 14, 4.37}},          {"between pixels", {2.3, 1.6, 19.8, 13.1, 3.2}},
        {"between pixels, square", {2.3, 1.6, 19.8, 13.1, 0}}, {"a circle", {1.5, 1.5, 12.5, 12.5, 5.5}},
        {"half a circle at each end", {1, 2, 22, 9, 3.5}},     {"inside one pixel", {4.2, 5.3, 4.7, 5.6, 0.15}},
        {"beyond the first pixel", {-3.4, -2.2, 9.1, 8.8, 4}}, {"a corner of less than a pixel", {3, 3, 12, 12, 0.4}},
    };
    for (const auto& [name, shape] : rows) {
        SCOPED_TRACE(name);
        double sum = 0;
        for (std::int64_t y = -5; y < 25; ++y) {
            const RowCoverage coverage(shape, y);
            for (std::int64_t x = -5; x < 25; ++x) {
                // As many points of the pixel as lie inside.
                constexpr int points = 64;
                int inside = 0;
                for (int i = 0; i < points * points; ++i) {
                    const double px = double(x) + (i % points + 0.5) / points;
                    const double py = double(y) + (double(i / points) + 0.5) / points;
                    const double dx = std::max({shape.left + shape.radius - px, px - shape.right + shape.radius, 0.0});
                    const double dy = std::max({shape.top + shape.radius - py, py - shape.bottom + shape.radius, 0.0});
                    inside += std::hypot(dx, dy) <= shape.radius ? 1 : 0;
                }
                ASSERT_NEAR(coverage.at(x), inside / double(points * points), 0.025) << x << ' ' << y;
                sum += coverage.at(x);
                const bool isInRun = x >= coverage.runBegin() && x < coverage.runEnd();
                ASSERT_TRUE(!isInRun || coverage.at(x) == coverage.runCoverage());
            }
        }
        EXPECT_NEAR(sum, areaOf(shape), 1e-6);
    }
    EXPECT_EQ(RowCoverage({5, 5, 5, 9, 3}, 6).at(5), 0) << "no width";
    // A radius beyond half the shorter side counts as that.
    EXPECT_EQ(RowCoverage({0, 0, 10, 20, 900}, 1).at(2), RowCoverage({0, 0, 10, 20, 5}, 1).at(2));
}

TEST(PhotoSurroundings, cornersAndLineCoverTheirAreas)
{
    // White on black: what is lit is the area, but for rounding a level at each pixel of an edge.
    const Bitmap photo = test::flat({60, 44}, rgb8, {255, 255, 255});
    for (const double radius : {0.0, 0.5, 7.0, 12.3, 22.0}) {
        Composition composition = around(photo.size(), 20, radius, RGBAColor::black);
        const double photoArea = areaOf(composition.photoArea);
        EXPECT_NEAR(sumOf(composed(composition, photo), 0), photoArea, 0.2) << radius;
        for (const auto& [distance, thickness] : {std::pair(0.0, 3.0), {5.0, 6.0}, {2.5, 0.25}, {1.3, 9.9}}) {
            SCOPED_TRACE(radius * 1000 + distance);
            composition.line = {distance, thickness, {1, 0, 0, 1}};
            const RoundedRect inner = composition.photoArea.outset(distance);
            const double ring = areaOf(inner.outset(thickness)) - areaOf(inner);
            const Bitmap canvas = composed(composition, photo);
            EXPECT_NEAR(sumOf(canvas, 0), photoArea + ring, 0.5) << "also where both share a pixel";
            EXPECT_NEAR(sumOf(canvas, 1), photoArea, 0.2) << "the line is red";
        }
        // A line that begins at the photo leaves nothing of what is behind between them.
        composition.line = {0, 4, RGBAColor::white};
        const Bitmap canvas = composed(composition, photo);
        const RoundedRect whole = composition.photoArea.outset(3);
        for (std::int64_t y = 0; y < canvas.size().height; ++y)
            for (std::int64_t x = 0; x < canvas.size().width; ++x)
                ASSERT_TRUE(RowCoverage(whole, y).at(x) < 1 || component(canvas, x, y, 0) >= 253) << x << ' ' << y;
    }
    // What is thicker than the border is cut off at the canvas's edge.
    Composition wide = around(photo.size(), 5, 3, RGBAColor::black);
    wide.line = {2, 50'000, RGBAColor::white};
    EXPECT_EQ(component(composed(wide, photo), 0, 0, 0), 255);
    EXPECT_EQ(component(composed(wide, photo), 30, 3, 0), 0) << "between photo and line";
}

TEST(PhotoSurroundings, shadowIsTheBlurredShapeBelowThePhoto)
{
    const Bitmap photo = test::flat({60, 40}, rgb8, {255, 255, 255});
    for (const double radius : {0.0, 13.0})
        for (const double sigma : {0.8, 4.0}) {
            SCOPED_TRACE(radius + sigma);
            Composition composition = around(photo.size(), 30, radius, RGBAColor::white);
            composition.shadow = {sigma, 6, 0.5};
            const Bitmap canvas = composed(composition, photo);
            RoundedRect cast = composition.photoArea;
            cast.top += 6;
            cast.bottom += 6;
            for (const PixelSize at : {PixelSize{60, 76},
                                       {60, 80},
                                       {60, 24},
                                       {25, 60},
                                       {92, 50},
                                       {28, 74},
                                       {32, 75},
                                       {88, 72},
                                       {2, 2},
                                       {60, 98}}) {
                // The Gaussian itself, summed over the shape around the middle of the pixel.
                double covered = 0;
                double all = 0;
                for (std::int64_t y = at.height - 25; y <= at.height + 25; ++y) {
                    const RowCoverage coverage(cast, y);
                    for (std::int64_t x = at.width - 25; x <= at.width + 25; ++x) {
                        const double weight =
                            std::exp(-double((x - at.width) * (x - at.width) + (y - at.height) * (y - at.height)) /
                                     (2 * sigma * sigma));
                        covered += weight * coverage.at(x);
                        all += weight;
                    }
                }
                ASSERT_NEAR(component(canvas, at.width, at.height, 0), 255 * (1 - 0.5 * covered / all), 3)
                    << at.width << ' ' << at.height;
            }
            EXPECT_EQ(component(canvas, 60, 50, 0), 255) << "nothing lies on the photo";
        }
}

TEST(PhotoSurroundings, bytesDoNotDependOnTheBands)
{
    for (const PixelFormat format : {rgb8, rgba8})
        for (const double borderAlpha : {1.0, 0.3})
            for (const bool isBlurred : {false, true}) {
                SCOPED_TRACE(format.channels() * 100 + int(borderAlpha * 10) + (isBlurred ? 1000 : 0));
                const Bitmap photo = test::noise({47, 41}, format);
                Composition composition = around(photo.size(), 15, 11.5, {0.5, 0.6, 0.7, borderAlpha});
                composition.shadow = {3, 2, 0.5};
                composition.line = {4.5, 2.25, {0.9, 0.1, 0, 0.8}};
                if (isBlurred)
                    composition.blurredPhoto = {5, 0.75};
                const Bitmap whole = composed(composition, photo);
                for (const int band : {1, 7, 16})
                    EXPECT_TRUE(test::samePixels(whole, composed(composition, photo, band))) << band;
            }
}

TEST(PhotoSurroundings, cornersLetATransparentBorderThrough)
{
    const Bitmap photo = test::flat({40, 30}, rgb8, {10, 200, 30});
    const Composition composition = around(photo.size(), 0, 10, {1, 1, 1, 0});
    const Bitmap canvas = composed(composition, photo);
    ASSERT_EQ(canvas.format(), rgba8);
    EXPECT_EQ(component(canvas, 0, 0, 3), 0);
    EXPECT_NEAR(sumOf(canvas, 3), areaOf(composition.photoArea), 0.2);
    for (const auto& [x, y] : {std::pair(2, 3), {3, 2}, {20, 0}, {37, 27}})
        EXPECT_EQ(component(canvas, x, y, 1), 200) << "the photo's own color, without the border's";
}

TEST(PhotoSurroundings, aPhotoBesideTheCanvasIsRefused)
{
    Composition composition = around({10, 10}, 2, 0, RGBAColor::white);
    composition.photoX = 5;
    EXPECT_ANY_THROW(composed(composition, test::flat({10, 10}, rgb8, {0, 0, 0})));
}

} // namespace ferrow::Engine
