// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ferrow {

namespace {

FileIdentity identityOf(const struct stat& status)
{
    return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino), status.st_size,
            status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec};
}

int openForReading(const FileUrl& url)
{
    // A name holding a NUL byte would open the file named by what stands before it.
    if (!url.hasFileSystemRepresentation())
        throw SystemError{EINVAL, url};
    int descriptor = -1;
    do
        // Without O_NONBLOCK the open of a pipe waits until somebody writes into it.
        descriptor = ::open(url.path().constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        throw SystemError{errno, url};
    return descriptor;
}

} // namespace

OpenedFile OpenedFile::open(const FileUrl& url)
{
    OpenedFile file(openForReading(url), url);
    struct stat status {};
    if (::fstat(file.descriptor_, &status) != 0)
        throw SystemError{errno, url};
    if (!S_ISREG(status.st_mode))
        throw SystemError{S_ISDIR(status.st_mode) ? EISDIR : EINVAL, url};
    file.identity_ = identityOf(status);
    return file;
}

OpenedFile::OpenedFile(int descriptor, FileUrl url) : descriptor_(descriptor), url_(std::move(url)) {}

OpenedFile::OpenedFile(OpenedFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), url_(std::move(other.url_)), identity_(other.identity_)
{
}

OpenedFile& OpenedFile::operator=(OpenedFile&& other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    std::swap(url_, other.url_);
    std::swap(identity_, other.identity_);
    return *this;
}

OpenedFile::~OpenedFile()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

FileIdentity OpenedFile::currentIdentity() const
{
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0)
        return {};
    return identityOf(status);
}

} // namespace ferrow
