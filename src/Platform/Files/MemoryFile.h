// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Files/Descriptor.h"

#include <sys/mman.h>

namespace ferrow {

/// An empty file in memory, for what works from descriptors: it is gone with the last of them. `name` is seen in lists
/// of open files alone. Not open where the system refuses.
[[nodiscard]] inline Descriptor openMemoryFile(const char* name)
{
    return Descriptor(::memfd_create(name, MFD_CLOEXEC));
}

} // namespace ferrow
