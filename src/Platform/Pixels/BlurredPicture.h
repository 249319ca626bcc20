// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/Bitmap.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ferrow {

/// A picture out of focus, filling a canvas row by row: scaled about the middle until it covers the canvas, blurred by
/// a Gaussian of light (levels would darken what is bright and small), beyond its edges as it ends. Use from one
/// thread.
class BlurredPicture {
public:
    /// Longest side of the reduced picture that is enough for a standard deviation of `sigma` canvas pixels.
    [[nodiscard]] static std::int64_t enoughDimension(PixelSize picture, PixelSize canvas, double sigma);

    /// `reduced`: rgb8 or straight rgba8 in an RGB space, which the rows are in as well. `original` is the size of the
    /// picture before it was reduced, of which its proportions count. `light` is what is kept of it, 0…1.
    BlurredPicture(const Bitmap& reduced, PixelSize original, PixelSize canvas, double sigma, double light);
    ~BlurredPicture();
    BlurredPicture(BlurredPicture&&) noexcept;
    BlurredPicture& operator=(BlurredPicture&&) noexcept;

    /// The row that read() answers for; any order.
    void moveTo(std::int64_t row);
    /// Columns from `first` up to `last` to `out`, as RGB or straight RGBA of 8 or 16 bits.
    void read(std::int64_t first, std::int64_t last, PixelFormat format, std::byte* out) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace ferrow
