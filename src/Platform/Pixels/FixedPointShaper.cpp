// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/FixedPointShaper.h"

#include "Platform/Pixels/LightEncoding.h"
#include "Platform/Pixels/PixelRows.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace ferrow {

namespace {

constexpr double mostLight = 65535;
/// In levels, that straight pieces may be off the curve.
constexpr double tolerance = 0.1;

using Curves = std::array<const cmsToneCurve*, 3>;
using Pieces = FixedPointShaping::Pieces;

/// By level. Absent where the components differ.
std::optional<std::array<std::uint16_t, 256>> lightOfAll(const Curves& curves)
{
    std::array<std::array<std::uint16_t, 256>, 3> light;
    for (std::size_t component = 0; component < light.size(); ++component)
        for (std::size_t level = 0; level < 256; ++level)
            light[component][level] =
                std::uint16_t(std::lround(lightOf(curves[component], double(level) / 255) * mostLight));
    return light[0] == light[1] && light[0] == light[2] ? std::optional(light[0]) : std::nullopt;
}

/// Absent when a coefficient, or what a row adds up to, has no room in its numbers.
std::optional<std::array<std::array<std::int16_t, 3>, 3>> fixedPoint(const Matrix& matrix)
{
    constexpr double one = 1 << FixedPointShaping::fractionBits;
    std::array<std::array<std::int16_t, 3>, 3> fixed;
    for (std::size_t row = 0; row < 3; ++row) {
        double above = 0;
        double below = 0;
        for (std::size_t column = 0; column < 3; ++column) {
            const double coefficient = std::nearbyint(matrix[row][column] * one);
            (coefficient < 0 ? below : above) += coefficient;
            if (!(below >= -32767 && above <= 32767))
                return std::nullopt;
            fixed[row][column] = std::int16_t(coefficient);
        }
    }
    return fixed;
}

/// False where the curve bends too much for it.
bool setPiece(Pieces& scale, std::size_t piece, int shift, const cmsToneCurve* curve)
{
    constexpr int points = 8;
    const auto exact = [&](int point) {
        const double light = double((piece * points + std::size_t(point)) << shift) / points;
        return lightOf(curve, std::min(1.0, light / mostLight)) * 255.0 * 256;
    };
    const double base = exact(0);
    const double rise = exact(points) - base;
    double above = 0;
    double below = 0;
    for (int point = 1; point < points; ++point) {
        const double bend = exact(point) - (base + rise * point / points);
        above = std::max(above, bend);
        below = std::min(below, bend);
    }
    // Half of the bend on either side; what is behind the point is cut off, of the product and of the sum.
    scale.bases[piece] = std::uint16_t(std::lround(std::max(0.0, base + (above + below) / 2) + 128));
    scale.rises[piece] = std::uint16_t(std::lround(std::max(0.0, rise)));
    return rise >= 0 && (above - below) / 2 <= tolerance * 256;
}

bool setPieces(FixedPointShaping& shaping, const cmsToneCurve* curve)
{
    bool fits = true;
    for (std::size_t piece = 0; piece < FixedPointShaping::pieces; ++piece) {
        fits &= setPiece(shaping.dark, piece, FixedPointShaping::darkShift, curve);
        // Those in the dark are never used.
        fits &= setPiece(shaping.bright, piece, FixedPointShaping::brightShift, curve) ||
                (piece << FixedPointShaping::brightShift) < FixedPointShaping::darkEnd;
    }
    return fits;
}

std::optional<FixedPointShaping> shapingFor(const Curves& decoding, const Matrix& matrix, const Curves& encoding)
{
    const auto light = lightOfAll(decoding);
    const auto fixedMatrix = fixedPoint(matrix);
    if (!light || !fixedMatrix || !lightOfAll(encoding))
        return std::nullopt;
    const LittleCms::Curve reversed(cmsReverseToneCurve(encoding[0]));
    if (!reversed)
        throw std::bad_alloc();
    FixedPointShaping shaping;
    for (std::size_t level = 0; level < light->size(); ++level) {
        const int centered = (*light)[level] - 32768;
        shaping.light.lower[level] = std::uint8_t(centered & 0xff);
        shaping.light.upper[level] = std::uint8_t((centered >> 8) & 0xff);
    }
    shaping.matrix = *fixedMatrix;
    return setPieces(shaping, reversed.get()) ? std::optional(shaping) : std::nullopt;
}

template <typename Source, typename Target>
class FixedPointRows final : public RowConverter {
public:
    explicit FixedPointRows(const FixedPointShaping& shaping) : shaping_(shaping)
    {
        constexpr std::int32_t half = 1 << (FixedPointShaping::fractionBits - 1);
        std::int32_t darkest = 0;
        std::int32_t brightest = 0;
        for (std::size_t row = 0; row < 3; ++row) {
            std::int32_t below = half;
            std::int32_t above = half;
            for (std::size_t column = 0; column < 3; ++column) {
                const std::int32_t coefficient = shaping.matrix[row][column];
                for (std::size_t level = 0; level < 256; ++level) {
                    const int light = int(std::int16_t(shaping.light.lower[level] | shaping.light.upper[level] << 8));
                    shares_[column][level].lanes[row] = coefficient * (light + 32768) + (column == 0 ? half : 0);
                }
                (coefficient < 0 ? below : above) += coefficient * std::int32_t(mostLight);
            }
            darkest = std::min(darkest, below >> FixedPointShaping::fractionBits);
            brightest = std::max(brightest, above >> FixedPointShaping::fractionBits);
        }
        black_ = std::size_t(-darkest);
        for (std::int32_t light = darkest; light <= brightest; ++light)
            levels_.push_back(shaping.level(std::uint16_t(std::clamp(light, 0, std::int32_t(mostLight)))));
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        if constexpr (!Source::hasAlpha && !Target::hasAlpha) {
            const std::size_t converted = shapeByVectors(shaping_, in, out, pixels);
            in += converted * Source::bytes;
            out += converted * Target::bytes;
            pixels -= converted;
        }
        const Share* const red = shares_[0].data();
        const Share* const green = shares_[1].data();
        const Share* const blue = shares_[2].data();
        const std::uint8_t* const levels = levels_.data() + black_;
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            const IntegerLanes light = (red[Source::component(in, 0)].lanes + green[Source::component(in, 1)].lanes +
                                        blue[Source::component(in, 2)].lanes) >>
                                       FixedPointShaping::fractionBits;
            out[0] = std::byte{levels[light[0]]};
            out[1] = std::byte{levels[light[1]]};
            out[2] = std::byte{levels[light[2]]};
            carryAlpha<Source, Target>(in, out);
        }
    }

private:
    /// What one component adds to the light of the three.
    struct Share {
        IntegerLanes lanes{};
    };

    FixedPointShaping shaping_;
    std::array<std::array<Share, 256>, 3> shares_;
    /// By light, that of other gamuts included, which is less than none or more than all.
    std::vector<std::uint8_t> levels_;
    std::size_t black_ = 0; ///< The place of the level of no light.
};

} // namespace

std::unique_ptr<RowConverter> fixedPointRows(const Curves& decoding, const Matrix& matrix, const Curves& encoding,
                                             PixelFormat source, PixelFormat target)
{
    if (source.bitsPerComponent != 8 || target.bitsPerComponent != 8)
        return nullptr;
    const auto shaping = shapingFor(decoding, matrix, encoding);
    if (!shaping)
        return nullptr;
    return withPixelTypes(source, target, [&]<typename Source, typename Target>() -> std::unique_ptr<RowConverter> {
        if constexpr (Source::isGray || !std::is_same_v<typename Source::ComponentType, std::uint8_t> ||
                      !std::is_same_v<typename Target::ComponentType, std::uint8_t>)
            return nullptr;
        else
            return std::make_unique<FixedPointRows<Source, Target>>(*shaping);
    });
}

} // namespace ferrow
