// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <queue>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace ferrow {

/// Runs `operation(index)` for the indexes 0 … count−1 in order, at most `maximumConcurrency` at once on threads of its
/// own (where the system allows none, one after the other on the calling thread), and hands each result to
/// `collect(index, result)` on the calling thread in completion order; returns when no operation is left. `mayStart()`
/// is asked on the calling thread before each start; once it answers false nothing further is started. `operation` must
/// not throw; when one of the others does, what runs is awaited and the exception passed on. A `maximumConcurrency` of
/// 0 counts as 1.
template <typename Result>
void runBounded(std::size_t count, std::size_t maximumConcurrency, const std::function<Result(std::size_t)>& operation,
                const std::function<void(std::size_t, Result)>& collect, const std::function<bool()>& mayStart)
{
    std::mutex mutex;
    std::condition_variable workGiven;
    std::condition_variable resultReady;
    std::queue<std::size_t> work;
    std::queue<std::pair<std::size_t, Result>> results;
    bool closing = false;

    const auto serve = [&] {
        std::unique_lock lock(mutex);
        while (true) {
            workGiven.wait(lock, [&] { return closing || !work.empty(); });
            if (work.empty())
                return;
            const std::size_t index = work.front();
            work.pop();
            lock.unlock();
            Result result = operation(index);
            lock.lock();
            results.emplace(index, std::move(result));
            resultReady.notify_one();
        }
    };

    std::size_t next = 0;
    std::size_t running = 0;
    bool mayGoOn = true;
    std::vector<std::jthread> threads;
    // Goes before the threads do, however this function is left: they would wait for work for ever.
    const auto close = [&](void*) {
        const std::scoped_lock lock(mutex);
        closing = true;
        workGiven.notify_all();
    };
    const std::unique_ptr<void, decltype(close)> closer(&closing, close);

    const auto startNext = [&] {
        mayGoOn = mayGoOn && next < count && mayStart();
        if (!mayGoOn)
            return false;
        {
            const std::scoped_lock lock(mutex);
            work.push(next++);
        }
        ++running;
        workGiven.notify_one();
        return true;
    };

    while (running < std::max<std::size_t>(maximumConcurrency, 1) && startNext()) {
        try {
            threads.emplace_back(serve);
        } catch (const std::system_error&) {
            break; // The system allows no more threads: those that run serve what was queued for this one.
        }
    }
    while (threads.empty() && !work.empty()) {
        const std::size_t index = work.front();
        work.pop();
        --running;
        collect(index, operation(index));
        startNext();
    }
    while (running > 0) {
        std::unique_lock lock(mutex);
        resultReady.wait(lock, [&] { return !results.empty(); });
        auto [index, result] = std::move(results.front());
        results.pop();
        lock.unlock();
        --running;
        collect(index, std::move(result));
        startNext();
    }
}

} // namespace ferrow
