// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Models/RenderRecipe.h"

#include <QString>

namespace ferrow::MetadataTemplateExpander {

/// The caption of one photo: tokens replaced, blanks folded, line ends freed of separators, empty lines dropped.
[[nodiscard]] QString expand(const QString& captionTemplate, const PhotoMetadata& metadata);

/// What one token stands for; absent where the photo has no such value.
[[nodiscard]] std::optional<QString> tokenValue(MetadataToken token, const PhotoMetadata& metadata);

} // namespace ferrow::MetadataTemplateExpander
