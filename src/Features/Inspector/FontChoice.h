// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/Caption.h"

#include <QFont>
#include <QString>

#include <optional>

namespace ferrow {

/// What a caption is set in, as its font is chosen: one of the five typefaces, or a family by its name.
struct FontChoice {
    CaptionFont font = CaptionFont::system;
    QString family = {}; ///< Empty for one of the five.

    [[nodiscard]] static FontChoice of(const Caption& caption);
    /// A family's style goes where that family goes. What stands in for a family where it is missing is the system's.
    void applyTo(Caption& caption) const;
    /// "Serif", "EB Garamond".
    [[nodiscard]] QString name() const;
    /// To show the name in: the family itself where it has letters, at the size of `base`, else `base`.
    [[nodiscard]] QFont sample(const QFont& base) const;

    bool operator==(const FontChoice&) const = default;
};

} // namespace ferrow
