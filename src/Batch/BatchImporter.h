// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Models/ImportedPhoto.h"
#include "Platform/Base/FileUrl.h"

#include <functional>
#include <vector>

namespace ferrow {

/// What a walk over dropped or chosen places found; both lists of files sorted by path and free of
/// duplicates.
struct BatchImportScan {
    std::vector<FileUrl> candidates;
    std::vector<FileUrl> unsupported; ///< Images of kinds the program does not read, found inside folders.
    std::vector<BatchExportFailure> unreadable = {}; ///< Of the folders that were named: those that can't be listed.
};

/// Both lists in completion order.
struct BatchImportResult {
    std::vector<ImportedPhoto> photos;
    std::vector<BatchExportFailure> failures;
};

/// Turns files and folders into photos. No state; scan and load may run on any thread.
namespace BatchImporter {

/// Reads one photo. Throws ImagePipelineError.
using Loader = std::function<ImportedPhoto(const FileUrl&)>;
/// Told on the calling thread, after each file, how many have been read.
using Progress = std::function<void(std::size_t)>;

/// Folders are walked; a file named directly is always a candidate, and so is a place where nothing stands (loading
/// then says so). Never fails as a whole; folders inside others are passed over where they can't be listed.
[[nodiscard]] BatchImportScan scan(const std::vector<FileUrl>& roots);

/// Loads `urls`, at most `maximumConcurrency` (0 loads nothing) at once, and waits for all of them.
/// Never fails as a whole and can't be stopped. The default loader reads thumbnails.
[[nodiscard]] BatchImportResult load(const std::vector<FileUrl>& urls, int maximumConcurrency,
                                     const Loader& loader = {}, const Progress& progress = {});

/// The failure that stands for an unsupported image found in a folder: named by its extension.
[[nodiscard]] BatchExportFailure unsupportedFailure(const FileUrl& url);

} // namespace BatchImporter
} // namespace ferrow
