// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/FerrowStorage.h"

#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"

#include <pwd.h>
#include <unistd.h>

#include <vector>

namespace ferrow::FerrowStorage {

namespace {

/// The account's own folder, for a session without a usable $HOME.
QByteArray accountHome()
{
    std::vector<char> buffer(16 * 1024);
    passwd account{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &account, buffer.data(), buffer.size(), &found) != 0 || !found)
        return "/";
    return found->pw_dir;
}

FileUrl dataFolderOfUser()
{
    // Relative values are to be ignored, says the base directory convention.
    if (const QByteArray data = qgetenv("XDG_DATA_HOME"); data.startsWith('/'))
        return FileUrl::fromPath(data);
    const QByteArray home = qgetenv("HOME");
    return FileUrl::fromPath(home.startsWith('/') ? home : accountHome()).appending(".local/share");
}

} // namespace

Operations Operations::system()
{
    return {
        &dataFolderOfUser,
        [](const FileUrl& url) { return fileKind(url) != FileKind::missing; },
        [](const FileUrl& from, const FileUrl& to) { return place(from, to, false) == PlacementResult::placed; },
    };
}

FileUrl applicationSupportDirectory(const Operations& operations)
{
    const FileUrl base = operations.userDataFolder();
    const FileUrl current = base.appending("Ferrow");
    if (operations.exists(current))
        return current;
    for (const char* olderName : {"Quillmark", "Ambrelite"}) {
        const FileUrl older = base.appending(olderName);
        if (!operations.exists(older))
            continue;
        // Somebody else may have made the current one meanwhile.
        const bool isCurrentThere = operations.move(older, current) || operations.exists(current);
        return isCurrentThere ? current : older;
    }
    return current;
}

} // namespace ferrow::FerrowStorage
