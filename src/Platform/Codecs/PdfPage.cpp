// SPDX-License-Identifier: GPL-3.0-or-later
// The drawing library names a member "signals", which is a keyword macro otherwise.
#define QT_NO_KEYWORDS

#include "Platform/Codecs/PdfPage.h"

#include "Platform/Base/Releaser.h"

#include <cairo.h>
#include <poppler.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

namespace ferrow {
namespace {

/// Largest file that is read into memory, in bytes: the limit for a logo.
constexpr std::int64_t largestFile = 100'000'000;

/// The drawing library's own limit for a side, in pixels.
constexpr std::int64_t largestSide = 32'767;

using Bytes = std::unique_ptr<GBytes, Releaser<g_bytes_unref>>;
using Document = std::unique_ptr<PopplerDocument, Releaser<g_object_unref>>;
using Page = std::unique_ptr<PopplerPage, Releaser<g_object_unref>>;
using Surface = std::unique_ptr<cairo_surface_t, Releaser<cairo_surface_destroy>>;
using Drawing = std::unique_ptr<cairo_t, Releaser<cairo_destroy>>;

/// In points, after the page's own rotation.
struct PageSize {
    double width = 0;
    double height = 0;
};

[[noreturn]] void refuse()
{
    throw CodecError{CodecError::Reason::malformed, {}};
}

Bytes readWhole(const ByteSource& source)
{
    if (source.size() < 1 || source.size() > largestFile)
        refuse();
    const auto size = std::size_t(source.size());
    auto* buffer = static_cast<std::byte*>(g_try_malloc(size));
    if (!buffer)
        throw CodecError{CodecError::Reason::tooLarge, {}};
    Bytes bytes(g_bytes_new_take(buffer, size));
    try {
        if (source.readAt(0, {buffer, size}) != size)
            refuse();
    } catch (const InputOutputError&) {
        throw CodecError{CodecError::Reason::unreadable, {}};
    }
    return bytes;
}

Page firstPage(const Bytes& bytes)
{
    const Document document(poppler_document_new_from_bytes(bytes.get(), nullptr, nullptr));
    if (!document || poppler_document_get_n_pages(document.get()) < 1)
        refuse();
    Page page(poppler_document_get_page(document.get(), 0)); // Keeps the document alive.
    if (!page)
        refuse();
    return page;
}

PageSize extent(const Page& page)
{
    PageSize size;
    poppler_page_get_size(page.get(), &size.width, &size.height);
    // Written so that a size that is not a number fails too.
    if (!(size.width > 0 && size.height > 0 && std::isfinite(size.width) && std::isfinite(size.height)))
        refuse();
    return size;
}

PixelSize fitted(const PageSize& page, std::int64_t dimension)
{
    const double scale = double(dimension) / std::max(page.width, page.height);
    const auto side = [&](double points) {
        return std::clamp<std::int64_t>(std::llround(points * scale), 1, dimension);
    };
    return page.width >= page.height ? PixelSize{dimension, side(page.height)} : PixelSize{side(page.width), dimension};
}

/// Draws into the bitmap's own memory, in the drawing library's pixel layout: native 32-bit words of premultiplied
/// ARGB.
void draw(const Page& page, const PageSize& extent, Bitmap& bitmap)
{
    const auto [width, height] = bitmap.size();
    const Surface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(bitmap.row(0)),
                                                              CAIRO_FORMAT_ARGB32, int(width), int(height),
                                                              int(bitmap.stride())));
    const Drawing drawing(cairo_create(surface.get()));
    cairo_scale(drawing.get(), double(width) / extent.width, double(height) / extent.height);
    // Printing is what can leave out annotations.
#if POPPLER_CHECK_VERSION(25, 2, 0)
    poppler_page_render_full(page.get(), drawing.get(), TRUE, POPPLER_RENDER_ANNOTS_PRINT_DOCUMENT);
#else
    poppler_page_render_for_printing_with_options(page.get(), drawing.get(), POPPLER_PRINT_DOCUMENT);
#endif
    cairo_surface_flush(surface.get());
    if (cairo_status(drawing.get()) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        refuse();
}

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

Bitmap rasterizePdf(const ByteSource& source, std::int64_t dimension)
{
    if (dimension < 1 || dimension > largestSide)
        throw CodecError{CodecError::Reason::tooLarge, {}};
    const Bytes bytes = readWhole(source);
    const Page page = firstPage(bytes);
    const PageSize size = extent(page);
    Bitmap bitmap(fitted(size, dimension), rgba8Premultiplied, ColorProfile::sRGB());
    draw(page, size, bitmap);
    wordsToBytes(bitmap);
    return bitmap;
}

} // namespace ferrow
