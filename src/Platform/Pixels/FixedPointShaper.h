// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/Matrix.h"
#include "Platform/Pixels/RowConverter.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ferrow {

/// The way from levels of 8 bits over light to levels of 8 bits, in whole numbers alone: vectors of any width come to
/// the same results. Light is 0…65535.
struct FixedPointShaping {
    /// The binary digits that a coefficient has behind its point.
    static constexpr int fractionBits = 14;
    /// The curve to levels is straight in each of 64 pieces of either scale: of a 1024th of all light below this limit,
    /// of a 64th above.
    static constexpr int darkEnd = 4096;
    static constexpr int darkShift = 6;
    static constexpr int brightShift = 10;
    static constexpr std::size_t pieces = 64;

    /// Of the source, by level, less 32768, as its lower and its upper bytes; all three components have the same curve.
    struct Light {
        alignas(64) std::array<std::uint8_t, 256> lower;
        alignas(64) std::array<std::uint8_t, 256> upper;
    };
    Light light;
    /// Rows for the results' light, columns for the source's.
    std::array<std::array<std::int16_t, 3>, 3> matrix;

    /// In 256ths of a level, with half a level for rounding: at the beginning of a piece, and over its whole length.
    struct Pieces {
        alignas(64) std::array<std::uint16_t, pieces> bases;
        alignas(64) std::array<std::uint16_t, pieces> rises;
    };
    Pieces dark;
    Pieces bright;

    [[nodiscard]] std::uint8_t level(std::uint16_t ofLight) const
    {
        const bool isDark = ofLight < darkEnd;
        const int shift = isDark ? darkShift : brightShift;
        const Pieces& scale = isDark ? dark : bright;
        const auto part = std::uint16_t(ofLight << (16 - shift));
        const std::size_t piece = ofLight >> shift;
        return std::uint8_t((scale.bases[piece] + ((std::uint32_t{scale.rises[piece]} * part) >> 16)) >> 8);
    }
};

/// Converts as many pixels of `in` as fill whole vectors, and answers how many those are: none where this processor
/// has no vectors that would be faster than tables. Both sides are RGB of 8 bits.
[[nodiscard]] std::size_t shapeByVectors(const FixedPointShaping& shaping, const std::byte* in, std::byte* out,
                                         std::size_t pixels);

/// By the widest vectors that the processor has. `matrix` leads from the source's light to the target's. Null where
/// whole numbers would be further off the exact result than floating ones, by more than a tenth of a level: where the
/// target's curve is too steep, or the matrix leads far out of its gamut; and where components differ in their curves
/// or one of the sides is not of 8 bits.
[[nodiscard]] std::unique_ptr<RowConverter> fixedPointRows(const std::array<const cmsToneCurve*, 3>& decoding,
                                                           const Matrix& matrix,
                                                           const std::array<const cmsToneCurve*, 3>& encoding,
                                                           PixelFormat source, PixelFormat target);

} // namespace ferrow
