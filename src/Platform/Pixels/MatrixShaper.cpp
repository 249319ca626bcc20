// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/MatrixShaper.h"

#include "Platform/Pixels/Matrix.h"
#include "Platform/Pixels/PixelRows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <vector>

namespace ferrow {

namespace {

constexpr std::array curveTags{cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};

/// Four components side by side, the last unused. Compilers turn the arithmetic on them into single instructions.
using Lanes = float __attribute__((vector_size(16)));
using IntegerLanes = std::int32_t __attribute__((vector_size(16)));

/// Encoded levels by light, where the light is looked up by the leading bits of its floating-point form: that spends
/// as many entries on each halving of the light, as curves need it, and costs a shift.
namespace EncodingTable {
constexpr int droppedBits = 14; ///< Leaves 9 bits below the leading one: steps of a fifth of a level at the bright end.
constexpr float darkest = 0x1p-20F; ///< Half a level with the exponent of 2.2, which is the steepest in use.
constexpr float brightest = 0x1.fffffep-1F;
constexpr std::int32_t first = std::bit_cast<std::int32_t>(darkest) >> droppedBits;
constexpr std::int32_t last = std::bit_cast<std::int32_t>(brightest) >> droppedBits;
constexpr std::size_t length = static_cast<std::size_t>(last - first) + 1;

using Table = std::array<std::uint8_t, length>;

/// The light in the middle of an entry.
float lightOf(std::size_t entry)
{
    const auto bits = static_cast<std::int32_t>(entry) + first;
    return std::bit_cast<float>((bits << droppedBits) | (1 << (droppedBits - 1)));
}
} // namespace EncodingTable

float within01(float value)
{
    return value > 0 ? std::min(value, 1.0F) : 0.0F; // Not a number becomes 0 as well.
}

float lightOf(const cmsToneCurve* curve, double level)
{
    return within01(cmsEvalToneCurveFloat(curve, static_cast<cmsFloat32Number>(level)));
}

/// From one component of a pixel to what it adds to the light of the three of the result.
template <typename Component>
class Decoding;

template <>
class Decoding<std::uint8_t> {
public:
    Decoding(const cmsToneCurve* curve, Lanes column) : table_(256)
    {
        for (std::size_t level = 0; level < table_.size(); ++level)
            table_[level].lanes = column * lightOf(curve, static_cast<double>(level) / 255);
    }

    [[nodiscard]] Lanes operator()(std::uint8_t level) const { return table_[level].lanes; }

private:
    struct Entry {
        Lanes lanes;
    };
    std::vector<Entry> table_;
};

/// Between points of the curve, since a table of all levels would not stay near the processor.
template <>
class Decoding<std::uint16_t> {
public:
    Decoding(const cmsToneCurve* curve, Lanes column) : points_((65536 >> stepBits) + 1), column_(column)
    {
        for (std::size_t point = 0; point < points_.size(); ++point)
            points_[point] = lightOf(curve, std::min(1.0, static_cast<double>(point << stepBits) / 65535));
    }

