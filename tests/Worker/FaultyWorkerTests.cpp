// SPDX-License-Identifier: GPL-3.0-or-later
#include "OddWorker.h"
#include "Processes.h"

#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Support/Files.h"
#include "Support/NoThreads.h"
#include "WorkerPool/WorkerAnswerer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <future>
#include <thread>

namespace ferrow::WorkerPool {

namespace {

using test::MemoryFile;

bool isOver(const std::future<bool>& job)
{
    return job.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

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

    /// Whether the photo was refused for the want of a worker.
    bool hasNoWorker(WorkerAnswerer& workers)
    {
        const auto error = test::errorOf<ImagePipelineError>([&] {
            return workers.inspect({{photo_.descriptor(), photo_.size()}, test::none}, {});
        });
        return error == std::optional(ImagePipelineError(ImagePipelineError::workerUnavailable));
    }

    int positionOfPhoto() { return int(::lseek(photo_.descriptor(), 0, SEEK_CUR)); }

    /// Whether the answer to an export of that quality was believed. What it wrote is in `output_`.
    bool frames(double quality)
    {
        Engine::FrameRequest request;
        request.source = {photo_.descriptor(), photo_.size()};
        request.outputDescriptor = output_.descriptor();
        request.expectedSize = request.composition.canvasSize = {3, 2};
        request.quality = quality;
        return !test::errorOf<ImagePipelineError>([&] { return workers_.frame(request, {}), 0; });
    }

    const MemoryFile photo_{"photo"};
    const MemoryFile output_{""};
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
    EXPECT_FALSE(frames(test::writesNothing));
    EXPECT_FALSE(frames(test::leavesHole));
    EXPECT_TRUE(frames(test::writesSomething));
}

TEST_F(FaultyWorker, takesNoRoomBesideItsOutput)
{
    constexpr std::int64_t megabyte = 1 << 20;
    for (const double quality : {test::reserves, test::swells}) {
        SCOPED_TRACE(quality);
        struct stat status {};
        frames(quality);
        ::fstat(output_.descriptor(), &status);
        EXPECT_LE(status.st_blocks * S_BLKSIZE, 40 * megabyte);
        EXPECT_LE(status.st_size, 40 * megabyte);
    }
}

TEST_F(FaultyWorker, thatFramesReadsNothingElseAndIsGoneAfterwards)
{
    EXPECT_FALSE(refuses(test::none)); // So that one is there that has read.
    EXPECT_TRUE(frames(test::lingers));
    const int position = positionOfPhoto();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(positionOfPhoto(), position);
    EXPECT_FALSE(refuses(test::none));
    EXPECT_EQ(workers_.inspect({{photo_.descriptor(), photo_.size()}, test::none}, {}).storedSize.height, 3);
}

TEST_F(FaultyWorker, thatWasKilledIsReplacedUnseen)
{
    // Those that were killed are waited for by another thread.
    const auto stem = [] {
        auto stems = test::childrenOf(::getpid());
        while (stems.size() != 1)
            stems = test::childrenOf(::getpid());
        return stems.front();
    };
    {
        // Not yet asked anything; and while idle, with and without what it was forked from.
        const auto worker = pool_->take(WorkerKind::photos, Purpose::reading, {1 << 20, 60}, {});
        ::kill(stem(), SIGKILL);
    }
    EXPECT_FALSE(refuses(test::none));
    for (const pid_t worker : test::childrenOf(stem()))
        ::kill(worker, SIGKILL);
    EXPECT_FALSE(refuses(test::none));
    const pid_t killed = stem();
    ::kill(killed, SIGKILL);
    EXPECT_FALSE(refuses(test::none));
    // What outlives its stem for a moment is not the one that is at work next.
    while (stem() == killed || test::childrenOf(stem()).empty())
        EXPECT_FALSE(refuses(test::none));
    // At work.
    auto job = std::async(std::launch::async, [&] { return refuses(test::completes); });
    while (positionOfPhoto() != test::waits && !isOver(job))
        std::this_thread::yield();
    ::lseek(photo_.descriptor(), test::goesOn, SEEK_SET);
    ::kill(stem(), SIGKILL);
    EXPECT_FALSE(job.get());
}

namespace {

/// A worker's program that writes a line each time that it is started, and does as `text` says.
class CountedProgram {
public:
    explicit CountedProgram(const QByteArray& text)
        : program_(folder_.write("program", "#!/bin/sh\necho >>'" + folder_.file("starts").path() + "'\n" + text))
    {
        ::chmod(program_.path().constData(), 0700);
    }
    [[nodiscard]] QByteArray path() const { return program_.path(); }
    [[nodiscard]] qsizetype starts() const { return test::readFile(folder_.file("starts")).size(); }

private:
    test::TemporaryFolder folder_;
    FileUrl program_;
};

} // namespace

TEST_F(FaultyWorker, thatCannotBeStartedIsToldAsThatAfterFewTries)
{
    struct Row {
        const char* name;
        QByteArray text;
        qsizetype most; ///< Of starts, for all photos together.
    };
    constexpr qsizetype some = 10;
    for (const Row& row : {Row{"ends at once", "exit 1", some}, Row{"is killed", "kill -9 $$", some},
                           Row{"has no program to become", "exec /nowhere/ferrow-worker", some},
                           Row{"lives, and all that it forks ends unheard", "exec '" ODD_WORKER_PROGRAM "' mute", 1}}) {
        SCOPED_TRACE(row.name);
        const CountedProgram program(row.text);
        WorkerAnswerer none(std::make_shared<Pool>(program.path()), 1'000'000);
        std::vector<std::future<void>> callers;
        for (int i = 0; i < 4; ++i)
            callers.push_back(std::async(std::launch::async, [&] {
                for (int photo = 0; photo < 5; ++photo)
                    EXPECT_TRUE(hasNoWorker(none));
            }));
        for (auto& caller : callers)
            caller.get();
        EXPECT_LE(program.starts(), row.most);
    }
    WorkerAnswerer none(std::make_shared<Pool>("/nowhere/ferrow-worker"), 1'000'000);
    EXPECT_TRUE(hasNoWorker(none));
    EXPECT_EQ(test::errorOf<LogoAssetError>([&] {
                  return none.rasterizeLogo({{photo_.descriptor(), 5}, 9}, {});
              }),
              std::optional(LogoAssetError{.value = LogoAssetError::Case::workerUnavailable}));
}

TEST_F(FaultyWorker, thatIsSlowToStartIsWaitedForAndNotStartedAgain)
{
    const test::TemporaryFolder folder;
    const QByteArray go = folder.file("go").path();
    ASSERT_EQ(::mkfifo(go.constData(), 0600), 0);
    const Descriptor pipe(::open(go.constData(), O_RDWR | O_CLOEXEC));
    const CountedProgram program("read line <'" + go + "'\nexec '" ODD_WORKER_PROGRAM "'");
    WorkerAnswerer slow(std::make_shared<Pool>(program.path()), 1'000'000);
    EXPECT_TRUE(hasNoWorker(slow));
    ASSERT_EQ(::write(pipe.get(), "\n", 1), 1);
    EXPECT_FALSE(hasNoWorker(slow));
    EXPECT_EQ(program.starts(), 1);
}

TEST_F(FaultyWorker, isToldAsNotStartedForAsLongAsNoThreadIsToBeHad)
{
    std::optional<test::NoThreads> none(std::in_place);
    WorkerAnswerer workers(std::make_shared<Pool>(ODD_WORKER_PROGRAM), 1'000'000);
    EXPECT_TRUE(hasNoWorker(workers));
    none.reset();
    EXPECT_FALSE(hasNoWorker(workers));
}

TEST_F(FaultyWorker, isKilledForAStop)
{
    struct Row {
        const char* name;
        int oddity;
        bool goesOn;
    };
    for (const Row& row : {Row{"deaf", test::deaf, false}, Row{"silent after its last row", test::completes, false},
                           Row{"still completing its last row", test::completes, true}}) {
        SCOPED_TRACE(row.name);
        ::lseek(photo_.descriptor(), 0, SEEK_SET);
        std::stop_source source;
        const std::jthread stopper([&](const std::stop_token& isOver) {
            while (positionOfPhoto() != test::waits && !isOver.stop_requested())
                std::this_thread::yield();
            source.request_stop();
            std::this_thread::sleep_for(std::chrono::milliseconds(500)); // Longer than others are waited for.
            if (row.goesOn)
                ::lseek(photo_.descriptor(), test::goesOn, SEEK_SET);
        });
        if (row.goesOn)
            EXPECT_FALSE(refuses(row.oddity, source.get_token()));
        else
            EXPECT_THROW(static_cast<void>(refuses(row.oddity, source.get_token())), Canceled);
    }
}

TEST(MemoryBudget, letsInWhatFitsAndRunsTheLargestAlone)
{
    MemoryBudget memory(100);
    std::stop_source stopped; // Whoever would have to wait is canceled instead.
    stopped.request_stop();
    const auto fits = [&](std::int64_t bytes) {
        return !test::errorOf<Canceled>(
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
    // Not for ever: whoever waits for long gets by, as far as half as much is left.
    static_cast<void>(memory.acquire(50, {}));
}

} // namespace ferrow::WorkerPool
