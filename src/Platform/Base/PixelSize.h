// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <functional>

namespace ferrow {

/// Width and height in whole pixels.
struct PixelSize {
    std::int64_t width = 0;
    std::int64_t height = 0;

    [[nodiscard]] std::int64_t longestSide() const { return width > height ? width : height; }
    [[nodiscard]] std::int64_t shorterSide() const { return width < height ? width : height; }
    [[nodiscard]] PixelSize transposed() const { return {height, width}; }

    /// Width ÷ height; 0 for a size without height.
    [[nodiscard]] double aspectRatio() const;

    /// For display: "6,000 × 4,000", grouped as the user's number locale groups.
    [[nodiscard]] QString formatted() const;

    bool operator==(const PixelSize&) const = default;
};

} // namespace ferrow

template <>
struct std::hash<ferrow::PixelSize> {
    std::size_t operator()(const ferrow::PixelSize& size) const noexcept;
};
