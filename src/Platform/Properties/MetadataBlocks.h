// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"

#include <QByteArray>

#include <optional>

namespace ferrow {

/// The metadata blocks of one file, still encoded; empty where the file has none. The first of each kind counts, and a
/// file is walked without regard to what else it holds, so that no damage elsewhere costs them.
struct MetadataBlocks {
    QByteArray exif;        ///< From its byte order mark on.
    QByteArray xmp;         ///< One packet.
    QByteArray extendedXmp; ///< JPEG alone: what did not fit into the packet, as a packet of its own.
    QByteArray iptc;        ///< IPTC-IIM datasets.

    /// Longest block that is read, in bytes; a longer one counts as absent. Lightroom's largest packets are below 300
    /// kB.
    static constexpr qsizetype maximumLength = 1024 * 1024;
};

// Each reads little more than the block's own bytes, and throws InputOutputError alone.
[[nodiscard]] MetadataBlocks jpegMetadataBlocks(const ByteSource& source);
[[nodiscard]] MetadataBlocks pngMetadataBlocks(const ByteSource& source);
[[nodiscard]] MetadataBlocks heifMetadataBlocks(const ByteSource& source);

/// What follows the "Exif\0\0" that some containers put before the byte order mark.
[[nodiscard]] QByteArray withoutExifPrefix(const QByteArray& block);

/// Length of the name that stands before a packet of XMP in segments and old text chunks, its zero included; 0 for a
/// block that has none. Some writers put a blank before the zero.
[[nodiscard]] qsizetype xmpNameLength(const QByteArray& block);

} // namespace ferrow
