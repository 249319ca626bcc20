// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/Matrix.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

namespace ferrow {

/// Four numbers side by side, the last unused. Compilers turn the arithmetic on them into single instructions.
using Lanes = float __attribute__((vector_size(16)));
using IntegerLanes = std::int32_t __attribute__((vector_size(16)));

[[nodiscard]] Lanes columnOf(const Matrix& matrix, std::size_t column);

/// A curve's value, within 0…1.
[[nodiscard]] float lightOf(const cmsToneCurve* curve, double level);
/// The same in double precision, with straight lines between a table's values. The library rounds tables to 16 bits and
/// formulas to single precision, which is too coarse for levels of 16 bits in the dark.
[[nodiscard]] double preciseLightOf(const cmsToneCurve* curve, double level);

/// Curves and matrix of an RGB profile that has nothing else for the given way.
struct MatrixProfile {
    Matrix colorants;                          ///< From linear RGB to the D50 connection space.
    std::array<const cmsToneCurve*, 3> curves; ///< To light; they belong to the profile.
};

enum class Way { fromPictures, toPictures };

/// Absent when the profile converts that way through tables, or not at all.
[[nodiscard]] std::optional<MatrixProfile> matrixProfileOf(cmsHPROFILE profile, Way way);

/// From light to levels of 8 or 16 bits, by the curves of an RGB profile. The light is looked up by the leading bits of
/// its floating-point form: that spends as many entries on each halving of the light, as curves need it, and costs a
/// shift.
template <typename Component>
class LightEncoding;

template <>
class LightEncoding<std::uint8_t> {
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

/// Straight between the entries: within a hundredth of a level of a smooth curve, before it is rounded.
template <>
class LightEncoding<std::uint16_t> {
public:
    /// Throws std::bad_alloc.
    explicit LightEncoding(const std::array<const cmsToneCurve*, 3>& curves);

    class Tables {
    public:
        explicit Tables(const LightEncoding& encoding)
            : red_(encoding.table(0)), green_(encoding.table(1)), blue_(encoding.table(2))
        {
        }

        void store(Lanes light, std::byte* out) const
        {
            light = light > low ? light : low;
            light = light < high ? light : high;
            const auto bits = std::bit_cast<IntegerLanes>(light);
            const IntegerLanes entry = (bits >> droppedBits) - first;
            const Lanes part = __builtin_convertvector(bits & partMask, Lanes) * (1.0F / (1 << droppedBits));
            const float* const red = red_ + entry[0];
            const float* const green = green_ + entry[1];
            const float* const blue = blue_ + entry[2];
            const Lanes before{red[0], green[0], blue[0], 0};
            const Lanes behind{red[1], green[1], blue[1], 0};
            // Half a level for rounding is in the tables.
            const auto level = __builtin_convertvector(before + (behind - before) * part, IntegerLanes);
            const std::array<std::uint16_t, 3> levels{std::uint16_t(level[0]), std::uint16_t(level[1]),
                                                      std::uint16_t(level[2])};
            std::memcpy(out, levels.data(), sizeof levels);
        }

    private:
        const float* red_;
        const float* green_;
        const float* blue_;
    };

private:
    static constexpr int droppedBits = 13;     ///< Leaves 10 bits: 1,024 entries to a halving.
    static constexpr float darkest = 0x1p-52F; ///< Half a level with an exponent of 3, steeper than any in use.
    static constexpr float brightest = 0x1.fffffep-1F;
    static constexpr Lanes low{darkest, darkest, darkest, darkest};
    static constexpr Lanes high{brightest, brightest, brightest, brightest};
    static constexpr std::int32_t partMask = (1 << droppedBits) - 1;
    static constexpr std::int32_t first = std::bit_cast<std::int32_t>(darkest) >> droppedBits;
    static constexpr std::int32_t last = std::bit_cast<std::int32_t>(1.0F) >> droppedBits;

    [[nodiscard]] const float* table(std::size_t channel) const { return levels_[tables_[channel]].data(); }

    std::array<std::vector<float>, 3> levels_;
    std::array<std::size_t, 3> tables_{};
};

} // namespace ferrow
