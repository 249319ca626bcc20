// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Codecs/TiffInput.h"
#include "Platform/Pixels/PixelFormat.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace ferrow {

/// What the samples of a pixel mean.
enum class TiffColor { gray, invertedGray, rgb, palette, cmyk, cieLab, iccLab, yCbCr };

/// How a TIFF picture lies in its file, after the library's decompression.
struct TiffLayout {
    PixelSize size;
    TiffColor color = TiffColor::gray;
    int bits = 8; ///< Of one sample.
    bool isFloat = false;
    int samples = 1;                ///< Per pixel, extra ones included.
    std::optional<int> alphaSample; ///< Index of the sample that is alpha.
    bool isPremultiplied = false;
    bool isPlanar = false; ///< Each sample has strips or tiles of its own.
    bool isTiled = false;
    std::int64_t chunkWidth = 0; ///< Of a tile; for strips the picture's width.
    std::int64_t chunkRows = 0;  ///< Of a tile or a whole strip.
    int subsamplingX = 1;        ///< For blocks only.
    int subsamplingY = 1;
    std::array<float, 3> yCbCrWeights{};
    std::array<float, 6> yCbCrReference{};
    std::vector<std::array<std::uint8_t, 3>> palette;

    [[nodiscard]] int colorSamples() const;
    /// Planes that are read separately.
    [[nodiscard]] int planes() const { return isPlanar ? samples : 1; }
    /// YCbCr in one plane lies in blocks of several pixels.
    [[nodiscard]] bool isInBlocks() const { return color == TiffColor::yCbCr && !isPlanar; }
    /// Bytes of `pixels` pixels in one plane; not for blocks.
    [[nodiscard]] std::int64_t rowBytes(std::int64_t pixels) const
    {
        return (pixels * (isPlanar ? 1 : samples) * bits + 7) / 8;
    }
    [[nodiscard]] std::int64_t chunksAcross() const { return (size.width + chunkWidth - 1) / chunkWidth; }
    [[nodiscard]] std::int64_t chunksDown() const { return (size.height + chunkRows - 1) / chunkRows; }
    /// Of the pixels that decoding delivers.
    [[nodiscard]] PixelFormat format() const;
};

/// Reads the layout of the opened page, and sets the library to deliver JPEG-compressed YCbCr as RGB. Throws
/// CodecError: malformed, or unsupported with the kind.
[[nodiscard]] TiffLayout readTiffLayout(const TiffInput& input);

} // namespace ferrow
