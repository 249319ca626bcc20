// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Export/ExportPlanner.h"
#include "Models/BatchExportModels.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"

#include <cstdint>
#include <optional>
#include <stop_token>
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
    std::vector<FileUrl> originals; ///< All photos of the session: no output may replace one, included or not.
    std::optional<std::unordered_set<FileUrl>> retried; ///< Only these, where a batch is run once more.
    std::vector<FileUrl> written;                       ///< What that batch has written already.

    [[nodiscard]] static ExportRequest make(const PhotoSession& session, const ExportSession& exportSession);
    /// How many photos are to be exported.
    [[nodiscard]] std::int64_t count() const { return std::int64_t(retried ? retried->size() : photos.size()); }
    /// Throws Cancelled.
    [[nodiscard]] BatchExportPlan plan(ExportPlanner planner, const std::stop_token& stop) const;
    [[nodiscard]] const RenderRecipe& resolvedRecipe(const FileUrl& photoID) const;
};

} // namespace ferrow
