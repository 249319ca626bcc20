// SPDX-License-Identifier: GPL-3.0-or-later
// The drawing library's own libraries name a member "signals", which is a keyword macro otherwise.
#define QT_NO_KEYWORDS

#include "Platform/Codecs/SvgPicture.h"

#include "Platform/Base/Releaser.h"
#include "Platform/Codecs/CairoPicture.h"
#include "Platform/Codecs/Gzip.h"

#include <expat.h>
#include <librsvg/rsvg.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <type_traits>

namespace ferrow {

namespace {

using Handle = std::unique_ptr<RsvgHandle, Releaser<g_object_unref>>;
using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, Releaser<XML_ParserFree>>;

constexpr int deepest = 200; ///< Elements within each other; the library itself stops at some hundred more.

QByteArray readWhole(const ByteSource& source)
{
    if (source.size() > maximumSvgBytes)
        throw CodecError{CodecError::Reason::tooLarge, {}};
    QByteArray bytes(qsizetype(source.size()), Qt::Uninitialized);
    try {
        if (source.readAt(0, std::as_writable_bytes(std::span(bytes.data(), std::size_t(bytes.size())))) !=
            std::size_t(bytes.size()))
            throw CodecError{CodecError::Reason::malformed, {}};
    } catch (const InputOutputError&) {
        throw CodecError{CodecError::Reason::unreadable, {}};
    }
    return bytes;
}

/// One walk through the elements.
struct Survey {
    XML_Parser parser = nullptr;
    SvgObstacle obstacle = SvgObstacle::none;
    std::int64_t elements = 0;
    int depth = 0;

    void stop(SvgObstacle what)
    {
        obstacle = what;
        XML_StopParser(parser, XML_FALSE);
    }
};

std::string_view localName(std::string_view name)
{
    return name.substr(name.rfind(' ') + 1); // Behind the namespace, where there is one.
}

bool showsOthers(std::string_view element)
{
    return element == "image" || element == "feImage" || element == "use";
}

bool isWithin(std::string_view reference)
{
    constexpr std::string_view allowed[] = {"#", "data:image/png", "data:image/jpeg", "data:image/jpg"};
    return reference.empty() ||
           std::ranges::any_of(allowed, [&](std::string_view start) { return reference.starts_with(start); });
}

void onOpen(void* survey, const XML_Char* name, const XML_Char** attributes)
{
    Survey& all = *static_cast<Survey*>(survey);
    const std::string_view element = localName(name);
    if (element == "text")
        return all.stop(SvgObstacle::text);
    if (++all.elements > maximumSvgElements || ++all.depth > deepest)
        return all.stop(SvgObstacle::tooComplex);
    if (showsOthers(element))
        for (; *attributes; attributes += 2)
            if (localName(attributes[0]) == "href" && !isWithin(attributes[1]))
                return all.stop(SvgObstacle::reference);
}

void onClose(void* survey, const XML_Char*)
{
    --static_cast<Survey*>(survey)->depth;
}

Handle opened(const QByteArray& svg)
{
    // Without a base address no reference leads anywhere.
    Handle handle(
        rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(svg.constData()), gsize(svg.size()), nullptr));
    if (!handle)
        throw CodecError{CodecError::Reason::malformed, {}};
    constexpr double pixelsPerInch = 96; // As style sheets count.
    rsvg_handle_set_dpi(handle.get(), pixelsPerInch);
    return handle;
}

/// In the picture's own pixels: its size, else that of its view box, else what browsers give one without either.
QSizeF extent(RsvgHandle* handle)
{
    double width = 0;
    double height = 0;
    if (rsvg_handle_get_intrinsic_size_in_pixels(handle, &width, &height))
        return {width, height};
    gboolean has[3] = {FALSE, FALSE, FALSE};
    RsvgLength lengths[2] = {};
    RsvgRectangle box = {};
    rsvg_handle_get_intrinsic_dimensions(handle, &has[0], &lengths[0], &has[1], &lengths[1], &has[2], &box);
    return has[2] ? QSizeF(box.width, box.height) : QSizeF(300, 150);
}

} // namespace

QByteArray readSvg(const ByteSource& source)
{
    QByteArray bytes = readWhole(source);
    if (!isGzip(bytes))
        return bytes;
    bytes = inflatedGzip(bytes, maximumSvgBytes + 1);
    if (bytes.size() > maximumSvgBytes)
        throw CodecError{CodecError::Reason::tooLarge, {}};
    return bytes;
}

SvgObstacle obstacleIn(const QByteArray& svg)
{
    const Parser parser(XML_ParserCreateNS(nullptr, ' '));
    if (!parser)
        throw CodecError{CodecError::Reason::tooLarge, {}};
    Survey survey{.parser = parser.get()};
    XML_SetUserData(parser.get(), &survey);
    XML_SetElementHandler(parser.get(), onOpen, onClose);
    const bool isWhole = XML_Parse(parser.get(), svg.constData(), int(svg.size()), XML_TRUE) == XML_STATUS_OK;
    if (!isWhole && survey.obstacle == SvgObstacle::none)
        throw CodecError{CodecError::Reason::malformed, {}};
    return survey.obstacle;
}

Bitmap rasterizeSvg(const QByteArray& svg, std::int64_t dimension)
{
    const Handle handle = opened(svg);
    const QSizeF size = extent(handle.get());
    return drawnByCairo(size, dimension, [&](cairo_t* drawing) {
        const RsvgRectangle all{0, 0, size.width(), size.height()};
        return rsvg_handle_render_document(handle.get(), drawing, &all, nullptr) != FALSE;
    });
}

} // namespace ferrow
