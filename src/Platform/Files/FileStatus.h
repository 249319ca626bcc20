// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileNumber.h"
#include "Platform/Base/FileUrl.h"

#include <cstdint>
#include <optional>

/// What the system says of a path at this moment, before anything is opened: to decide by and to tell the user, never a
/// promise of what an open will find. Any thread.
namespace ferrow {

/// What stands at a path, following links; unknown where the system does not say.
enum class FileKind { missing, file, folder, unknown };
[[nodiscard]] FileKind fileKind(const FileUrl& url);

/// Of what a path leads to, links followed; absent where that is nothing or can't be known.
[[nodiscard]] std::optional<FileNumber> fileNumber(const FileUrl& url);
/// Two spellings of one file on a volume that folds case are seen by their number alone. False where either is missing.
[[nodiscard]] bool isSameFile(const FileUrl& left, const FileUrl& right);

/// 0 where anything stands at a path, even a link to nothing, and otherwise the errno.
[[nodiscard]] int lookUp(const FileUrl& url);
/// Whether anything stands at a path, even a link to nothing: placing a file would not replace that either. Throws
/// SystemError where that can't be known.
[[nodiscard]] bool isTaken(const FileUrl& url);

/// The path with its links resolved as far as they exist: the last component may be missing.
[[nodiscard]] FileUrl resolvingLinks(const FileUrl& url);
/// The place itself where anything stands there, else the nearest of the folders that it lies in.
[[nodiscard]] FileUrl nearestExisting(FileUrl url);

/// Throws SystemError when a folder takes no new files, or is missing and could not be made. A missing folder that
/// could be made passes.
void checkFolderWritable(const FileUrl& folder);
[[nodiscard]] bool isReadable(const FileUrl& file);
/// Bytes that this user may still write on the folder's volume; absent where nobody knows.
[[nodiscard]] std::optional<std::int64_t> freeBytes(const FileUrl& folder);

} // namespace ferrow
