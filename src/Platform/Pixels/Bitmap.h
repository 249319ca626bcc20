// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/PixelFormat.h"

#include <cstddef>
#include <memory>

namespace ferrow {

/// A picture in memory: rows from the top down, `stride` bytes apart, no padding inside a row's pixels. Copies share
/// the pixels; write only through a bitmap that nobody else holds yet.
class Bitmap {
public:
    Bitmap() = default; ///< No picture: isNull() is true.

    /// Zeroed pixels. Throws std::bad_alloc. Sizes below 1 give no picture.
    Bitmap(PixelSize size, PixelFormat format, ColorProfile profile = {});

    [[nodiscard]] bool isNull() const { return !pixels_; }
    [[nodiscard]] PixelSize size() const { return size_; }
    [[nodiscard]] PixelFormat format() const { return format_; }
    [[nodiscard]] const ColorProfile& profile() const { return profile_; }
    [[nodiscard]] std::size_t stride() const { return stride_; }

    [[nodiscard]] std::byte* row(std::int64_t y) { return pixels_.get() + std::size_t(y) * stride_; }
    [[nodiscard]] const std::byte* row(std::int64_t y) const { return pixels_.get() + std::size_t(y) * stride_; }

private:
    PixelSize size_;
    PixelFormat format_;
    ColorProfile profile_;
    std::size_t stride_ = 0;
    std::shared_ptr<std::byte[]> pixels_;
};

} // namespace ferrow
