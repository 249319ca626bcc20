// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/PixelFormat.h"

#include <cstddef>
#include <memory>

/// The kinds of work that a color transform can come down to. For the .cpp files of this folder alone.
namespace ferrow {

class RowConverter {
public:
    virtual ~RowConverter() = default;
    /// Called from several threads at once.
    virtual void convert(const std::byte* in, std::byte* out, std::size_t pixels) const = 0;
};

/// Rows that are the same bytes already.
[[nodiscard]] std::unique_ptr<RowConverter> copiedRows(PixelFormat format);

/// Same space, other depth or channels: RGB, or gray with the curve of the target.
[[nodiscard]] std::unique_ptr<RowConverter> rearrangedRows(PixelFormat source, PixelFormat target);

} // namespace ferrow
