// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Requests.h"
#include "Imaging/RenderLayout.h"
#include "Models/PhotoMetadata.h"
#include "Models/RenderRecipe.h"
#include "Platform/Text/TextFrame.h"

#include <QString>

#include <compare>
#include <cstddef>
#include <optional>
#include <stop_token>
#include <vector>

/// How the captions of a recipe stand on a frame: in which face and size, where, and what is wrong with that. No state;
/// any thread, with a QGuiApplication.
namespace ferrow::CaptionDrawing {

/// What is drawn of it: the expanded template, in capitals where the caption has them. Empty for one that is switched
/// off or can't be seen.
[[nodiscard]] QString text(const Caption& caption, const PhotoMetadata& metadata);

/// The overlays of all captions of the recipe from the lowest up, those on the photo with their shadows beneath. Sizes
/// are found at full size, so that a preview has the export's. Throws Canceled.
[[nodiscard]] std::vector<Engine::Overlay> draw(const RenderLayout& layout, const RenderRecipe& recipe,
                                                const PhotoMetadata& metadata, double scale,
                                                const std::stop_token& stop);

/// What an export of a photo of `pixelSize` cuts off `caption`, one of the recipe's; nothing where it draws none, or
/// can't be drawn at all. Some milliseconds at most. It is judged at full size, and by `size`, what is written, where
/// the frame is too large for that; so it is by those below.
[[nodiscard]] TextCut cut(PixelSize pixelSize, const RenderRecipe& recipe, const Caption& caption,
                          const PhotoMetadata& metadata, const OutputSize& size = {});

/// The size that an export of a photo of `pixelSize` draws it in, in pixels: less than the set one where it shrinks to
/// fit.
[[nodiscard]] double fontSize(PixelSize pixelSize, const RenderRecipe& recipe, const Caption& caption,
                              const PhotoMetadata& metadata);

/// Two captions of a recipe, by their places in the list, the lower first.
struct Overlap {
    std::size_t first = 0;
    std::size_t second = 0;
    auto operator<=>(const Overlap&) const = default;
};

/// Which captions have lines over another's in an export of a photo of `pixelSize`, in order; none where it can't be
/// drawn at all.
[[nodiscard]] std::vector<Overlap> overlaps(PixelSize pixelSize, const RenderRecipe& recipe,
                                            const PhotoMetadata& metadata, const OutputSize& size = {});

/// Which captions have lines over the logo, a picture of `logo` pixels of which only the proportion counts, by their
/// places in the list. None where there is no logo or nothing can be drawn at all.
[[nodiscard]] std::vector<std::size_t> overLogo(PixelSize pixelSize, const RenderRecipe& recipe,
                                                const PhotoMetadata& metadata, PixelSize logo,
                                                const OutputSize& size = {});

/// A family that a caption asks for and that is not installed.
struct MissingFont {
    QString family;
    QString standIn;
    bool operator==(const MissingFont&) const = default;
};
[[nodiscard]] std::optional<MissingFont> missingFont(const Caption& caption);

} // namespace ferrow::CaptionDrawing
