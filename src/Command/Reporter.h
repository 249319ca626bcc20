// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/Output.h"
#include "Models/BatchExportModels.h"

#include <optional>

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

private:
    void framed(const BatchExportJob& job, const char* name);
    void tell(const FileUrl& source, const char* name, const std::optional<FileUrl>& destination);

    bool json_;
    ProgressLine& progress_;
    PixelSize logo_;
};

} // namespace ferrow::Command
