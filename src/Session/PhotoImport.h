// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Batch/BatchImporter.h"
#include "Session/CompressedPicture.h"

#include <atomic>
#include <functional>
#include <stop_token>
#include <unordered_map>

/// The part of an import that reads files, on a worker thread.
namespace ferrow::PhotoImport {

/// What goes in, and what comes out. The worker's until run() returns, but for `stop` and takeProgress().
struct Work {
    BatchImportScan scan; ///< Not changed by the worker.
    std::stop_source stop;

    BatchImportResult result; ///< Of BatchImporter::importScanned(), the photos without previewSource.
    std::unordered_map<FileUrl, CompressedPicture> thumbnails;

    /// How many files were read, for whoever was told of news; the next ones are told of again. Any thread.
    [[nodiscard]] std::size_t takeProgress()
    {
        isTold = false;
        return read;
    }

    std::atomic<std::size_t> read = 0;
    std::atomic<bool> isTold = false;
};

/// Imports what was scanned and compresses the thumbnails on the threads that read them. `news` is called on this
/// thread when there is progress to take that nobody was told of.
void run(Work& work, const BatchImporter::Loader& load, const std::function<void()>& news);

} // namespace ferrow::PhotoImport
