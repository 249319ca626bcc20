// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/BatchExportCoordinator.h"

#include "Platform/Base/Cancellation.h"
#include "Platform/Base/TaskGroup.h"
#include "Platform/Files/FilePlacement.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <exception>
#include <set>

namespace ferrow::BatchExportCoordinator {

namespace {

BatchExportOutcome runJob(const BatchExportJob& job, std::size_t index, const Operation& operation,
                          const std::stop_token& stop, const std::function<void()>& framed)
{
    const QString filename = job.photo.filename();
    try {
        operation(job, stop, framed);
        return {BatchExportOutcome::Exported{filename}, index};
    } catch (const Canceled&) {
        return {BatchExportOutcome::Canceled{filename}, index};
    } catch (...) {
        BatchExportFailure failure;
        failure.filename = filename;
        failure.message = UserFacingError::message(std::current_exception());
        failure.source = job.photo.url;
        return {BatchExportOutcome::Failed{failure}, index};
    }
}

void sweepDestinations(const std::vector<BatchExportJob>& jobs)
{
    std::set<FileUrl> folders;
    for (const BatchExportJob& job : jobs)
        if (folders.insert(job.destination.deletingLastPathComponent()).second)
            sweepStaleStagingFiles(job.destination.deletingLastPathComponent());
}

} // namespace

std::vector<BatchExportOutcome> run(const std::vector<BatchExportJob>& jobs, std::int64_t maximumConcurrency,
                                    const Operation& operation, const Progress& progress, const std::stop_token& stop)
{
    sweepDestinations(jobs);
    std::vector<BatchExportOutcome> outcomes;
    runReleasing<BatchExportOutcome>(
        jobs.size(), std::size_t(std::max<std::int64_t>(maximumConcurrency, 1)),
        [&](std::size_t index, const std::function<void()>& release) {
            return runJob(jobs[index], index, operation, stop, release);
        },
        [&](std::size_t, BatchExportOutcome outcome) {
            outcomes.push_back(outcome);
            if (progress)
                progress(outcome);
        },
        [&] { return !stop.stop_requested(); });
    return outcomes;
}

std::vector<BatchExportOutcome> neverStarted(const std::vector<BatchExportJob>& jobs,
                                             const std::vector<BatchExportOutcome>& outcomes)
{
    // Jobs start in order, so that the ones without an outcome are the last.
    std::vector<BatchExportOutcome> rest;
    for (std::size_t index = outcomes.size(); index < jobs.size(); ++index)
        rest.push_back({BatchExportOutcome::Canceled{jobs[index].photo.filename()}, index});
    return rest;
}

BatchExportReport report(const BatchExportPlan& plan, std::int64_t batchCount,
                         const std::vector<BatchExportOutcome>& outcomes)
{
    BatchExportReport report;
    report.total = batchCount;
    report.skipped = plan.skipped;
    report.failures = plan.failures;
    report.outputFolders = plan.outputFolders;
    for (const BatchExportOutcome& outcome : outcomes)
        if (std::holds_alternative<BatchExportOutcome::Exported>(outcome.result))
            ++report.exported;
        else if (std::holds_alternative<BatchExportOutcome::Canceled>(outcome.result))
            ++report.canceled;
        else
            report.failures.push_back(std::get<BatchExportOutcome::Failed>(outcome.result).failure);
    return report;
}

} // namespace ferrow::BatchExportCoordinator
