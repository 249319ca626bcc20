// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"

#include <optional>
#include <unordered_map>

namespace ferrow {

/// Whether edits go to the batch or to the selected photo alone.
enum class RecipeScope { batch, selected };

/// How the photos of a batch are framed.
struct BatchFraming {
    RecipeScope scope = RecipeScope::batch;
    RenderRecipe batch = {};
    /// By photo. They count in the scope "selected" alone.
    std::unordered_map<FileUrl, RenderRecipe> own = {};

    /// The recipe that applies to a photo; without one, the batch's. Valid until these values change.
    [[nodiscard]] const RenderRecipe& recipeFor(const std::optional<FileUrl>& photoID) const;
};

template <>
struct CodedCases<RecipeScope> {
    static constexpr std::array<CodedCase<RecipeScope>, 2> table{
        {{RecipeScope::batch, u"Entire Batch"}, {RecipeScope::selected, u"Selected Photo"}}};
};

} // namespace ferrow
