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

/// Runs `operation(index, release)` for the indexes 0 … count−1 in order, at most `maximumConcurrency` at once on
/// threads of its own (where the system allows none, one after the other on the calling thread), and hands each result
/// to `collect(index, result)` on the calling thread in completion order; returns when no operation is left. One that
/// needs no processor any more, but has to wait, may call `release()`: another then starts in its place, as long as no
/// more than `maximumConcurrency` wait so. `mayStart()` is asked on the calling thread before each start; once it
/// answers false nothing further is started. `operation` must not throw; when one of the others does, what runs is
/// awaited and the exception passed on. A `maximumConcurrency` of 0 counts as 1.
template <typename Result>
void runReleasing(std::size_t count, std::size_t maximumConcurrency,
                  const std::function<Result(std::size_t, const std::function<void()>&)>& operation,
                  const std::function<void(std::size_t, Result)>& collect, const std::function<bool()>& mayStart)
{
    struct Ended {
        std::size_t index;
        Result result;
        bool wasReleased;
    };
    const std::size_t most = std::max<std::size_t>(maximumConcurrency, 1);
    std::mutex mutex;
    std::condition_variable workGiven;
    std::condition_variable newsReady;
    std::queue<std::size_t> work;
    std::queue<Ended> results;
    std::size_t released = 0; // Since the calling thread looked last.
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
            bool isReleased = false;
            const auto release = [&] {
                const std::scoped_lock releasing(mutex);
                if (std::exchange(isReleased, true))
                    return;
                ++released;
                newsReady.notify_one();
            };
            Result result = operation(index, release);
            lock.lock();
            results.push({index, std::move(result), isReleased});
            newsReady.notify_one();
        }
    };

    std::size_t next = 0;
    std::size_t running = 0;
    std::size_t waiting = 0; // Released.
    bool mayGoOn = true;
    bool hasThreads = true;
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
        if (hasThreads && threads.size() < running + waiting)
            try {
                threads.emplace_back(serve);
            } catch (const std::system_error&) {
                hasThreads = false; // The system allows no more: those that run serve what was queued for this one.
            }
        return true;
    };
    const auto fillUp = [&] {
        while (running < most && running + waiting < 2 * most && startNext())
            if (!hasThreads)
                return;
    };

    fillUp();
    while (threads.empty() && !work.empty()) {
        const std::size_t index = work.front();
        work.pop();
        --running;
        collect(index, operation(index, [] {}));
        startNext();
    }
    while (running + waiting > 0) {
        std::unique_lock lock(mutex);
        newsReady.wait(lock, [&] { return !results.empty() || released > 0; });
        running -= released;
        waiting += std::exchange(released, 0);
        if (!results.empty()) {
            Ended ended = std::move(results.front());
            results.pop();
            lock.unlock();
            --(ended.wasReleased ? waiting : running);
            collect(ended.index, std::move(ended.result));
        } else {
            lock.unlock();
        }
        fillUp();
    }
}

/// The same for operations that are at work until they end.
template <typename Result>
void runBounded(std::size_t count, std::size_t maximumConcurrency, const std::function<Result(std::size_t)>& operation,
                const std::function<void(std::size_t, Result)>& collect, const std::function<bool()>& mayStart)
{
    runReleasing<Result>(
        count, maximumConcurrency,
        [&operation](std::size_t index, const std::function<void()>&) { return operation(index); }, collect, mayStart);
}

} // namespace ferrow
