// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <compare>
#include <cstdint>

namespace ferrow {

/// Tells a file from every other, however its path is spelled.
struct FileNumber {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    auto operator<=>(const FileNumber&) const = default;
};

} // namespace ferrow
