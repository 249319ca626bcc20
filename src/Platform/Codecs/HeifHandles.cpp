// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifHandles.h"

namespace ferrow::heif {
namespace {

std::int64_t positionOf(void* reader)
{
    return static_cast<Reader*>(reader)->position;
}

int read(void* into, std::size_t size, void* user)
{
    auto& reader = *static_cast<Reader*>(user);
    try {
        const std::size_t count = reader.source.readAt(reader.position, {static_cast<std::byte*>(into), size});
        reader.position += std::int64_t(count);
        return count == size ? 0 : 1;
    } catch (...) { // Nothing may cross the library that called.
        reader.hasFailed = true;
        return 1;
    }
}

int seek(std::int64_t position, void* user)
{
    static_cast<Reader*>(user)->position = position;
    return 0;
}

heif_reader_grow_status waitForSize(std::int64_t size, void* user)
{
    return size <= static_cast<Reader*>(user)->source.size() ? heif_reader_grow_status_size_reached
                                                             : heif_reader_grow_status_size_beyond_eof;
}

constexpr heif_reader readerFunctions{1, positionOf, read, seek, waitForSize};

} // namespace

heif_error open(heif_context* context, Reader& reader)
{
    return heif_context_read_from_reader(context, &readerFunctions, &reader, nullptr);
}

} // namespace ferrow::heif
