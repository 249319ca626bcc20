// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Codecs/JpegFraming.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ferrow {

/// What covers a rectangle of the canvas.
enum class Covering : std::uint8_t {
    none, ///< The photo is seen.
    flat, ///< One opaque color.
    some, ///< Anything else.
};

/// What covers a photo, and the canvas around it, as pixels: one row of MCUs of the canvas at a time.
class CoverBand {
public:
    /// Bytes of a pixel, straight RGBA.
    static constexpr std::size_t pixelBytes = 4;

    /// `grid` has the size of an MCU.
    CoverBand(PixelSize canvas, const BlockGrid& grid, const PhotoPlace& photo);

    /// In MCUs.
    [[nodiscard]] std::int64_t columns() const { return columns_; }
    /// The next row. Beyond the canvas, in its last MCUs, what covers its edge goes on.
    void read(const JpegFraming::Cover& cover);

    /// Whether nothing but the photo is in this MCU: what is known without its pixels, which are then undefined.
    [[nodiscard]] bool isBare(std::int64_t column) const { return bare_[std::size_t(column)] != 0; }
    /// Of a rectangle of whole 8 × 8 pixels of an MCU that is not bare.
    [[nodiscard]] Covering covering(std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height) const;
    /// Within the band.
    [[nodiscard]] const std::uint8_t* pixel(std::int64_t x, std::int64_t y) const
    {
        return &pixels_[std::size_t(y) * stride_ + std::size_t(x) * pixelBytes];
    }
    [[nodiscard]] std::size_t stride() const { return stride_; }

private:
    void findBare(const JpegFraming::Cover& cover, std::int64_t count);
    void clearPhoto(std::int64_t count);
    void extend(std::int64_t count);
    [[nodiscard]] Covering cellAt(std::int64_t x, std::int64_t y) const;

    PixelSize canvas_;
    BlockGrid grid_;
    PhotoPlace photo_;
    std::int64_t columns_;
    std::int64_t top_ = 0; ///< Of the next band on the canvas.
    std::size_t stride_;
    std::vector<std::uint8_t> pixels_;
    std::vector<std::uint8_t> bare_; ///< By MCU.
    std::vector<Covering> cells_;    ///< By 8 × 8 pixels, where they are not bare.
};

} // namespace ferrow
