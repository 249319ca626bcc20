// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"

#include <functional>
#include <stop_token>
#include <vector>

/// Runs the jobs of a planned batch.
namespace ferrow::BatchExportCoordinator {

/// Does one job. Throws Canceled when it heeded `stop`, any error when it failed. It calls `framed` where from then on
/// it waits for the disk alone: the next job may start.
using Operation =
    std::function<void(const BatchExportJob&, const std::stop_token& stop, const std::function<void()>& framed)>;
/// Told of each outcome as it arrives, on the thread that called run().
using Progress = std::function<void(const BatchExportOutcome&)>;

/// Runs the jobs in order, at most `maximumConcurrency` (raised to 1) at once besides as many that wait for the disk,
/// and waits for them. A failing job never stops the others. Once `stop` is requested no further job starts and the
/// running ones are asked to stop. Answers one outcome for each job that was started, in completion order. Leftovers of
/// killed runs in the destination folders are swept first.
[[nodiscard]] std::vector<BatchExportOutcome> run(const std::vector<BatchExportJob>& jobs,
                                                  std::int64_t maximumConcurrency, const Operation& operation,
                                                  const Progress& progress, const std::stop_token& stop);

/// Canceled outcomes for the jobs that have none, in job order: what a canceled run never started.
[[nodiscard]] std::vector<BatchExportOutcome> neverStarted(const std::vector<BatchExportJob>& jobs,
                                                           const std::vector<BatchExportOutcome>& outcomes);

/// The summary of a run: planning failures first, then the jobs' in the order they arrived. `batchCount` is the number
/// of photos that were to be exported.
[[nodiscard]] BatchExportReport report(const BatchExportPlan& plan, std::int64_t batchCount,
                                       const std::vector<BatchExportOutcome>& outcomes);

} // namespace ferrow::BatchExportCoordinator
