// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/Compositor.h"

#include "Engine/PhotoRows.h"
#include "Support/Pictures.h"

#include <cmath>

namespace ferrow::Engine {

namespace {

using test::component;

Composition framed(PixelSize photo, int border)
{
    const PixelSize canvas{photo.width + 2 * border, photo.height + 2 * border};
    return {canvas, {0.2, 0.4, 0.6, 1}, border, border, {}};
}

Bitmap composed(const Composition& composition, const Bitmap& photo, bool hasAlpha, std::int64_t band)
{
    const test::MemoryFile file(test::encoded(OutputType::png, photo));
    OpenedPhoto opened = openPhoto({file.descriptor(), file.size()}, {});
    const int bits = photo.format().bitsPerComponent;
    PhotoRows rows(opened, ColorProfile::sRGB(), {}, bits);
    Compositor compositor(composition, &rows, ColorProfile::sRGB(), hasAlpha, bits);
    Bitmap canvas(compositor.size(), compositor.format(), ColorProfile::sRGB());
    for (std::int64_t y = 0; y < canvas.size().height; y += band)
        compositor.compose(std::min(band, canvas.size().height - y), canvas.row(y), canvas.stride());
    return canvas;
}

Bitmap premultipliedNoise(PixelSize size, unsigned seed)
{
    Bitmap picture = test::noise(size, rgba8Premultiplied, seed);
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width; ++x)
            for (int c = 0; c < 3; ++c)
                picture.row(y)[x * 4 + c] = std::byte(component(picture, x, y, c) * component(picture, x, y, 3) / 255);
    return picture;
}

} // namespace

TEST(Compositor, bytesDoNotDependOnTheBands)
{
    for (const PixelFormat format : {rgb8, rgba8, rgb16, rgba16})
        for (const double borderAlpha : {1.0, 0.3}) {
            SCOPED_TRACE(borderAlpha + format.channels());
            const Bitmap photo = test::noise({37, 41}, format);
            Composition composition = framed(photo.size(), 9);
            composition.borderColor.alpha = borderAlpha;
            composition.overlays.push_back({premultipliedNoise({20, 15}, 2), -5, 30, 1});
            composition.overlays.push_back({premultipliedNoise({30, 30}, 3), 40, 45, 0.4});
            const bool hasAlpha = format.hasAlpha() || borderAlpha < 1;
            const Bitmap whole = composed(composition, photo, hasAlpha, 1000);
            for (const int band : {1, 7, 16})
                EXPECT_TRUE(test::samePixels(whole, composed(composition, photo, hasAlpha, band))) << band;
        }
}

TEST(Compositor, movesAnOpaquePhotoAndBlendsUnderOverlaysAlone)
{
    for (const PixelFormat format : {rgb8, rgb16}) {
        const Bitmap photo = test::noise({20, 10}, format);
        Composition composition = framed(photo.size(), 3);
        composition.overlays.push_back({test::flat({4, 2}, rgba8Premultiplied, {100, 0, 0, 128}), 5, 4, 1});
        const Bitmap canvas = composed(composition, photo, false, 4);
        const int scale = format == rgb8 ? 1 : 257;
        const int border[] = {51 * scale, 102 * scale, 153 * scale};
        for (std::int64_t y = 0; y < canvas.size().height; ++y)
            for (std::int64_t x = 0; x < canvas.size().width; ++x)
                for (int c = 0; c < 3; ++c) {
                    const bool onPhoto = x >= 3 && x < 23 && y >= 3 && y < 13;
                    const int below = onPhoto ? component(photo, x - 3, y - 3, c) : border[c];
                    const bool onOverlay = x >= 5 && x < 9 && y >= 4 && y < 6;
                    const double expected =
                        onOverlay ? (c == 0 ? 100 * scale : 0) + below * (255 - 128) / 255.0 : below;
                    ASSERT_NEAR(component(canvas, x, y, c), expected, onOverlay ? 0.51 : 0)
                        << x << ' ' << y << ' ' << c;
                }
    }
}