    [[nodiscard]] Lanes operator()(std::uint16_t level) const
    {
        const float* point = points_.data() + (level >> stepBits);
        const float part = static_cast<float>(level & ((1 << stepBits) - 1)) / (1 << stepBits);
        return column_ * (point[0] + (point[1] - point[0]) * part);
    }

private:
    static constexpr int stepBits = 4;
    std::vector<float> points_;
    Lanes column_;
};

Lanes columnOf(const Matrix& matrix, std::size_t column)
{
    return Lanes{static_cast<float>(matrix[0][column]), static_cast<float>(matrix[1][column]),
                 static_cast<float>(matrix[2][column]), 0};
}

template <typename Source, typename Target>
class MatrixShaper final : public RowConverter {
public:
    /// `matrix` leads from the source's linear RGB to the target's. `decoding` leads to light, `encoding` from it.
    MatrixShaper(const Matrix& matrix, const std::array<const cmsToneCurve*, 3>& decoding,
                 const std::array<const cmsToneCurve*, 3>& encoding)
        : red_(decoding[0], columnOf(matrix, 0)), green_(decoding[1], columnOf(matrix, 1)),
          blue_(decoding[2], columnOf(matrix, 2))
    {
        for (std::size_t channel = 0; channel < 3; ++channel)
            for (std::size_t entry = 0; entry < EncodingTable::length; ++entry)
                levels_[channel][entry] = static_cast<std::uint8_t>(
                    std::lround(lightOf(encoding[channel], EncodingTable::lightOf(entry)) * 255));
        for (std::size_t channel = 1; channel < 3; ++channel)
            tables_[channel] = levels_[channel] == levels_[0] ? 0 : channel;
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        const std::uint8_t* const red = levels_[tables_[0]].data();
        const std::uint8_t* const green = levels_[tables_[1]].data();
        const std::uint8_t* const blue = levels_[tables_[2]].data();
        const Lanes low = Lanes{} + EncodingTable::darkest;
        const Lanes high = Lanes{} + EncodingTable::brightest;
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            Lanes light =
                red_(Source::component(in, 0)) + green_(Source::component(in, 1)) + blue_(Source::component(in, 2));
            light = light > low ? light : low;
            light = light < high ? light : high;
            const IntegerLanes entry =
                (std::bit_cast<IntegerLanes>(light) >> EncodingTable::droppedBits) - EncodingTable::first;
            out[0] = std::byte{red[entry[0]]};
            out[1] = std::byte{green[entry[1]]};
            out[2] = std::byte{blue[entry[2]]};
            carryAlpha<Source, Target>(in, out);
        }
    }

private:
    Decoding<typename Source::ComponentType> red_;
    Decoding<typename Source::ComponentType> green_;
    Decoding<typename Source::ComponentType> blue_;
    std::array<EncodingTable::Table, 3> levels_;
    /// Which of them each component uses: equal ones are read as one, so that it stays in the processor's nearest
    /// memory.
    std::array<std::size_t, 3> tables_{};
};

std::optional<std::array<const cmsToneCurve*, 3>> curvesOf(cmsHPROFILE profile)
{
    std::array<const cmsToneCurve*, 3> curves{};
    for (std::size_t channel = 0; channel < curves.size(); ++channel) {
        curves[channel] = static_cast<const cmsToneCurve*>(cmsReadTag(profile, curveTags[channel]));
        if (!curves[channel])
            return std::nullopt;
    }
    return curves;
}

bool hasTables(cmsHPROFILE profile, std::initializer_list<cmsTagSignature> tags)
{
    return std::ranges::any_of(tags, [&](cmsTagSignature tag) { return cmsIsTag(profile, tag) != 0; });
}

} // namespace

std::unique_ptr<RowConverter> shapedRows(cmsHPROFILE from, PixelFormat source, cmsHPROFILE to, PixelFormat target)
{
    if (source.model != ColorModel::rgb || hasTables(from, {cmsSigAToB0Tag, cmsSigAToB1Tag}) ||
        hasTables(to, {cmsSigBToA0Tag, cmsSigBToA1Tag}))
        return nullptr;
    const std::optional<Matrix> fromColorants = colorantsOf(from);
    const std::optional<Matrix> toColorants = colorantsOf(to);
    const auto decoding = curvesOf(from);
    const auto encoding = curvesOf(to);
    if (!fromColorants || !toColorants || !decoding || !encoding)
        return nullptr;
    const std::optional<Matrix> back = inverse(*toColorants);
    if (!back)
        return nullptr;
    std::array<LittleCms::Curve, 3> reversed;
    for (std::size_t channel = 0; channel < reversed.size(); ++channel) {
        reversed[channel].reset(cmsReverseToneCurve((*encoding)[channel]));
        if (!reversed[channel])
            return nullptr;
    }
    const Matrix matrix = product(*back, *fromColorants);
    return withPixelTypes(source, target, [&]<typename Source, typename Target>() -> std::unique_ptr<RowConverter> {
        if constexpr (Source::isGray)
            return nullptr;
        else
            return std::make_unique<MatrixShaper<Source, Target>>(
                matrix, *decoding,
                std::array<const cmsToneCurve*, 3>{reversed[0].get(), reversed[1].get(), reversed[2].get()});
    });
}

} // namespace ferrow
