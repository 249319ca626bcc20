// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ExportSession.h"

#include "SessionTestSupport.h"

#include <QSignalSpy>

#include <atomic>

namespace ferrow {

namespace {

BatchExportPlan planOf(int jobs)
{
    BatchExportPlan plan;
    for (int i = 0; i < jobs; ++i)
        plan.jobs.push_back({.photo = test::photoAt(test::photoUrl(QByteArray::number(i)))});
    plan.skipped = 1;
    plan.skippedPhotos = {test::photoUrl("skipped")};
    plan.failures.push_back({.filename = QStringLiteral("failed"), .source = test::photoUrl("failed")});
    return plan;
}

} // namespace

TEST(ExportSession, reportsAPlanWithoutJobsAtOnce)
{
    ExportSession session;
    const QSignalSpy progressChanged(&session, &ExportSession::progressChanged);
    session.start(planOf(0), 2);
    ASSERT_TRUE(session.report().has_value());
    EXPECT_EQ(session.report()->total, 2);
    EXPECT_EQ(session.report()->skipped, 1);
    EXPECT_EQ(session.report()->failures.size(), 1u);
    EXPECT_EQ(session.photoState(test::photoUrl("failed")), PhotoExportState::failed);
    EXPECT_EQ(progressChanged.size(), 0);
    session.clearReport();
    EXPECT_FALSE(session.report() || session.photoState(test::photoUrl("failed")));
}

TEST(ExportSession, countsUpToTheTotalOneJobAtATime)
{
    std::atomic<int> running = 0;
    ExportSession session([&](const BatchExportJob& job, const std::stop_token&, const auto&) {
        EXPECT_EQ(++running, 1);
        --running;
        if (job.photo.filename() == QStringLiteral("1"))
            throw ImagePipelineError(ImagePipelineError::decodingFailed);
    });
    session.setConfiguration({.maximumConcurrentExports = -3});
    std::vector<std::int64_t> completed;
    QObject::connect(&session, &ExportSession::progressChanged, &session, [&] {
        if (session.progress())
            completed.push_back(session.progress()->counts.completed);
        EXPECT_NE(session.progress().has_value(), session.report().has_value());
    });
    const QSignalSpy started(&session, &ExportSession::photoStarted);
    const QSignalSpy settled(&session, &ExportSession::photoSettled);
    session.start(planOf(3), 5);
    session.start(planOf(1), 1);
    EXPECT_EQ(session.photoState(test::photoUrl("2")), PhotoExportState::waiting);
    QObject::connect(&session, &ExportSession::photoStarted, &session,
                     [&](const FileUrl& photo) { EXPECT_EQ(session.photosAtWork(), std::vector{photo}); });
    ASSERT_TRUE(test::waitUntil([&] { return session.report().has_value(); }));
    EXPECT_THAT(completed, testing::ElementsAre(2, 3, 4, 5));
    EXPECT_EQ(started.size(), 3);
    EXPECT_EQ(settled.size(), 3);
    EXPECT_EQ(session.report()->exported, 2);
    EXPECT_EQ(session.report()->failures.size(), 2u);
    EXPECT_EQ(session.photoState(test::photoUrl("1")), PhotoExportState::failed);
    EXPECT_EQ(session.photoState(test::photoUrl("skipped")), PhotoExportState::skipped);
}

TEST(ExportSession, countsWhatACancelLeavesUndone)
{
    std::latch gate(1);
    std::atomic<int> begun = 0;
    ExportSession session([&](const BatchExportJob&, const std::stop_token& stop, const auto&) {
        if (const int number = ++begun; number > 3) {
            gate.wait();
            if (number == 4 && stop.stop_requested())
                throw Canceled{};
        }
    });
    session.start(planOf(10), 12);
    ASSERT_TRUE(test::waitUntil([&] { return session.progress()->counts.completed == 5 && begun == 5; }));
    session.cancel();
    EXPECT_TRUE(session.isStopping());
    gate.count_down();
    ASSERT_TRUE(test::waitUntil([&] { return session.report().has_value(); }));
    EXPECT_FALSE(session.isStopping());
    EXPECT_EQ(session.report()->exported, 4);
    EXPECT_EQ(session.report()->canceled, 6);
    EXPECT_EQ(session.photoState(test::photoUrl("9")), PhotoExportState::canceled);
}

TEST(ExportSession, endsWithItsJobsStoppedAndTellsNobody)
{
    std::atomic<int> ended = 0;
    std::atomic<int> begun = 0;
    {
        ExportSession session([&](const BatchExportJob&, const std::stop_token& stop, const auto&) {
            ++begun;
            while (!stop.stop_requested())
                std::this_thread::yield();
            ++ended;
            throw Canceled{};
        });
        QObject::connect(&session, &ExportSession::reportChanged, [] { ADD_FAILURE(); });
        session.start(planOf(10), 10);
        ASSERT_TRUE(test::waitUntil([&] { return begun == 2; }));
    }
    EXPECT_EQ(ended, 2);
    QTest::qWait(0);
}

TEST(ExportSession, plansInTheBackgroundUnlessCanceled)
{
    const test::TemporaryFolder folder;
    ExportSession session([](const BatchExportJob&, const std::stop_token&, const auto&) {});
    session.setConfiguration({.chosenFolder = folder.url()});
    test::DisklessSession photos;
    test::importInto(photos, test::photoUrls({"a", "b", "c"}));
    photos.toggleIncluded(test::photoUrl("b"));
    const ExportRequest request = session.requestFor(photos);
    std::size_t planned = 0;
    const auto note = [&](const BatchExportPlan& plan) { planned = plan.jobs.size(); };
    session.planAndStart(request, note);
    EXPECT_TRUE(session.isPlanning());
    session.cancel();
    EXPECT_FALSE(session.isPlanning());
    session.planAndStart(request, note);
    ASSERT_TRUE(test::waitUntil([&] { return session.report().has_value(); }));
    EXPECT_EQ(planned, 2u);
    EXPECT_EQ(session.report()->exported, 2);
    EXPECT_FALSE(session.isPlanning());
}

TEST(ExportSession, endsPlanningThatWouldNeverEnd)
{
    ExportPlanner planner;
    std::atomic<bool> isAsking = false;
    planner.checkWritable = [](const FileUrl&) {};
    planner.fileExists = [&isAsking](const FileUrl&) {
        isAsking = true;
        return true;
    };
    ExportRequest request;
    request.photos.push_back(test::photoAt(test::photoUrl("a.jpg")));
    request.configuration.chosenFolder = FileUrl::fromPath(QByteArray("/out"));
    const int before = WorkQueue::threadsLeftBehind();
    for (const bool cancels : {true, false}) {
        isAsking = false;
        ExportSession session({}, planner);
        session.planAndStart(request);
        ASSERT_TRUE(test::waitUntil([&] { return isAsking.load(); }));
        if (cancels)
            session.cancel();
    }
    EXPECT_EQ(WorkQueue::threadsLeftBehind(), before);
}

TEST(ExportSession, triesFailedPhotosAgainWithoutTouchingWhatItHasWritten)
{
    const struct {
        CollisionRule rule;
        const char* nameTemplate;
        std::vector<QByteArray> written; ///< In the order of writing.
    } rows[] = {
        {CollisionRule::replace, "{index}", {"1.jpg", "3.jpg", "2.jpg"}},
        {CollisionRule::replace, "same", {"same.jpg", "same 3.jpg", "same 2.jpg"}},
        {CollisionRule::skip, "same", {"same.jpg", "same 3.jpg", "same 2.jpg"}},
        {CollisionRule::appendNumber, "same", {"same.jpg", "same 3.jpg", "same 2.jpg"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.nameTemplate);
        const test::TemporaryFolder folder;
        std::vector<QByteArray> written;
        int refusals = 2;
        ExportSession session([&](const BatchExportJob& job, const std::stop_token&, const auto&) {
            if (job.photo.id() == test::photoUrl("b") && refusals-- > 0)
                throw ImagePipelineError(ImagePipelineError::decodingFailed);
            written.push_back(job.destination.lastPathComponentBytes());
            folder.write(written.back(), "framed");
        });
        session.setConfiguration({.chosenFolder = folder.url(),
                                  .filenameTemplate = QString::fromUtf8(row.nameTemplate),
                                  .collisionRule = row.rule,
                                  .maximumConcurrentExports = 1});
        test::DisklessSession photos;
        test::importInto(photos, test::photoUrls({"a", "b", "c"}));
        session.planAndStart(session.requestFor(photos));
        ASSERT_TRUE(test::waitUntil([&] { return session.report().has_value(); }));
        for (int attempt = 0; attempt < 2; ++attempt) {
            ASSERT_EQ(session.report()->failures.size(), 1u);
            session.retry({test::photoUrl("b")});
            ASSERT_TRUE(test::waitUntil([&] { return session.report().has_value(); }));
            EXPECT_EQ(session.report()->total, 1);
        }
        EXPECT_EQ(written, row.written);
    }
}

} // namespace ferrow
