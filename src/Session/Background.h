// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>

namespace ferrow {

/// Brings calls from worker threads to the thread that made the relay. What arrives after the relay has gone is
/// dropped, so that a model may keep one as a member and be destroyed while work still runs.
class MainThreadRelay {
    struct Core {
        std::mutex mutex;
        std::unique_ptr<QObject> target; ///< Null once the relay has gone.
    };

public:
    /// The worker's end: copied freely, outlives the relay.
    class Sender {
    public:
        /// Queues `call` for the relay's thread; calls of one worker arrive in order. Any thread.
        void post(std::function<void()> call) const;

    private:
        friend class MainThreadRelay;
        explicit Sender(std::shared_ptr<Core> core) : core_(std::move(core)) {}
        std::shared_ptr<Core> core_;
    };

    MainThreadRelay();
    MainThreadRelay(const MainThreadRelay&) = delete;
    MainThreadRelay& operator=(const MainThreadRelay&) = delete;
    ~MainThreadRelay();

    [[nodiscard]] Sender sender() const { return Sender(core_); }

private:
    std::shared_ptr<Core> core_;
};

/// A few threads that do the work of one model, made as they are needed. Tasks share nothing with the model but values
/// and a relay's sender: one that can't be stopped in time (a codec in the middle of a huge picture) is left behind.
class WorkQueue {
public:
    using Task = std::function<void()>;

    static constexpr std::chrono::milliseconds defaultPatience{800};

    /// `patience` is how long the destructor waits for tasks that run.
    explicit WorkQueue(int threads, std::chrono::milliseconds patience = defaultPatience);
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;
    /// Drops what waits, then waits for what runs as long as patience lasts.
    ~WorkQueue();

    /// `task` must not throw. Throws std::system_error where the system allows not even one thread; the task is then
    /// forgotten.
    void post(Task task);

    /// Drops what waits and waits for nothing, neither now nor in the destructor; the queue takes no further tasks.
    void leaveBehind();

    /// Threads of all queues that were left behind and still run. While there are any, a program must end by
    /// std::_Exit: the objects that static destructors take down are still in use.
    [[nodiscard]] static int threadsLeftBehind();

private:
    struct State;

    void close(std::chrono::milliseconds patience);

    std::shared_ptr<State> state_;
    std::chrono::milliseconds patience_;
};

} // namespace ferrow
