// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FilePlacement.h"

#include "Platform/Base/ByteSource.h"
#include "Platform/Files/FolderReader.h"

#include <QUuid>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

namespace ferrow {

namespace {

constexpr char stagingPrefix[] = ".Ferrow-";
constexpr qsizetype stagingPrefixLength = sizeof stagingPrefix - 1;
constexpr qsizetype uuidLength = 36;
constexpr std::time_t staleAge = 24 * 60 * 60; // Seconds.
constexpr int maximumLinks = 40;               // As many as the kernel follows.
constexpr mode_t modeBits = 07777;
constexpr std::int64_t copyBufferSize = 256 * 1024; // Bytes.

QByteArray newUuid()
{
    return QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
}

/// Whether StagedFile could have made this name.
bool isStagingName(const QByteArray& name)
{
    if (!name.startsWith(stagingPrefix))
        return false;
    const QByteArray uuid = name.mid(stagingPrefixLength, uuidLength);
    const QByteArray rest = name.mid(stagingPrefixLength + uuidLength);
    // QUuid also reads braces and small letters: only the form that is written counts.
    return QUuid::fromString(QLatin1StringView(uuid)).toByteArray(QUuid::WithoutBraces).toUpper() == uuid &&
           (rest.isEmpty() || rest.startsWith('.'));
}

template <typename Call>
int errnoOf(const Call& call)
{
    return call() == 0 ? 0 : errno;
}

bool isNotOffered(int errorNumber)
{
    return errorNumber == EINVAL || errorNumber == ENOSYS || errorNumber == EOPNOTSUPP || errorNumber == ENOTSUP;
}

/// For link() called on our own fresh file, where EPERM can only be the volume's answer.
bool areLinksNotOffered(int errorNumber)
{
    return errorNumber == EPERM || errorNumber == ENOSYS || errorNumber == EOPNOTSUPP || errorNumber == ENOTSUP;
}

/// The number of the call that decided, EEXIST when the name was taken, 0 when the file stands there.
int placeExclusively(const QByteArray& from, const QByteArray& to, const PlacementCalls& calls)
{
    const int renamed = calls.renameExclusively(from, to);
    if (!isNotOffered(renamed))
        return renamed;
    const int linked = calls.link(from, to);
    if (!areLinksNotOffered(linked)) {
        if (linked == 0)
            ::unlink(from.constData()); // The second name of the same file; left behind, it is swept later.
        return linked;
    }
    // Neither is offered (some memory cards and network volumes): a file that appears between these two lines is lost.
    return calls.exists(to) ? EEXIST : calls.rename(from, to);
}

/// Makes the new name survive a power loss. Failing, it is passed over: the file stands whole under its name, and
/// calling that a failure would tell the user the opposite.
void flushFolder(const FileUrl& folder)
{
    const int descriptor = ::open(folder.path().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

/// Where writing to `url` really ends: links in the last place followed, also one that leads to no file yet.
FileUrl resolvingFinalLinks(FileUrl url)
{
    for (int i = 0; i < maximumLinks; ++i) {
        QByteArray target(4096, Qt::Uninitialized); // PATH_MAX: no link holds more.
        const ssize_t length = ::readlink(url.path().constData(), target.data(), size_t(target.size()));
        if (length < 0 && (errno == EINVAL || errno == ENOENT))
            return url;
        if (length < 0)
            throw SystemError{errno, url};
        target.truncate(length);
        // Joined as bytes and not collapsed: ".." behind a link to a folder means that folder's parent.
        url =
            FileUrl::fromPath(target.startsWith('/') ? target : url.deletingLastPathComponent().path() + '/' + target);
    }
    throw SystemError{ELOOP, url};
}

void keepMode(const StagedFile& staged, const FileUrl& target)
{
    struct stat existing {};
    if (::lstat(target.path().constData(), &existing) != 0)
        return;
    // Renaming over a device or a pipe would do away with it.
    if (!S_ISREG(existing.st_mode))
        throw SystemError{S_ISDIR(existing.st_mode) ? EISDIR : EINVAL, target};
    struct stat fresh {};
    if (::fstat(staged.descriptor(), &fresh) != 0)
        throw SystemError{errno, target};
    if ((fresh.st_mode & modeBits) != (existing.st_mode & modeBits) &&
        ::fchmod(staged.descriptor(), existing.st_mode & modeBits) != 0)
        throw SystemError{errno, target};
}

/// Runs `steps` and says of their failures that they happened to `file`: the user never hears of staging names.
template <typename Steps>
void asErrorsOf(const FileUrl& file, const Steps& steps)
{
    try {
        steps();
    } catch (const InputOutputError& error) {
        throw SystemError{error.errorNumber, file};
    } catch (const SystemError& error) {
        throw SystemError{error.errorNumber, file};
    }
}

} // namespace

StagedFile StagedFile::create(const FileUrl& folder, const QByteArray& extension)
{
    if (!folder.hasFileSystemRepresentation())
        throw SystemError{EINVAL, folder};
    const QByteArray suffix = extension.isEmpty() ? QByteArray() : '.' + extension;
    while (true) {
        const FileUrl url = folder.appending(stagingPrefix + newUuid() + suffix);
        const int descriptor = ::open(url.path().constData(), O_CREAT | O_EXCL | O_NOFOLLOW | O_RDWR | O_CLOEXEC, 0666);
        if (descriptor >= 0)
            return {descriptor, url};
        if (errno != EINTR && errno != EEXIST)
            throw SystemError{errno, folder};
    }
}

StagedFile::StagedFile(int descriptor, FileUrl url) : descriptor_(descriptor), url_(std::move(url)) {}

StagedFile::StagedFile(StagedFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), url_(std::exchange(other.url_, {}))
{
}

StagedFile& StagedFile::operator=(StagedFile&& other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    std::swap(url_, other.url_);
    return *this;
}

StagedFile::~StagedFile()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
    // Once placed the name is gone, and its random part keeps this from meeting another file.
    if (!url_.isEmpty())
        ::unlink(url_.path().constData());
}

void StagedFile::flushAndClose()
{
    int flushed = 0;
    do
        flushed = errnoOf([&] { return ::fsync(descriptor_); });
    while (flushed == EINTR);
    // The descriptor is gone even when close() fails, and EINTR says nothing about data that is already on disk.
    const int closed = errnoOf([&] { return ::close(std::exchange(descriptor_, -1)); });
    if (flushed != 0)
        throw SystemError{flushed, url_};
    if (closed != 0 && closed != EINTR)
        throw SystemError{closed, url_};
}

PlacementCalls PlacementCalls::system()
{
    return {
        [](const QByteArray& from, const QByteArray& to) {
            return errnoOf(
                [&] { return ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE); });
        },
        [](const QByteArray& from, const QByteArray& to) {
            return errnoOf([&] { return ::link(from.constData(), to.constData()); });
        },
        [](const QByteArray& from, const QByteArray& to) {
            return errnoOf([&] { return ::rename(from.constData(), to.constData()); });
        },
        [](const QByteArray& path) {
            struct stat status {};
            return ::lstat(path.constData(), &status) == 0;
        },
    };
}

PlacementResult place(const FileUrl& staged, const FileUrl& destination, bool replaceExisting, int* errorNumber,
                      const PlacementCalls& calls)
{
    int number = EINVAL;
    if (staged.hasFileSystemRepresentation() && destination.hasFileSystemRepresentation())
        number = replaceExisting ? calls.rename(staged.path(), destination.path())
                                 : placeExclusively(staged.path(), destination.path(), calls);
    if (errorNumber)
        *errorNumber = number;
    if (number == 0) {
        flushFolder(destination.deletingLastPathComponent());
        return PlacementResult::placed;
    }
    return number == EEXIST && !replaceExisting ? PlacementResult::destinationExists : PlacementResult::failed;
}

void writeAtomically(const FileUrl& destination, const QByteArray& bytes)
{
    if (!destination.hasFileSystemRepresentation())
        throw SystemError{EINVAL, destination};
    const FileUrl target = resolvingFinalLinks(destination);
    StagedFile staged = StagedFile::create(target.deletingLastPathComponent(), target.pathExtension());
    keepMode(staged, target);
    asErrorsOf(destination, [&] {
        ByteSink sink(staged.descriptor());
        sink.write(std::as_bytes(std::span(bytes.constData(), size_t(bytes.size()))));
        sink.flush();
        staged.flushAndClose();
    });
    int errorNumber = 0;
    if (place(staged.url(), target, true, &errorNumber) != PlacementResult::placed)
        throw SystemError{errorNumber, destination};
}

void copyWithoutReplacing(const OpenedFile& source, const FileUrl& destination)
{
    if (!destination.hasFileSystemRepresentation())
        throw SystemError{EINVAL, destination};
    StagedFile staged = StagedFile::create(destination.deletingLastPathComponent(), destination.pathExtension());
    std::vector<std::byte> buffer(copyBufferSize);
    ByteSink sink(staged.descriptor());
    for (std::int64_t offset = 0; offset < source.size(); offset += copyBufferSize) {
        std::size_t length = 0;
        asErrorsOf(source.url(), [&] { length = source.source().readAt(offset, buffer); });
        asErrorsOf(destination, [&] { sink.write(std::span(buffer).first(length)); });
    }
    asErrorsOf(destination, [&] {
        sink.flush();
        staged.flushAndClose();
    });
    if (source.currentIdentity() != source.identity())
        throw SystemError{EBUSY, source.url()};
    int errorNumber = 0;
    if (place(staged.url(), destination, false, &errorNumber) != PlacementResult::placed)
        throw SystemError{errorNumber, destination};
}

void createFolder(const FileUrl& folder)
{
    if (!folder.hasFileSystemRepresentation())
        throw SystemError{EINVAL, folder};
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(folder.path().toStdString()), error);
    if (error)
        throw SystemError{error.value(), folder};
}

void sweepStaleStagingFiles(const FileUrl& folder)
{
    if (!folder.hasFileSystemRepresentation())
        return;
    FolderReader reader(folder.path(), FolderReader::FinalLink::followed);
    const std::time_t newest = std::time(nullptr) - staleAge;
    while (const dirent* entry = reader.next()) {
        struct stat status {};
        if (isStagingName(QByteArray(entry->d_name)) &&
            ::fstatat(reader.descriptor(), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode) && status.st_mtim.tv_sec <= newest)
            ::unlinkat(reader.descriptor(), entry->d_name, 0);
    }
}

} // namespace ferrow
