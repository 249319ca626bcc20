// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Platform/Base/PixelSize.h"

#include <optional>

namespace ferrow {

/// A photo and what surrounds it, in output pixels: what little pictures of a frame are drawn after.
struct FrameProportions {
    PixelSize photo{3, 2};
    SideLengths around;

    /// With the room that the shape adds; absent for a frame that can't be drawn.
    [[nodiscard]] static std::optional<FrameProportions> of(const RenderRecipe& recipe, PixelSize photo);

    bool operator==(const FrameProportions&) const = default;
};

} // namespace ferrow
