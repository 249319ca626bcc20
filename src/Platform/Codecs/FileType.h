// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Files/ImageTypes.h"

#include <QString>

#include <optional>

namespace ferrow {

/// What a file's first bytes say it is.
struct DetectedType {
    std::optional<FileType> type; ///< Absent for a recognized type without a codec (GIF, camera raws, AVIF …).
    QString description;          ///< English name for such a type ("GIF image", "Canon CR2 raw image"); else empty.
};

/// Judges by content alone. Absent when the bytes are of no known type. TIFF-based raws (DNGVersion tag, CFA
/// photometric, CR2 magic, makers' raws) and AV1-coded HEIF are recognized types without a codec. Throws
/// InputOutputError.
[[nodiscard]] std::optional<DetectedType> detectFileType(const ByteSource& source);

} // namespace ferrow
