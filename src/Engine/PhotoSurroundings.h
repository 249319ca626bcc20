// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Requests.h"
#include "Platform/Pixels/SoftField.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace ferrow::Engine {

/// What lies between a photo and its background: its shadow, and a line around it, over that.
class PhotoSurroundings {
public:
    /// A pixel's color in levels of the canvas's depth and space; behind it alpha, 0…1.
    using Pixel = std::array<float, 4>;

    [[nodiscard]] static bool areNeeded(const Composition& composition);
    PhotoSurroundings(const Composition& composition, const Pixel& lineColor);

    /// Draws on a canvas row that holds the background wherever the photo does not cover a pixel altogether. Pixels at
    /// the photo's edge are drawn so that photo and line have their shares once the photo lies on top.
    void drawRow(std::int64_t row, PixelFormat format, std::byte* out);

private:
    void drawShadow(std::int64_t row, PixelFormat format, std::byte* out);
    void drawLine(std::int64_t row, PixelFormat format, std::byte* out) const;

    std::int64_t width_; ///< Of the canvas.
    RoundedRect photo_;
    std::optional<PhotoLine> line_;
    Pixel lineColor_;
    double shadowOpacity_ = 0;
    RoundedRect shadowArea_; ///< Beyond it nothing of the shadow is seen.
    std::optional<SoftField<float>> shadow_;
};

} // namespace ferrow::Engine
