// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/BatchExportCoordinator.h"

#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Support/TestSupport.h"

#include <sys/stat.h>

#include <atomic>
#include <ctime>
#include <latch>

namespace ferrow {

namespace {

std::vector<BatchExportJob> makeJobs(const FileUrl& folder, int count)
{
    auto jobs = std::vector<BatchExportJob>(std::size_t(count));
    for (int i = 0; i < count; ++i) {
        jobs[std::size_t(i)].photo.url = folder.appending(QByteArray::number(i) + ".jpg");
        jobs[std::size_t(i)].destination = folder.appending("out").appending(QByteArray::number(i) + ".jpg");
    }
    return jobs;
}

int numberOf(const BatchExportJob& job)
{
    return job.photo.url.stem().toInt();
}

} // namespace

TEST(BatchExportCoordinator, goesOnAfterFailuresAndNeverExceedsTheConcurrency)
{
    const test::TemporaryFolder folder;
    const auto jobs = makeJobs(folder.url(), 50);
    for (const std::int64_t concurrency : {-3, 1, 3}) {
        SCOPED_TRACE(concurrency);
        std::atomic<int> running = 0;
        std::size_t told = 0;
        const auto outcomes = BatchExportCoordinator::run(
            jobs, concurrency,
            [&](const BatchExportJob& job, const std::stop_token&, const auto&) {
                EXPECT_LE(++running, std::max<std::int64_t>(concurrency, 1));
                --running;
                if (numberOf(job) % 2 == 1)
                    throw ImagePipelineError(ImagePipelineError::destinationExists);
                if (numberOf(job) == 10)
                    throw std::bad_alloc();
            },
            [&](const BatchExportOutcome&) { ++told; }, {});
        EXPECT_EQ(told, jobs.size());
        const auto report = BatchExportCoordinator::report({}, 50, outcomes);
        EXPECT_EQ(report.exported, 24);
        ASSERT_EQ(report.failures.size(), 26u);
        EXPECT_EQ(report.failures[0].filename, report.failures[0].source.lastPathComponent());
        EXPECT_FALSE(report.failures[0].message.isEmpty());
    }
}

TEST(BatchExportCoordinator, startsTheNextJobWhileOneWaitsForTheDisk)
{
    const test::TemporaryFolder folder;
    std::latch nextRuns(1);
    const auto outcomes = BatchExportCoordinator::run(
        makeJobs(folder.url(), 2), 1,
        [&](const BatchExportJob& job, const std::stop_token&, const std::function<void()>& framed) {
            if (numberOf(job) == 1) {
                nextRuns.count_down();
                return;
            }
            framed();
            nextRuns.wait();
        },
        {}, {});
    EXPECT_EQ(outcomes.size(), 2u);
}

TEST(BatchExportCoordinator, letsRunningJobsEndAsTheyEndWhenCanceled)
{
    const test::TemporaryFolder folder;
    const auto jobs = makeJobs(folder.url(), 10);
    std::stop_source stop;
    std::latch bothRun(2);
    const auto outcomes = BatchExportCoordinator::run(
        jobs, 2,
        [&](const BatchExportJob& job, const std::stop_token& token, const auto&) {
            EXPECT_LT(numberOf(job), 5);
            if (numberOf(job) < 3 || numberOf(job) > 4)
                return;
            bothRun.arrive_and_wait();
            stop.request_stop();
            if (numberOf(job) == 3)
                throwIfCanceled(token);
        },
        {}, stop.get_token());
    ASSERT_EQ(outcomes.size(), 5u);
    for (const BatchExportOutcome& outcome : outcomes)
        EXPECT_EQ(std::holds_alternative<BatchExportOutcome::Canceled>(outcome.result), outcome.jobIndex == 3);

    auto all = outcomes;
    QStringList rest;
    for (const auto& outcome : BatchExportCoordinator::neverStarted(jobs, outcomes)) {
        rest << outcome.filename();
        all.push_back(outcome);
    }
    EXPECT_EQ(rest.join(QLatin1Char(' ')), QStringLiteral("5.jpg 6.jpg 7.jpg 8.jpg 9.jpg"));
    BatchExportPlan plan;
    plan.skipped = 2;
    plan.failures.push_back({.filename = QStringLiteral("planned.jpg"), .message = {}, .source = {}});
    plan.outputFolders.push_back(folder.url());
    const BatchExportReport report = BatchExportCoordinator::report(plan, 13, all);
    EXPECT_EQ(report.exported, 4);
    EXPECT_EQ(report.canceled, 6);
    EXPECT_EQ(report.failures, plan.failures);
    EXPECT_EQ(report.outputFolders, plan.outputFolders);
    EXPECT_EQ(report.exported + report.canceled + report.skipped + std::int64_t(report.failures.size()), report.total);

    // Already stopped: nothing starts.
    const auto neverRuns = [](const auto&, const auto&, const auto&) { ADD_FAILURE() << "started"; };
    EXPECT_TRUE(BatchExportCoordinator::run(jobs, 2, neverRuns, {}, stop.get_token()).empty());
}

TEST(BatchExportCoordinator, sweepsOurOldLeftoversAlone)
{
    const test::TemporaryFolder folder;
    ASSERT_EQ(::mkdir(folder.file("out").path().constData(), 0777), 0);
    const QByteArray ours = ".Ferrow-0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0.jpg";
    const QByteArray fresh = ".Ferrow-1F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0.jpg";
    for (const QByteArray& name : {ours, fresh, QByteArray(".Ferrow-notes.jpg"), QByteArray("old.jpg")}) {
        const time_t time = std::time(nullptr) - (name == fresh ? 0 : 200'000);
        const timespec times[] = {{time, 0}, {time, 0}};
        ::utimensat(AT_FDCWD, folder.write("out/" + name, "x").path().constData(), times, 0);
    }
    (void)BatchExportCoordinator::run(makeJobs(folder.url(), 1), 1, [](const auto&, const auto&, const auto&) {}, {},
                                      {});
    EXPECT_TRUE(test::readFile(folder.file("out/" + ours)).isEmpty());
    for (const QByteArray& kept : {fresh, QByteArray(".Ferrow-notes.jpg"), QByteArray("old.jpg")})
        EXPECT_EQ(test::readFile(folder.file("out/" + kept)), "x");
}

} // namespace ferrow
