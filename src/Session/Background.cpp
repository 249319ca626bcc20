// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/Background.h"

#include <QMetaObject>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace ferrow {

namespace {

std::atomic<int> leftBehindAndAlive = 0;

} // namespace

MainThreadRelay::MainThreadRelay() : core_(std::make_shared<Core>())
{
    core_->target = std::make_unique<QObject>();
}

MainThreadRelay::~MainThreadRelay()
{
    // The object takes the calls still queued for it along.
    const std::scoped_lock lock(core_->mutex);
    core_->target.reset();
}

void MainThreadRelay::Sender::post(std::function<void()> call) const
{
    const std::scoped_lock lock(core_->mutex);
    if (core_->target)
        QMetaObject::invokeMethod(core_->target.get(), std::move(call), Qt::QueuedConnection);
}

struct WorkQueue::State {
    std::mutex mutex;
    std::condition_variable workGiven;
    std::condition_variable threadEnded;
    std::deque<Task> tasks;
    std::vector<std::thread> threads;
    int maximumThreads = 1;
    int idle = 0;
    int alive = 0;
    bool closing = false;
    bool leftBehind = false;

    void serve();
};

void WorkQueue::State::serve()
{
    std::unique_lock lock(mutex);
    while (true) {
        ++idle;
        workGiven.wait(lock, [this] { return closing || !tasks.empty(); });
        --idle;
        if (closing)
            break;
        Task task = std::move(tasks.front());
        tasks.pop_front();
        lock.unlock();
        task();
        task = {}; // What it holds goes while nobody waits for the lock.
        lock.lock();
    }
    --alive;
    if (leftBehind)
        --leftBehindAndAlive;
    threadEnded.notify_all();
}

WorkQueue::WorkQueue(int threads, std::chrono::milliseconds patience)
    : state_(std::make_shared<State>()), patience_(patience)
{
    state_->maximumThreads = threads;
}

WorkQueue::~WorkQueue()
{
    close(patience_);
}

void WorkQueue::leaveBehind()
{
    close(std::chrono::milliseconds(0));
}

void WorkQueue::close(std::chrono::milliseconds patience)
{
    std::deque<Task> dropped;
    std::vector<std::thread> threads;
    bool allEnded = false;
    {
        std::unique_lock lock(state_->mutex);
        if (std::exchange(state_->closing, true))
            return; // Left behind before.
        dropped.swap(state_->tasks);
        threads.swap(state_->threads);
        state_->workGiven.notify_all();
        allEnded = state_->threadEnded.wait_for(lock, patience, [this] { return state_->alive == 0; });
        if (!allEnded) {
            state_->leftBehind = true;
            leftBehindAndAlive += state_->alive;
        }
    }
    for (std::thread& thread : threads)
        allEnded ? thread.join() : thread.detach();
}

void WorkQueue::post(Task task)
{
    std::unique_lock lock(state_->mutex);
    if (state_->closing)
        return;
    state_->tasks.push_back(std::move(task));
    if (state_->idle < int(state_->tasks.size()) && state_->alive < state_->maximumThreads) {
        try {
            state_->threads.emplace_back([state = state_] { state->serve(); });
            ++state_->alive;
        } catch (const std::system_error&) {
            // The system allows no more threads. Those that run serve this task too.
            if (state_->alive == 0) {
                state_->tasks.clear();
                throw;
            }
        }
    }
    state_->workGiven.notify_one();
}

int WorkQueue::threadsLeftBehind()
{
    return leftBehindAndAlive;
}

} // namespace ferrow
