// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/OutputSize.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

double scaleInto(PixelSize box, PixelSize full)
{
    const auto most = [](std::int64_t side) {
        return double(std::clamp<std::int64_t>(side, 1, OutputSize::mostPixels));
    };
    return std::min({most(box.width) / double(full.width), most(box.height) / double(full.height), 1.0});
}

/// The largest whole long side with which the picture stays within `most` pixels.
double scaleForArea(double most, PixelSize full)
{
    const double longest = double(full.longestSide());
    const double shorter = double(full.shorterSide());
    if (longest * shorter <= most)
        return 1;
    // No side is thinner than a pixel: then the other has all of them.
    double side = std::min({std::ceil(std::sqrt(most * longest / shorter)), std::floor(most), longest});
    while (side > 1 && side * double(scaledSide(full.shorterSide(), side / longest)) > most)
        --side;
    return side / longest;
}

} // namespace

OutputSize OutputSize::withLongSide(std::int64_t pixels)
{
    return {SizeLimit::longSide, {pixels, pixels}, 0};
}

OutputSize OutputSize::within(PixelSize box)
{
    return {SizeLimit::box, box, 0};
}

OutputSize OutputSize::ofMegapixels(double megapixels)
{
    return {SizeLimit::megapixels, {}, megapixels};
}

double OutputSize::scaleFor(PixelSize full) const
{
    switch (limit) {
    case SizeLimit::none:
        break;
    case SizeLimit::longSide:
    case SizeLimit::box:
        return scaleInto(box, full);
    case SizeLimit::megapixels:
        return scaleForArea(1e6 * std::clamp(megapixels, leastMegapixels, mostMegapixels), full);
    }
    return 1;
}

std::int64_t scaledSide(std::int64_t length, double scale)
{
    return std::max<std::int64_t>(std::llround(double(length) * scale), 1);
}

void feed(ValueHash& hash, const OutputSize& size)
{
    feed(hash, size.limit);
    feed(hash, size.box.width);
    feed(hash, size.box.height);
    feed(hash, size.megapixels);
}

} // namespace ferrow
