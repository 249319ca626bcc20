// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WorkerPool/WorkerProcess.h"

#include <QByteArray>

#include <array>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

namespace ferrow::WorkerPool {

/// Why there is no worker: its program can't be started, or the pool is closed.
struct NoWorker {};

/// Keeps workers: starts them when callers need more, hands each to one caller at a time, and ends those that broke,
/// that have worked long enough, or that nobody has needed for a while. One thread of its own starts and ends all of
/// them, since the kernel ties a worker's life to the thread that started it. Safe from several threads.
class Pool {
public:
    /// Starts the first worker for photos in the background.
    explicit Pool(QByteArray program);
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool();

    enum class Condition { fit, broken };

    /// Waits for an idle worker. Throws NoWorker and Cancelled.
    [[nodiscard]] std::unique_ptr<WorkerProcess> take(WorkerKind kind, const std::stop_token& stop);
    /// A broken worker is killed at once, and replaced.
    void giveBack(std::unique_ptr<WorkerProcess> worker, Condition condition);

    /// Ends all workers, those at work among them, whose jobs then have no answer; they have to be given back before
    /// the pool goes. Waits a moment for the idle ones.
    void close();

private:
    struct Workers {
        std::vector<std::unique_ptr<WorkerProcess>> idle; ///< Used last, taken first.
        int busy = 0;
        int waiting = 0;
        int replacements = 0;
        unsigned failedStarts = 0;
    };

    void keep(const std::stop_token& stop);
    [[nodiscard]] bool needsStart(WorkerKind kind) const;
    [[nodiscard]] bool startOne(std::unique_lock<std::mutex>& lock);
    void retire();
    [[nodiscard]] bool hasIdle() const;
    [[nodiscard]] Workers& workers(WorkerKind kind) { return workers_[std::size_t(kind)]; }
    [[nodiscard]] const Workers& workers(WorkerKind kind) const { return workers_[std::size_t(kind)]; }

    const QByteArray program_;
    std::mutex mutex_;
    std::condition_variable_any workToKeep_;
    std::condition_variable_any workerReady_;
    std::array<Workers, workerKinds> workers_;
    std::vector<std::unique_ptr<WorkerProcess>> ended_;
    bool isClosed_ = false;
    std::jthread keeper_; ///< Last, so that it ends before what it works on goes.
};

} // namespace ferrow::WorkerPool
