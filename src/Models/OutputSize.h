// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/ValueHash.h"
#include "Platform/Base/PixelSize.h"

#include <cstdint>

namespace ferrow {

enum class SizeLimit { none, longSide, box, megapixels };

/// How large an export is written: the whole frame in proportion, and never larger than it is at full size. Numbers
/// from a file may be anything; what is beyond these ranges counts as the nearest within.
struct OutputSize {
    static constexpr std::int64_t mostPixels = 50'000; ///< A side, from 1 on.
    static constexpr double leastMegapixels = 0.01;
    static constexpr double mostMegapixels = 200;

    SizeLimit limit = SizeLimit::none;
    PixelSize box = {};    ///< A square for the long side.
    double megapixels = 0; ///< Millions of pixels.

    [[nodiscard]] static OutputSize withLongSide(std::int64_t pixels);
    [[nodiscard]] static OutputSize within(PixelSize box);
    [[nodiscard]] static OutputSize ofMegapixels(double megapixels);

    /// What a frame that is `full` at full size is scaled by; at most 1. Both sides of `full` at least 1.
    [[nodiscard]] double scaleFor(PixelSize full) const;

    bool operator==(const OutputSize&) const = default;
};

/// A side of `length` pixels at that scale: rounded to nearest, at least 1.
[[nodiscard]] std::int64_t scaledSide(std::int64_t length, double scale);

template <>
struct CodedCases<SizeLimit> {
    static constexpr std::array<CodedCase<SizeLimit>, 4> table{{{SizeLimit::none, u"Full Size"},
                                                                {SizeLimit::longSide, u"Long Side"},
                                                                {SizeLimit::box, u"Fit Within"},
                                                                {SizeLimit::megapixels, u"Megapixels"}}};
};

void feed(ValueHash& hash, const OutputSize& size);

} // namespace ferrow

template <>
struct std::hash<ferrow::OutputSize> : ferrow::ValueHasher {
};
