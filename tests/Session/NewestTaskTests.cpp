// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/NewestTask.h"

#include "Session/ExportCheck.h"
#include "Session/ExportSession.h"
#include "Session/LogoImporter.h"
#include "Session/PreviewLoader.h"
#include "Session/PreviewRenderQueue.h"
#include "SessionTestSupport.h"
#include "Shared/UserFacingError.h"
#include "Support/NoThreads.h"

#include <QSignalSpy>

#include <semaphore>
#include <stdexcept>

namespace ferrow {

TEST(NewestTask, deliversTheNewestAlone)
{
    std::binary_semaphore gate(0);
    std::vector<std::string> told;
    int idle = 0;
    NewestTask task([&] { ++idle; });
    const auto work = [&](const std::string& name, bool waits = false) {
        return [&, name, waits](const std::stop_token& stop) -> NewestTask::Deliver {
            if (waits)
                gate.acquire();
            throwIfCanceled(stop);
            if (name == "bad")
                throw std::runtime_error("no");
            return [&, name] { told.push_back(name); };
        };
    };
    const auto failed = [&](const std::exception_ptr&) { told.emplace_back("failed"); };
    const auto settle = [&](int ended) { EXPECT_TRUE(test::waitUntil([&] { return idle == ended; })); };

    task.run(work("first", true));
    task.run(work("passed over"));
    task.run(work("second"));
    gate.release();
    settle(1);
    EXPECT_THAT(told, testing::ElementsAre("first", "second"));
    task.run(work("overtaken", true), failed);
    task.replace(work("bad"), failed);
    gate.release();
    settle(2);
    EXPECT_THAT(told, testing::ElementsAre("first", "second", "failed"));
    task.run(work("stopped", true), failed);
    task.stop();
    EXPECT_TRUE(task.isBusy());
    gate.release();
    settle(3);
    EXPECT_EQ(told.size(), 3u);
}

TEST(NewestTask, endsNothingWhereNoThreadIsToBeHad)
{
    const test::NoThreads none;
    int failures = 0;
    const auto failed = [&](const std::exception_ptr& error) {
        EXPECT_TRUE(UserFacingError::message(error).contains(QStringLiteral("threads")));
        ++failures;
    };
    const ImportedPhoto photo = test::photoAt(test::photoUrl("a"));
    PreviewLoader loader([&](const FileUrl&, const std::stop_token&) { return photo; });
    loader.load(photo, failed);
    LogoImporter logos;
    logos.importLogo(
        test::photoUrl("logo.png"), [](const LogoAssetReference&) { ADD_FAILURE(); }, failed);
    PreviewRenderQueue queue;
    QObject::connect(&queue, &PreviewRenderQueue::failed, [&] { ++failures; });
    queue.request({.photoID = photo.id(), .source = {}, .pixelSize = photo.pixelSize, .recipe = {}, .metadata = {}});
    ExportCheck check;
    check.start({.photos = {photo}});
    ExportSession exports;
    exports.planAndStart({.photos = {photo}}, {});
    EXPECT_EQ(failures, 0) << "told before the call returned";
    EXPECT_TRUE(test::waitUntil([&] { return failures == 3 && !check.isChecking() && exports.report(); }));
    EXPECT_FALSE(loader.isLoading() || logos.isImporting() || exports.isBusy());
    EXPECT_EQ(check.findings().size(), 1u);
    ASSERT_EQ(exports.report()->failures.size(), 1u);
    EXPECT_EQ(exports.report()->failures[0].source, photo.url);

    test::DisklessSession session;
    EXPECT_EQ(test::importInto(session, {photo.url}).failures.size(), 1u);
    EXPECT_FALSE(session.isImporting());
}

} // namespace ferrow
