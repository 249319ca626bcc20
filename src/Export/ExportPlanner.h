// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"

#include <functional>
#include <unordered_map>
#include <vector>

namespace ferrow {

/// Turns a request to export into jobs with their final names, before any pixel is touched. It creates destination
/// folders and asks what exists; it never writes, replaces or removes a file. Works on the calling thread.
struct ExportPlanner {
    /// Creates a folder with its missing parents; one that exists is fine. Throws SystemError.
    std::function<void(const FileUrl&)> createDirectory = createDirectories;
    /// Whether anything stands at a place, be it a link to nothing: placing the output would not replace that either.
    std::function<bool(const FileUrl&)> fileExists = exists;
    /// Throws SystemError when a folder exists and takes no new files. A missing folder passes: the export itself says
    /// so.
    std::function<void(const FileUrl&)> checkWritable = checkFolderWritable;

    /// Never fails as a whole: every photo is in exactly one of jobs, skipped photos and failures, in the order of
    /// `photos`, which is the order of export. Each folder is created and checked once.
    [[nodiscard]] BatchExportPlan plan(const std::vector<ImportedPhoto>& photos,
                                       const BatchExportConfiguration& configuration, const ExportSettings& settings,
                                       RecipeScope recipeScope, const RenderRecipe& batchRecipe,
                                       const std::unordered_map<FileUrl, RenderRecipe>& perPhotoRecipes) const;

    static void createDirectories(const FileUrl& folder);
    [[nodiscard]] static bool exists(const FileUrl& url);
    static void checkFolderWritable(const FileUrl& folder);
};

} // namespace ferrow
