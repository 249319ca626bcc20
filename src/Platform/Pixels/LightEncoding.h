// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/Matrix.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace ferrow {

/// Four numbers side by side, the last unused. Compilers turn the arithmetic on them into single instructions.
using Lanes = float __attribute__((vector_size(16)));
using IntegerLanes = std::int32_t __attribute__((vector_size(16)));

[[nodiscard]] Lanes columnOf(const Matrix& matrix, std::size_t column);

/// A curve's value, within 0…1.
[[nodiscard]] float lightOf(const cmsToneCurve* curve, double level);

/// Curves and matrix of an RGB profile that has nothing else for the given way.
struct MatrixProfile {
    Matrix colorants;                          ///< From linear RGB to the D50 connection space.
    std::array<const cmsToneCurve*, 3> curves; ///< To light; they belong to the profile.
};

enum class Way { fromPictures, toPictures };

/// Absent when the profile converts that way through tables, or not at all.
[[nodiscard]] std::optional<MatrixProfile> matrixProfileOf(cmsHPROFILE profile, Way way);

/// From light to levels of 8 bits, by the curves of an RGB profile. The light is looked up by the leading bits of its
/// floating-point form: that spends as many entries on each halving of the light, as curves need it, and costs a shift.
class LightEncoding {
public:
    /// Throws std::bad_alloc.
    explicit LightEncoding(const std::array<const cmsToneCurve*, 3>& curves);

    /// To be kept in a local variable of a loop: what the loop writes could otherwise have changed the tables' places.
    class Tables {
    public:
        explicit Tables(const LightEncoding& encoding)
            : red_(encoding.levels_[encoding.tables_[0]].data()), green_(encoding.levels_[encoding.tables_[1]].data()),
              blue_(encoding.levels_[encoding.tables_[2]].data())
        {
        }

        void store(Lanes light, std::byte* out) const
        {
            light = light > low ? light : low;
            light = light < high ? light : high;
            const IntegerLanes entry = (std::bit_cast<IntegerLanes>(light) >> droppedBits) - first;
            out[0] = std::byte{red_[entry[0]]};
            out[1] = std::byte{green_[entry[1]]};
            out[2] = std::byte{blue_[entry[2]]};
        }

    private:
        const std::uint8_t* red_;
        const std::uint8_t* green_;
        const std::uint8_t* blue_;
    };

private:
    static constexpr int droppedBits = 14;     ///< Leaves 9 bits: steps of a fifth of a level at the bright end.
    static constexpr float darkest = 0x1p-20F; ///< Half a level with the exponent of 2.2, the steepest in use.
    static constexpr float brightest = 0x1.fffffep-1F;
    static constexpr Lanes low{darkest, darkest, darkest, darkest};
    static constexpr Lanes high{brightest, brightest, brightest, brightest};
    static constexpr std::int32_t first = std::bit_cast<std::int32_t>(darkest) >> droppedBits;
    static constexpr std::int32_t last = std::bit_cast<std::int32_t>(brightest) >> droppedBits;
    using Table = std::array<std::uint8_t, std::size_t(last - first) + 1>;

    std::array<Table, 3> levels_;
    /// Which table each component uses: equal ones are read as one, so that it stays in the processor's nearest memory.
    std::array<std::size_t, 3> tables_{};
};

} // namespace ferrow
