// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FolderLock.h"

#include "Platform/Base/SystemErrors.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

namespace ferrow {

namespace {

constexpr std::chrono::milliseconds pollInterval(10);

} // namespace

FolderLock::FolderLock(const FileUrl& folder, std::chrono::milliseconds patience)
    : descriptor_(::open(folder.path().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
    if (!descriptor_.isOpen())
        throw SystemError{errno, folder};
    // Asked for again and again: a holder that was suspended must not hold up a window for ever.
    const auto end = std::chrono::steady_clock::now() + patience;
    while (::flock(descriptor_.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return; // Not offered here.
        if (std::chrono::steady_clock::now() >= end)
            throw SystemError{EBUSY, folder};
        std::this_thread::sleep_for(pollInterval);
    }
}

} // namespace ferrow
