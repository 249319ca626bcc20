// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Models/RenderRecipe.h"

#include <QString>

namespace ferrow::MetadataTemplateExpander {

/// The caption of one photo: tokens replaced, blanks folded, line ends freed of separators, empty lines dropped.
[[nodiscard]] QString expand(const QString& captionTemplate, const PhotoMetadata& metadata);

/// What one token stands for, a date as its format has it; absent where the photo has no such value.
[[nodiscard]] std::optional<QString> tokenValue(const CaptionToken& token, const PhotoMetadata& metadata);
/// The photo has no such value, or a blank one.
[[nodiscard]] bool isMissing(MetadataToken token, const PhotoMetadata& metadata);
/// It is missing, and nothing stands in for it.
[[nodiscard]] bool isLeftOut(const CaptionToken& token, const PhotoMetadata& metadata);

} // namespace ferrow::MetadataTemplateExpander
