// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FrameProportions.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

namespace ferrow {

/// Caption and logo are placed by the same picker.
enum class PlacedElement { caption, logo };

/// What the picker shows of the active recipe and the selected photo.
struct PositionScene {
    PlacedElement element = PlacedElement::caption;
    CaptionPosition position = CaptionPosition::borderBottomRight;
    int number = 0; ///< Of the caption, from 1; 0 where there is but one, and for the logo.
    /// What else lies somewhere, logo or captions with their numbers.
    struct Other {
        CaptionPosition position = CaptionPosition::borderBottomRight;
        PlacedElement element = PlacedElement::caption;
        int number = 0;
    };
    std::vector<Other> others;
    Border border;
    FrameProportions frame;
    std::optional<FileUrl> photoID;
    QString warning; ///< Empty when all is well.

    /// What else lies there; null for nothing.
    [[nodiscard]] const Other* otherAt(CaptionPosition place) const;

    /// `photo` may be null: then the warning is left out where only a photo could tell. `logo` is the size of the
    /// logo's picture, empty while nobody knows it. `caption` is the place in the recipe's list of the one that it is
    /// about.
    [[nodiscard]] static PositionScene make(PlacedElement element, const RenderRecipe& recipe,
                                            const ImportedPhoto* photo, PixelSize logo, std::size_t caption = 0);
};

/// Why this element can't be seen whole where it lies, or an empty text: too thin a border, other captions, the logo.
[[nodiscard]] QString placeWarning(PlacedElement element, const RenderRecipe& recipe, const ImportedPhoto* photo,
                                   PixelSize logo, std::size_t caption = 0);

/// Puts one of the captions at `place`. One that stands there changes places with it; `before` are the places of all
/// before the gesture that this is part of, so that passing over others leaves them where they were.
void putCaption(RenderRecipe& recipe, std::size_t caption, CaptionPosition place,
                const std::vector<CaptionPosition>& before);

} // namespace ferrow
