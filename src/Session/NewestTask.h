// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/Background.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <stop_token>

namespace ferrow {

/// Background work of which only the newest matters: one task runs at a time, and of those that wait for it the newest
/// alone is kept. Lives on the main thread; what it calls there never comes before the call that asked has returned.
class NewestTask {
public:
    /// What to do with a result, on the main thread; may be empty.
    using Deliver = std::function<void()>;
    /// Called on a worker thread. Whatever it throws but Canceled is an error.
    using Work = std::function<Deliver(const std::stop_token&)>;
    /// Told on the main thread instead of a delivery: what the work threw, or std::system_error where the system allows
    /// no thread to do it on.
    using Failed = std::function<void(const std::exception_ptr&)>;

    /// `idle` is told on the main thread each time that a task has ended, with or without delivering, and none waits.
    /// `patience` is how long the destructor waits for what runs.
    explicit NewestTask(std::function<void()> idle = {},
                        std::chrono::milliseconds patience = WorkQueue::defaultPatience);
    NewestTask(const NewestTask&) = delete;
    NewestTask& operator=(const NewestTask&) = delete;
    ~NewestTask();

    /// What runs already still delivers, before `work` starts.
    void run(Work work, Failed failed = {});
    /// The newest answer wins: what runs is stopped and delivers nothing.
    void replace(Work work, Failed failed = {});
    /// Neither what runs nor what waits delivers any more.
    void stop();
    [[nodiscard]] bool isBusy() const { return isRunning_; }

private:
    struct Task {
        Work work;
        Failed failed;
    };

    void start(Task task);
    void finish(std::int64_t generation, const Deliver& deliver);

    std::function<void()> idle_;
    Task waiting_;
    bool isRunning_ = false;
    std::int64_t generation_ = 0; ///< Grows with each stop.
    std::stop_source stop_;
    MainThreadRelay relay_;
    WorkQueue work_;
};

} // namespace ferrow
