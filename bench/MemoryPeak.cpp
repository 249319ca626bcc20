// SPDX-License-Identifier: GPL-3.0-or-later
// Highest proportional set size of the companion with one job, for sources of several sizes and layouts. Usage:
// MemoryPeak [PART]: only of those whose name holds PART.
#include "BenchSupport.h"

#include "Platform/Pixels/ColorProfile.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace ferrow::bench;

std::string part;

void measure(const char* label, const SourceOptions& options, const char* format, const char* target,
             const std::vector<std::string>& frame = {}, bool isFromHeic = false)
{
    if (std::string(label).find(part) == std::string::npos)
        return;
    const ScratchFolder folder;
    std::string source = folder.file("photo.jpg");
    writeSourceJpeg(source, options);
    if (isFromHeic) {
        (void)processorSeconds({batchProgram(), "--quiet", "--border", "0px", "--no-caption", "--format", "heic",
                                "--output", folder.file("heic"), source});
        source = folder.file("heic/photo_framed.heic");
    }
    std::vector<std::string> words = frame;
    words.insert(words.begin(), {batchProgram(), "--quiet", "--jobs", "1", "--format", format, "--caption",
                                 "{camera} · {year}", "--output", folder.file("out"), source});
    const double peak = peakMegabytes(words);
    const double bitmap = double(options.width) * double(options.height) * 3 / 1e6;
    std::printf("%-34s peak %7.1f MB (its bitmap would be %.0f MB; target %s)\n", label, peak, bitmap, target);
    std::fflush(stdout);
}

} // namespace

int main(int count, char** words)
{
    if (count > 1)
        part = words[1];
    const QByteArray srgb = ferrow::ColorProfile::sRGB().icc();
    measure("24 MP baseline to JPEG", {.icc = srgb}, "jpeg", "80 MB");
    measure("193 MP baseline to JPEG", {.width = 16'200, .height = 11'900, .icc = srgb}, "jpeg", "80 MB");
    const std::vector<std::string> kept{"--quality", "keep"};
    measure("24 MP baseline, data kept", {.icc = srgb}, "jpeg", "80 MB", kept);
    // With the usual border on its blocks it would be more than an output may be, and coded anew.
    measure("193 MP baseline, data kept", {.width = 16'200, .height = 11'900, .icc = srgb}, "jpeg", "80 MB",
            {"--quality", "keep", "--border", "16px"});
    measure("24 MP turned, data kept", {.orientation = 6, .icc = srgb}, "jpeg", "80 + 72 MB", kept);
    const std::vector<std::string> all{"--background", "blur:0,25", "--line",        "6px,48px,#c8a96a",
                                       "--corners",    "3%",        "--photo-shadow"};
    measure("24 MP with all around it", {.icc = srgb}, "jpeg", "80 MB", all);
    measure("193 MP with all around it", {.width = 16'200, .height = 11'900, .icc = srgb}, "jpeg", "80 MB", all);
    measure("24 MP baseline to PNG", {.icc = srgb}, "png", "80 MB");
    measure("24 MP baseline to TIFF", {.icc = srgb}, "tiff", "80 MB");
    measure("24 MP baseline to 16-bit PNG", {.icc = srgb}, "png", "80 MB", {"--depth", "16", "--profile", "p3"});
    measure("24 MP baseline to 16-bit TIFF", {.icc = srgb}, "tiff", "80 MB", {"--depth", "16", "--profile", "p3"});
    measure("24 MP turned to JPEG", {.orientation = 6, .icc = srgb}, "jpeg", "80 + 72 MB");
    measure("24 MP progressive to JPEG", {.progressive = true, .icc = srgb}, "jpeg", "80 MB + coefficients");
    measure("24 MP baseline to 2,048 pixels", {.icc = srgb}, "jpeg", "80 MB", {"--long-side", "2048"});
    measure("193 MP baseline to 2,048 pixels", {.width = 16'200, .height = 11'900, .icc = srgb}, "jpeg", "80 MB",
            {"--long-side", "2048"});
    measure("24 MP turned to 2,048 pixels", {.orientation = 6, .icc = srgb}, "jpeg", "80 MB", {"--long-side", "2048"});
    // Where the library reads and writes tiles; else it holds whole pictures.
    const char* inTiles = "150 MB by tiles, else the codec + 100 MB";
    measure("24 MP baseline to HEIC", {.icc = srgb}, "heic", inTiles);
    measure("193 MP baseline to HEIC", {.width = 16'200, .height = 11'900, .icc = srgb}, "heic", inTiles);
    measure("24 MP HEIC to JPEG", {.icc = srgb}, "jpeg", inTiles, {}, true);
    measure("193 MP HEIC to JPEG", {.width = 16'200, .height = 11'900, .icc = srgb}, "jpeg", inTiles, {}, true);
    return 0;
}
