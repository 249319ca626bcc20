// SPDX-License-Identifier: GPL-3.0-or-later
#include "OddWorker.h"

#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Support/Files.h"
#include "WorkerPool/WorkerAnswerer.h"

#include <sys/wait.h>

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
             {"stands still", test::deaf},
         }) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(refuses(oddity));
        EXPECT_FALSE(refuses(test::none));
    }
    // What one says unasked is never taken for an answer. It may come so late that the next photo pays for it.
    EXPECT_FALSE(refuses(test::twice));
    static_cast<void>(refuses(test::none));
    EXPECT_FALSE(refuses(test::none));

    pool_->close();
    EXPECT_EQ(openDescriptors(), descriptorsBefore_);
    EXPECT_EQ(::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT), -1) << "a child is left";
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
        const std::jthread stopper([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            source.request_stop();
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
