// SPDX-License-Identifier: GPL-3.0-or-later
// Apart from what calls the library: programs that only ask how much memory an encoder takes need not load it.
#include "Platform/Codecs/HeifTiling.h"

#include "Platform/Codecs/HeifTiles.h"
#include "Platform/Codecs/ImageEncoder.h"

namespace ferrow {

namespace {

/// Pictures of more pixels are coded in tiles. What is smaller opens in readers that know no grids too, and takes
/// little memory as it is.
constexpr std::int64_t largestWhole = 4'000'000;

/// Bytes that the encoder takes for each pixel that it is handed at once,
constexpr std::int64_t bytesPerPixel = 28;
/// with more than 8 bits,
constexpr std::int64_t bytesPerDeepPixel = 38;
/// and the most that it makes of one, which the library keeps until all are there.
constexpr std::int64_t codedBytesPerPixel = 3;

} // namespace

bool heif::isTiled(PixelSize size, PixelFormat format)
{
    return canWriteTiles && size.width * size.height > largestWhole && size.shorterSide() >= tileSide && format == rgb8;
}

std::int64_t heifEncoderBytes(PixelSize size, PixelFormat format)
{
    if (!heif::isTiled(size, format))
        return (format.bitsPerComponent == 16 ? bytesPerDeepPixel : bytesPerPixel) * size.width * size.height;
    return bytesPerPixel * heif::tileSide * heif::tileSide + 3 * size.width * heif::tileSide +
           codedBytesPerPixel * size.width * size.height;
}

} // namespace ferrow
