// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/MemoryNeed.h"

#include "Platform/Codecs/ImageEncoder.h"
#include "Platform/Pixels/Resampler.h"

#include <algorithm>

namespace ferrow::Engine::MemoryNeed {

namespace {

/// Pixels that a reduced picture has beyond its photo's where that is a thin line.
constexpr std::int64_t averagingBesides = 2 * maximumSourceSide;

constexpr std::int64_t area(PixelSize size)
{
    return size.width * size.height;
}

std::int64_t deliveredPixelBytes(const OpenedPhoto& photo)
{
    return photo.decoder->format().hasAlpha() ? 4 : 3;
}

} // namespace

std::int64_t ofRows(const OpenedPhoto& photo, PixelSize size, PixelFormat format)
{
    const std::int64_t turned = photo.orientation == 1 ? 0 : area(size) * format.bytesPerPixel();
    return photo.decoder->heldBytes() + turned;
}

std::int64_t ofReducedPicture(const OpenedPhoto& photo, std::int64_t maximumDimension)
{
    const PixelSize size = photo.decoder->size();
    const std::int64_t factor = blockFactor(size, maximumDimension);
    const std::int64_t averaged = (size.width / factor + 1) * (size.height / factor + 1);
    // Averaged, scaled and turned: never more than two of the three at once, and the first is the largest.
    return photo.decoder->heldBytes() + 2 * averaged * deliveredPixelBytes(photo);
}

std::int64_t ofEncoder(ExportFormat format, PixelSize canvas, PixelFormat pixels)
{
    return format == ExportFormat::heic ? heifEncoderBytes(canvas, pixels) : 0;
}

std::int64_t mostOfPhoto(std::int64_t pixels)
{
    // What its codec may hold, and the picture turned, of 8 bytes a pixel at most, or averaged and scaled: twice 4
    // bytes.
    return maximumHeldBytes({pixels, 1}) + 2 * 4 * (pixels + averagingBesides);
}

std::int64_t ofPage(std::int64_t maximumDimension)
{
    // The page, and a transparent group as large.
    return 2 * 4 * maximumDimension * maximumDimension;
}

} // namespace ferrow::Engine::MemoryNeed
