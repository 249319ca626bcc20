// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <QString>

namespace ferrow {

/// A file-system call that failed: the system's error number and the file it was about.
struct SystemError {
    int errorNumber = 0;
    FileUrl file;

    /// One English sentence of our own naming the file, never the C library's text.
    [[nodiscard]] QString description() const;
    bool operator==(const SystemError&) const = default;
};

} // namespace ferrow
