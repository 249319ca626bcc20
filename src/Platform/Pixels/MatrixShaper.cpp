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

template <typename Component>
constexpr std::size_t decodingLength = sizeof(Component) == 1 ? 256 : 4096;

/// 16 bits are looked up by their upper 12: a sixteenth of a level of the result.
std::size_t decodingEntry(std::uint8_t value)
{
    return value;
}
std::size_t decodingEntry(std::uint16_t value)
{
    return value >> 4;
}

template <typename Source, typename Target>
class MatrixShaper final : public RowConverter {
public:
    /// `matrix` leads from the source's linear RGB to the target's. `decoding` leads to light, `encoding` from it.
    MatrixShaper(const Matrix& matrix, const std::array<const cmsToneCurve*, 3>& decoding,
                 const std::array<const cmsToneCurve*, 3>& encoding)
    {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            contributions_[channel].resize(entries);
            for (std::size_t entry = 0; entry < entries; ++entry)
                contributions_[channel][entry] = contribution(matrix, channel, lightOf(decoding[channel], entry));
            for (std::size_t entry = 0; entry < EncodingTable::length; ++entry)
                levels_[channel][entry] = static_cast<std::uint8_t>(std::lround(
                    within01(cmsEvalToneCurveFloat(encoding[channel], EncodingTable::lightOf(entry))) * 255));
        }
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        // Equal tables are read as one, so that they stay in the processor's nearest memory.
        const std::uint8_t* const red = levels_[0].data();
        const std::uint8_t* const green = levels_[1] == levels_[0] ? red : levels_[1].data();
        const std::uint8_t* const blue = levels_[2] == levels_[0] ? red : levels_[2].data();
        const Contribution* const fromRed = contributions_[0].data();
        const Contribution* const fromGreen = contributions_[1].data();
        const Contribution* const fromBlue = contributions_[2].data();
        const Lanes low = Lanes{} + EncodingTable::darkest;
        const Lanes high = Lanes{} + EncodingTable::brightest;
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            Lanes light = fromRed[decodingEntry(Source::component(in, 0))].lanes +
                          fromGreen[decodingEntry(Source::component(in, 1))].lanes +
                          fromBlue[decodingEntry(Source::component(in, 2))].lanes;
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
    using Component = typename Source::ComponentType;
    static constexpr std::size_t entries = decodingLength<Component>;

    /// What one component of a pixel adds to the light of the three of the result.
    struct Contribution {
        Lanes lanes;
    };

    static float lightOf(const cmsToneCurve* curve, std::size_t entry)
    {
        const double level =
            entries == 256 ? static_cast<double>(entry) / 255 : (static_cast<double>(entry) * 16 + 7.5) / 65535;
        return within01(cmsEvalToneCurveFloat(curve, static_cast<cmsFloat32Number>(level)));
    }

    static Contribution contribution(const Matrix& matrix, std::size_t channel, float light)
    {
        return {Lanes{static_cast<float>(matrix[0][channel]) * light, static_cast<float>(matrix[1][channel]) * light,
                      static_cast<float>(matrix[2][channel]) * light, 0}};
    }

    std::array<std::vector<Contribution>, 3> contributions_;
    std::array<EncodingTable::Table, 3> levels_;
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
