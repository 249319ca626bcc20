// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/BatchFraming.h"

namespace ferrow {

const RenderRecipe& BatchFraming::recipeFor(const std::optional<FileUrl>& photoID) const
{
    if (scope != RecipeScope::selected || !photoID)
        return batch;
    const auto found = own.find(*photoID);
    return found == own.end() ? batch : found->second;
}

} // namespace ferrow
