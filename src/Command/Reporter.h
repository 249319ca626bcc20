// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/Output.h"
#include "Models/BatchExportModels.h"

#include <optional>

namespace ferrow::Command {

/// Of the framed copy. Absent where the photo can't be framed, which is told when it is tried.
[[nodiscard]] std::optional<PixelSize> writtenSize(const BatchExportJob& job);

/// On standard error, a line for each caption of `photo` that is not all there or lies over another.
void printCaptionFaults(const BatchExportJob& job, const QString& photo);

/// Tells the user, in lines or in JSON, what became of each photo.
class Reporter {
public:
    Reporter(bool json, ProgressLine& progress) : json_(json), progress_(progress) {}

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
};

} // namespace ferrow::Command
