// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/Pool.h"

#include "Platform/Base/Cancellation.h"
#include "WorkerPool/JobClock.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

namespace ferrow::WorkerPool {

namespace {

using std::chrono::steady_clock;

constexpr std::array kinds{WorkerKind::photos, WorkerKind::heicWriting, WorkerKind::logos};

/// More callers than these wait. As many photos as a batch may have in hand: how many are good for a machine is said by
/// whoever asks for them.
constexpr int mostWorkers(WorkerKind kind)
{
    return kind == WorkerKind::logos ? 2 : 64;
}

/// After these a worker is replaced: whatever codecs lose, and whatever a photo may have done to one, ends with it. A
/// new one costs as much as two small photos (docs/workers.md).
constexpr std::uint32_t mostJobs = 32;

constexpr std::chrono::seconds longestRest{30};

/// How often idle workers are looked at.
constexpr std::chrono::milliseconds lookingInterval{2'000};

/// For what is killed when the pool closes, all together.
constexpr std::chrono::milliseconds patienceAtClose{500};

/// After so many starts in a row that brought no worker, photos are refused unasked until a while has passed: what
/// keeps the program from starting is seldom over with the next photo, and a batch has thousands.
constexpr int mostFailedStarts = 3;
constexpr std::chrono::seconds pauseOfStarts{5};

/// For a stem to get ready: a thousand times what it takes, as machines may be very busy and programs traced. One that
/// is slow would be slow again.
constexpr std::chrono::seconds patienceForStart{60};

} // namespace

Pool::Pool(QByteArray program) : program_(std::move(program))
{
    const std::scoped_lock lock(mutex_);
    workers(WorkerKind::photos).needsStem = hasKeeper();
}

Pool::~Pool()
{
    close();
}

std::unique_ptr<WorkerProcess> Pool::take(WorkerKind kind, Purpose purpose, const Worker::JobLimits& limits,
                                          const std::stop_token& stop)
{
    std::unique_lock lock(mutex_);
    Workers& own = workers(kind);
    std::unique_ptr<WorkerProcess> worker;
    for (JobClock clock(Allowance::base);;) {
        workerReady_.wait_for(lock, stop, clock.slice(), [&] {
            worker = isClosed_ ? nullptr : takeOne(kind, purpose, limits);
            return isClosed_ || worker;
        });
        if (worker)
            break;
        throwIfCanceled(stop);
        if (!own.needsStem)
            clock.restart(); // Others' jobs end by clocks of their own.
        if (isClosed_ || clock.isOver())
            throw NoWorker{};
    }
    ++own.busy;
    return worker;
}

/// Null where it has to be waited for. Throws NoWorker.
std::unique_ptr<WorkerProcess> Pool::takeOne(WorkerKind kind, Purpose purpose, const Worker::JobLimits& limits)
{
    Workers& own = workers(kind);
    while (purpose == Purpose::reading && !own.idle.empty()) {
        std::unique_ptr<WorkerProcess> worker = std::move(own.idle.back());
        own.idle.pop_back();
        if (worker->isFit())
            return worker;
    }
    if (own.busy >= mostWorkers(kind))
        return nullptr;
    if (own.stem && own.stem->isGone())
        loseStem(own);
    if (own.stem) {
        if (auto worker = own.stem->fork(limits))
            return worker;
        throw NoWorker{};
    }
    const bool pauses = own.failedStarts >= mostFailedStarts && steady_clock::now() - own.lastFailure < pauseOfStarts;
    if (pauses || !hasKeeper())
        throw NoWorker{};
    own.needsStem = true;
    workToKeep_.notify_all();
    return nullptr;
}

void Pool::noteFailedStart(Workers& own)
{
    ++own.failedStarts;
    own.lastFailure = steady_clock::now();
}

/// It ends with the last worker that was forked from it.
void Pool::loseStem(Workers& own)
{
    if (own.stem->hasSpoken())
        own.failedStarts = 0;
    else
        noteFailedStart(own);
    lostStems_.push_back(std::exchange(own.stem, nullptr));
    workToKeep_.notify_all();
}

/// Whether there is one, now. Where the system allowed no thread, it may by the time that the next photo comes.
bool Pool::hasKeeper()
{
    try {
        if (!keeper_.joinable())
            keeper_ = std::jthread([this](const std::stop_token& stop) { keep(stop); });
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void Pool::giveBack(std::unique_ptr<WorkerProcess> worker, Condition condition)
{
    const std::scoped_lock lock(mutex_);
    Workers& own = workers(worker->kind());
    --own.busy;
    if (worker->hello())
        lastHello_ = worker->hello();
    // One that is still getting ready is waited for by the next photo: another would take as long.
    if (condition == Condition::silent && own.stem == worker->stem()) {
        const bool isTooLate = steady_clock::now() - own.stem->startedAt() > patienceForStart;
        if (!own.stem->hasSpoken() && isTooLate)
            own.failedStarts = mostFailedStarts;
        if (own.stem->hasSpoken() || isTooLate)
            loseStem(own);
    }
    if (condition == Condition::fit && worker->jobs() < mostJobs && !isClosed_) {
        worker->idleSince = steady_clock::now();
        own.idle.push_back(std::move(worker));
    }
    workerReady_.notify_all();
    workToKeep_.notify_all();
}

std::optional<Worker::Hello> Pool::lastHello()
{
    const std::scoped_lock lock(mutex_);
    return lastHello_;
}

void Pool::close()
{
    {
        const std::scoped_lock lock(mutex_);
        isClosed_ = true;
        workerReady_.notify_all();
    }
    endAll();
    keeper_.request_stop();
    if (keeper_.joinable())
        keeper_.join();
    endAll(); // Of what it was about to start.
}

void Pool::endAll()
{
    std::array<Workers, workerKinds> all;
    std::vector<std::shared_ptr<WorkerStem>> lost;
    {
        const std::scoped_lock lock(mutex_);
        lost.swap(lostStems_);
        for (const WorkerKind kind : kinds) {
            std::swap(all[std::size_t(kind)].stem, workers(kind).stem);
            std::swap(all[std::size_t(kind)].idle, workers(kind).idle);
        }
    }
    const auto end = steady_clock::now() + patienceAtClose;
    for (Workers& each : all) {
        each.idle.clear();
        if (each.stem)
            each.stem->endsWithin(std::chrono::duration_cast<std::chrono::milliseconds>(end - steady_clock::now()));
    }
}

bool Pool::needsStem() const
{
    return std::ranges::any_of(workers_, &Workers::needsStem);
}

void Pool::startStem(std::unique_lock<std::mutex>& lock)
{
    const auto kind = *std::ranges::find_if(kinds, [this](WorkerKind each) { return workers(each).needsStem; });
    Workers& own = workers(kind);
    lock.unlock();
    std::shared_ptr<WorkerStem> started = WorkerStem::start(program_, kind);
    lock.lock();
    own.needsStem = false; // Whoever asked meanwhile, asked for this one.
    if (!started)
        noteFailedStart(own);
    own.stem = std::move(started);
    workerReady_.notify_all();
}

/// Ends those that are gone or that nobody needs.
void Pool::retire(std::unique_lock<std::mutex>& lock)
{
    const auto now = steady_clock::now();
    auto lost = std::exchange(lostStems_, {});
    std::vector<std::unique_ptr<WorkerProcess>> ended;
    for (const WorkerKind kind : kinds) {
        auto& idle = workers(kind).idle;
        const auto unneeded = std::ranges::stable_partition(
            idle, [now](const auto& worker) { return worker->isFit() && now - worker->idleSince < longestRest; });
        std::ranges::move(unneeded, std::back_inserter(ended));
        idle.erase(unneeded.begin(), unneeded.end());
    }
    lock.unlock();
    lost.clear();
    ended.clear();
    lock.lock();
}

bool Pool::hasIdle() const
{
    return std::ranges::any_of(workers_, [](const Workers& own) { return !own.idle.empty(); });
}

void Pool::keep(const std::stop_token& stop)
{
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
        if (needsStem()) {
            startStem(lock);
            continue;
        }
        retire(lock);
        if (hasIdle())
            workToKeep_.wait_for(lock, stop, lookingInterval, [this] { return needsStem() || !lostStems_.empty(); });
        else
            workToKeep_.wait(lock, stop, [this] { return needsStem() || !lostStems_.empty() || hasIdle(); });
    }
}

} // namespace ferrow::WorkerPool
