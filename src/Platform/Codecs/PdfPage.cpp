// SPDX-License-Identifier: GPL-3.0-or-later
// The drawing library names a member "signals", which is a keyword macro otherwise.
#define QT_NO_KEYWORDS

#include "Platform/Codecs/PdfPage.h"

#include "Platform/Base/Releaser.h"
#include "Platform/Codecs/CairoPicture.h"

#include <poppler.h>

#include <memory>

namespace ferrow {
namespace {

/// Largest file that is read into memory, in bytes: the limit for a logo.
constexpr std::int64_t largestFile = 100'000'000;

using Bytes = std::unique_ptr<GBytes, Releaser<g_bytes_unref>>;
using Document = std::unique_ptr<PopplerDocument, Releaser<g_object_unref>>;
using Page = std::unique_ptr<PopplerPage, Releaser<g_object_unref>>;

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

/// In points, after the page's own rotation.
QSizeF extent(const Page& page)
{
    double width = 0;
    double height = 0;
    poppler_page_get_size(page.get(), &width, &height);
    return {width, height};
}

} // namespace

Bitmap rasterizePdf(const ByteSource& source, std::int64_t dimension)
{
    const Bytes bytes = readWhole(source);
    const Page page = firstPage(bytes);
    return drawnByCairo(extent(page), dimension, [&](cairo_t* drawing) {
    // Printing is what can leave out annotations.
#if POPPLER_CHECK_VERSION(25, 2, 0)
        poppler_page_render_full(page.get(), drawing, TRUE, POPPLER_RENDER_ANNOTS_PRINT_DOCUMENT);
#else
        poppler_page_render_for_printing_with_options(page.get(), drawing, POPPLER_PRINT_DOCUMENT);
#endif
        return true;
    });
}

} // namespace ferrow
