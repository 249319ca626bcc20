// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/PhotoSurroundings.h"
#include "Engine/Requests.h"
#include "Engine/RowSource.h"
#include "Platform/Pixels/BlurredPicture.h"
#include "Platform/Pixels/ColorProfile.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace ferrow::Engine {

/// The one place where framed pixels are computed, for preview and export alike: band after band of canvas rows from a
/// background, what surrounds the photo, a photo rectangle and a few overlays. The bytes do not depend on how the rows
/// are split into bands.
class Compositor {
public:
    /// `photo` delivers RGB or straight RGBA rows of the canvas's depth in `canvasSpace` and must outlive the
    /// compositor; without one the canvas holds all but the photo. Throws ImagePipelineError where the photo does not
    /// lie within the canvas. `hasAlpha` chooses straight RGBA rows over RGB ones: see needsAlpha(). `bits`: 8 or 16 a
    /// component.
    Compositor(const Composition& composition, RowSource* photo, const ColorProfile& canvasSpace, bool hasAlpha,
               int bits = 8);

    /// The background of a composition that asks for the blurred photo, in the canvas's space. Comes before the first
    /// row: a photo is not read before memory was granted.
    void setBackground(BlurredPicture picture) { blurred_ = std::move(picture); }

    /// Without a photo, on a canvas with alpha: its place is left as it is, but for what lies over it.
    void leaveOpen(PixelSize photo);
    /// For that: the columns, from the first to behind the last, in which these rows of its place may be drawn on; two
    /// equal ones for none.
    [[nodiscard]] std::pair<std::int64_t, std::int64_t> columnsOverPhoto(std::int64_t firstRow,
                                                                         std::int64_t count) const;

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

    void fillBackground(std::int64_t firstRow, std::int64_t count, std::byte* out, std::size_t stride);
    void fillColumns(std::int64_t first, std::int64_t last, std::byte* row) const;
    void composePhoto(std::int64_t firstRow, std::int64_t count, std::byte* out, std::size_t stride);
    void composeWholeRows(std::int64_t count, std::byte* target, std::size_t stride);
    void composeCutRow(std::int64_t row, std::byte* target);
    void blendLayer(const Layer& layer, std::int64_t row, std::byte* out) const;

    PixelSize size_;
    PixelFormat format_;
    RowSource* photo_;
    std::int64_t photoX_;
    std::int64_t photoY_;
    PixelSize openSize_; ///< Of the photo's place where that is left open.
    RoundedRect photoArea_;
    /// The photo's rows that no corner cuts.
    std::int64_t firstWholeRow_ = 0;
    std::int64_t lastWholeRow_ = 0;
    std::optional<BlurredPicture> blurred_;
    std::optional<PhotoSurroundings> surroundings_;
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

/// Whether a canvas has transparent pixels: where the border color or the photo can be transparent.
[[nodiscard]] bool isBackgroundOpaque(const Composition& composition);
[[nodiscard]] bool needsAlpha(const Composition& composition, PixelFormat photo);

/// Cuts the corners of a photo that is an overlay and lies in `area`; its straight edges are left as they are.
void cutCorners(Overlay& photo, const RoundedRect& area);

/// Straight rgba8 rows laid over white, as rgb8. `in` and `out` may be the same memory.
void flattenOverWhite(const std::byte* in, std::byte* out, std::size_t pixels);

} // namespace ferrow::Engine
