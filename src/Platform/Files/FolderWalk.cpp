// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FolderWalk.h"

#include "Platform/Files/FolderReader.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace ferrow {

namespace {

/// Folders that file browsers elsewhere show as one document: what lies inside belongs to the program that made them.
constexpr std::array<std::string_view, 24> packageExtensions{
    "app",           "appex",         "aplibrary",  "band",   "bundle", "cocatalog", "docset",    "framework",
    "imovielibrary", "kext",          "key",        "logicx", "lrdata", "lrlibrary", "numbers",   "pages",
    "photolibrary",  "photoslibrary", "playground", "plugin", "rtfd",   "tvlibrary", "xcodeproj", "xcworkspace"};

bool isPackage(const FileUrl& folder)
{
    const QByteArray extension = folder.pathExtension().toLower();
    return std::ranges::find(packageExtensions, std::string_view(extension.constData(), size_t(extension.size()))) !=
           packageExtensions.end();
}

enum class EntryKind { folder, linkToFolder, other };

EntryKind kindOf(const dirent& entry, int folderDescriptor)
{
    struct stat status {};
    unsigned char type = entry.d_type;
    if (type == DT_UNKNOWN && ::fstatat(folderDescriptor, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
        type = IFTODT(status.st_mode);
    if (type == DT_DIR)
        return EntryKind::folder;
    // A link that leads nowhere is reported: opening it gives the reason.
    if (type == DT_LNK && ::fstatat(folderDescriptor, entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode))
        return EntryKind::linkToFolder;
    return EntryKind::other;
}

} // namespace

int walkFolder(const FileUrl& folder, const std::function<void(const FileUrl&)>& visit)
{
    if (!folder.hasFileSystemRepresentation())
        return EINVAL;
    std::optional<int> failure; // Of the first folder.
    // No recursion, and one descriptor at a time, however deep the tree: it ends where paths become too long to open.
    std::vector<FileUrl> pending{folder};
    // A folder mounted inside itself would otherwise be walked until its paths become too long.
    std::set<std::pair<dev_t, ino_t>> visited;
    auto finalLink = FolderReader::FinalLink::followed;
    while (!pending.empty()) {
        const FileUrl current = std::move(pending.back());
        pending.pop_back();
        FolderReader reader(current.path(), std::exchange(finalLink, FolderReader::FinalLink::refused));
        struct stat status {};
        if (!reader.isOpen() || ::fstat(reader.descriptor(), &status) != 0 ||
            !visited.emplace(status.st_dev, status.st_ino).second) {
            if (!failure)
                failure = reader.failure();
            continue;
        }
        while (const dirent* entry = reader.next()) {
            if (entry->d_name[0] == '.')
                continue;
            const EntryKind kind = kindOf(*entry, reader.descriptor());
            if (kind == EntryKind::linkToFolder)
                continue;
            const FileUrl url = current.appending(QByteArray(entry->d_name));
            if (kind == EntryKind::other)
                visit(url);
            else if (!isPackage(url))
                pending.push_back(url);
        }
        if (!failure)
            failure = reader.failure();
    }
    return failure.value_or(0);
}

} // namespace ferrow
