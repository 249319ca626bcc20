// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

namespace ferrow {

/// The names in one folder, as bytes, without "." and "..". A folder that can't be read simply has none.
class FolderReader {
public:
    enum class FinalLink { followed, refused };

    FolderReader(const QByteArray& path, FinalLink finalLink)
    {
        const int linkFlag = finalLink == FinalLink::refused ? O_NOFOLLOW : 0;
        const int descriptor = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | linkFlag);
        if (descriptor < 0)
            return;
        stream_ = ::fdopendir(descriptor);
        if (!stream_)
            ::close(descriptor);
    }
    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;
    ~FolderReader()
    {
        if (stream_)
            ::closedir(stream_);
    }

    [[nodiscard]] bool isOpen() const { return stream_; }
    [[nodiscard]] int descriptor() const { return ::dirfd(stream_); }

    /// Null after the last entry. Valid until the next call.
    [[nodiscard]] const dirent* next()
    {
        while (const dirent* entry = stream_ ? ::readdir(stream_) : nullptr)
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                return entry;
        return nullptr;
    }

private:
    DIR* stream_ = nullptr;
};

} // namespace ferrow
