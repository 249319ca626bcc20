// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifRows.h"

#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Pixels/AlphaArithmetic.h"

#include <algorithm>
#include <limits>

namespace ferrow::heif {
namespace {

/// `value` from 0…`from` to 0…`to`, rounded.
constexpr std::uint32_t scaled(std::uint32_t value, std::uint32_t from, std::uint32_t to)
{
    return (std::min(value, from) * to + from / 2) / from;
}

template <typename Component>
void unpremultiply(Component* pixel, std::int64_t width)
{
    for (std::int64_t x = 0; x < width; ++x, pixel += 4)
        for (int i = 0; i < 3; ++i)
            pixel[i] = straightened<Component>(pixel[i], pixel[3]);
}

} // namespace

Rows::Rows(const heif_image* image, PixelSize size, PixelFormat format) : size_(size), format_(format)
{
    constexpr heif_channel channels[] = {heif_channel_R, heif_channel_G, heif_channel_B, heif_channel_Alpha};
    for (int i = 0; i < format.channels(); ++i)
        planes_[i] = planeOf(image, channels[i]);
    isPremultiplied_ = format.hasAlpha() && heif_image_is_premultiplied_alpha(const_cast<heif_image*>(image)) != 0;
}

/// The library hands back whatever size the coded stream has, so every plane is measured.
Rows::Plane Rows::planeOf(const heif_image* image, heif_channel channel) const
{
    int stride = 0;
    const std::uint8_t* samples = heif_image_get_plane_readonly(image, channel, &stride);
    const int bits = heif_image_get_bits_per_pixel_range(image, channel);
    const PixelSize delivered{heif_image_get_width(image, channel), heif_image_get_height(image, channel)};
    if (!samples || delivered != size_ || bits < 1 || bits > 16)
        throw CodecError{CodecError::Reason::damaged, {}};
    return {reinterpret_cast<const std::byte*>(samples), std::size_t(stride), bits};
}

template <typename Component>
void Rows::copyPlane(const Plane& plane, std::int64_t y, Component* out) const
{
    constexpr std::uint32_t most = std::numeric_limits<Component>::max();
    const std::uint32_t highest = (1U << plane.bits) - 1;
    const int channels = format_.channels();
    const std::byte* row = plane.samples + std::size_t(y) * plane.stride;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(row);
    const auto* words = reinterpret_cast<const std::uint16_t*>(row);
    if (plane.bits == 8 && most == 255)
        for (std::int64_t x = 0; x < size_.width; ++x)
            out[x * channels] = bytes[x];
    else if (plane.bits <= 8)
        for (std::int64_t x = 0; x < size_.width; ++x)
            out[x * channels] = static_cast<Component>(scaled(bytes[x], highest, most));
    else
        for (std::int64_t x = 0; x < size_.width; ++x)
            out[x * channels] = static_cast<Component>(scaled(words[x], highest, most));
}

template <typename Component>
void Rows::copyAs(std::int64_t y, Component* out) const
{
    for (int i = 0; i < format_.channels(); ++i)
        copyPlane(planes_[i], y, out + i);
    if (isPremultiplied_)
        unpremultiply(out, size_.width);
}

void Rows::copy(std::int64_t y, std::byte* out) const
{
    if (format_.bitsPerComponent == 16)
        copyAs(y, reinterpret_cast<std::uint16_t*>(out));
    else
        copyAs(y, reinterpret_cast<std::uint8_t*>(out));
}

} // namespace ferrow::heif
