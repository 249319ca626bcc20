// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Batch/BatchExportCoordinator.h"
#include "Batch/BatchImporter.h"
#include "Command/Output.h"
#include "Command/Reporter.h"
#include "Models/BatchExportModels.h"

#include <cstdint>
#include <stop_token>
#include <vector>

/// The steps that all runs over many photos have in common.
namespace ferrow::Command {

/// How many photos to read at once where so many are framed at once: the one must not keep the other waiting.
[[nodiscard]] int readingConcurrency(const BatchExportConfiguration& configuration);

/// Shows how many of `total` photos have been read.
[[nodiscard]] BatchImporter::Progress readingProgress(ProgressLine& progress, std::size_t total);

/// Frames the jobs by `operation` and tells of each. `settled` photos of `total` had an end before.
[[nodiscard]] std::vector<BatchExportOutcome> runJobs(const std::vector<BatchExportJob>& jobs, std::int64_t concurrency,
                                                      std::int64_t settled, std::int64_t total,
                                                      const BatchExportCoordinator::Operation& operation,
                                                      Reporter& reporter, ProgressLine& progress,
                                                      const std::stop_token& stop);

[[nodiscard]] int exitStatus(const BatchExportReport& report, const std::stop_token& stop);

} // namespace ferrow::Command
