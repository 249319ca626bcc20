// SPDX-License-Identifier: GPL-3.0-or-later
// A JPEG framed with its data kept: behind the file, a byte each for its orientation, the borders, and what covers it.
#include "FuzzSupport.h"

#include "Platform/Codecs/JpegFraming.h"

#include <sys/stat.h>

#include <utility>
#include <vector>

using namespace ferrow;

namespace {

constexpr std::int64_t mostPixels = 1'000'000;

/// Gray around the photo, and on it clear, half clear or opaque by `kind`.
JpegFraming::Cover coverOf(const PhotoPlace& photo, PixelSize canvas, int kind)
{
    JpegFraming::Cover cover;
    cover.read = [photo, canvas, kind, y = std::int64_t(0)](std::int64_t count, std::byte* out,
                                                            std::size_t stride) mutable {
        for (; count > 0; --count, ++y, out += stride)
            for (std::int64_t x = 0; x < canvas.width; ++x) {
                const bool isOnPhoto =
                    x >= photo.x && x < photo.x + photo.size.width && y >= photo.y && y < photo.y + photo.size.height;
                for (int i = 0; i < 3; ++i)
                    out[x * 4 + i] = std::byte(kind);
                out[x * 4 + 3] = std::byte(!isOnPhoto ? 255 : kind % 3 == 0 ? 0 : kind % 3 == 1 ? 128 : 255);
            }
    };
    cover.columnsOverPhoto = [photo, kind](std::int64_t, std::int64_t) {
        return kind % 3 == 0 ? std::pair(photo.x, photo.x) : std::pair(photo.x, photo.x + photo.size.width);
    };
    return cover;
}

void expectWhole(const ByteSource& source, PixelSize size)
{
    try {
        const auto decoder = openJpegDecoder(source, {});
        fuzz::require(decoder->size() == size, "the output has the size asked for");
        std::vector<std::byte> row(std::size_t(size.width * decoder->format().bytesPerPixel()));
        for (std::int64_t y = 0; y < size.height; ++y)
            decoder->readRows(1, row.data(), row.size());
        decoder->finish();
    } catch (const CodecError&) {
        fuzz::require(false, "what was framed from a whole photo is whole");
    }
}

void frame(const ByteSource& source, const std::uint8_t* choices)
{
    const int orientation = choices[0] % 8 + 1;
    const auto decoder = openJpegDecoder(source, {});
    const PixelSize stored = decoder->storedSize();
    const auto grid = decoder->blockGrid(orientation);
    if (!grid || stored.width * stored.height > mostPixels)
        return;
    JpegFraming framing(source, orientation);
    fuzz::require(framing.grid() == *grid, "both know the same grid");
    const PhotoPlace photo{grid->x + choices[1] % 3 * grid->width, grid->y + choices[2] % 3 * grid->height,
                           orientation >= 5 ? PixelSize{stored.height, stored.width} : stored};
    EncodeOptions options;
    options.size = {photo.x + photo.size.width + choices[1] / 8, photo.y + photo.size.height + choices[2] / 8};
    options.profile = ColorProfile::sRGB();
    const fuzz::InputFile output({});
    ByteSink sink(output.descriptor());
    framing.write(photo, coverOf(photo, options.size, choices[3]), sink, options);
    struct stat status {};
    fuzz::require(::fstat(output.descriptor(), &status) == 0, "the output has a size");
    expectWhole(ByteSource(output.descriptor(), status.st_size), options.size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t choices = 4;
    if (size < choices)
        return 0;
    const fuzz::InputFile file({data, size - choices});
    try {
        frame(file.source(), data + size - choices);
    } catch (const CodecError&) {
    } catch (const CannotKeep&) {
    } catch (const EncoderError&) {
        // Sizes that no JPEG may have.
    }
    return 0;
}
