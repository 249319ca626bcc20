// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"

#include <QString>

#include <vector>

namespace ferrow {

/// A frame to begin with.
struct StarterFrame {
    QString name;        ///< Also of the preset that is made of it.
    QString description; ///< A few words that say what is seen: "Wide border, caption".
    RenderRecipe recipe; ///< All lengths in percent, so that photos of every size look alike.
};

/// In the order that they are offered, by name. None is what a new window begins with. The chips of their captions keep
/// their identifiers, so that a recipe that was taken from here equals it until it is edited.
[[nodiscard]] const std::vector<StarterFrame>& starterFrames();

} // namespace ferrow
