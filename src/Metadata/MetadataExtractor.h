// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Platform/Properties/PropertyMap.h"

namespace ferrow::MetadataExtractor {

/// The display-ready record of what a file says. Never fails: a missing or malformed value leaves its own field empty.
[[nodiscard]] PhotoMetadata extract(const PropertyMap& properties, const PropertyMap& xmp, const QString& filename);

} // namespace ferrow::MetadataExtractor
