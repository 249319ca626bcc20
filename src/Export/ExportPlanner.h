// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/VolumeNames.h"

#include <functional>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ferrow {

/// Turns a request to export into jobs with their final names, before any pixel is touched. It creates destination
/// folders and asks what exists; it never writes, replaces or removes a file. Works on the calling thread.
struct ExportPlanner {
    /// Creates a folder with its missing parents; one that exists is fine. Throws SystemError.
    std::function<void(const FileUrl&)> createDirectory = createFolder;
    /// Whether anything stands at a place, even a link to nothing: placing the output would not replace that either.
    /// Throws SystemError where that can't be known.
    std::function<bool(const FileUrl&)> fileExists = isTaken;
    /// Throws SystemError when a folder takes no new files, or is missing and could not be made. A missing folder that
    /// could be made passes.
    std::function<void(const FileUrl&)> checkWritable = checkFolderWritable;
    /// Of what a path leads to, links followed; absent where that is nothing. Asked about folders, and about photos
    /// only before a file would be replaced.
    std::function<std::optional<FileNumber>(const FileUrl&)> fileNumber = ferrow::fileNumber;
    /// Whether two names that differ in case, or in how accents are composed, may be one file in a folder.
    std::function<bool(const FileUrl&)> foldsNames = VolumeNames::mayFold;

    /// Photos that no output may replace, beside those that are planned.
    std::vector<FileUrl> originals = {};
    /// Outputs that an earlier run of the same batch has written: no other photo gets their places.
    std::vector<FileUrl> written = {};
    /// When set, only these are planned; the others of the list keep their places in its numbering.
    std::optional<std::unordered_set<FileUrl>> only = std::nullopt;

    /// Never fails as a whole: every photo that is planned is in exactly one of jobs, skipped photos and failures, in
    /// the order of `photos`, which is the order of export. Each folder is created and checked once. Throws Cancelled.
    [[nodiscard]] BatchExportPlan plan(const std::vector<ImportedPhoto>& photos,
                                       const BatchExportConfiguration& configuration, const ExportSettings& settings,
                                       RecipeScope recipeScope, const RenderRecipe& batchRecipe,
                                       const std::unordered_map<FileUrl, RenderRecipe>& perPhotoRecipes,
                                       const std::stop_token& stop) const;
};

} // namespace ferrow
