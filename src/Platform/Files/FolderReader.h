// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Files/Descriptor.h"

#include <QByteArray>

#include <dirent.h>
#include <fcntl.h>

#include <cerrno>
#include <cstring>

namespace ferrow {

/// The names in one folder, as bytes, without "." and "..". A folder that can't be read has none; failure() says why.
class FolderReader {
public:
    enum class FinalLink { followed, refused };

    FolderReader(const QByteArray& path, FinalLink finalLink)
    {
        const int linkFlag = finalLink == FinalLink::refused ? O_NOFOLLOW : 0;
        Descriptor descriptor(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | linkFlag));
        stream_ = descriptor.isOpen() ? ::fdopendir(descriptor.get()) : nullptr;
        if (stream_)
            static_cast<void>(descriptor.release()); // The stream's to close.
        else
            failure_ = errno;
    }
    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;
    ~FolderReader()
    {
        if (stream_)
            ::closedir(stream_);
    }

    [[nodiscard]] bool isOpen() const { return stream_; }
    /// 0, or the errno that ended the reading so far.
    [[nodiscard]] int failure() const { return failure_; }
    [[nodiscard]] int descriptor() const { return ::dirfd(stream_); }

    /// Null after the last entry. Valid until the next call.
    [[nodiscard]] const dirent* next()
    {
        if (!stream_)
            return nullptr;
        errno = 0; // Set by a failure alone: the end looks the same.
        while (const dirent* entry = ::readdir(stream_))
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                return entry;
        failure_ = errno;
        return nullptr;
    }

private:
    DIR* stream_ = nullptr;
    int failure_ = 0;
};

} // namespace ferrow
