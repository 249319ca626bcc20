// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"
#include "Platform/Files/Descriptor.h"

#include <chrono>

namespace ferrow {

/// Held by one at a time among the processes of this machine, and among the holders in one process: whoever reads a
/// file of the folder, changes it and writes it back holds it meanwhile. Leaves nothing behind, however a process ends.
class FolderLock {
public:
    /// Waits for whoever holds it. The folder must exist. Throws SystemError, with EBUSY when `patience` is over. Where
    /// the volume has no locks, goes on without one.
    explicit FolderLock(const FileUrl& folder, std::chrono::milliseconds patience = std::chrono::seconds(5));

private:
    Descriptor descriptor_;
};

} // namespace ferrow
