// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/StarterPicture.h"

#include "Imaging/ImageRenderer.h"
#include "Session/ScreenImage.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace ferrow {

namespace {

/// What the scene would have been photographed as: 12 megapixels.
constexpr PixelSize photoSize{4'243, 2'828};

struct Scene {
    QColor zenith;
    QColor horizon;
    QColor farHills;
    QColor nearHills;
    QPointF sun;      ///< 0…1 of width and height.
    double sunRadius; ///< In heights.
    double phase;     ///< Of the hills' waves.
};

const std::array<Scene, 3>& scenes()
{
    static const std::array<Scene, 3> all{{
        {{0x3F, 0x5C, 0x82}, {0xF3, 0xC6, 0xA0}, {0xA9, 0x86, 0x9C}, {0x2A, 0x37, 0x52}, {0.66, 0.47}, 0.04, 0.6},
        {{0x1D, 0x20, 0x3E}, {0xDE, 0x7B, 0x62}, {0x5B, 0x48, 0x64}, {0x15, 0x15, 0x2C}, {0.36, 0.50}, 0.05, 2.7},
        {{0x41, 0x88, 0xC2}, {0xDB, 0xEC, 0xF5}, {0xA2, 0xBE, 0xA6}, {0x2F, 0x5F, 0x3B}, {0.22, 0.17}, 0.04, 4.4},
    }};
    return all;
}

QColor between(const QColor& from, const QColor& to, double part)
{
    const auto mixed = [part](int a, int b) { return int(std::lround(a + (b - a) * part)); };
    return {mixed(from.red(), to.red()), mixed(from.green(), to.green()), mixed(from.blue(), to.blue())};
}

/// One range of hills in front of another.
QPainterPath hills(QSizeF size, int range, double phase)
{
    const double foot = 0.56 + 0.11 * range;
    const double height = 0.045 + 0.012 * range;
    QPainterPath path(QPointF(0, size.height()));
    for (int step = 0; step <= 64; ++step) {
        const double x = step / 64.0;
        const double wave =
            std::sin(phase + 3.1 * range + (5 - range) * x) + 0.45 * std::sin(2 * phase + range + 11 * x);
        path.lineTo(x * size.width(), (foot - height * wave) * size.height());
    }
    path.lineTo(size.width(), size.height());
    return path;
}

QImage landscape(const Scene& scene, QSize size)
{
    QImage picture(size, QImage::Format_RGB888);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QLinearGradient sky(0, 0, 0, 0.7 * size.height());
    sky.setColorAt(0, scene.zenith);
    sky.setColorAt(1, scene.horizon);
    painter.fillRect(picture.rect(), sky);
    const QPointF sun(scene.sun.x() * size.width(), scene.sun.y() * size.height());
    QColor light(255, 246, 226);
    painter.setBrush(light);
    painter.drawEllipse(sun, scene.sunRadius * size.height(), scene.sunRadius * size.height());
    light.setAlphaF(0.5F);
    QRadialGradient glow(sun, 0.6 * size.height());
    glow.setColorAt(0, light);
    light.setAlphaF(0);
    glow.setColorAt(1, light);
    painter.fillRect(picture.rect(), glow);
    constexpr int ranges = 4;
    for (int range = 0; range < ranges; ++range)
        painter.fillPath(hills(size, range, scene.phase),
                         between(scene.farHills, scene.nearHills, double(range) / (ranges - 1)));
    return picture;
}

Bitmap bitmapOf(const QImage& image)
{
    Bitmap bitmap({image.width(), image.height()}, rgb8, ColorProfile::sRGB());
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(bitmap.row(y), image.constScanLine(y), std::size_t(image.width()) * 3);
    return bitmap;
}

PhotoMetadata sampleMetadata()
{
    PhotoMetadata metadata;
    metadata.title = QStringLiteral("Summer Field");
    metadata.cameraModel = QStringLiteral("Lumen A1");
    metadata.focalLength = QStringLiteral("35 mm");
    metadata.aperture = QStringLiteral("f/8");
    metadata.shutterSpeed = QStringLiteral("1/250 s");
    return metadata;
}

} // namespace

QImage starterPicture(const StarterFrame& frame, int scene, QSize box, const std::stop_token& stop)
{
    const PixelSize canvas = RenderLayout::framedLayout(photoSize, frame.recipe).canvasSize;
    const double scale = std::min(box.width() / double(canvas.width), box.height() / double(canvas.height));
    const auto scaled = [scale](std::int64_t side) { return std::max(int(std::lround(double(side) * scale)), 1); };
    const QImage photo = landscape(scenes().at(std::size_t(scene) % scenes().size()),
                                   {scaled(photoSize.width), scaled(photoSize.height)});
    return screenImage(ImageRenderer::render(bitmapOf(photo), photoSize, frame.recipe, sampleMetadata(), {},
                                             ImageRenderer::SourceScale::fromSource, stop));
}

} // namespace ferrow
