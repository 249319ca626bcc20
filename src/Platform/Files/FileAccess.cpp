// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace ferrow {

namespace {

FileIdentity identityOf(const struct stat& status)
{
    return {std::uint64_t(status.st_dev), std::uint64_t(status.st_ino), status.st_size,
            status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec};
}

Descriptor openForReading(const FileUrl& url)
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
    return Descriptor(descriptor);
}

} // namespace

OpenedFile OpenedFile::open(const FileUrl& url)
{
    return {openForReading(url), url};
}

OpenedFile OpenedFile::adopt(Descriptor descriptor)
{
    return {std::move(descriptor), {}};
}

OpenedFile::OpenedFile(Descriptor descriptor, FileUrl url) : descriptor_(std::move(descriptor)), url_(std::move(url))
{
    struct stat status {};
    if (::fstat(descriptor_.get(), &status) != 0)
        throw SystemError{errno, url_};
    if (!S_ISREG(status.st_mode))
        throw SystemError{S_ISDIR(status.st_mode) ? EISDIR : EINVAL, url_};
    identity_ = identityOf(status);
}

FileIdentity OpenedFile::currentIdentity() const
{
    struct stat status {};
    if (::fstat(descriptor(), &status) != 0)
        return {};
    return identityOf(status);
}

} // namespace ferrow
