// SPDX-License-Identifier: GPL-3.0-or-later
// Apart from what reads pictures, which programs that only compare need not link.
#include "Engine/PictureSummary.h"

#include <algorithm>

namespace ferrow::Engine {

namespace {

/// How many levels a cell's means may move beside what its activity allows. What is flat moves by up to half a step in
/// which its brightness and its colors are counted, in all blocks alike. JPEG's steps are its library's; HEIC stays
/// below. Of 57 real photos framed at qualities from 0 to 1 none took more than 70 % of this.
double toleranceOf(double quality)
{
    constexpr double brightness = 16; // Steps at quality 0.5, in eighths of a level.
    constexpr double color = 17;
    constexpr double ofBlue = 1.772; // How much of its color channel blue takes, more than red and green.
    const double scale = quality < 0.5 ? 0.5 / std::max(quality, 0.01) : 2 - 2 * quality;
    const auto halfStep = [scale](double step) { return std::clamp(step * scale, 1.0, 255.0) / 8 / 2; };
    return 2 + 2 * (halfStep(brightness) + ofBlue * halfStep(color));
}

} // namespace

bool isSamePicture(const PictureSummary& written, const PictureSummary& read, ExportFormat format, double quality)
{
    PictureSummary roughlyWritten = written;
    const bool isUndecoded = format == ExportFormat::jpeg && written.pixels == PictureSums();
    if (isUndecoded || (supportsQuality(format) && areClose(written.pixels, read.pixels, toleranceOf(quality))))
        roughlyWritten.pixels = read.pixels;
    return roughlyWritten == read;
}

} // namespace ferrow::Engine
