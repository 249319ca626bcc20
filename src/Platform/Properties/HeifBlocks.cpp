// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifBoxes.h"
#include "Platform/Codecs/HeifHandles.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Properties/MetadataBlocks.h"

#include <QtEndian>

#include <libheif/heif.h>

#include <array>
#include <cerrno>
#include <exception>
#include <span>

namespace ferrow {

namespace {

/// The source as the library reads it. What the system refuses is kept for later: the callbacks are called from C.
struct LibraryInput {
    const ByteSource& source;
    std::int64_t position = 0;
    std::exception_ptr failure;
};

std::int64_t positionOf(void* userData)
{
    return static_cast<LibraryInput*>(userData)->position;
}

int readInto(void* data, std::size_t size, void* userData)
{
    auto& input = *static_cast<LibraryInput*>(userData);
    try {
        const std::size_t got = input.source.readAt(input.position, {static_cast<std::byte*>(data), size});
        input.position += std::int64_t(got);
        return got == size ? 0 : 1;
    } catch (...) {
        input.failure = std::current_exception();
        return 1;
    }
}

int seekTo(std::int64_t position, void* userData)
{
    static_cast<LibraryInput*>(userData)->position = position;
    return 0;
}

heif_reader_grow_status waitForSize(std::int64_t size, void* userData)
{
    const bool isThere = size <= static_cast<LibraryInput*>(userData)->source.size();
    return isThere ? heif_reader_grow_status_size_reached : heif_reader_grow_status_size_beyond_eof;
}

constexpr heif_reader libraryReader{1, positionOf, readInto, seekTo, waitForSize};

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

/// An Exif item starts with the distance from there to its byte order mark.
QByteArray exifOfItem(const QByteArray& item)
{
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
    LibraryInput input{source, 0, nullptr};
    const heif_error error = heif_context_read_from_reader(context.get(), &libraryReader, &input, nullptr);
    if (input.failure)
        std::rethrow_exception(input.failure);
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
