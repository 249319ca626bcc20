// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FileStatus.h"

#include "Platform/Base/Releaser.h"
#include "Platform/Base/SystemErrors.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

namespace ferrow {

namespace {

/// 0, or the errno of looking at what stands at `url`, following links.
int lookBehind(const FileUrl& url, struct stat& status)
{
    if (!url.hasFileSystemRepresentation())
        return EINVAL;
    return ::stat(url.path().constData(), &status) == 0 ? 0 : errno;
}

bool isMissing(int errorNumber)
{
    return errorNumber == ENOENT || errorNumber == ENOTDIR;
}

std::optional<FileUrl> canonical(const FileUrl& url)
{
    const std::unique_ptr<char, Releaser<std::free>> path(::realpath(url.path().constData(), nullptr));
    return path ? std::optional(FileUrl::fromPath(QByteArray(path.get()))) : std::nullopt;
}

} // namespace

FileKind fileKind(const FileUrl& url)
{
    struct stat status {};
    if (!url.hasFileSystemRepresentation())
        return FileKind::missing;
    if (const int failure = lookBehind(url, status); failure != 0)
        return isMissing(failure) ? FileKind::missing : FileKind::unknown;
    return S_ISDIR(status.st_mode) ? FileKind::folder : FileKind::file;
}

std::optional<FileNumber> fileNumber(const FileUrl& url)
{
    struct stat status {};
    if (lookBehind(url, status) != 0)
        return std::nullopt;
    return FileNumber{status.st_dev, status.st_ino};
}

bool isSameFile(const FileUrl& left, const FileUrl& right)
{
    const std::optional<FileNumber> number = fileNumber(left);
    return number && number == fileNumber(right);
}

int lookUp(const FileUrl& url)
{
    struct stat status {};
    if (!url.hasFileSystemRepresentation())
        return EINVAL;
    return ::lstat(url.path().constData(), &status) == 0 ? 0 : errno;
}

bool isTaken(const FileUrl& url)
{
    const int failure = lookUp(url);
    // A name that the volume can't hold, a path too long, a disk that fails: nobody knows whether anything stands
    // there.
    if (failure != 0 && !isMissing(failure))
        throw SystemError{failure, url};
    return failure == 0;
}

FileUrl resolvingLinks(const FileUrl& url)
{
    const FileUrl standardized = url.standardized();
    if (const auto whole = canonical(standardized))
        return *whole;
    const auto folder = canonical(standardized.deletingLastPathComponent());
    return folder ? folder->appending(standardized.lastPathComponentBytes()) : standardized;
}

FileUrl nearestExisting(FileUrl url)
{
    while (url.path() != "/" && isMissing(lookUp(url)))
        url = url.deletingLastPathComponent();
    return url;
}

void checkFolderWritable(const FileUrl& folder)
{
    struct stat status {};
    if (!folder.hasFileSystemRepresentation())
        throw SystemError{EINVAL, folder};
    const FileUrl existing = nearestExisting(folder);
    if (const int failure = lookBehind(existing, status); failure != 0)
        throw SystemError{failure, existing};
    if (!S_ISDIR(status.st_mode))
        throw SystemError{ENOTDIR, existing};
    if (::faccessat(AT_FDCWD, existing.path().constData(), W_OK | X_OK, AT_EACCESS) != 0)
        throw SystemError{errno, existing};
}

bool isReadable(const FileUrl& file)
{
    return file.hasFileSystemRepresentation() && ::access(file.path().constData(), R_OK) == 0;
}

std::optional<std::int64_t> freeBytes(const FileUrl& folder)
{
    std::error_code error;
    const auto space = std::filesystem::space(folder.path().constData(), error);
    return error ? std::nullopt : std::optional(std::int64_t(space.available));
}

} // namespace ferrow
