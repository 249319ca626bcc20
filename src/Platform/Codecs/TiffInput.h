// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/TiffHandle.h"

#include <cstdint>

namespace ferrow {

/// One TIFF file opened through libtiff on a ByteSource, positioned at its first page, with what the library had to
/// say. Not movable: the library holds its address.
class TiffInput {
public:
    /// Throws CodecError (malformed, unsupported, tooLarge, unreadable). Call only for a file that checkTiffDirectory()
    /// let pass.
    explicit TiffInput(const ByteSource& source);
    TiffInput(const TiffInput&) = delete;
    TiffInput& operator=(const TiffInput&) = delete;

    [[nodiscard]] TIFF* get() const { return tiff_.get(); }
    [[nodiscard]] const ByteSource& source() const { return source_; }

    /// Value of a tag or the format's default for it.
    template <typename Value>
    [[nodiscard]] Value tag(std::uint32_t tag, Value otherwise) const
    {
        Value value = otherwise;
        return TIFFGetFieldDefaulted(get(), tag, &value) == 1 ? value : otherwise;
    }

    /// Forgets what was noticed so far.
    void expectNoLoss() { lostData_ = false; }
    /// Whether the library reported lost picture data since.
    [[nodiscard]] bool lostData() const { return lostData_; }
    /// Throws CodecError (tooLarge, unreadable) where one of these is why the library failed.
    void throwForeignCause() const;

private:
    static tmsize_t read(thandle_t handle, void* into, tmsize_t length);
    static toff_t seek(thandle_t handle, toff_t offset, int whence);
    static toff_t size(thandle_t handle);
    static int noteError(TIFF* tiff, void* input, const char* module, const char* format, va_list arguments);
    static int noteWarning(TIFF* tiff, void* input, const char* module, const char* format, va_list arguments);

    const ByteSource& source_;
    std::int64_t position_ = 0;
    bool unreadable_ = false;
    bool tooLarge_ = false;
    bool mixedDepths_ = false;
    bool lostData_ = false;
    TiffHandle tiff_;
};

/// The check before the library sees a file: the first directory is whole, has a bearable number of tags, the values
/// that shape the picture are in the file, and all values together are no longer than it. Throws CodecError
/// (malformed).
void checkTiffDirectory(const ByteSource& source);

} // namespace ferrow
