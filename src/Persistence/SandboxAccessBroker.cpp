// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/SandboxAccessBroker.h"

#include "Platform/Base/Localization.h"
#include "Platform/Files/FileStatus.h"

#include <algorithm>
#include <set>
#include <utility>

namespace ferrow {

SandboxAccessBroker::Operations SandboxAccessBroker::Operations::system()
{
    return {
        [](const FileUrl&) { return true; },
        [](const FileUrl&) {},
        [](const FileUrl& url) { return fileKind(url) == FileKind::folder; },
    };
}

SandboxAccessBroker::SandboxAccessBroker(Operations operations) : operations_(std::move(operations)) {}

void SandboxAccessBroker::retainAccess(const std::vector<FileUrl>& urls)
{
    for (const FileUrl& url : urls) {
        const FileUrl root = url.standardized();
        if (isHeld(root) || !operations_.startAccess(root))
            continue;
        accessedRoots_.push_back(root);
        if (operations_.isDirectory(root))
            writableSourceFolders_.push_back(root);
    }
}

void SandboxAccessBroker::retainDestination(const FileUrl& url)
{
    if (accessedDestination_)
        operations_.stopAccess(*std::exchange(accessedDestination_, std::nullopt));
    if (operations_.startAccess(url))
        accessedDestination_ = url;
}

SandboxAccessBroker::SourceAccessOutcome
SandboxAccessBroker::ensureSourceFolderAccess(const std::vector<FileUrl>& photos, const GrantRequest& requestGrant)
{
    using Case = SourceAccessOutcome::Case;
    const std::vector<FileUrl> folders = unwritableFolders(photos);
    for (std::size_t index = 0; index < folders.size(); ++index) {
        const FileUrl& folder = folders[index];
        // An answer to an earlier question may have covered this one.
        if (isWritable(folder))
            continue;
        const auto answer = requestGrant(folder, index, folders.size());
        if (!answer)
            return {Case::canceled, {}};
        const FileUrl granted = answer->standardized();
        if (!contains(granted, folder))
            return {Case::outsideScope, folder};
        if (isHeld(granted))
            continue;
        if (!operations_.startAccess(granted))
            return {Case::accessDenied, granted};
        accessedRoots_.push_back(granted);
        writableSourceFolders_.push_back(granted);
    }
    return {Case::granted, {}};
}

void SandboxAccessBroker::stopSourceAccess()
{
    for (const FileUrl& root : accessedRoots_)
        operations_.stopAccess(root);
    accessedRoots_.clear();
    writableSourceFolders_.clear();
}

void SandboxAccessBroker::stopAllAccess()
{
    stopSourceAccess();
    if (accessedDestination_)
        operations_.stopAccess(*std::exchange(accessedDestination_, std::nullopt));
}

bool SandboxAccessBroker::contains(const FileUrl& folder, const FileUrl& url)
{
    const QByteArray outer = folder.standardized().path();
    const QByteArray inner = url.standardized().path();
    return inner == outer || inner.startsWith(outer + '/');
}

bool SandboxAccessBroker::isHeld(const FileUrl& root) const
{
    return std::ranges::find(accessedRoots_, root) != accessedRoots_.end();
}

bool SandboxAccessBroker::isWritable(const FileUrl& folder) const
{
    return std::ranges::any_of(writableSourceFolders_, [&](const FileUrl& root) { return contains(root, folder); });
}

std::vector<FileUrl> SandboxAccessBroker::unwritableFolders(const std::vector<FileUrl>& photos) const
{
    std::set<FileUrl> distinct;
    for (const FileUrl& photo : photos)
        distinct.insert(photo.deletingLastPathComponent().standardized());
    std::vector<FileUrl> folders(distinct.begin(), distinct.end());
    std::erase_if(folders, [&](const FileUrl& folder) { return isWritable(folder); });
    Localization::standardSort(folders, &FileUrl::displayPath);
    return folders;
}

} // namespace ferrow
