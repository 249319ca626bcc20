// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Export/ExportRequest.h"
#include "Models/BatchExportModels.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/VolumeNames.h"

#include <functional>
#include <optional>
#include <stop_token>

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

    /// Never fails as a whole: every photo that is planned is in exactly one of jobs, skipped photos and failures, in
    /// the order of the request, which is the order of export. Each folder is created and checked once. Throws
    /// Canceled.
    [[nodiscard]] BatchExportPlan plan(const ExportRequest& request, const std::stop_token& stop) const;
};

} // namespace ferrow
