// SPDX-License-Identifier: GPL-3.0-or-later
// Processor time of loading a 280-pixel thumbnail with its metadata, over the codec's own decode at 1/8.
#include "BenchSupport.h"

#include "Engine/InProcessAnswerer.h"
#include "Imaging/ImageLoader.h"
#include "Platform/Pixels/ColorProfile.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

int main(int argc, char** argv)
{
    using namespace ferrow;
    using namespace ferrow::bench;
    const QCoreApplication application(argc, argv);
    Engine::setAnswerer(std::make_unique<Engine::InProcessAnswerer>());
    const ScratchFolder folder;
    const std::string path = folder.file("photo.jpg");
    writeSourceJpeg(path, {.icc = ColorProfile::sRGB().icc()});
    const FileUrl url = FileUrl::fromPath(QByteArray::fromStdString(path));

    constexpr int rounds = 20;
    double bare = 1e9;
    double loaded = 1e9;
    for (int round = 0; round < rounds; ++round) {
        double start = threadSeconds();
        bareEighthDecode(path);
        bare = std::min(bare, threadSeconds() - start);
        start = threadSeconds();
        (void)ImageLoader::loadBatchThumbnail(url);
        loaded = std::min(loaded, threadSeconds() - start);
    }
    std::printf("24-megapixel JPEG, best of %d: codec at 1/8 %.1f ms, thumbnail with metadata %.1f ms, ratio %.3f "
                "(target 1.25)\n",
                rounds, bare * 1e3, loaded * 1e3, loaded / bare);
    return 0;
}
