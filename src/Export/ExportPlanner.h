// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Export/ExportRequest.h"
#include "Models/BatchExportModels.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/VolumeNames.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
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

    /// Never fails as a whole: every photo that is planned is in exactly one of jobs, skipped photos and failures, in
    /// the order of the request, which is the order of export. Each folder is created and checked once. Throws
    /// Canceled.
    [[nodiscard]] BatchExportPlan plan(const ExportRequest& request, const std::stop_token& stop) const;
};

/// Gives the outputs of one batch their names, photo by photo, for batches that nobody should hold in memory.
class ExportNaming {
public:
    /// `planner`, which must outlive this, has the operations. `originals` are the photos that no output may replace;
    /// they are not needed unless files are replaced.
    ExportNaming(const ExportPlanner& planner, const BatchExportConfiguration& configuration, ExportFormat format,
                 const std::vector<FileUrl>& originals, const std::vector<FileUrl>& written = {});
    ~ExportNaming();
    ExportNaming(const ExportNaming&) = delete;
    ExportNaming& operator=(const ExportNaming&) = delete;

    /// For the photo at the 0-based position `index`. Absent when it is to be skipped. Throws BatchPlanningError,
    /// SystemError and Canceled.
    [[nodiscard]] std::optional<BatchCollisionResolver::Resolution> place(const FileUrl& photo, std::int64_t index,
                                                                          const std::stop_token& stop);

    /// All that outputs were to go to so far, in the file browser's order.
    [[nodiscard]] std::vector<FileUrl> outputFolders() const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

/// Whether an export by that rule may ask for the originals.
[[nodiscard]] inline bool needsOriginals(CollisionRule rule)
{
    return rule == CollisionRule::replace;
}

} // namespace ferrow
