// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/TemporaryLogoFolder.h"

#include "Platform/Base/SystemErrors.h"
#include "Platform/Files/FolderReader.h"

#include <QDir>
#include <QFile>

#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

namespace ferrow {

namespace {

constexpr char prefix[] = "ferrow-logo-";
constexpr qsizetype prefixLength = sizeof prefix - 1;
constexpr char pattern[] = "XXXXXX";           // What mkdtemp() fills in.
constexpr std::time_t staleAge = 24 * 60 * 60; // Seconds.

/// Removes the files in an open folder; what else somebody put there keeps it standing.
void removeFiles(const FileUrl& folder)
{
    FolderReader reader(folder.path(), FolderReader::FinalLink::refused);
    while (const dirent* entry = reader.next())
        ::unlinkat(reader.descriptor(), entry->d_name, 0);
}

/// Whether this is a folder of this user's that no run has in hand, and that none is about to lock either.
bool isAbandoned(int folder)
{
    struct stat status {};
    return ::fstat(folder, &status) == 0 && status.st_uid == ::geteuid() &&
           status.st_mtim.tv_sec <= std::time(nullptr) - staleAge && ::flock(folder, LOCK_EX | LOCK_NB) == 0;
}

void sweep(const FileUrl& parent)
{
    FolderReader reader(parent.path(), FolderReader::FinalLink::followed);
    while (const dirent* entry = reader.next()) {
        const QByteArray name(entry->d_name);
        if (!name.startsWith(prefix) || name.size() != prefixLength + qsizetype(sizeof pattern) - 1)
            continue;
        const Descriptor folder(::openat(reader.descriptor(), name.constData(),
                                         O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (folder.isOpen() && isAbandoned(folder.get())) {
            removeFiles(parent.appending(name));
            ::unlinkat(reader.descriptor(), name.constData(), AT_REMOVEDIR);
        }
    }
}

} // namespace

TemporaryLogoFolder::TemporaryLogoFolder(const FileUrl& parent)
{
    sweep(parent);
    QByteArray path = parent.appending(QByteArray(prefix) + pattern).path();
    if (!::mkdtemp(path.data()))
        throw SystemError{errno, parent};
    url_ = FileUrl::fromPath(path);
    descriptor_ = Descriptor(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor_.isOpen() || ::flock(descriptor_.get(), LOCK_EX | LOCK_NB) != 0) {
        const int failure = errno;
        ::rmdir(path.constData());
        throw SystemError{failure, url_};
    }
}

TemporaryLogoFolder::~TemporaryLogoFolder()
{
    removeFiles(url_);
    ::rmdir(url_.path().constData());
}

FileUrl TemporaryLogoFolder::systemFolder()
{
    return FileUrl::fromPath(QFile::encodeName(QDir::tempPath()));
}

} // namespace ferrow
