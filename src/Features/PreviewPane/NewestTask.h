// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/Background.h"

#include <cstdint>
#include <functional>
#include <stop_token>

namespace ferrow {

/// Background work of which only the newest matters: one task runs at a time, and of those that wait for it the newest
/// alone is kept. Lives on the main thread.
class NewestTask {
public:
    /// What to do with a result, on the main thread; may be empty.
    using Deliver = std::function<void()>;
    /// Called on a worker thread. Must throw nothing but std::bad_alloc, after which nothing is delivered.
    using Work = std::function<Deliver(const std::stop_token&)>;

    NewestTask() = default;
    NewestTask(const NewestTask&) = delete;
    NewestTask& operator=(const NewestTask&) = delete;
    ~NewestTask();

    /// What runs already still delivers, before `work` starts.
    void run(Work work);
    /// Neither what runs nor what waits delivers any more.
    void stop();
    [[nodiscard]] bool isBusy() const { return isRunning_; }

private:
    void start(Work work);
    void finish(std::int64_t generation, const Deliver& deliver);

    Work waiting_;
    bool isRunning_ = false;
    std::int64_t generation_ = 0; ///< Grows with each stop.
    std::stop_source stop_;
    MainThreadRelay relay_;
    WorkQueue work_{1};
};

} // namespace ferrow
