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

/// Kept however long nobody needs them, so that the next photo does not wait for a start.
constexpr std::size_t keptIdle(WorkerKind kind)
{
    return kind == WorkerKind::photos ? 1 : 0;
}

/// After these a worker is replaced: whatever codecs lose, and whatever a photo may have done to one, ends with it. A
/// start costs as much as one small photo.
constexpr std::uint32_t mostJobs = 256;

constexpr std::chrono::seconds longestRest{30};

/// How often idle workers are looked at: one that was killed from outside would else stay in the process table until
/// the next photo.
constexpr std::chrono::milliseconds lookingInterval{2'000};

/// How soon a killed worker is looked for in the process table: most are gone within some milliseconds. Each further
/// look comes twice as late.
constexpr std::chrono::milliseconds firstLook{2};

/// For those that are killed when the pool closes, all together.
constexpr std::chrono::milliseconds patienceAtClose{500};

} // namespace

Pool::Pool(QByteArray program) : program_(std::move(program))
{
    workers(WorkerKind::photos).replacements = 1;
    keeper_ = std::jthread([this](const std::stop_token& stop) { keep(stop); });
}

Pool::~Pool()
{
    close();
}

std::unique_ptr<WorkerProcess> Pool::take(WorkerKind kind, const std::stop_token& stop)
{
    std::unique_lock lock(mutex_);
    Workers& own = workers(kind);
    const unsigned failedBefore = own.failedStarts;
    ++own.waiting;
    workToKeep_.notify_all();
    const bool isOver = workerReady_.wait(lock, stop, [&] {
        while (!own.idle.empty() && !own.idle.back()->isFit()) {
            ended_.push_back(std::move(own.idle.back()));
            own.idle.pop_back();
            workToKeep_.notify_all();
        }
        return isClosed_ || own.failedStarts != failedBefore || !own.idle.empty();
    });
    --own.waiting;
    if (!isOver)
        throw Cancelled{};
    if (isClosed_ || own.idle.empty())
        throw NoWorker{};
    std::unique_ptr<WorkerProcess> worker = std::move(own.idle.back());
    own.idle.pop_back();
    ++own.busy;
    return worker;
}

void Pool::giveBack(std::unique_ptr<WorkerProcess> worker, Condition condition)
{
    // Before anybody waits for its end: a busy core would otherwise slow down the next job.
    if (condition == Condition::broken)
        worker->kill();
    const std::scoped_lock lock(mutex_);
    Workers& own = workers(worker->kind());
    --own.busy;
    if (condition == Condition::fit && worker->jobs() < mostJobs && !isClosed_) {
        worker->idleSince = steady_clock::now();
        own.idle.push_back(std::move(worker));
        workerReady_.notify_all();
    } else {
        // One that died before its first word would do so again.
        own.replacements += worker->hello() ? 1 : 0;
        ended_.push_back(std::move(worker));
        workerReady_.notify_all();
    }
    workToKeep_.notify_all();
}

void Pool::close()
{
    {
        const std::scoped_lock lock(mutex_);
        isClosed_ = true;
        workerReady_.notify_all();
    }
    keeper_.request_stop();
    if (keeper_.joinable())
        keeper_.join();
    std::vector<std::unique_ptr<WorkerProcess>> ended;
    {
        const std::scoped_lock lock(mutex_);
        ended = std::exchange(ended_, {});
        for (const WorkerKind kind : kinds) {
            auto& idle = workers(kind).idle;
            std::ranges::move(idle, std::back_inserter(ended));
            idle.clear();
        }
    }
    for (const auto& worker : ended)
        worker->kill();
    const auto end = steady_clock::now() + patienceAtClose;
    for (const auto& worker : ended) // Whoever is still there then becomes the system's to wait for.
        static_cast<void>(
            worker->hasEndedWithin(std::chrono::duration_cast<std::chrono::milliseconds>(end - steady_clock::now())));
}

bool Pool::needsStart(WorkerKind kind) const
{
    const Workers& own = workers(kind);
    const int all = own.busy + int(own.idle.size());
    const bool isMissed = own.waiting > int(own.idle.size()) || own.replacements > 0;
    return !isClosed_ && isMissed && all < mostWorkers(kind);
}

/// One that is needed, if any is.
bool Pool::startOne(std::unique_lock<std::mutex>& lock)
{
    const auto kind = std::ranges::find_if(kinds, [this](WorkerKind each) { return needsStart(each); });
    if (kind == kinds.end())
        return false;
    Workers& own = workers(*kind);
    own.replacements = std::max(own.replacements - 1, 0);
    ++own.busy;
    lock.unlock();
    std::unique_ptr<WorkerProcess> worker = WorkerProcess::start(program_, *kind);
    lock.lock();
    --own.busy;
    if (worker) {
        worker->idleSince = steady_clock::now();
        own.idle.push_back(std::move(worker));
    } else {
        ++own.failedStarts;
    }
    workerReady_.notify_all();
    return true;
}

/// Moves those that are gone or that nobody needs to the ended ones.
void Pool::retire()
{
    const auto now = steady_clock::now();
    for (const WorkerKind kind : kinds) {
        auto& idle = workers(kind).idle;
        const auto gone = std::ranges::stable_partition(idle, [](const auto& worker) { return worker->isFit(); });
        workers(kind).replacements += int(gone.size());
        std::ranges::move(gone, std::back_inserter(ended_));
        idle.erase(gone.begin(), gone.end());
        while (idle.size() > keptIdle(kind) && now - idle.front()->idleSince >= longestRest) {
            ended_.push_back(std::move(idle.front()));
            idle.erase(idle.begin());
        }
    }
}

bool Pool::hasIdle() const
{
    return std::ranges::any_of(kinds, [this](WorkerKind kind) { return !workers(kind).idle.empty(); });
}

void Pool::keep(const std::stop_token& stop)
{
    std::unique_lock lock(mutex_);
    std::chrono::milliseconds pause = firstLook;
    while (!stop.stop_requested()) {
        if (startOne(lock))
            continue;
        retire();
        // One that can't be killed yet must not keep others from being started.
        std::erase_if(ended_, [](const auto& worker) { return worker->hasEnded(); });
        const std::size_t ending = ended_.size();
        const auto hasWork = [this, ending] {
            return ended_.size() != ending ||
                   std::ranges::any_of(kinds, [this](WorkerKind kind) { return needsStart(kind); });
        };
        if (ending > 0) {
            const bool isNew = workToKeep_.wait_for(lock, stop, pause, hasWork);
            pause = isNew ? firstLook : std::min(2 * pause, lookingInterval);
            continue;
        }
        pause = firstLook;
        if (hasIdle())
            workToKeep_.wait_for(lock, stop, lookingInterval, hasWork);
        else
            workToKeep_.wait(lock, stop, hasWork);
    }
}

} // namespace ferrow::WorkerPool
