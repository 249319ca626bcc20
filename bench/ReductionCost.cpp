// SPDX-License-Identifier: GPL-3.0-or-later
// Processor time of reducing ten 24-megapixel JPEGs to 2,048 pixels with the whole companion, over that of another
// program for the same.
#include "BenchSupport.h"

#include "Platform/Pixels/ColorProfile.h"

#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace ferrow::bench;
using Words = std::vector<std::string>;

constexpr int photoCount = 10;
constexpr int rounds = 5;
constexpr double target = 0.7;

Words with(Words words, const Words& more)
{
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

} // namespace

int main()
{
    const std::string thumbnailer = QStandardPaths::findExecutable(QStringLiteral("vipsthumbnail")).toStdString();
    if (thumbnailer.empty()) {
        std::printf("Nothing to compare with: the program vipsthumbnail is not there (Debian: libvips-tools).\n");
        return 0;
    }
    const ScratchFolder sources;
    const ScratchFolder outputs;
    Words photos;
    for (int i = 0; i < photoCount; ++i)
        photos.push_back(sources.file("photo-" + std::to_string(i) + ".jpg"));
    writeSourceJpeg(photos.front(), {.icc = ferrow::ColorProfile::sRGB().icc()});
    for (std::size_t i = 1; i < photos.size(); ++i)
        std::filesystem::copy_file(photos.front(), photos[i]);

    const Words reference = with({thumbnailer, "--size", "2048", "--output", outputs.path() + "/%s.jpg[Q=90]"}, photos);
    const Words batch{batchProgram(), "--quiet",        "--long-side", "2048",     "--quality",
                      "0.9",          "--on-collision", "replace",     "--output", outputs.path()};
    const Words reduced = with(with(batch, {"--border", "0px", "--no-caption"}), photos);
    const Words framed = with(with(batch, {"--border", "120px", "--caption", "{camera} · {year}"}), photos);

    std::printf("Best of %d rounds, %d photos of 24 megapixels each, processor time of all processes\n", rounds,
                photoCount);
    double bare = 1e9;
    double alone = 1e9;
    double inFrame = 1e9;
    for (int round = 0; round < rounds; ++round) {
        bare = std::min(bare, processorSeconds(reference));
        alone = std::min(alone, processorSeconds(reduced));
        inFrame = std::min(inFrame, processorSeconds(framed));
    }
    std::printf("reduced alone                vipsthumbnail %.2f s, Ferrow %.2f s, ratio %.3f (target %.2f)\n", bare,
                alone, alone / bare, target);
    std::printf("with border and caption      Ferrow %.2f s, ratio %.3f\n", inFrame, inFrame / bare);
    return 0;
}
