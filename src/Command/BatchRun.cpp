// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/BatchRun.h"

#include "Command/Commands.h"

#include <algorithm>

namespace ferrow::Command {

int readingConcurrency(const BatchExportConfiguration& configuration)
{
    return int(std::max<std::int64_t>(BatchImporter::usualConcurrency, configuration.maximumConcurrentExports));
}

BatchImporter::Progress readingProgress(ProgressLine& progress, std::size_t total)
{
    return [&progress, total](std::size_t done) {
        progress.show(QStringLiteral("Reading"), std::int64_t(done), std::int64_t(total), {});
    };
}

std::vector<BatchExportOutcome> runJobs(const std::vector<BatchExportJob>& jobs, std::int64_t concurrency,
                                        std::int64_t settled, std::int64_t total,
                                        const BatchExportCoordinator::Operation& operation, Reporter& reporter,
                                        ProgressLine& progress, const std::stop_token& stop)
{
    std::int64_t completed = settled;
    if (!jobs.empty())
        progress.show(QStringLiteral("Framing"), completed, total, jobs.front().photo.filename());
    auto outcomes = BatchExportCoordinator::run(
        jobs, concurrency, operation,
        [&](const BatchExportOutcome& outcome) {
            reporter.ended(jobs[outcome.jobIndex], outcome);
            progress.show(QStringLiteral("Framing"), ++completed, total, outcome.filename());
        },
        stop);
    for (const BatchExportOutcome& outcome : BatchExportCoordinator::neverStarted(jobs, outcomes)) {
        reporter.ended(jobs[outcome.jobIndex], outcome);
        outcomes.push_back(outcome);
    }
    return outcomes;
}

int exitStatus(const BatchExportReport& report, const std::stop_token& stop)
{
    if (stop.stop_requested())
        return interrupted;
    return report.failures.empty() ? allDone : somePhotoFailed;
}

} // namespace ferrow::Command
