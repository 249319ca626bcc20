// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"

#include <map>

namespace ferrow {

/// What a photo's captions say in place of what was read from its file. A missing value is one that was emptied. They
/// live as long as the program: neither files nor presets hold them.
using MetadataCorrections = std::map<MetadataField, MetadataValue>;

[[nodiscard]] PhotoMetadata corrected(PhotoMetadata read, const MetadataCorrections& corrections);

/// Those that change something: what the file says already is no correction.
[[nodiscard]] MetadataCorrections differing(MetadataCorrections corrections, const PhotoMetadata& read);

} // namespace ferrow
