// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// English names of image types that Ferrow does not read, by file name extension.
namespace ferrow::ImageTypeNames {

/// Whether the extension (any case, without the dot) is that of an image type.
[[nodiscard]] bool isImageExtension(const QByteArray& extension);

/// "Canon CR2 raw image", "GIF image", …: our own table, then the MIME database's English comment. Absent when the
/// extension names no type at all (not only no image).
[[nodiscard]] std::optional<QString> description(const QByteArray& extension);

} // namespace ferrow::ImageTypeNames
