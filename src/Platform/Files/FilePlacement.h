// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Base/SystemErrors.h"
#include "Platform/Files/Descriptor.h"
#include "Platform/Files/FileAccess.h"

#include <QByteArray>

#include <sys/types.h>

#include <functional>

namespace ferrow {

enum class PlacementResult { placed, destinationExists, failed };

/// The system calls that placement is made of, replaceable in tests. Names are taken from the folder that the
/// descriptor `folder` stands for. Each answers 0 or an errno.
struct PlacementCalls {
    using Move = std::function<int(int folder, const QByteArray& from, const QByteArray& to)>;

    Move renameExclusively;
    Move link;
    Move rename;
    std::function<int(int folder, const QByteArray& name)>
        lookUp; ///< 0 where something stands, even a link to nothing.

    [[nodiscard]] static PlacementCalls system();
};

/// A file being written under a hidden name in the folder where it will stand. It stays with that folder also when the
/// folder is moved or renamed meanwhile. The hidden name is removed by the destructor unless it was placed. Moves only.
class StagedFile {
public:
    /// Creates "<folder>/.Ferrow-<UUID>.<extension>", exclusively, not following links. Throws SystemError.
    [[nodiscard]] static StagedFile create(const FileUrl& folder, const QByteArray& extension);

    StagedFile(StagedFile&& other) noexcept;
    StagedFile& operator=(StagedFile&& other) noexcept;
    ~StagedFile();

    [[nodiscard]] int descriptor() const { return descriptor_.get(); }
    /// As it was created.
    [[nodiscard]] const FileUrl& url() const { return url_; }

    /// Throws SystemError when the volume can't hold a file called `name` (a question mark on a memory card, letters
    /// that its character set lacks). Nothing ever stands under that name: it is tried behind the hidden one.
    void checkName(const QByteArray& name) const;
    /// Takes over the permissions of the file `name` in the folder, where that is a regular file, and answers the mode
    /// of what stands there, 0 for nothing. Throws SystemError, with EISDIR where that is a folder.
    mode_t takeModeOf(const QByteArray& name);
    /// Flushes the data to disk and closes the descriptor, checking both. Throws SystemError.
    void flushAndClose();
    /// The flushed file, for reading: as the disk has it, where the system lets go of its copy. Throws SystemError.
    [[nodiscard]] OpenedFile reopened() const;
    /// Gives the flushed file the name `name` in its folder; otherwise as ferrow::place().
    [[nodiscard]] PlacementResult place(const QByteArray& name, bool replaceExisting, int* errorNumber = nullptr,
                                        const PlacementCalls& calls = PlacementCalls::system());

private:
    explicit StagedFile(Descriptor folder);

    Descriptor folder_;
    Descriptor descriptor_;
    FileUrl url_;
};

/// Moves `from` to `destination`. Without `replaceExisting` nothing is ever replaced: an exclusive rename, then where
/// the volume has none a hard link, then where it has no links either an existence check and a plain rename. The
/// destination's folder is flushed afterwards. `failed` puts the errno of the deciding call into `errorNumber` where
/// that is given.
[[nodiscard]] PlacementResult place(const FileUrl& from, const FileUrl& destination, bool replaceExisting,
                                    int* errorNumber = nullptr, const PlacementCalls& calls = PlacementCalls::system());

/// Writes `bytes` whole to `destination`, replacing it atomically: staged in the same folder, every write, flush and
/// close checked. A `destination` that is a link has its target replaced. The folder must exist. Throws SystemError.
void writeAtomically(const FileUrl& destination, const QByteArray& bytes);
/// The same for what is made bit by bit. What `write` throws is passed on, and nothing is replaced.
void writeAtomically(const FileUrl& destination, const std::function<void(ByteSink&)>& write);

/// Copies what `source` held when it was opened to `destination`, staged and placed without replacing: EEXIST when that
/// name is taken, EBUSY when somebody changed the source meanwhile. The folder must exist. Throws SystemError.
void copyWithoutReplacing(const OpenedFile& source, const FileUrl& destination);

/// Creates `folder` with any missing parents; one that exists is fine. Throws SystemError, with ENOTDIR and its place
/// where something else stands in the way.
void createFolder(const FileUrl& folder);

/// The same for what is nobody else's business: what is made can be entered by its owner alone.
void createPrivateFolder(const FileUrl& folder);

/// Removes staging files of ours in `folder` that are a day old or older: what a killed run left behind.
/// Failures are of no consequence and passed over.
void sweepStaleStagingFiles(const FileUrl& folder);

} // namespace ferrow
