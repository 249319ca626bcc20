// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PaintableImage.h"

#include "Platform/Pixels/Resampler.h"
#include "Session/ScreenImage.h"

#include <cstring>

namespace ferrow {

namespace {

Bitmap bitmapOf(const QImage& image)
{
    const PixelFormat format = image.format() == QImage::Format_RGB888 ? rgb8 : rgba8;
    Bitmap bitmap({image.width(), image.height()}, format, ColorProfile::sRGB());
    const auto rowBytes = std::size_t(image.width()) * std::size_t(format.bytesPerPixel());
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(bitmap.row(y), image.constScanLine(y), rowBytes);
    return bitmap;
}

} // namespace

QImage paintableImage(const QImage& image)
{
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}

QImage scaledPaintableImage(const QImage& image, QSize size)
{
    if (image.isNull() || size == image.size() || size.isEmpty())
        return paintableImage(image);
    return paintableImage(screenImage(Resampler::scaled(bitmapOf(image), {size.width(), size.height()})));
}

} // namespace ferrow
