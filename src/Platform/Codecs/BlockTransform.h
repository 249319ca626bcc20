// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The 8 × 8 blocks that JPEG is made of, as arithmetic. Rows one after the other: of samples from the top, of
/// coefficients from the lowest vertical frequency.
namespace ferrow::BlockTransform {

inline constexpr std::size_t side = 8;
inline constexpr std::size_t area = side * side;

using Coefficients = std::array<std::int16_t, area>; ///< Quantized.
using Table = std::array<std::uint16_t, area>;       ///< Quantization steps.
using Samples = std::array<double, area>;            ///< Around 0: a level less 128. Neither rounded nor cut.

/// The largest coefficients that a file of 8-bit samples has codes for.
inline constexpr int largestAc = 1023;
inline constexpr int smallestDc = -1024;

/// Whether a file can hold the block, from wherever it was read.
[[nodiscard]] bool isCodable(const std::int16_t* coefficients);

[[nodiscard]] Samples samples(const std::int16_t* coefficients, const Table& table);
[[nodiscard]] Coefficients coefficients(const Samples& samples, const Table& table);
/// Of a block that is one level (less 128) all over, as its DC. Beyond what samples can be, rounded away from 0: a
/// decoder cuts that off, and white is white.
[[nodiscard]] std::int16_t flatLevel(double sample, std::uint16_t step);

/// How a picture as stored is turned upright, in the terms of a block or of a grid of blocks: an upright place is the
/// stored one, counted from the other end where it says so, with rows and columns exchanged before.
struct Turn {
    bool swaps = false;      ///< Upright columns are stored rows.
    bool fromBottom = false; ///< Stored rows count from the last.
    bool fromRight = false;  ///< Stored columns count from the last.

    /// 1…8, as the Exif tag counts them.
    [[nodiscard]] static Turn of(int orientation);

    bool operator==(const Turn&) const = default;
};

[[nodiscard]] Coefficients turned(const std::int16_t* stored, const Turn& turn);
[[nodiscard]] Table turned(const Table& stored, const Turn& turn);

} // namespace ferrow::BlockTransform
