// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Platform/Properties/PropertyMap.h"

namespace ferrow::MetadataExtractor {

/// The display-ready record of what a file says. Never fails: a missing or malformed value leaves its own field empty.
[[nodiscard]] PhotoMetadata extract(const PropertyMap& properties, const PropertyMap& xmp, const QString& filename);

/// The three forms of a date that are understood: Exif's, and ISO 8601 with and without an offset. The whole text must
/// be one. Without an offset it is a time on the local clock.
[[nodiscard]] std::optional<QDateTime> parsedDate(const QString& text);

} // namespace ferrow::MetadataExtractor
