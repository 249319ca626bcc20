// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FilePlacement.h"

#include "Platform/Files/FileStatus.h"
#include "Platform/Files/FolderReader.h"

#include <QUuid>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
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
int placeExclusively(int folder, const QByteArray& from, const QByteArray& to, const PlacementCalls& calls)
{
    const int renamed = calls.renameExclusively(folder, from, to);
    if (!isNotOffered(renamed))
        return renamed;
    const int linked = calls.link(folder, from, to);
    if (!areLinksNotOffered(linked)) {
        // The second name of the same file; left behind, it is swept later.
        if (linked == 0)
            ::unlinkat(folder, from.constData(), 0);
        return linked;
    }
    // Neither is offered (some memory cards and network volumes): a file that appears between these two lines is lost.
    switch (const int standing = calls.lookUp(folder, to)) {
    case 0:
        return EEXIST;
    case ENOENT:
        return calls.rename(folder, from, to);
    default:
        return standing;
    }
}

PlacementResult resultOf(int number, bool replaceExisting, int* errorNumber)
{
    if (errorNumber)
        *errorNumber = number;
    if (number == 0)
        return PlacementResult::placed;
    return number == EEXIST && !replaceExisting ? PlacementResult::destinationExists : PlacementResult::failed;
}

/// Makes the new name survive a power loss. Failing, it is passed over: the file stands whole under its name, and
/// calling that a failure would tell the user the opposite.
void flushFolder(int parent, const char* folder)
{
    const Descriptor descriptor(::openat(parent, folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.isOpen())
        ::fsync(descriptor.get());
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

/// Whether every volume can hold this name, so that it need not be tried.
bool isPlainName(const QByteArray& name)
{
    return std::ranges::none_of(name, [](char character) {
        return static_cast<signed char>(character) < ' ' || std::strchr("\"*:<>?\\|\x7f", character);
    });
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
    // A folder may take files without being readable.
    StagedFile staged(Descriptor(::open(folder.path().constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)));
    if (!staged.folder_.isOpen())
        throw SystemError{errno, folder};
    while (true) {
        const FileUrl url = folder.appending(stagingPrefix + newUuid() + suffix);
        staged.descriptor_ = Descriptor(::openat(staged.folder_.get(), url.lastPathComponentBytes().constData(),
                                                 O_CREAT | O_EXCL | O_NOFOLLOW | O_RDWR | O_CLOEXEC, 0666));
        if (staged.descriptor_.isOpen()) {
            staged.url_ = url;
            return staged;
        }
        if (errno != EINTR && errno != EEXIST)
            throw SystemError{errno, folder};
    }
}

StagedFile::StagedFile(Descriptor folder) : folder_(std::move(folder)) {}

StagedFile::StagedFile(StagedFile&& other) noexcept
    : folder_(std::move(other.folder_)), descriptor_(std::move(other.descriptor_)), url_(std::exchange(other.url_, {}))
{
}

StagedFile& StagedFile::operator=(StagedFile&& other) noexcept
{
    std::swap(folder_, other.folder_);
    std::swap(descriptor_, other.descriptor_);
    std::swap(url_, other.url_);
    return *this;
}

StagedFile::~StagedFile()
{
    // Once placed the name is gone, and its random part keeps this from meeting another file.
    if (!url_.isEmpty())
        ::unlinkat(folder_.get(), url_.lastPathComponentBytes().constData(), 0);
}

void StagedFile::checkName(const QByteArray& name) const
{
    if (isPlainName(name))
        return;
    const QByteArray trial = url_.lastPathComponentBytes() + '.' + name; // Swept as ours, should the program end here.
    const Descriptor descriptor(
        ::openat(folder_.get(), trial.constData(), O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, 0600));
    if (descriptor.isOpen()) {
        ::unlinkat(folder_.get(), trial.constData(), 0);
        return;
    }
    const int refused = errno;
    if (refused == ENAMETOOLONG)
        return; // The name alone may still fit.
    // Some volumes find no file of a name that they can't hold even when they are to make it.
    struct stat status {};
    const bool isFolderThere =
        ::fstatat(folder_.get(), url_.lastPathComponentBytes().constData(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    throw SystemError{refused == ENOENT && isFolderThere ? EILSEQ : refused,
                      url_.deletingLastPathComponent().appending(name)};
}

mode_t StagedFile::takeModeOf(const QByteArray& name)
{
    struct stat existing {};
    if (::fstatat(folder_.get(), name.constData(), &existing, AT_SYMLINK_NOFOLLOW) != 0)
        return 0;
    if (S_ISDIR(existing.st_mode))
        throw SystemError{EISDIR, url_.deletingLastPathComponent().appending(name)};
    struct stat fresh {};
    if (S_ISREG(existing.st_mode) &&
        (::fstat(descriptor(), &fresh) != 0 || ((fresh.st_mode ^ existing.st_mode) & modeBits) != 0) &&
        ::fchmod(descriptor(), existing.st_mode & modeBits) != 0)
        throw SystemError{errno, url_.deletingLastPathComponent().appending(name)};
    return existing.st_mode;
}

PlacementResult StagedFile::place(const QByteArray& name, bool replaceExisting, int* errorNumber,
                                  const PlacementCalls& calls)
{
    const QByteArray staged = url_.lastPathComponentBytes();
    const int number = replaceExisting ? calls.rename(folder_.get(), staged, name)
                                       : placeExclusively(folder_.get(), staged, name, calls);
    if (number == 0)
        flushFolder(folder_.get(), ".");
    return resultOf(number, replaceExisting, errorNumber);
}

void StagedFile::flushAndClose()
{
    int flushed = 0;
    do
        flushed = errnoOf([&] { return ::fsync(descriptor()); });
    while (flushed == EINTR);
    // The descriptor is gone even when close() fails, and EINTR says nothing about data that is already on disk.
    const int closed = descriptor_.close();
    if (flushed != 0)
        throw SystemError{flushed, url_};
    if (closed != 0 && closed != EINTR)
        throw SystemError{closed, url_};
}

OpenedFile StagedFile::reopened() const
{
    Descriptor file(
        ::openat(folder_.get(), url_.lastPathComponentBytes().constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!file.isOpen())
        throw SystemError{errno, url_};
    static_cast<void>(::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED));
    return OpenedFile::adopt(std::move(file));
}

PlacementCalls PlacementCalls::system()
{
    return {
        [](int folder, const QByteArray& from, const QByteArray& to) {
            return errnoOf(
                [&] { return ::renameat2(folder, from.constData(), folder, to.constData(), RENAME_NOREPLACE); });
        },
        [](int folder, const QByteArray& from, const QByteArray& to) {
            return errnoOf([&] { return ::linkat(folder, from.constData(), folder, to.constData(), 0); });
        },
        [](int folder, const QByteArray& from, const QByteArray& to) {
            return errnoOf([&] { return ::renameat(folder, from.constData(), folder, to.constData()); });
        },
        [](int folder, const QByteArray& name) {
            struct stat status {};
            return errnoOf([&] { return ::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW); });
        },
    };
}

PlacementResult place(const FileUrl& from, const FileUrl& destination, bool replaceExisting, int* errorNumber,
                      const PlacementCalls& calls)
{
    int number = EINVAL;
    if (from.hasFileSystemRepresentation() && destination.hasFileSystemRepresentation())
        number = replaceExisting ? calls.rename(AT_FDCWD, from.path(), destination.path())
                                 : placeExclusively(AT_FDCWD, from.path(), destination.path(), calls);
    if (number == 0)
        flushFolder(AT_FDCWD, destination.deletingLastPathComponent().path().constData());
    return resultOf(number, replaceExisting, errorNumber);
}

void writeAtomically(const FileUrl& destination, const QByteArray& bytes)
{
    writeAtomically(destination, [&](ByteSink& sink) {
        sink.write(std::as_bytes(std::span(bytes.constData(), size_t(bytes.size()))));
    });
}

void writeAtomically(const FileUrl& destination, const std::function<void(ByteSink&)>& write)
{
    if (!destination.hasFileSystemRepresentation())
        throw SystemError{EINVAL, destination};
    const FileUrl target = resolvingFinalLinks(destination);
    StagedFile staged = StagedFile::create(target.deletingLastPathComponent(), target.pathExtension());
    asErrorsOf(destination, [&] {
        const mode_t mode = staged.takeModeOf(target.lastPathComponentBytes());
        // Renaming over a device or a pipe would do away with it.
        if (mode != 0 && !S_ISREG(mode))
            throw SystemError{EINVAL, target};
        ByteSink sink(staged.descriptor());
        write(sink);
        sink.flush();
        staged.flushAndClose();
    });
    int errorNumber = 0;
    if (staged.place(target.lastPathComponentBytes(), true, &errorNumber) != PlacementResult::placed)
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
    if (staged.place(destination.lastPathComponentBytes(), false, &errorNumber) != PlacementResult::placed)
        throw SystemError{errorNumber, destination};
}

void createFolder(const FileUrl& folder)
{
    if (!folder.hasFileSystemRepresentation())
        throw SystemError{EINVAL, folder};
    // Looked at first, because mkdir on a volume that can't be written may refuse even a folder that exists.
    if (fileKind(folder) == FileKind::folder)
        return;
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(folder.path().toStdString()), error);
    if (error) {
        // That something of this name exists already would read as if nothing were wrong.
        const FileUrl existing = nearestExisting(folder);
        throw isTaken(existing) && fileKind(existing) != FileKind::folder ? SystemError{ENOTDIR, existing}
                                                                          : SystemError{error.value(), folder};
    }
    if (fileKind(folder) != FileKind::folder)
        throw SystemError{ENOTDIR, folder};
}

void createPrivateFolder(const FileUrl& folder)
{
    if (!folder.hasFileSystemRepresentation())
        throw SystemError{EINVAL, folder};
    constexpr mode_t ownerOnly = 0700;
    if (::mkdir(folder.path().constData(), ownerOnly) == 0)
        return;
    if (errno == ENOENT && folder.path() != "/") {
        createPrivateFolder(folder.deletingLastPathComponent());
        if (::mkdir(folder.path().constData(), ownerOnly) == 0)
            return;
    }
    struct stat status {};
    const int failure = errno;
    if (::stat(folder.path().constData(), &status) != 0)
        throw SystemError{failure, folder};
    if (!S_ISDIR(status.st_mode))
        throw SystemError{ENOTDIR, folder};
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
