// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

struct sock_filter;

namespace ferrow::Worker {

/// Whether files may still be opened for reading, where Landlock or an own root folder allows it.
enum class FileOpening { refused, readOnly };

/// A filter that leaves the calls that reading photos is known to need and answers all others with an error. Building
/// it takes some twenty times as long as putting it in force. Empty where the kernel has no filters.
[[nodiscard]] std::vector<sock_filter> systemCallFilter(FileOpening opening);

/// Puts it in force for the calling thread and all that it starts, for good. False where the kernel refuses. Needs
/// PR_SET_NO_NEW_PRIVS.
[[nodiscard]] bool enforce(std::vector<sock_filter> filter);

} // namespace ferrow::Worker
