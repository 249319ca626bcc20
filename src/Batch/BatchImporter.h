// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Models/ImportedPhoto.h"
#include "Platform/Base/FileUrl.h"

#include <functional>
#include <stop_token>
#include <variant>
#include <vector>

namespace ferrow {

/// What a walk over dropped or chosen places found; both lists of files sorted by path and free of
/// duplicates.
struct BatchImportScan {
    std::vector<FileUrl> candidates;
    std::vector<FileUrl> unsupported; ///< Images of kinds the program does not read, found inside folders.
    std::vector<BatchExportFailure> unreadable = {}; ///< Of the folders that were named: those that can't be listed.
};

/// What became of each file: it is in one of the lists, whose order never depends on how fast files are read.
struct BatchImportResult {
    std::vector<ImportedPhoto> photos;
    std::vector<BatchExportFailure> failures;
    std::vector<FileUrl> unread; ///< Passed over after a stop.
};

/// Turns files and folders into photos. No state; scanning and loading may run on any thread.
namespace BatchImporter {

/// How many photos the programs read at once.
inline constexpr int usualConcurrency = 4;

/// Reads one photo, on several threads at once. Throws ImagePipelineError, and Canceled once a stop was requested.
using Loader = std::function<ImportedPhoto(const FileUrl&, const std::stop_token&)>;
/// Told on the calling thread, after each file, how many have been read.
using Progress = std::function<void(std::size_t)>;

struct Unread {};
/// What became of one file; it is unread after a stop.
using Outcome = std::variant<Unread, ImportedPhoto, BatchExportFailure>;
/// Told on the calling thread, once for each file, in the order of the list.
using Taker = std::function<void(std::size_t index, Outcome)>;

/// Folders are walked; a file named directly is always a candidate, and so is a place where nothing stands (loading
/// then says so). Never fails as a whole; folders inside others are passed over where they can't be listed.
[[nodiscard]] BatchImportScan scan(const std::vector<FileUrl>& roots);

/// Loads `urls` as load() does and hands over each as soon as those before it are: nothing is kept of a long list.
void loadEach(const std::vector<FileUrl>& urls, int maximumConcurrency, const Loader& loader, const Taker& take,
              const Progress& progress, const std::stop_token& stop);

/// Loads `urls`, at most `maximumConcurrency` (0 loads nothing) at once, and answers in their order. After a stop no
/// further file is begun, and those in hand are waited for. Never fails as a whole. The default loader reads
/// thumbnails.
[[nodiscard]] BatchImportResult load(const std::vector<FileUrl>& urls, int maximumConcurrency,
                                     const Loader& loader = {}, const Progress& progress = {},
                                     const std::stop_token& stop = {});

/// Loads the candidates and adds what was refused(); photos and failures come in the order of the list, and in the
/// scan's where names are equal. Else as load(). Without memory for the results all candidates fail.
[[nodiscard]] BatchImportResult importScanned(const BatchImportScan& scan, const Loader& loader,
                                              const Progress& progress, const std::stop_token& stop,
                                              int maximumConcurrency = usualConcurrency);

/// Files in the order of the list: by their names, and by their places where those are equal.
[[nodiscard]] std::vector<FileUrl> inListOrder(std::vector<FileUrl> urls);

/// The failures that stand for what a scan found and nobody reads: folders that can't be listed, and unsupported
/// images, named by their extensions.
[[nodiscard]] std::vector<BatchExportFailure> refused(const BatchImportScan& scan);

/// The order of the list: the file browser's, of the names without their folders.
[[nodiscard]] bool precedes(const ImportedPhoto& left, const ImportedPhoto& right);

} // namespace BatchImporter
} // namespace ferrow
