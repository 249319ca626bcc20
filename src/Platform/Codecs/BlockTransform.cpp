// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/BlockTransform.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace ferrow::BlockTransform {

namespace {

using Basis = std::array<std::array<double, side>, side>; ///< By frequency, then place.

const Basis& basis()
{
    static const Basis cosines = [] {
        Basis values{};
        for (std::size_t frequency = 0; frequency < side; ++frequency)
            for (std::size_t place = 0; place < side; ++place)
                values[frequency][place] =
                    (frequency == 0 ? std::sqrt(0.125) : 0.5) *
                    std::cos(double((2 * place + 1) * frequency) * std::numbers::pi / (2.0 * side));
        return values;
    }();
    return cosines;
}

/// One direction of a transform, and its transpose: applied twice it is both directions.
template <bool isForward>
Samples halfTransformed(const Samples& in)
{
    Samples out{};
    const Basis& cosines = basis();
    for (std::size_t row = 0; row < side; ++row)
        for (std::size_t to = 0; to < side; ++to) {
            double sum = 0;
            for (std::size_t from = 0; from < side; ++from)
                sum += in[row * side + from] * (isForward ? cosines[to][from] : cosines[from][to]);
            out[to * side + row] = sum;
        }
    return out;
}

std::int16_t quantized(double value, std::uint16_t step, int smallest, int largest)
{
    // A step of 0 makes nothing of anything.
    const double level = step == 0 ? 0 : std::nearbyint(value / step);
    return std::int16_t(std::clamp(level, double(smallest), double(largest)));
}

} // namespace

bool isCodable(const std::int16_t* coefficients)
{
    // Nearly all blocks hold small numbers alone, whose upper bits are all as their sign: four are looked at at once.
    constexpr std::uint64_t upperBits = 0xfc00'fc00'fc00'fc00;
    std::uint64_t changes = 0;
    for (std::size_t i = 0; i < area; i += 4) {
        std::uint64_t four = 0;
        std::memcpy(&four, coefficients + i, sizeof four);
        changes |= four ^ (four << 1);
    }
    if ((changes & upperBits) == 0)
        return true;
    const auto isBeyond = [](std::int16_t value, int smallest) {
        return std::uint16_t(value - smallest) > unsigned(largestAc - smallest);
    };
    unsigned beyond = isBeyond(coefficients[0], smallestDc);
    for (std::size_t i = 1; i < area; ++i)
        beyond |= unsigned(isBeyond(coefficients[i], -largestAc));
    return beyond == 0;
}

Samples samples(const std::int16_t* coefficients, const Table& table)
{
    Samples values{};
    for (std::size_t i = 0; i < area; ++i)
        values[i] = double(coefficients[i]) * table[i];
    return halfTransformed<false>(halfTransformed<false>(values));
}

Coefficients coefficients(const Samples& samples, const Table& table)
{
    const Samples values = halfTransformed<true>(halfTransformed<true>(samples));
    Coefficients result{};
    for (std::size_t i = 0; i < area; ++i)
        result[i] = quantized(values[i], table[i], i == 0 ? smallestDc : -largestAc, largestAc);
    return result;
}

std::int16_t flatLevel(double sample, std::uint16_t step)
{
    constexpr double smallest = -128;
    constexpr double largest = 127;
    const double value = sample * double(side);
    if (step != 0 && sample <= smallest)
        return quantized(std::floor(value / step), 1, smallestDc, largestAc);
    if (step != 0 && sample >= largest)
        return quantized(std::ceil(value / step), 1, smallestDc, largestAc);
    return quantized(value, step, smallestDc, largestAc);
}

Turn Turn::of(int orientation)
{
    return {.swaps = orientation >= 5,
            .fromBottom = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7,
            .fromRight = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8};
}

Coefficients turned(const std::int16_t* stored, const Turn& turn)
{
    // Seen from the other end, every other wave has its other sign.
    Coefficients result{};
    for (std::size_t row = 0; row < side; ++row)
        for (std::size_t column = 0; column < side; ++column) {
            const std::int16_t value = stored[row * side + column];
            const bool isNegated = ((turn.fromBottom ? row : 0) + (turn.fromRight ? column : 0)) % 2 == 1;
            result[turn.swaps ? column * side + row : row * side + column] = isNegated ? std::int16_t(-value) : value;
        }
    return result;
}

Table turned(const Table& stored, const Turn& turn)
{
    if (!turn.swaps)
        return stored;
    Table result{};
    for (std::size_t row = 0; row < side; ++row)
        for (std::size_t column = 0; column < side; ++column)
            result[column * side + row] = stored[row * side + column];
    return result;
}

} // namespace ferrow::BlockTransform
