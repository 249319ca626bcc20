// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/MetadataCorrections.h"
#include "Platform/Base/BlockGrid.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Base/PixelSize.h"
#include "Platform/Files/ImageTypes.h"
#include "Platform/Pixels/Bitmap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace ferrow {

/// What has to be known of a JPEG whose coded data is to stand in an output as it is.
struct CodedData {
    BlockGrid grid; ///< Where the upright photo may lie.
    /// By OutputColorProfile: whether the output's colors are the photo's own.
    std::array<bool, 3> keepsColors{};

    bool operator==(const CodedData&) const = default;
};

/// One photo of the working set. Identified by its url everywhere; not compared as a whole.
struct ImportedPhoto {
    FileUrl url;
    FileType type = FileType::jpeg; ///< One of photos.
    PixelSize pixelSize;            ///< Upright.
    PhotoMetadata metadata;         ///< As read: what is written into framed copies.
    MetadataCorrections corrections;
    Bitmap previewSource; ///< Upright, reduced; null where the load asked for no pixels.
    QString colorProfileName;
    std::optional<CodedData> codedData; ///< Of a JPEG that can be framed without being coded anew.
    std::int64_t addedAt = 0;           ///< Grows with each photo that joins a list.

    [[nodiscard]] const FileUrl& id() const { return url; }
    [[nodiscard]] QString filename() const { return url.lastPathComponent(); }
    /// What captions say of it.
    [[nodiscard]] PhotoMetadata captionMetadata() const { return corrected(metadata, corrections); }
};

} // namespace ferrow
