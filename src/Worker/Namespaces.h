// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace ferrow::Worker {

/// Moves this process into namespaces of its own: a root folder that holds nothing but `readablePlaces` (absolute paths
/// of files and folders), which nobody can write to, no network, no shared memory of others. False, with nothing
/// changed, where the system refuses: many containers and some distributions do. One thread alone may run. /proc is
/// gone afterwards.
[[nodiscard]] bool enterOwnNamespaces(const std::vector<std::string>& readablePlaces);

/// As fork(), but the child sees no process besides itself where enterOwnNamespaces() succeeded. It holds no capability
/// there or elsewhere, and the kernel ends it with this process.
[[nodiscard]] pid_t forkConfined(bool hasOwnNamespaces);

} // namespace ferrow::Worker
