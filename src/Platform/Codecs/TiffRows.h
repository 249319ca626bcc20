// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Codecs/TiffLayout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace ferrow {

/// A run of pixels of one row, decompressed but otherwise as the file stores it.
struct TiffRun {
    std::int64_t x = 0;
    std::int64_t pixels = 0;
    bool isLost = false;                      ///< Could not be decompressed: `planes` then mean nothing.
    std::array<const std::byte*, 8> planes{}; ///< First byte in each plane; one alone unless planar.
    int blockRow = 0;                         ///< YCbCr: row inside the block that `planes[0]` points to.
};

/// Delivers a picture's rows from the top; each way of storing has its own. Reading lost rows does not throw for their
/// loss alone, but for what stands behind it (CodecError: unreadable, tooLarge).
class TiffRows {
public:
    virtual ~TiffRows() = default;
    /// Bytes held at once.
    [[nodiscard]] virtual std::int64_t heldBytes() const = 0;
    /// The runs that make up row `y`, from the left. Rows are asked for once, in order; a run's bytes are valid until
    /// the next call.
    [[nodiscard]] virtual std::span<const TiffRun> row(std::int64_t y) = 0;
};

/// Both must outlive the rows.
[[nodiscard]] std::unique_ptr<TiffRows> openTiffRows(TiffInput& input, const TiffLayout& layout);

} // namespace ferrow
