// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Requests.h"
#include "Engine/RowSource.h"
#include "Platform/Pixels/ColorProfile.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ferrow::Engine {

/// The one place where framed pixels are computed, for preview and export alike: band after band of canvas rows from a
/// background color, a photo rectangle and a few overlays. The bytes do not depend on how the rows are split into
/// bands.
class Compositor {
public:
    /// `photo` delivers rgb8 or straight rgba8 rows in `canvasSpace` and must outlive the compositor; without one the
    /// canvas holds background and overlays alone. `hasAlpha` chooses straight rgba8 rows over rgb8 ones: needed when
    /// the border color or the photo can be transparent.
    Compositor(const Composition& composition, RowSource* photo, const ColorProfile& canvasSpace, bool hasAlpha);

    [[nodiscard]] PixelSize size() const { return size_; }
    [[nodiscard]] PixelFormat format() const { return format_; }

    /// The next `count` canvas rows to `out`, `stride` bytes apart. Throws what the photo throws.
    void compose(std::int64_t count, std::byte* out, std::size_t stride);

private:
    struct Layer {
        Bitmap picture; ///< Premultiplied RGBA in the canvas's space, opacity applied.
        std::int64_t x = 0;
        std::int64_t y = 0;
    };

    void composePhoto(std::int64_t firstRow, std::int64_t count, std::byte* out, std::size_t stride);
    void fillBackground(std::int64_t firstRow, std::int64_t count, std::byte* out, std::size_t stride) const;
    void blendLayer(const Layer& layer, std::int64_t row, std::byte* out) const;

    PixelSize size_;
    PixelFormat format_;
    RowSource* photo_;
    std::int64_t photoX_;
    std::int64_t photoY_;
    std::vector<std::byte> backgroundRow_;
    std::vector<std::byte> photoScratch_;
    std::vector<Layer> layers_;
    std::int64_t nextRow_ = 0;
};

/// The space a framed picture is drawn in: the policy's, or the photo's own where it is to be preserved, is RGB and can
/// be converted to. A well-known space is answered with our own profile, not the photo's.
[[nodiscard]] ColorProfile outputColorSpace(const ColorProfile& photo, ColorModel model, OutputColorProfile policy);

/// The space that a picture is handed on and shown in: the photo's own where that is well known, else one that holds
/// the colors of nearly all screens. So only the process that answers requests ever reads a profile from a file.
[[nodiscard]] ColorProfile viewingColorSpace(const ColorProfile& photo, ColorModel model);

/// Whether a color lets anything through once stored in 8 bits.
[[nodiscard]] bool isTransparent(const RGBAColor& color);

/// Straight rgba8 rows laid over white, as rgb8. `in` and `out` may be the same memory.
void flattenOverWhite(const std::byte* in, std::byte* out, std::size_t pixels);

} // namespace ferrow::Engine
