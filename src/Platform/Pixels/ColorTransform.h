// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/Bitmap.h"
#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/PixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ferrow {

/// Turns rows of source pixels into rows of RGB or RGBA in a target RGB space: change of depth (with rounding), model
/// conversion and color conversion (relative colorimetric) in one step. Alpha is carried over, straight in
/// and out; where the target format has alpha and the source none it becomes opaque, where only the source has it the
/// result is undefined (flatten first). Immutable after construction: one transform may serve several threads.
class ColorTransform {
public:
    /// `from` is read as ColorProfile says when empty. `to` must be a profile that canBeTarget(); `target`
    /// rgb8, rgba8, rgb16 or rgba16. Never fails but for memory (std::bad_alloc): a profile that the color library
    /// rejects after all counts as empty.
    ColorTransform(const ColorProfile& from, PixelFormat source, const ColorProfile& to, PixelFormat target);
    ~ColorTransform();
    ColorTransform(ColorTransform&&) noexcept;
    ColorTransform& operator=(ColorTransform&&) noexcept;

    /// True when source and target rows are the same bytes: callers then decode straight into the target.
    [[nodiscard]] bool isIdentity() const;

    /// `in` and `out` may be the same memory only where isIdentity(). Not otherwise overlapping.
    void apply(const std::byte* in, std::byte* out, std::size_t pixels) const;
    /// The same for `count` rows of `pixels` each, which lie a stride apart: in bytes.
    void applyToRows(std::int64_t count, const std::byte* in, std::size_t inStride, std::byte* out,
                     std::size_t outStride, std::size_t pixels) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

/// Whether the numbers of pixels mean the same in both spaces: RGB in the same space, gray on the target's own curve.
/// `from` is read as ColorProfile says when empty.
[[nodiscard]] bool meansTheSame(const ColorProfile& from, ColorModel model, const ColorProfile& to);

/// `picture` (rgb8, or rgba8 straight) in another RGB space; itself where it is in that space already.
[[nodiscard]] Bitmap inColorSpace(const Bitmap& picture, const ColorProfile& space);

} // namespace ferrow
