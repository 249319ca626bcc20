// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ferrow::Worker {

/// Whether files may still be opened for reading, where Landlock allows it.
enum class FileOpening { refused, readOnly };

/// Has the kernel refuse the calling thread, and all that it starts, every system call that reading photos has no use
/// for. False where the kernel can't. Needs PR_SET_NO_NEW_PRIVS.
[[nodiscard]] bool filterSystemCalls(FileOpening opening);

} // namespace ferrow::Worker
