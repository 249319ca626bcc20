// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/PixelFormat.h"

#include <cstddef>
#include <cstdint>

namespace ferrow::Engine {

/// Pictures are worked on in bands of rows of about this size: small enough for the cache, large enough that what a
/// band costs by itself vanishes.
inline constexpr std::int64_t bandBytes = 1 << 20;

/// A picture handed out row by row from the top. Each row is read at most once.
class RowSource {
public:
    virtual ~RowSource() = default;

    [[nodiscard]] virtual PixelSize size() const = 0;
    [[nodiscard]] virtual PixelFormat format() const = 0;
    /// The next `count` rows to `out`, `stride` bytes apart. Throws what its source throws.
    virtual void readRows(std::int64_t count, std::byte* out, std::size_t stride) = 0;
};

} // namespace ferrow::Engine
