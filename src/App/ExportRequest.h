// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"

#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ferrow {

class ExportSession;
class PhotoSession;

/// Everything that planning and checking an export need, as values that may go to another thread.
struct ExportRequest {
    std::vector<ImportedPhoto> photos; ///< Those included, in list order.
    BatchExportConfiguration configuration;
    ExportSettings settings;
    RecipeScope recipeScope = RecipeScope::batch;
    RenderRecipe batchRecipe;
    std::unordered_map<FileUrl, RenderRecipe> photoRecipes;

    [[nodiscard]] static ExportRequest make(const PhotoSession& session, const ExportSession& exportSession);
    /// The same for these photos alone: those of a report that failed, to be tried again.
    [[nodiscard]] ExportRequest limitedTo(const std::unordered_set<FileUrl>& photoIDs) const;

    [[nodiscard]] const RenderRecipe& resolvedRecipe(const FileUrl& photoID) const;
};

} // namespace ferrow
