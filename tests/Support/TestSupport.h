// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"
#include "Platform/Base/PixelSize.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <stdexcept>
#include <string>

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.left(200).toPercentEncoding(" /._-").toStdString() << "\" (" << bytes.size() << " bytes)";
}

namespace ferrow {
inline void PrintTo(const PixelSize& size, std::ostream* out)
{
    *out << size.width << " x " << size.height;
}
inline void PrintTo(const FileUrl& url, std::ostream* out)
{
    *out << url.path().toPercentEncoding(" /._-").toStdString();
}
} // namespace ferrow

namespace ferrow::test {

/// A folder that goes away with the test; its name holds a space, as users' folders do.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "ferrow test XXXXXX";
        if (!::mkdtemp(name.data()))
            throw std::runtime_error("cannot make a test folder");
        path_ = QByteArray::fromStdString(name);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_.toStdString(), ignored);
    }

    [[nodiscard]] FileUrl url() const { return FileUrl::fromPath(path_); }
    [[nodiscard]] FileUrl file(const QByteArray& name) const { return url().appending(name); }
    FileUrl write(const QByteArray& name, const QByteArray& bytes) const
    {
        const FileUrl place = file(name);
        const int descriptor = ::open(place.path().constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (descriptor < 0 || ::write(descriptor, bytes.constData(), size_t(bytes.size())) != bytes.size())
            throw std::runtime_error("cannot write a test file");
        ::close(descriptor);
        return place;
    }

private:
    QByteArray path_;
};

inline QByteArray readFile(const FileUrl& url)
{
    QByteArray bytes;
    const int descriptor = ::open(url.path().constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return bytes;
    char buffer[65536];
    for (ssize_t n = 0; (n = ::read(descriptor, buffer, sizeof buffer)) > 0;)
        bytes.append(buffer, n);
    ::close(descriptor);
    return bytes;
}

/// An unnamed file in memory holding `bytes`, for everything that works from a descriptor.
class MemoryFile {
public:
    explicit MemoryFile(const QByteArray& bytes = {}) : descriptor_(::memfd_create("ferrow-test", MFD_CLOEXEC))
    {
        if (descriptor_ < 0 || ::pwrite(descriptor_, bytes.constData(), size_t(bytes.size()), 0) != bytes.size())
            throw std::runtime_error("cannot make a file in memory");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] qint64 size() const { return ::lseek(descriptor_, 0, SEEK_END); }
    [[nodiscard]] QByteArray bytes() const
    {
        QByteArray all(size(), Qt::Uninitialized);
        return ::pread(descriptor_, all.data(), size_t(all.size()), 0) == all.size() ? all : QByteArray();
    }

private:
    int descriptor_;
};

} // namespace ferrow::test
