// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/Pool.h"

#include "Platform/Base/Cancellation.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ferrow::WorkerPool {

namespace {

using std::chrono::steady_clock;

constexpr std::array kinds{WorkerKind::photos, WorkerKind::logos};

/// More callers than these wait. A worker is ten megabytes, and codecs gain nothing from being many more than cores.
constexpr int mostWorkers(WorkerKind kind)
{
    return kind == WorkerKind::photos ? 12 : 2;
}

/// After these a worker is replaced: whatever codecs lose, and whatever a photo may have done to one, ends with it. A
/// new one costs as much as two small photos (docs/workers.md).
constexpr std::uint32_t mostJobs = 32;

constexpr std::chrono::seconds longestRest{30};

/// How often idle workers are looked at.
constexpr std::chrono::milliseconds lookingInterval{2'000};

/// For what is killed when the pool closes, all together.
constexpr std::chrono::milliseconds patienceAtClose{500};

} // namespace

Pool::Pool(QByteArray program) : program_(std::move(program))
{
    workers(WorkerKind::photos).needsStem = true;
    keeper_ = std::jthread([this](const std::stop_token& stop) { keep(stop); });
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
    const unsigned failedBefore = own.failedStarts;
    std::unique_ptr<WorkerProcess> worker;
    const bool isOver = workerReady_.wait(lock, stop, [&] {
        if (isClosed_ || own.failedStarts != failedBefore)
            return true;
        worker = takeOne(kind, purpose, limits);
        return worker != nullptr;
    });
    if (!isOver)
        throw Cancelled{};
    if (!worker)
        throw NoWorker{};
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
    if (own.stem && !own.stem->isGone()) {
        if (auto worker = own.stem->fork(limits))
            return worker;
        throw NoWorker{};
    }
    own.needsStem = true;
    workToKeep_.notify_all();
    return nullptr;
}

void Pool::giveBack(std::unique_ptr<WorkerProcess> worker, Condition condition)
{
    const std::scoped_lock lock(mutex_);
    Workers& own = workers(worker->kind());
    --own.busy;
    if (worker->hello())
        lastHello_ = worker->hello();
    // It ends with the last worker that was forked from it.
    if (condition == Condition::silent && own.stem == worker->stem())
        own.stem = nullptr;
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
    {
        const std::scoped_lock lock(mutex_);
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
    std::shared_ptr<WorkerStem> other = std::exchange(own.stem, nullptr);
    lock.unlock();
    other = WorkerStem::start(program_, kind);
    lock.lock();
    own.needsStem = false; // Whoever asked meanwhile, asked for this one.
    own.failedStarts += other ? 0 : 1;
    own.stem = std::move(other);
    workerReady_.notify_all();
}

/// Ends those that are gone or that nobody needs.
void Pool::retire(std::unique_lock<std::mutex>& lock)
{
    const auto now = steady_clock::now();
    std::vector<std::unique_ptr<WorkerProcess>> ended;
    for (const WorkerKind kind : kinds) {
        auto& idle = workers(kind).idle;
        const auto unneeded = std::ranges::stable_partition(
            idle, [now](const auto& worker) { return worker->isFit() && now - worker->idleSince < longestRest; });
        std::ranges::move(unneeded, std::back_inserter(ended));
        idle.erase(unneeded.begin(), unneeded.end());
    }
    lock.unlock();
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
            workToKeep_.wait_for(lock, stop, lookingInterval, [this] { return needsStem(); });
        else
            workToKeep_.wait(lock, stop, [this] { return needsStem() || hasIdle(); });
    }
}

} // namespace ferrow::WorkerPool
