// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ferrow::ByteText {

/// UTF-8 to text such that encode() gives back exactly the same bytes: each byte that is not part of valid UTF-8
/// becomes the lone surrogate U+DC80…U+DCFF (value 0xDC00 + byte). For working on file names, never for showing.
[[nodiscard]] QString decode(const QByteArray& bytes);
[[nodiscard]] QByteArray encode(const QString& text);

/// For showing: every byte that is not part of valid UTF-8 becomes U+FFFD.
[[nodiscard]] QString display(const QByteArray& bytes);

/// Text of a metadata field: UTF-8 where all of it is valid, else Windows-1252. Stops at the first NUL.
[[nodiscard]] QString fromMetadata(const QByteArray& bytes);

} // namespace ferrow::ByteText
