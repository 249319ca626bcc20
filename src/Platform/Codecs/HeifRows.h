// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/PixelFormat.h"

#include <libheif/heif.h>

#include <cstddef>
#include <cstdint>

namespace ferrow::heif {

/// Interleaved rows, one at a time, from a decoded picture that is kept in the library's planes of red, green, blue and
/// alpha. Asked for interleaved pixels, the library would make a second copy of the whole picture.
class Rows {
public:
    Rows() = default;
    /// Borrows `image`. `size` and `format` are those that the header promised. Throws CodecError (damaged) where one
    /// of the planes has another size.
    Rows(const heif_image* image, PixelSize size, PixelFormat format);

    void copy(std::int64_t y, std::byte* out) const;

private:
    struct Plane {
        const std::byte* samples = nullptr; ///< 16-bit ones, where there are more than 8, in the machine's byte order.
        std::size_t stride = 0;
        int bits = 0;
    };

    [[nodiscard]] Plane planeOf(const heif_image* image, heif_channel channel) const;
    template <typename Component>
    void copyAs(std::int64_t y, Component* out) const;
    template <typename Component>
    void copyPlane(const Plane& plane, std::int64_t y, Component* out) const;

    PixelSize size_;
    PixelFormat format_;
    Plane planes_[4];
    bool isPremultiplied_ = false;
};

} // namespace ferrow::heif
