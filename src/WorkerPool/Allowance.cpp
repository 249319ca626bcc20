// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/JobClock.h"

namespace ferrow::WorkerPool::Allowance {

namespace {

constexpr std::int64_t millisecondsPerDecodedMegapixel = 200;
constexpr std::int64_t millisecondsPerDecodedHeifMegapixel = 1'000;
constexpr std::int64_t millisecondsPerEncodedMegapixel = 300;
constexpr std::int64_t millisecondsPerEncodedHeifMegapixel = 4'000;

Duration share(std::int64_t pixels, std::int64_t millisecondsPerMegapixel)
{
    return Duration(pixels / 1000 * millisecondsPerMegapixel / 1000);
}

} // namespace

Duration decoding(std::int64_t pixels, bool isHeif)
{
    return share(pixels, isHeif ? millisecondsPerDecodedHeifMegapixel : millisecondsPerDecodedMegapixel);
}

Duration encoding(PixelSize canvas, ExportFormat format)
{
    return share(canvas.width * canvas.height,
                 format == ExportFormat::heic ? millisecondsPerEncodedHeifMegapixel : millisecondsPerEncodedMegapixel);
}

} // namespace ferrow::WorkerPool::Allowance
