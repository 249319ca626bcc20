// SPDX-License-Identifier: GPL-3.0-or-later
// What it costs to have every written file read back: processor time of framing with that less the time without, over
// the time that strict decoding of what was written takes in this process.
#include "BenchSupport.h"

#include "Platform/Codecs/FileType.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Files/FileAccess.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>
#include <vector>

namespace {

using namespace ferrow;

constexpr int photos = 4;
constexpr int rounds = 3;
constexpr double target = 1.0;

/// Processor seconds of this thread.
double strictDecode(const std::string& path)
{
    const OpenedFile file = OpenedFile::open(FileUrl::fromPath(QByteArray::fromStdString(path)));
    const ByteSource source = file.source();
    const double before = bench::threadSeconds();
    const auto decoder = openDecoder(*detectFileType(source)->type, source, {.tolerance = Tolerance::strict});
    constexpr std::int64_t band = 64;
    const auto stride = std::size_t(decoder->size().width * decoder->format().bytesPerPixel());
    std::vector<std::byte> rows(stride * std::size_t(band));
    for (std::int64_t y = 0; y < decoder->size().height; y += band)
        decoder->readRows(std::min(band, decoder->size().height - y), rows.data(), stride);
    decoder->finish();
    return bench::threadSeconds() - before;
}

void measure(const char* format, const char* extension)
{
    const bench::ScratchFolder folder;
    std::filesystem::create_directory(folder.file("photos"));
    bench::writeSourceJpeg(folder.file("photos/0.jpg"), {});
    for (int i = 1; i < photos; ++i)
        std::filesystem::copy_file(folder.file("photos/0.jpg"), folder.file("photos/" + std::to_string(i) + ".jpg"));
    const auto framing = [&](std::vector<std::string> options) {
        std::vector<std::string> arguments{
            bench::batchProgram(), "--no-caption", "--format", format,   "--on-collision", "replace", "--output",
            folder.file("framed"), "--jobs",       "1",        "--quiet"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.push_back(folder.file("photos"));
        return bench::processorSeconds(arguments) / photos;
    };
    double without = 1e9;
    double with = 1e9;
    double decoding = 1e9;
    for (int round = 0; round < rounds; ++round) {
        without = std::min(without, framing({}));
        with = std::min(with, framing({"--check-written"}));
        decoding = std::min(decoding, strictDecode(folder.file(std::string("framed/0_framed.") + extension)));
    }
    std::printf("%-5s framing %.3f s, read back %.3f s more, strict decoding %.3f s, ratio %.2f (target %.2f)\n",
                format, without, with - without, decoding, (with - without) / decoding, target);
    std::fflush(stdout);
}

} // namespace

int main()
{
    std::printf("A photo of 24 megapixels, best of %d rounds, processor time of all processes\n", rounds);
    for (const auto& [format, extension] :
         {std::pair{"jpeg", "jpg"}, std::pair{"png", "png"}, std::pair{"tiff", "tiff"}, std::pair{"heic", "heic"}})
        measure(format, extension);
    return 0;
}
