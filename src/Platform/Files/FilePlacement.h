// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"
#include "Platform/Base/SystemErrors.h"
#include "Platform/Files/FileAccess.h"

#include <QByteArray>

#include <functional>

namespace ferrow {

/// A file being written under a hidden name in the folder where it will stand. The hidden name is removed by the
/// destructor unless it was placed. Moves only.
class StagedFile {
public:
    /// Creates "<folder>/.Ferrow-<UUID>.<extension>", exclusively, not following links. Throws SystemError.
    [[nodiscard]] static StagedFile create(const FileUrl& folder, const QByteArray& extension);

    StagedFile(StagedFile&& other) noexcept;
    StagedFile& operator=(StagedFile&& other) noexcept;
    ~StagedFile();

    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] const FileUrl& url() const { return url_; }

    /// Flushes the data to disk and closes the descriptor, checking both. Throws SystemError.
    void flushAndClose();

private:
    StagedFile(int descriptor, FileUrl url);

    int descriptor_ = -1;
    FileUrl url_;
};

enum class PlacementResult { placed, destinationExists, failed };

/// The system calls that placement is made of, replaceable in tests. Each answers 0 or an errno.
struct PlacementCalls {
    std::function<int(const QByteArray& from, const QByteArray& to)> renameExclusively;
    std::function<int(const QByteArray& from, const QByteArray& to)> link;
    std::function<int(const QByteArray& from, const QByteArray& to)> rename;
    std::function<bool(const QByteArray& path)> exists; ///< Without following links.

    [[nodiscard]] static PlacementCalls system();
};

/// Moves the flushed file `staged` to `destination` in the same folder. Without `replaceExisting` nothing is ever
/// replaced: an exclusive rename, then where the volume has none a hard link, then where it has no links either an
/// existence check and a plain rename. The folder is flushed afterwards. `failed` puts the errno of the deciding call
/// into `errorNumber` where that is given.
[[nodiscard]] PlacementResult place(const FileUrl& staged, const FileUrl& destination, bool replaceExisting,
                                    int* errorNumber = nullptr, const PlacementCalls& calls = PlacementCalls::system());

/// Writes `bytes` whole to `destination`, replacing it atomically: staged in the same folder, every write, flush and
/// close checked. A `destination` that is a link has its target replaced. The folder must exist. Throws SystemError.
void writeAtomically(const FileUrl& destination, const QByteArray& bytes);

/// Copies what `source` held when it was opened to `destination`, staged and placed without replacing: EEXIST when that
/// name is taken, EBUSY when somebody changed the source meanwhile. The folder must exist. Throws SystemError.
void copyWithoutReplacing(const OpenedFile& source, const FileUrl& destination);

/// Creates `folder` with any missing parents; one that exists is fine. Throws SystemError.
void createFolder(const FileUrl& folder);

/// Removes staging files of ours in `folder` that are a day old or older: what a killed run left behind.
/// Failures are of no consequence and passed over.
void sweepStaleStagingFiles(const FileUrl& folder);

} // namespace ferrow
