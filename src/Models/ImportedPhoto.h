// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/MetadataCorrections.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Base/PixelSize.h"
#include "Platform/Files/ImageTypes.h"
#include "Platform/Pixels/Bitmap.h"

namespace ferrow {

/// One photo of the working set. Identified by its url everywhere; not compared as a whole.
struct ImportedPhoto {
    FileUrl url;
    FileType type = FileType::jpeg; ///< One of photos.
    PixelSize pixelSize;            ///< Upright.
    PhotoMetadata metadata;         ///< As read: what is written into framed copies.
    MetadataCorrections corrections;
    Bitmap previewSource; ///< Upright, reduced; null where the load asked for no pixels.
    QString colorProfileName;

    [[nodiscard]] const FileUrl& id() const { return url; }
    [[nodiscard]] QString filename() const { return url.lastPathComponent(); }
    /// What captions say of it.
    [[nodiscard]] PhotoMetadata captionMetadata() const { return corrected(metadata, corrections); }
};

} // namespace ferrow
