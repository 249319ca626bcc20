// SPDX-License-Identifier: GPL-3.0-or-later
#include "OddWorker.h"
#include "Processes.h"

#include "Support/Files.h"
#include "Support/Pictures.h"
#include "WorkerPool/JobClock.h"
#include "WorkerPool/WorkerAnswerer.h"

#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <atomic>
#include <future>
#include <thread>

namespace ferrow::WorkerPool {

namespace {

using test::MemoryFile;
using namespace std::chrono_literals;

/// Polls, at most a minute.
template <typename Condition>
bool comes(const Condition& condition)
{
    for (int i = 0; i < 6'000; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

} // namespace

TEST(Pool, replacesAWorkerThatHasDoneItsShare)
{
    const MemoryFile photo("photo");
    const auto pool = std::make_shared<Pool>(ODD_WORKER_PROGRAM);
    WorkerAnswerer workers(pool, 1'000'000'000);
    const auto jobOfWorker = [&] {
        return workers.inspect({{photo.descriptor(), photo.size()}, test::none}, {}).storedSize.height;
    };
    EXPECT_EQ(jobOfWorker(), 1);
    const std::vector<pid_t> stems = test::childrenOf(::getpid());
    for (int i = 2; i <= 32; ++i)
        EXPECT_EQ(jobOfWorker(), i);
    EXPECT_EQ(jobOfWorker(), 1);
    EXPECT_EQ(test::childrenOf(::getpid()), stems);
}

TEST(Pool, diesWithTheProgramThatIsKilled)
{
    const test::TemporaryFolder folder;
    const QByteArray photo = test::encoded(OutputType::png, test::noise({600, 400}, rgb8));
    std::filesystem::create_directory(folder.file("in").path().toStdString());
    for (int i = 0; i < 200; ++i)
        folder.write("in/" + QByteArray::number(i) + ".png", photo);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0); // What it leaves behind becomes ours.
    std::string in = folder.file("in").path().toStdString();
    std::string out = folder.file("out").path().toStdString();
    char program[] = BATCH_PROGRAM;
    char option[] = "--output";
    char* const words[] = {program, option, out.data(), in.data(), nullptr};
    pid_t batch = 0;
    ASSERT_EQ(::posix_spawn(&batch, program, nullptr, nullptr, words, environ), 0);
    // A worker is at work by then. Stopped, it can't see for itself that its connection is closed.
    EXPECT_TRUE(comes([&] {
        return !test::namesIn(folder.file("out")).filter(QStringLiteral("_framed")).isEmpty() ||
               ::waitpid(batch, nullptr, WNOHANG) != 0;
    }));
    // So that it ends no worker any more by itself: nobody could wait for that one.
    ::kill(batch, SIGSTOP);
    EXPECT_TRUE(comes([] { return !test::childrenOf(::getpid(), 'T').empty(); }));
    std::vector<pid_t> workers = test::childrenOf(batch);
    ASSERT_EQ(workers.size(), 1U);
    const pid_t stem = workers.front();
    ::kill(stem, SIGSTOP);
    for (const pid_t worker : test::childrenOf(stem))
        ::kill(worker, SIGSTOP);
    // Others may have ended meanwhile.
    for (const pid_t worker : test::childrenOf(stem, 'T'))
        workers.push_back(worker);
    ::kill(batch, SIGKILL);
    ::waitpid(batch, nullptr, 0);
    for (const pid_t worker : workers) {
        int status = 0;
        EXPECT_TRUE(comes([&] { return ::waitpid(worker, &status, WNOHANG) == worker; }));
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
        if (status == 0)
            ::kill(worker, SIGKILL);
    }
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
}

TEST(JobClock, countsALateLookAsOneSecond)
{
    JobClock clock(1'200ms);
    std::this_thread::sleep_for(1'300ms); // As if this machine had slept.
    EXPECT_FALSE(clock.isOver());
    clock.extend(100ms);
    EXPECT_GT(clock.slice(), 200ms);
    std::this_thread::sleep_for(400ms);
    EXPECT_TRUE(clock.isOver());
}

TEST(Allowance, isManyTimesWhatAMegapixelTakes)
{
    using namespace Allowance;
    struct Row {
        const char* name;
        Duration allowed;
        int measured; ///< Milliseconds a megapixel.
    };
    constexpr PixelSize largest{20'000, 10'000};
    for (const Row& row : {Row{"decoding a JPEG", decoding(largest.width * largest.height, false), 10},
                           Row{"decoding a HEIC", decoding(largest.width * largest.height, true), 30},
                           Row{"encoding a PNG", encoding(largest, ExportFormat::png), 13},
                           Row{"encoding a HEIC", encoding(largest, ExportFormat::heic), 380}})
        EXPECT_GE(row.allowed.count(), 200 * 8 * row.measured) << row.name;
}

TEST(MemoryBudget, letsThoseThatExceedItWorkOneAfterTheOther)
{
    MemoryBudget memory(1);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    const auto work = [&] {
        for (int i = 0; i < 100; ++i) {
            const auto share = memory.acquire(2, {});
            most = std::max(most.load(), ++inside);
            std::this_thread::yield();
            --inside;
        }
    };
    {
        const std::jthread other(work);
        work();
    }
    EXPECT_EQ(most, 1);

    const PixelSize size{1800, 1200}; // Encoding it takes more than what is given unasked.
    const MemoryFile in(test::encoded(OutputType::jpeg, test::flat(size, rgb8, {200, 100, 50})));
    WorkerAnswerer workers(std::make_shared<Pool>(WORKER_PROGRAM), 1);
    const auto framed = [&] {
        const MemoryFile out;
        Engine::FrameRequest request;
        request.source = {in.descriptor(), in.size()};
        request.outputDescriptor = out.descriptor();
        request.expectedSize = request.composition.canvasSize = size;
        request.format = ExportFormat::heic;
        workers.frame(request, {});
        return test::decoded(out.bytes()).size();
    };
    auto other = std::async(std::launch::async, framed);
    EXPECT_EQ(framed(), size);
    EXPECT_EQ(other.get(), size);
}

} // namespace ferrow::WorkerPool
