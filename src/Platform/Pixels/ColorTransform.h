// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/PixelFormat.h"

#include <cstddef>
#include <memory>

namespace ferrow {

/// Turns rows of source pixels into rows of 8-bit RGB or RGBA in a target RGB space: depth reduction (with rounding),
/// model conversion and colour conversion (relative colorimetric) in one step. Alpha is carried over, straight in
/// and out; where the target format has alpha and the source none it becomes opaque, where only the source has it the
/// result is undefined (flatten first). Immutable after construction: one transform may serve several threads.
class ColorTransform {
public:
    /// `from` is read as ColorProfile says when empty. `to` must be a profile that canBeTarget(); `target`
    /// rgb8 or rgba8. Never fails but for memory (std::bad_alloc): a profile that the colour library rejects after all
    /// counts as empty.
    ColorTransform(const ColorProfile& from, PixelFormat source, const ColorProfile& to, PixelFormat target);
    ~ColorTransform();
    ColorTransform(ColorTransform&&) noexcept;
    ColorTransform& operator=(ColorTransform&&) noexcept;

    /// True when source and target rows are the same bytes: callers then decode straight into the target.
    [[nodiscard]] bool isIdentity() const;

    /// `in` and `out` may be the same memory only where isIdentity(). Not otherwise overlapping.
    void apply(const std::byte* in, std::byte* out, std::size_t pixels) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace ferrow
