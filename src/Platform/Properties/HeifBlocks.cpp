// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifBoxes.h"
#include "Platform/Codecs/HeifHandles.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Properties/MetadataBlocks.h"

#include <QtEndian>

#include <libheif/heif.h>

#include <array>
#include <cerrno>
#include <span>

namespace ferrow {

namespace {

/// The picture that is shown; absent where the library must not see the file, or could not show it.
std::optional<heif_item_id> shownPicture(const ByteSource& source)
{
    try {
        return inspectHeifBoxes(source).item;
    } catch (const CodecError& error) {
        if (error.reason == CodecError::Reason::unreadable)
            throw InputOutputError{EIO};
        return std::nullopt;
    }
}

QByteArray metadataOf(const heif_image_handle* handle, heif_item_id item)
{
    const std::size_t length = heif_image_handle_get_metadata_size(handle, item);
    if (length > std::size_t(MetadataBlocks::maximumLength))
        return {};
    QByteArray bytes(qsizetype(length), Qt::Uninitialized);
    const heif_error error = heif_image_handle_get_metadata(handle, item, bytes.data());
    return error.code == heif_error_Ok ? bytes : QByteArray();
}

/// An Exif item starts with the distance from there to its byte order mark; some writers leave it out.
QByteArray exifOfItem(const QByteArray& item)
{
    const QByteArray bare = withoutExifPrefix(item);
    if (bare.startsWith("II*") || bare.startsWith(QByteArray("MM\0*", 4)))
        return bare;
    constexpr qsizetype distanceLength = 4;
    if (item.size() < distanceLength)
        return {};
    const quint32 distance = qFromBigEndian<quint32>(item.constData());
    return distance <= quint32(item.size() - distanceLength)
               ? withoutExifPrefix(item.mid(distanceLength + qsizetype(distance)))
               : QByteArray();
}

} // namespace

MetadataBlocks heifMetadataBlocks(const ByteSource& source)
{
    MetadataBlocks blocks;
    const auto picture = shownPicture(source);
    if (!picture)
        return blocks;
    const heif::Context context(heif_context_alloc());
    heif::Reader reader{source};
    const heif_error error = heif::open(context.get(), reader);
    if (reader.hasFailed)
        throw InputOutputError{EIO};
    heif_image_handle* raw = nullptr;
    if (error.code != heif_error_Ok ||
        heif_context_get_image_handle(context.get(), *picture, &raw).code != heif_error_Ok)
        return blocks;
    const heif::Handle handle(raw);

    std::array<heif_item_id, 64> items{};
    const int count = heif_image_handle_get_list_of_metadata_block_IDs(raw, nullptr, items.data(), int(items.size()));
    for (const heif_item_id item : std::span(items).first(std::size_t(count))) {
        const QByteArray type = heif_image_handle_get_metadata_type(raw, item);
        if (type == "Exif" && blocks.exif.isEmpty())
            blocks.exif = exifOfItem(metadataOf(raw, item));
        else if (type == "mime" && blocks.xmp.isEmpty() &&
                 QByteArray(heif_image_handle_get_metadata_content_type(raw, item)) == "application/rdf+xml")
            blocks.xmp = metadataOf(raw, item);
    }
    return blocks;
}

} // namespace ferrow
