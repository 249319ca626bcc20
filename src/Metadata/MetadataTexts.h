// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ErrorTexts.h"
#include "Models/PhotoMetadata.h"

#include <QString>

/// Values as users type them.
namespace ferrow::MetadataTexts {

/// Why a text stands for no value. Thrown by value.
enum class Error { noDate, tooLong };
[[nodiscard]] LocalizedErrorTexts localizedTexts(Error error);

/// In UTF-16 units; what is read from files is cut to about as much.
inline constexpr qsizetype longestText = 4096;

/// Empty for a missing value. A date is "1987-06-21" on the local calendar, with its time on the local clock unless
/// that is midnight: a form that parsed() takes in every locale.
[[nodiscard]] QString text(const MetadataValue& value);

/// What `text` stands for, trimmed; nothing for missing. Dates are taken in the form above, with a T between date and
/// time and an offset behind it if wanted, and as Exif writes them. Throws Error.
[[nodiscard]] MetadataValue parsed(MetadataField field, const QString& text);

} // namespace ferrow::MetadataTexts
