// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ResampledRows.h"

#include <algorithm>
#include <array>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ferrow {

namespace {

// A level of 8 bits is 64 after the first pass: with the overshoot of the filter it fits 16 bits, with the weights of
// the second pass 32.
constexpr int fractionBits = 6;
constexpr int weightBits = 14;
static_assert(FilterAxis::fixedOne == 1 << weightBits);

/// The components of a row are worked on by as many at a time; a bitmap's rows are padded to it.
constexpr std::size_t block = 16;

/// Two rows at a time, each with its weight: what the processor multiplies and adds in one step.
struct RowPair {
    const std::byte* first;
    const std::byte* second;
    std::int16_t firstWeight;
    std::int16_t secondWeight;
};

void pairRows(const Bitmap& source, const FilterAxis& down, std::size_t y, std::vector<RowPair>& pairs)
{
    const FilterAxis::Window& window = down.window(y);
    const std::int16_t* weights = down.fixedWeights(y);
    pairs.clear();
    for (std::size_t tap = 0; tap < window.count; tap += 2) {
        const std::size_t next = std::min(tap + 1, window.count - 1); // Its weight is 0 where there is no other row.
        pairs.push_back({source.row(std::int64_t(window.first + tap)), source.row(std::int64_t(window.first + next)),
                         weights[tap], next == tap ? std::int16_t{0} : weights[next]});
    }
}

#if defined(__SSE2__)

void addUpBlock(const std::vector<RowPair>& pairs, std::size_t offset, std::int16_t* out)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i half = _mm_set1_epi32(1 << (weightBits - fractionBits - 1));
    __m128i sums[4] = {half, half, half, half};
    for (const RowPair& pair : pairs) {
        const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pair.first + offset));
        const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pair.second + offset));
        const __m128i weights = _mm_set1_epi32((pair.secondWeight * 65536) | std::uint16_t(pair.firstWeight));
        const __m128i low = _mm_unpacklo_epi8(first, second);
        const __m128i high = _mm_unpackhi_epi8(first, second);
        sums[0] = _mm_add_epi32(sums[0], _mm_madd_epi16(_mm_unpacklo_epi8(low, zero), weights));
        sums[1] = _mm_add_epi32(sums[1], _mm_madd_epi16(_mm_unpackhi_epi8(low, zero), weights));
        sums[2] = _mm_add_epi32(sums[2], _mm_madd_epi16(_mm_unpacklo_epi8(high, zero), weights));
        sums[3] = _mm_add_epi32(sums[3], _mm_madd_epi16(_mm_unpackhi_epi8(high, zero), weights));
    }
    constexpr int shift = weightBits - fractionBits;
    const auto store = [](std::int16_t* to, __m128i a, __m128i b) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                         _mm_packs_epi32(_mm_srai_epi32(a, shift), _mm_srai_epi32(b, shift)));
    };
    store(out + offset, sums[0], sums[1]);
    store(out + offset + 8, sums[2], sums[3]);
}

/// `count` is a multiple of FilterAxis::padding.
std::int32_t dotProduct(const std::int16_t* values, const std::int16_t* weights, std::size_t count)
{
    __m128i sum = _mm_setzero_si128();
    for (std::size_t i = 0; i < count; i += FilterAxis::padding)
        sum = _mm_add_epi32(sum, _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(values + i)),
                                                _mm_loadu_si128(reinterpret_cast<const __m128i*>(weights + i))));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(1, 0, 3, 2)));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(sum);
}

#else

void addUpBlock(const std::vector<RowPair>& pairs, std::size_t offset, std::int16_t* out)
{
    std::array<std::int32_t, block> sums;
    sums.fill(1 << (weightBits - fractionBits - 1));
    for (const RowPair& pair : pairs)
        for (std::size_t i = 0; i < block; ++i)
            sums[i] += std::to_integer<std::int32_t>(pair.first[offset + i]) * pair.firstWeight +
                       std::to_integer<std::int32_t>(pair.second[offset + i]) * pair.secondWeight;
    for (std::size_t i = 0; i < block; ++i)
        out[offset + i] = std::int16_t(std::clamp(sums[i] >> (weightBits - fractionBits), -32768, 32767));
}

std::int32_t dotProduct(const std::int16_t* values, const std::int16_t* weights, std::size_t count)
{
    std::int32_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += values[i] * weights[i];
    return sum;
}

#endif

std::byte roundedLevel(std::int32_t sum)
{
    constexpr int shift = fractionBits + weightBits;
    return static_cast<std::byte>(std::clamp((sum + (1 << (shift - 1))) >> shift, 0, 255));
}

template <std::size_t channels>
void addUpAcross(const std::vector<std::int16_t>& row, std::size_t width, const FilterAxis& across,
                 std::array<std::vector<std::int16_t>, channels>& planes, std::byte* out)
{
    for (std::size_t x = 0; x < width; ++x)
        for (std::size_t channel = 0; channel < channels; ++channel)
            planes[channel][x] = row[x * channels + channel];
    for (std::size_t x = 0; x < across.size(); ++x, out += channels) {
        const FilterAxis::Window& window = across.window(x);
        const std::size_t count = (window.count + FilterAxis::padding - 1) / FilterAxis::padding * FilterAxis::padding;
        for (std::size_t channel = 0; channel < channels; ++channel)
            out[channel] =
                roundedLevel(dotProduct(planes[channel].data() + window.first, across.fixedWeights(x), count));
        if constexpr (channels % 2 == 0) // The filter may overshoot in a color more than in alpha, which comes last.
            for (std::size_t channel = 0; channel + 1 < channels; ++channel)
                out[channel] = std::min(out[channel], out[channels - 1]);
    }
}

template <std::size_t channels>
void resample(const Bitmap& source, const FilterAxis& across, const FilterAxis& down, Bitmap& result)
{
    const auto width = std::size_t(source.size().width);
    const std::size_t components = (width * channels + block - 1) / block * block;
    std::vector<std::int16_t> row(components);
    std::array<std::vector<std::int16_t>, channels> planes;
    planes.fill(std::vector<std::int16_t>(width + FilterAxis::padding));
    std::vector<RowPair> pairs;
    for (std::size_t y = 0; y < down.size(); ++y) {
        pairRows(source, down, y, pairs);
        for (std::size_t offset = 0; offset < components; offset += block)
            addUpBlock(pairs, offset, row.data());
        addUpAcross<channels>(row, width, across, planes, result.row(std::int64_t(y)));
    }
}

} // namespace

void resampleFixed(const Bitmap& source, const FilterAxis& across, const FilterAxis& down, Bitmap& result)
{
    withChannels(source.format(), [&](auto channels) { resample<channels>(source, across, down, result); });
}

} // namespace ferrow
