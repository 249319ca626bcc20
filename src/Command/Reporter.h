// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/Output.h"
#include "Imaging/KeptData.h"
#include "Models/BatchExportModels.h"

#include <QJsonObject>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_set>

namespace ferrow::Command {

/// Of the framed copy. Absent where the photo can't be framed, which is told when it is tried.
[[nodiscard]] std::optional<PixelSize> writtenSize(const BatchExportJob& job);

/// On standard error, a line for each caption of `photo` that is not all there, or lies over another or over the logo,
/// a picture of `logo` pixels.
void printCaptionFaults(const BatchExportJob& job, const QString& photo, PixelSize logo);

/// Tells the user, in lines or in JSON, what became of each photo.
class Reporter {
public:
    /// `logo` is the size of the logo's picture; 0 × 0 for none.
    Reporter(bool json, ProgressLine& progress, PixelSize logo) : json_(json), progress_(progress), logo_(logo) {}

    void failed(const BatchExportFailure& failure, const std::optional<FileUrl>& destination = {});
    void skipped(const FileUrl& source, const std::optional<FileUrl>& destination = {});
    void planned(const BatchExportJob& job);
    void ended(const BatchExportJob& job, const BatchExportOutcome& result);
    void canceledBeforePlanning(const FileUrl& source);
    void report(const BatchExportReport& report);
    /// The same for photos that nobody keeps: `report` has no failures, but there were so many.
    void report(const BatchExportReport& report, std::int64_t failures);

    /// The photo was coded anew, against what was known of it. On any thread, before its job ends.
    void couldNotKeep(const FileUrl& source);
    /// Where the photos' data was to be kept: on standard error, how many could not and why. JSON has it in the report.
    void tellKeptData();

private:
    void framed(const BatchExportJob& job, const char* name);
    void tell(const FileUrl& source, const char* name, const std::optional<FileUrl>& destination);

    /// What became, or will become, of the coded data of those that were to keep it.
    struct KeptCounts {
        std::int64_t kept = 0;
        std::map<KeepObstacle, std::int64_t> codedAnew;
        std::int64_t moved = 0;    ///< Photos whose border is moved for it.
        std::int64_t farthest = 0; ///< Pixels that one is moved.
        double quality = 0;        ///< Of those coded anew.
    };

    void countKept(const BatchExportJob& job, QJsonObject& object);
    [[nodiscard]] QJsonObject keptCounts() const;

    bool json_;
    ProgressLine& progress_;
    PixelSize logo_;
    std::optional<KeptCounts> kept_; ///< Where it is wanted.
    std::mutex mutex_;
    std::unordered_set<FileUrl> notKept_; ///< Found while framing.
};

} // namespace ferrow::Command
