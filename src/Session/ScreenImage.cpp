// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ScreenImage.h"

#include "Platform/Pixels/ColorTransform.h"
#include "Platform/Pixels/Resampler.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

QImage::Format formatOf(const PixelFormat& format)
{
    switch (format.alpha) {
    case Alpha::none:
        return QImage::Format_RGB888;
    case Alpha::straight:
        return QImage::Format_RGBA8888;
    case Alpha::premultiplied:
        break;
    }
    return QImage::Format_RGBA8888_Premultiplied;
}

} // namespace

QImage screenImage(const Bitmap& picture)
{
    if (picture.isNull())
        return {};
    auto* shared = new Bitmap(inColorSpace(picture, ColorProfile::sRGB()));
    // Without constant data QImage would write through to pixels that others may be reading.
    const Bitmap& pixels = *shared;
    return {reinterpret_cast<const uchar*>(pixels.row(0)),
            int(pixels.size().width),
            int(pixels.size().height),
            qsizetype(pixels.stride()),
            formatOf(pixels.format()),
            [](void* bitmap) { delete static_cast<Bitmap*>(bitmap); },
            shared};
}

QImage blurredStandIn(const QImage& photo, const BlurredBackground& background, QSizeF canvas)
{
    const QSize shown = canvas.scaled(QSizeF(photo.size()), Qt::KeepAspectRatio).toSize().expandedTo(QSize(1, 1));
    const QPoint corner((photo.width() - shown.width()) / 2, (photo.height() - shown.height()) / 2);
    // A pixel as large as the blur reaches to either side is smeared as far when it is enlarged.
    const double sigma = std::clamp(background.blur, 0.0, 100.0) / 1'000;
    const double shorter = std::min(photo.width(), photo.height());
    const double pixels = std::clamp(sigma > 0 ? 1 / (2 * sigma) : shorter, 2.0, std::max(shorter, 2.0));
    const QSize size = (QSizeF(shown) * (pixels / shorter)).toSize().expandedTo(QSize(2, 2));
    QImage blurred = photo.copy(QRect(corner, shown))
                         .convertToFormat(QImage::Format_ARGB32_Premultiplied)
                         .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QPainter dim(&blurred);
    dim.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    // What is taken is light; levels are about its 2.2th root.
    const double kept = std::pow(1 - std::clamp(background.dim, 0.0, 100.0) / 100, 1 / 2.2);
    dim.fillRect(blurred.rect(), QColor::fromRgbF(0, 0, 0, float(1 - kept)));
    return blurred;
}

QImage paintableImage(const QImage& image)
{
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}

QImage paintableImage(const Bitmap& picture)
{
    return paintableImage(screenImage(picture));
}

QImage paintableImage(const Bitmap& picture, QSize size)
{
    const PixelSize pixels{size.width(), size.height()};
    if (picture.isNull() || size.isEmpty() || pixels == picture.size())
        return paintableImage(picture);
    return paintableImage(Resampler::scaled(inColorSpace(picture, ColorProfile::sRGB()), pixels));
}

} // namespace ferrow
