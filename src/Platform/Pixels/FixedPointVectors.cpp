// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/FixedPointShaper.h"

#if defined(__x86_64__)

#include <immintrin.h>

namespace ferrow {

namespace {

using Shaping = FixedPointShaping;

// Arithmetic is written as such where compilers know vectors: their headers' functions for it warn of themselves.
using Words = std::uint16_t __attribute__((vector_size(64)));
using Integers = std::int32_t __attribute__((vector_size(64)));

constexpr int pixelsAtOnce = 16;
constexpr int bytesAtOnce = 3 * pixelsAtOnce;

using Order = std::array<std::uint8_t, 64>;

/// For each pixel four bytes: the light of the components `first` and `second`, from lower bytes (0…63) and upper ones
/// (64…127) of pixels that follow one another.
constexpr Order pairsOf(int first, int second)
{
    Order order{};
    for (int pixel = 0; pixel < pixelsAtOnce; ++pixel) {
        const std::size_t at = std::size_t(pixel) * 4;
        order[at] = std::uint8_t(3 * pixel + first);
        order[at + 1] = std::uint8_t(64 + 3 * pixel + first);
        order[at + 2] = std::uint8_t(3 * pixel + second);
        order[at + 3] = std::uint8_t(64 + 3 * pixel + second);
    }
    return order;
}

/// Where pixel 0…31 lies among words that were packed out of two times 16 integers: four of the first and four of the
/// second by turns.
constexpr int packedPlace(int pixel)
{
    const int inHalf = pixel % pixelsAtOnce;
    return inHalf / 4 * 8 + inHalf % 4 + (pixel < pixelsAtOnce ? 0 : 4);
}

/// Bytes of RGB from `first` on, out of words with red and green (0…63) and words with blue in their upper byte
/// (64…127).
constexpr Order interleavedFrom(int first)
{
    Order order{};
    for (int i = 0; i < 64 && first + i < 2 * bytesAtOnce; ++i) {
        const int place = 2 * packedPlace((first + i) / 3);
        const int component = (first + i) % 3;
        order[std::size_t(i)] = std::uint8_t(component == 2 ? 64 + place + 1 : place + component);
    }
    return order;
}

/// A whole register holds 64 bytes or 32 words, an instruction looks up in two: tables of 64 words, and of 256 bytes in
/// two steps.
__attribute__((target("avx512bw,avx512vbmi"))) std::size_t shapeBy512Bits(const Shaping& shaping, const std::byte* in,
                                                                          std::byte* out, std::size_t pixels)
{
    alignas(64) static constexpr Order redGreenOrder = pairsOf(0, 1);
    alignas(64) static constexpr Order blueOrder = pairsOf(2, 2);
    alignas(64) static constexpr Order firstOrder = interleavedFrom(0);
    alignas(64) static constexpr Order lastOrder = interleavedFrom(64);
    constexpr __mmask64 fullBytes = (__mmask64{1} << bytesAtOnce) - 1;
    constexpr std::size_t step = 2 * pixelsAtOnce;

    __m512i lower[4];
    __m512i upper[4];
    for (int quarter = 0; quarter < 4; ++quarter) {
        lower[quarter] = _mm512_load_si512(shaping.light.lower.data() + quarter * 64);
        upper[quarter] = _mm512_load_si512(shaping.light.upper.data() + quarter * 64);
    }
    __m512i redGreenShare[3];
    __m512i blueShare[3];
    Integers offset[3];
    for (std::size_t row = 0; row < 3; ++row) {
        const auto [red, green, blue] = shaping.matrix[row];
        redGreenShare[row] = _mm512_set1_epi32(int(std::uint32_t(std::uint16_t(red)) | std::uint32_t(green) << 16));
        blueShare[row] = _mm512_set1_epi32(std::uint16_t(blue)); // Once alone of the two.
        const std::int32_t centering = (red + green + blue) * 32768 + (1 << (Shaping::fractionBits - 1));
        offset[row] = Integers{} + centering;
    }
    __m512i darkBase[2];
    __m512i darkRise[2];
    __m512i brightBase[2];
    __m512i brightRise[2];
    for (int half = 0; half < 2; ++half) {
        darkBase[half] = _mm512_load_si512(shaping.dark.bases.data() + half * 32);
        darkRise[half] = _mm512_load_si512(shaping.dark.rises.data() + half * 32);
        brightBase[half] = _mm512_load_si512(shaping.bright.bases.data() + half * 32);
        brightRise[half] = _mm512_load_si512(shaping.bright.rises.data() + half * 32);
    }
    const __m512i redGreen = _mm512_load_si512(redGreenOrder.data());
    const __m512i blueTwice = _mm512_load_si512(blueOrder.data());
    const __m512i firstBytes = _mm512_load_si512(firstOrder.data());
    const __m512i lastBytes = _mm512_load_si512(lastOrder.data());
    const __m512i darkEnd = _mm512_set1_epi16(Shaping::darkEnd);

    std::size_t done = 0;
    for (; pixels - done >= step; done += step, in += 2 * bytesAtOnce, out += 2 * bytesAtOnce) {
        __m512i sums[3][2];
        for (int half = 0; half < 2; ++half) {
            const __m512i source = _mm512_maskz_loadu_epi8(fullBytes, in + half * bytesAtOnce);
            const __mmask64 isUpper = _mm512_movepi8_mask(source);
            const __m512i lowerLight =
                _mm512_mask_blend_epi8(isUpper, _mm512_permutex2var_epi8(lower[0], source, lower[1]),
                                       _mm512_permutex2var_epi8(lower[2], source, lower[3]));
            const __m512i upperLight =
                _mm512_mask_blend_epi8(isUpper, _mm512_permutex2var_epi8(upper[0], source, upper[1]),
                                       _mm512_permutex2var_epi8(upper[2], source, upper[3]));
            const __m512i redGreenLight = _mm512_permutex2var_epi8(lowerLight, redGreen, upperLight);
            const __m512i blueLight = _mm512_permutex2var_epi8(lowerLight, blueTwice, upperLight);
            for (int row = 0; row < 3; ++row) {
                const Integers sum = Integers(_mm512_madd_epi16(redGreenLight, redGreenShare[row])) +
                                     Integers(_mm512_madd_epi16(blueLight, blueShare[row])) + offset[row];
                sums[row][half] = __m512i(sum >> Shaping::fractionBits);
            }
        }
        Words levels[3]; // In their upper bytes.
        for (int row = 0; row < 3; ++row) {
            const __m512i ofLight = _mm512_packus_epi32(sums[row][0], sums[row][1]);
            const __mmask32 isBright = _mm512_cmpge_epu16_mask(ofLight, darkEnd);
            const auto darkPiece = __m512i(Words(ofLight) >> Shaping::darkShift);
            const auto brightPiece = __m512i(Words(ofLight) >> Shaping::brightShift);
            const auto part = _mm512_mask_blend_epi16(isBright, __m512i(Words(ofLight) << (16 - Shaping::darkShift)),
                                                      __m512i(Words(ofLight) << (16 - Shaping::brightShift)));
            const __m512i base =
                _mm512_mask_blend_epi16(isBright, _mm512_permutex2var_epi16(darkBase[0], darkPiece, darkBase[1]),
                                        _mm512_permutex2var_epi16(brightBase[0], brightPiece, brightBase[1]));
            const __m512i rise =
                _mm512_mask_blend_epi16(isBright, _mm512_permutex2var_epi16(darkRise[0], darkPiece, darkRise[1]),
                                        _mm512_permutex2var_epi16(brightRise[0], brightPiece, brightRise[1]));
            levels[row] = Words(base) + Words(_mm512_mulhi_epu16(rise, part));
        }
        const auto redGreenLevels = __m512i((levels[0] >> 8) | (levels[1] & 0xff00));
        const auto blueLevels = __m512i(levels[2]);
        _mm512_storeu_si512(out, _mm512_permutex2var_epi8(redGreenLevels, firstBytes, blueLevels));
        _mm512_mask_storeu_epi8(out + 64, (__mmask64{1} << (2 * bytesAtOnce - 64)) - 1,
                                _mm512_permutex2var_epi8(redGreenLevels, lastBytes, blueLevels));
    }
    return done;
}

} // namespace

std::size_t shapeByVectors(const FixedPointShaping& shaping, const std::byte* in, std::byte* out, std::size_t pixels)
{
    // Narrower vectors have no table of 64 words to look up in.
    static const bool has512Bits = __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi");
    return has512Bits ? shapeBy512Bits(shaping, in, out, pixels) : 0;
}

} // namespace ferrow

#else

namespace ferrow {

std::size_t shapeByVectors(const FixedPointShaping&, const std::byte*, std::byte*, std::size_t)
{
    return 0;
}

} // namespace ferrow

#endif
