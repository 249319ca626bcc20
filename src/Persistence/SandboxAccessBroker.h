// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace ferrow {

/// Keeps the one list of places that the user opened to the program, and finds out which source folders still lack the
/// right to be written in. For one thread. Containment is a matter of path text alone: no links, no letter case.
class SandboxAccessBroker {
public:
    struct Operations {
        std::function<bool(const FileUrl&)> startAccess; ///< Answers whether the place may be used.
        std::function<void(const FileUrl&)> stopAccess;
        std::function<bool(const FileUrl&)> isDirectory;

        /// On this system choosing a file is all it takes: every access starts.
        [[nodiscard]] static Operations system();
    };

    struct SourceAccessOutcome {
        enum class Case { outsideScope, accessDenied, granted, canceled };
        Case value = Case::granted;
        FileUrl folder; ///< outsideScope: the source folder asked for. accessDenied: the folder picked.

        bool operator==(const SourceAccessOutcome&) const = default;
    };

    /// Asks the user for one source folder: its 0-based place among the folders that need asking, and how many those
    /// were at the start. Absent when the user dismissed the question.
    using GrantRequest =
        std::function<std::optional<FileUrl>(const FileUrl& sourceFolder, std::size_t index, std::size_t total)>;

    explicit SandboxAccessBroker(Operations operations = Operations::system());

    /// Opens what the user chose or dropped; each place once while it is held. One that can't be opened is passed over:
    /// the import reports its files.
    void retainAccess(const std::vector<FileUrl>& urls);
    /// Holds the export folder in place of the one before.
    void retainDestination(const FileUrl& url);
    /// Before an export into folders beside the photos. Stops at the first folder that is not granted; what was granted
    /// until then stays held.
    [[nodiscard]] SourceAccessOutcome ensureSourceFolderAccess(const std::vector<FileUrl>& photos,
                                                               const GrantRequest& requestGrant);
    void stopSourceAccess();
    void stopAllAccess();

    /// In the order opened, standardized.
    [[nodiscard]] const std::vector<FileUrl>& accessedRoots() const { return accessedRoots_; }
    /// Those of them that are folders.
    [[nodiscard]] const std::vector<FileUrl>& writableSourceFolders() const { return writableSourceFolders_; }
    [[nodiscard]] const std::optional<FileUrl>& accessedDestination() const { return accessedDestination_; }

    /// Whether `url` is `folder` or lies below it. The root contains only itself.
    [[nodiscard]] static bool contains(const FileUrl& folder, const FileUrl& url);

private:
    [[nodiscard]] bool isHeld(const FileUrl& root) const;
    [[nodiscard]] bool isWritable(const FileUrl& folder) const;
    [[nodiscard]] std::vector<FileUrl> unwritableFolders(const std::vector<FileUrl>& photos) const;

    Operations operations_;
    std::vector<FileUrl> accessedRoots_;
    std::vector<FileUrl> writableSourceFolders_;
    std::optional<FileUrl> accessedDestination_;
};

} // namespace ferrow
