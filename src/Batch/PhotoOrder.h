// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ImportedPhoto.h"

#include <vector>

namespace ferrow {

/// In which photos are listed, numbered and exported.
struct PhotoOrder {
    enum class Key {
        name,        ///< The file browser's order of the names without their folders.
        captureDate, ///< As captions have it; undated photos come last, whichever way the others go.
        added,
    };

    Key key = Key::name;
    bool isDescending = false;

    bool operator==(const PhotoOrder&) const = default;
};

/// What decides before the names do: the lower number stands first.
[[nodiscard]] std::int64_t orderRank(const ImportedPhoto& photo, const PhotoOrder& order);

/// Whether `left` stands before `right`. What is equal by the order's key goes by name, upwards.
[[nodiscard]] bool precedes(const ImportedPhoto& left, const ImportedPhoto& right, const PhotoOrder& order);

/// Stable.
void sortPhotos(std::vector<ImportedPhoto>& photos, const PhotoOrder& order);

} // namespace ferrow