TEST(Compositor, keepsStraightPixelsOverNothingExactly)
{
    // Going through premultiplied bytes would lose them: 3 × 10 ÷ 255 has no way back.
    const Bitmap photo = test::noise({60, 60}, rgba8, 7);
    Composition composition = framed(photo.size(), 2);
    composition.borderColor.alpha = 0;
    const Bitmap canvas = composed(composition, photo, true, 5);
    EXPECT_TRUE(test::holdsAt(canvas, 2, 2, photo));
    EXPECT_EQ(component(canvas, 0, 0, 3), 0);
}

TEST(Compositor, laysTranslucentOverTranslucentAsTheFormulaSays)
{
    for (int sourceAlpha = 0; sourceAlpha <= 255; sourceAlpha += 15)
        for (int borderAlpha = 0; borderAlpha <= 255; borderAlpha += 51) {
            Composition composition = framed({1, 1}, 1);
            composition.borderColor = {1, 0.4, 0, borderAlpha / 255.0};
            const Bitmap canvas = composed(composition, test::flat({1, 1}, rgba8, {30, 200, 90, sourceAlpha}), true, 1);
            const double above = sourceAlpha / 255.0;
            const double below = borderAlpha / 255.0 * (1 - above);
            ASSERT_NEAR(component(canvas, 1, 1, 3), 255 * (above + below), 1);
            if (above + below <= 0.1)
                continue;
            ASSERT_NEAR(component(canvas, 1, 1, 0), (30 * above + 255 * below) / (above + below), 3)
                << sourceAlpha << ' ' << borderAlpha;
        }
}

TEST(Compositor, drawsOverlayColorsInTheCanvasSpace)
{
    // Display P3 shows the same red with less: (234, 51, 35) is sRGB's (255, 0, 0).
    Composition composition = framed({1, 1}, 4);
    composition.borderColor = {1, 0, 0, 1};
    composition.overlays.push_back({test::flat({2, 2}, rgba8Premultiplied, {255, 0, 0, 255}), 0, 0, 1});
    Compositor compositor(composition, nullptr, ColorProfile::displayP3(), false);
    Bitmap canvas(compositor.size(), rgb8);
    compositor.compose(canvas.size().height, canvas.row(0), canvas.stride());
    const int expected[] = {234, 51, 35};
    for (int c = 0; c < 3; ++c) {
        EXPECT_NEAR(component(canvas, 0, 0, c), expected[c], 1) << "overlay " << c;
        EXPECT_NEAR(component(canvas, 8, 8, c), expected[c], 1) << "border " << c;
    }
}

TEST(Orientation, turnsAndMirrorsAsTheTagDefines)
{
    // A picture of 2 × 3 pixels numbered in reading order; what each value of the tag makes of it, worked out by hand.
    const QByteArray expected[] = {"123456", "214365", "654321", "563412", "135246", "531642", "642531", "246135"};
    for (const PixelFormat format : {rgb8, rgba8}) {
        Bitmap stored({2, 3}, format);
        for (int i = 0; i < 6; ++i)
            stored.row(i / 2)[(i % 2) * format.bytesPerPixel() + 1] = std::byte('1' + i);
        for (int orientation = 1; orientation <= 8; ++orientation) {
            SCOPED_TRACE(orientation);
            const Bitmap upright = oriented(stored, orientation);
            ASSERT_EQ(upright.size(), orientation < 5 ? PixelSize(2, 3) : PixelSize(3, 2));
            QByteArray pixels;
            for (std::int64_t i = 0; i < 6; ++i)
                pixels += char(component(upright, i % upright.size().width, i / upright.size().width, 1));
            EXPECT_EQ(pixels, expected[orientation - 1]);
        }
    }
}

} // namespace ferrow::Engine
