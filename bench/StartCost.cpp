// SPDX-License-Identifier: GPL-3.0-or-later
// What it takes to begin: wall time of framing one photo with the whole companion, beside that of a process which does
// no more than the codec's part.
#include "BenchSupport.h"

#include "Platform/Pixels/ColorProfile.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace ferrow::bench;

constexpr int border = 120;
constexpr int rounds = 15;

double wallSeconds(const std::vector<std::string>& arguments)
{
    const auto start = std::chrono::steady_clock::now();
    (void)processorSeconds(arguments);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void measure(const char* label, const SourceOptions& options, const std::vector<std::string>& caption,
             const char* target)
{
    const ScratchFolder folder;
    const std::string source = folder.file("photo.jpg");
    writeSourceJpeg(source, options);
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    std::vector<double> bare;
    std::vector<double> framed;
    for (int round = 0; round < rounds; ++round) {
        bare.push_back(wallSeconds({self, "--bare", source, folder.file("bare.jpg")}));
        std::vector<std::string> words = caption;
        words.insert(words.begin(),
                     {batchProgram(), "--quiet", "--output", folder.file("out"), "--on-collision", "replace", source});
        framed.push_back(wallSeconds(words));
    }
    const auto median = [](std::vector<double>& seconds) {
        std::sort(seconds.begin(), seconds.end());
        return seconds[seconds.size() / 2];
    };
    const double codec = median(bare);
    const double all = median(framed);
    std::printf("%-22s codec %6.1f ms, framed %6.1f ms: ratio %.2f, %5.1f ms more (target %s)\n", label, codec * 1e3,
                all * 1e3, all / codec, (all - codec) * 1e3, target);
    std::fflush(stdout);
}

} // namespace

int main(int count, char** words)
{
    if (count == 4 && std::strcmp(words[1], "--bare") == 0) {
        bareFrameLoop(words[2], words[3], border);
        return 0;
    }
    std::printf("Medians of %d runs, wall time\n", rounds);
    const QByteArray srgb = ferrow::ColorProfile::sRGB().icc();
    const std::vector<std::string> none{"--no-caption"};
    const std::vector<std::string> some{"--caption", "{camera} · {year}"};
    const SourceOptions small{.width = 640, .height = 427, .icc = srgb};
    measure("24 MP", {.icc = srgb}, none, "1.25 times");
    measure("24 MP, with a caption", {.icc = srgb}, some, "1.25 times");
    measure("640 x 427", small, none, "40 ms more");
    measure("640 x 427, a caption", small, some, "40 ms more");
    return 0;
}
