// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/PhotoMetadata.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/Bitmap.h"

namespace ferrow {

enum class SupportedImageType { jpeg, png, tiff, heic };

template <>
struct CodedCases<SupportedImageType> {
    static constexpr std::array<CodedCase<SupportedImageType>, 4> table{{{SupportedImageType::jpeg, u"JPEG"},
                                                                         {SupportedImageType::png, u"PNG"},
                                                                         {SupportedImageType::tiff, u"TIFF"},
                                                                         {SupportedImageType::heic, u"HEIC"}}};
};

/// One photo of the working set. Identified by its url everywhere; not compared as a whole.
struct ImportedPhoto {
    FileUrl url;
    SupportedImageType type = SupportedImageType::jpeg;
    PixelSize pixelSize; ///< Upright.
    PhotoMetadata metadata;
    Bitmap previewSource; ///< Upright, reduced; null where the load asked for no pixels.
    QString colorProfileName;

    [[nodiscard]] const FileUrl& id() const { return url; }
    [[nodiscard]] QString filename() const { return url.lastPathComponent(); }
};

} // namespace ferrow
