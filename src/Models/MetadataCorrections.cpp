// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/MetadataCorrections.h"

namespace ferrow {

PhotoMetadata corrected(PhotoMetadata read, const MetadataCorrections& corrections)
{
    for (const auto& [field, value] : corrections)
        read.setValue(field, value);
    return read;
}

MetadataCorrections differing(MetadataCorrections corrections, const PhotoMetadata& read)
{
    std::erase_if(corrections, [&read](const auto& entry) { return read.value(entry.first) == entry.second; });
    return corrections;
}

} // namespace ferrow
