// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FrameProportions.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"

#include <QString>

#include <optional>

namespace ferrow {

/// Caption and logo are placed by the same picker.
enum class PlacedElement { caption, logo };

/// What the picker shows of the active recipe and the selected photo.
struct PositionScene {
    PlacedElement element = PlacedElement::caption;
    CaptionPosition position = CaptionPosition::borderBottomRight;
    std::optional<CaptionPosition> other; ///< Where the other element lies, if it is shown at all.
    Border border;
    FrameProportions frame;
    std::optional<FileUrl> photoID;
    QString warning; ///< Empty when all is well.

    /// `photo` may be null: then the warning is left out where only a photo could tell.
    [[nodiscard]] static PositionScene make(PlacedElement element, const RenderRecipe& recipe,
                                            const ImportedPhoto* photo);
};

/// Why this element can't be seen whole where it lies in the border, or an empty text.
[[nodiscard]] QString borderWarning(PlacedElement element, const RenderRecipe& recipe, const ImportedPhoto* photo);

} // namespace ferrow
