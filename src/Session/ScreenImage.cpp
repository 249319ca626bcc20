// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ScreenImage.h"

#include "Platform/Pixels/ColorTransform.h"
#include "Platform/Pixels/Resampler.h"

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
