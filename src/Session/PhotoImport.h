// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Batch/BatchImporter.h"
#include "Models/BatchExportModels.h"
#include "Models/ImportedPhoto.h"
#include "Session/CompressedPicture.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <vector>

/// The part of an import that reads files, on a worker thread.
namespace ferrow::PhotoImport {

/// Reads one photo. Throws ImagePipelineError, and Cancelled once a stop was requested.
using Loader = std::function<ImportedPhoto(const FileUrl&, const std::stop_token&)>;

/// What goes in, and what comes out. The worker's until run() returns, but for `stop` and takeProgress().
struct Work {
    std::vector<FileUrl> candidates; ///< Not changed by the worker.
    std::vector<FileUrl> unsupported;
    std::vector<BatchExportFailure> unreadable; ///< Folders.
    std::stop_source stop;

    std::vector<ImportedPhoto> photos; ///< In the list's order, without previewSource.
    std::unordered_map<FileUrl, CompressedPicture> thumbnails;
    std::vector<BatchExportFailure> failures; ///< In the file browser's order of their names.
    std::optional<FileUrl> firstLoaded;       ///< In the order of reading.

    /// How many files were read, for whoever was told of news; the next ones are told of again. Any thread.
    [[nodiscard]] std::size_t takeProgress()
    {
        isTold = false;
        return read;
    }

    std::atomic<std::size_t> read = 0;
    std::atomic<bool> isTold = false;
};

/// The order of the list.
[[nodiscard]] bool precedes(const ImportedPhoto& left, const ImportedPhoto& right);

/// Reads the candidates and compresses their thumbnails on the threads that read them. After a stop the rest is passed
/// over, and so is what is in hand. `news` is called on this thread when there is progress to take that nobody was told
/// of. Without memory for the results all candidates fail.
void run(Work& work, const Loader& load, int maximumConcurrency, const std::function<void()>& news);

} // namespace ferrow::PhotoImport
