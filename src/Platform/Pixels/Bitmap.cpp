// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/Bitmap.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

namespace ferrow {

namespace {

constexpr std::size_t rowAlignment = 16;

/// Zeroed by the system page by page as rows are written, which a container would do at once for the whole picture.
std::shared_ptr<std::byte[]> zeroedBytes(std::size_t count)
{
    auto* bytes = static_cast<std::byte*>(std::calloc(count, 1));
    if (!bytes)
        throw std::bad_alloc();
    return std::shared_ptr<std::byte[]>(bytes, [](std::byte* memory) { std::free(memory); });
}

} // namespace

Bitmap::Bitmap(PixelSize size, PixelFormat format, ColorProfile profile)
{
    if (size.width < 1 || size.height < 1)
        return;
    const auto width = std::uint64_t(size.width);
    const auto height = std::uint64_t(size.height);
    const auto bytesPerPixel = std::uint64_t(format.bytesPerPixel());
    constexpr auto most = std::uint64_t(std::numeric_limits<std::ptrdiff_t>::max());
    if (width > (most - rowAlignment) / bytesPerPixel)
        throw std::bad_alloc();
    const std::uint64_t stride = (width * bytesPerPixel + rowAlignment - 1) / rowAlignment * rowAlignment;
    if (height > most / stride)
        throw std::bad_alloc();

    pixels_ = zeroedBytes(std::size_t(stride * height));
    size_ = size;
    format_ = format;
    profile_ = std::move(profile);
    stride_ = std::size_t(stride);
}

} // namespace ferrow
