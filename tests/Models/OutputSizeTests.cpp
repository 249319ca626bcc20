// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/OutputSize.h"

#include "Support/TestSupport.h"

#include <limits>

namespace ferrow {

TEST(OutputSize, scalesTheWholeFrameAndNeverEnlarges)
{
    struct Row {
        const char* name;
        OutputSize size;
        PixelSize full;
        PixelSize written;
    };
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    const Row rows[] = {
        {"full size", {}, {6240, 4240}, {6240, 4240}},
        {"long side", OutputSize::withLongSide(2048), {6240, 4240}, {2048, 1392}},
        {"long side, upright", OutputSize::withLongSide(2048), {4240, 6240}, {1392, 2048}},
        {"long side, half a pixel up", OutputSize::withLongSide(500), {1000, 1001}, {500, 500}},
        {"long side, small enough", OutputSize::withLongSide(2048), {2048, 3}, {2048, 3}},
        {"long side, enlarging", OutputSize::withLongSide(2048), {640, 480}, {640, 480}},
        {"long side, a panorama", OutputSize::withLongSide(2048), {30'000, 100}, {2048, 7}},
        {"long side, no side below a pixel", OutputSize::withLongSide(100), {30'000, 100}, {100, 1}},
        {"long side of a pixel", OutputSize::withLongSide(1), {6000, 4000}, {1, 1}},
        {"long side from an odd file", OutputSize::withLongSide(-5), {6000, 4000}, {1, 1}},
        {"box, its height", OutputSize::within({3840, 2160}), {6240, 4240}, {3179, 2160}},
        {"box, its width", OutputSize::within({2048, 1536}), {6240, 4240}, {2048, 1392}},
        {"box, upright in a lying one", OutputSize::within({2048, 1536}), {4240, 6240}, {1044, 1536}},
        {"box, enlarging one side", OutputSize::within({9000, 1000}), {6000, 4000}, {1500, 1000}},
        {"box from an odd file", OutputSize::within({most, 0}), {10, 10}, {1, 1}},
        {"megapixels", OutputSize::ofMegapixels(12), {6000, 4000}, {4242, 2828}},
        {"megapixels, exactly", OutputSize::ofMegapixels(6), {6000, 4000}, {3000, 2000}},
        {"megapixels, enlarging", OutputSize::ofMegapixels(24), {6000, 4000}, {6000, 4000}},
        {"megapixels, a panorama", OutputSize::ofMegapixels(0.01), {30'000, 100}, {1666, 6}},
        {"megapixels, a thread", OutputSize::ofMegapixels(0.01), {30'000, 1}, {10'000, 1}},
        {"megapixels from an odd file", OutputSize::ofMegapixels(-1), {1000, 1000}, {100, 100}},
    };
    for (const Row& row : rows) {
        const double scale = row.size.scaleFor(row.full);
        EXPECT_EQ((PixelSize{scaledSide(row.full.width, scale), scaledSide(row.full.height, scale)}), row.written)
            << row.name;
        EXPECT_LE(scale, 1) << row.name;
    }
}

} // namespace ferrow
