// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/CairoPicture.h"

#include "Platform/Base/Releaser.h"
#include "Platform/Codecs/ImageDecoder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>

namespace ferrow {

namespace {

/// The library's own limit for a side, in pixels.
constexpr std::int64_t largestSide = 32'767;

using Surface = std::unique_ptr<cairo_surface_t, Releaser<cairo_surface_destroy>>;
using Drawing = std::unique_ptr<cairo_t, Releaser<cairo_destroy>>;

PixelSize fitted(const QSizeF& extent, std::int64_t dimension)
{
    const double scale = double(dimension) / std::max(extent.width(), extent.height());
    const auto side = [&](double length) {
        return std::clamp<std::int64_t>(std::llround(length * scale), 1, dimension);
    };
    return extent.width() >= extent.height() ? PixelSize{dimension, side(extent.height())}
                                             : PixelSize{side(extent.width()), dimension};
}

/// From the library's pixel layout, native 32-bit words of premultiplied ARGB.
void wordsToBytes(Bitmap& bitmap)
{
    const auto [width, height] = bitmap.size();
    for (std::int64_t y = 0; y < height; ++y) {
        std::byte* pixel = bitmap.row(y);
        for (const std::byte* end = pixel + width * 4; pixel != end; pixel += 4) {
            std::uint32_t word = 0;
            std::copy_n(pixel, 4, reinterpret_cast<std::byte*>(&word));
            pixel[0] = static_cast<std::byte>(word >> 16);
            pixel[1] = static_cast<std::byte>(word >> 8);
            pixel[2] = static_cast<std::byte>(word);
            pixel[3] = static_cast<std::byte>(word >> 24);
        }
    }
}

} // namespace

Bitmap drawnByCairo(const QSizeF& extent, std::int64_t dimension, const std::function<bool(cairo_t*)>& draw)
{
    if (dimension < 1 || dimension > largestSide)
        throw CodecError{CodecError::Reason::tooLarge, {}};
    // Written so that a size that is not a number fails too.
    if (!(extent.width() > 0 && extent.height() > 0 && std::isfinite(extent.width()) && std::isfinite(extent.height())))
        throw CodecError{CodecError::Reason::malformed, {}};
    Bitmap bitmap(fitted(extent, dimension), rgba8Premultiplied, ColorProfile::sRGB());
    const auto [width, height] = bitmap.size();
    const Surface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(bitmap.row(0)),
                                                              CAIRO_FORMAT_ARGB32, int(width), int(height),
                                                              int(bitmap.stride())));
    const Drawing drawing(cairo_create(surface.get()));
    cairo_scale(drawing.get(), double(width) / extent.width(), double(height) / extent.height());
    const bool isDrawn = draw(drawing.get());
    cairo_surface_flush(surface.get());
    if (!isDrawn || cairo_status(drawing.get()) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw CodecError{CodecError::Reason::malformed, {}};
    wordsToBytes(bitmap);
    return bitmap;
}

} // namespace ferrow
