// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Base/SystemErrors.h"
#include "Platform/Files/Descriptor.h"

#include <cstdint>
#include <optional>

namespace ferrow {

/// What tells one state of a file from another.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedNanoseconds = 0;

    bool operator==(const FileIdentity&) const = default;
};

/// A file opened once for reading: non-blocking, never as a controlling terminal, closed on exec, and checked to be a
/// regular file on the descriptor itself. Moves only.
class OpenedFile {
public:
    /// Throws SystemError when it can't be opened, with EISDIR or EINVAL when it is not a regular file. A file that
    /// claims to be empty and yields bytes all the same (/proc has some) is an empty file: source() holds nothing.
    [[nodiscard]] static OpenedFile open(const FileUrl& url);
    /// The same for a file that is open already, and is read from its start whatever its position. It has no name.
    [[nodiscard]] static OpenedFile adopt(Descriptor descriptor);

    [[nodiscard]] const FileUrl& url() const { return url_; }
    [[nodiscard]] int descriptor() const { return descriptor_.get(); }
    [[nodiscard]] std::int64_t size() const { return identity_.size; }
    /// As seen when it was opened.
    [[nodiscard]] const FileIdentity& identity() const { return identity_; }
    /// As it is now, on the same descriptor: differs from identity() when somebody changed the file meanwhile.
    [[nodiscard]] FileIdentity currentIdentity() const;
    [[nodiscard]] ByteSource source() const { return {descriptor(), identity_.size}; }

private:
    OpenedFile(Descriptor descriptor, FileUrl url);

    Descriptor descriptor_;
    FileUrl url_;
    FileIdentity identity_;
};

} // namespace ferrow
