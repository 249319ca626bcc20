// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace ferrow {

enum class ColorModel : std::uint8_t { gray, rgb, cmyk, lab };
enum class Alpha : std::uint8_t { none, straight, premultiplied };

/// How one pixel lies in memory: the model's components interleaved in their usual order (C M Y K; L a b), alpha last.
/// 16-bit components are in the machine's byte order. CMYK: 0 is no ink. Lab is the ICC encoding of that depth
/// (8 bits: L 0…255 for 0…100, a and b offset by 128; 16 bits: the version 4 encoding, L 65535 for 100).
struct PixelFormat {
    ColorModel model = ColorModel::rgb;
    int bitsPerComponent = 8; ///< 8 or 16.
    Alpha alpha = Alpha::none;

    [[nodiscard]] constexpr bool hasAlpha() const { return alpha != Alpha::none; }
    [[nodiscard]] constexpr int colorChannels() const
    {
        return model == ColorModel::gray ? 1 : model == ColorModel::cmyk ? 4 : 3;
    }
    [[nodiscard]] constexpr int channels() const { return colorChannels() + (hasAlpha() ? 1 : 0); }
    [[nodiscard]] constexpr int bytesPerPixel() const { return channels() * bitsPerComponent / 8; }

    bool operator==(const PixelFormat&) const = default;
};

inline constexpr PixelFormat rgb8{ColorModel::rgb, 8, Alpha::none};
inline constexpr PixelFormat rgba8{ColorModel::rgb, 8, Alpha::straight};
inline constexpr PixelFormat rgb16{ColorModel::rgb, 16, Alpha::none};
inline constexpr PixelFormat rgba16{ColorModel::rgb, 16, Alpha::straight};
inline constexpr PixelFormat rgba8Premultiplied{ColorModel::rgb, 8, Alpha::premultiplied};

/// `bits` is 8 or 16; alpha, where there is one, is straight.
[[nodiscard]] constexpr PixelFormat rgbFormat(int bits, bool hasAlpha)
{
    return {ColorModel::rgb, bits, hasAlpha ? Alpha::straight : Alpha::none};
}

} // namespace ferrow
