// SPDX-License-Identifier: GPL-3.0-or-later
#include "OddWorker.h"

#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Support/Files.h"
#include "WorkerPool/WorkerAnswerer.h"

#include <sys/wait.h>

#include <future>
#include <thread>

namespace ferrow::WorkerPool {

namespace {

using test::MemoryFile;

class FaultyWorker : public testing::Test {
protected:
    static qsizetype openDescriptors() { return test::namesIn(FileUrl::fromPath(QByteArray("/proc/self/fd"))).size(); }

    /// Whether the photo was refused as one that could not be decoded.
    bool refuses(int oddity, const std::stop_token& stop = {})
    {
        const auto error = test::errorOf<ImagePipelineError>([&] {
            return workers_.inspect({{photo_.descriptor(), photo_.size()}, oddity}, stop);
        });
        return error == std::optional(ImagePipelineError(ImagePipelineError::decodingFailed));
    }

    /// Of the one worker that is there.
    pid_t process()
    {
        auto worker = pool_->take(WorkerKind::photos, {});
        const pid_t number = worker->process();
        pool_->giveBack(std::move(worker), Pool::Condition::fit);
        return number;
    }

    const MemoryFile photo_{"photo"};
    const qsizetype descriptorsBefore_ = openDescriptors();
    std::shared_ptr<Pool> pool_ = std::make_shared<Pool>(ODD_WORKER_PROGRAM);
    WorkerAnswerer workers_{pool_, 1'000'000'000};
};

} // namespace

TEST_F(FaultyWorker, costsItsOwnPhotoAndLeavesNothingBehind)
{
    for (const auto& [name, oddity] : std::initializer_list<std::pair<const char*, int>>{
             {"dies", test::dies},
             {"closes the connection", test::closes},
             {"sends garbage", test::garbage},
             {"answers an earlier question", test::earlier},
             {"sends more pixels than asked for", test::tooLarge},
             {"sends pixels that are not there", test::notThere},
#ifndef __SANITIZE_ADDRESS__ // Which spends address space by the terabyte, so that it is not limited.
             {"takes memory without end", test::allocates},
#endif
             {"composes its last row twice", test::repeats},
         }) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(refuses(oddity));
        EXPECT_FALSE(refuses(test::none));
    }
    // These take all the time that there is, side by side.
    auto still = std::async(std::launch::async, [&] { return refuses(test::deaf); });
    EXPECT_TRUE(refuses(test::trickles));
    EXPECT_TRUE(still.get());
    EXPECT_FALSE(refuses(test::none));

    pool_->close();
    EXPECT_EQ(openDescriptors(), descriptorsBefore_);
    EXPECT_EQ(::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT), -1) << "a child is left";
}

TEST_F(FaultyWorker, costsNoLaterPhoto)
{
    for (const int oddity : {test::twice, test::poisoned}) {
        SCOPED_TRACE(oddity);
        EXPECT_FALSE(refuses(oddity));
        EXPECT_FALSE(refuses(test::none));
        EXPECT_FALSE(refuses(test::none));
    }
}

TEST_F(FaultyWorker, isNotBelievedToHaveWrittenWhatIsNotThere)
{
    const MemoryFile output("");
    Engine::FrameRequest request;
    request.source = {photo_.descriptor(), photo_.size()};
    request.outputDescriptor = output.descriptor();
    request.expectedSize = request.composition.canvasSize = {3, 2};
    request.quality = test::writesNothing;
    EXPECT_THROW(workers_.frame(request, {}), ImagePipelineError);
    request.quality = test::writesSomething;
    EXPECT_NO_THROW(workers_.frame(request, {}));
}

TEST_F(FaultyWorker, thatWasKilledBeforeItsFirstWordIsReplacedUnseen)
{
    auto worker = pool_->take(WorkerKind::photos, {});
    ::kill(worker->process(), SIGKILL);
    ::waitid(P_PID, id_t(worker->process()), nullptr, WEXITED | WNOWAIT);
    pool_->giveBack(std::move(worker), Pool::Condition::fit);
    EXPECT_FALSE(refuses(test::none));
}

TEST_F(FaultyWorker, thatWasKilledWhileIdleIsReplacedUnseen)
{
    EXPECT_FALSE(refuses(test::none));
    auto worker = pool_->take(WorkerKind::photos, {});
    ::kill(worker->process(), SIGKILL);
    ::waitid(P_PID, id_t(worker->process()), nullptr, WEXITED | WNOWAIT);
    pool_->giveBack(std::move(worker), Pool::Condition::fit);
    EXPECT_FALSE(refuses(test::none));
}

TEST_F(FaultyWorker, thatCannotBeStartedRefusesEachPhoto)
{
    for (const char* program : {"/nowhere/ferrow-worker", "/bin/true"}) {
        WorkerAnswerer none(std::make_shared<Pool>(program), 1'000'000);
        for (int i = 0; i < 2; ++i)
            EXPECT_THROW(static_cast<void>(none.inspect({{photo_.descriptor(), 5}, 0}, {})), ImagePipelineError);
        EXPECT_THROW(static_cast<void>(none.rasteriseLogo({{photo_.descriptor(), 5}, 9}, {})), LogoAssetError);
    }
}

TEST_F(FaultyWorker, isKilledForAStopUntilTheLastRowIsComposed)
{
    for (const int oddity : {test::deaf, test::completes}) {
        EXPECT_FALSE(refuses(test::none)); // So that a worker is there, and the stop meets it at work.
        std::stop_source source;
        const std::jthread stopper([&, worker = process()] {
            siginfo_t stopped;
            ::waitid(P_PID, id_t(worker), &stopped, WSTOPPED | WNOWAIT); // It has said all that it says by itself.
            source.request_stop();
            std::this_thread::sleep_for(std::chrono::milliseconds(600)); // Longer than a stop is waited for.
            if (oddity == test::completes)
                ::kill(worker, SIGCONT);
        });
        if (oddity == test::completes)
            EXPECT_FALSE(refuses(oddity, source.get_token()));
        else
            EXPECT_THROW(static_cast<void>(refuses(oddity, source.get_token())), Cancelled);
    }
}

TEST(MemoryBudget, letsInWhatFitsAndRunsTheLargestAlone)
{
    MemoryBudget memory(100);
    std::stop_source stopped; // Whoever would have to wait is cancelled instead.
    stopped.request_stop();
    const auto fits = [&](std::int64_t bytes) {
        return !test::errorOf<Cancelled>(
            [&] { return static_cast<void>(memory.acquire(bytes, stopped.get_token())), 0; });
    };
    {
        const auto share = memory.acquire(60, {});
        EXPECT_TRUE(fits(40));
        EXPECT_FALSE(fits(41));
        EXPECT_FALSE(fits(1000));
    }
    const auto all = memory.acquire(1000, {});
    EXPECT_FALSE(fits(1));
}

} // namespace ferrow::WorkerPool
