// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ferrow::MetadataText {

/// Longest text field that is read, in bytes; the record keeps 4,096 characters of it.
inline constexpr qsizetype maximumLength = 64 * 1024;

/// UTF-8 where all of it is valid, else Windows-1252; up to the first NUL. Longer fields than maximumLength are cut
/// between characters.
[[nodiscard]] QString decoded(QByteArray bytes);

} // namespace ferrow::MetadataText
