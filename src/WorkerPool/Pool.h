// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WorkerPool/WorkerProcess.h"

#include <QByteArray>

#include <array>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace ferrow::WorkerPool {

/// Why there is no worker: its program can't be started, or the pool is closed.
struct NoWorker {};

/// What a worker is wanted for. One that frames gets an output's descriptor, and therefore one job alone, as its first:
/// what an earlier photo did to it must not be able to reach into the output, nor its photo into what is written later.
/// One that checks an output must not have seen its photo, and has one job alone likewise.
enum class Purpose { reading, framing, checking };

/// Keeps workers: has them forked when callers need more, hands each to one caller at a time, and ends those that
/// broke, that have worked long enough, or that nobody has needed for a while. One thread of its own starts the
/// processes that they are forked from, since the kernel ties their life to the thread that started them. Safe from
/// several threads.
class Pool {
public:
    /// Gets ready for photos in the background.
    explicit Pool(QByteArray program);
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool();

    enum class Condition {
        fit,
        broken,
        silent, ///< Not a word in all its time: what it was forked from may be stuck.
    };

    /// An idle worker or a new one; waits where there are as many as there may be. `limits` hold for a new one. Throws
    /// Canceled, and NoWorker: at once where starting failed several times lately.
    [[nodiscard]] std::unique_ptr<WorkerProcess> take(WorkerKind kind, Purpose purpose, const Worker::JobLimits& limits,
                                                      const std::stop_token& stop);
    /// A worker that is not fit is killed at once.
    void giveBack(std::unique_ptr<WorkerProcess> worker, Condition condition);

    /// How the last worker that was given back is confined; none before.
    [[nodiscard]] std::optional<Worker::Hello> lastHello();

    /// Ends all workers, those at work among them, whose jobs then have no answer; they have to be given back before
    /// the pool goes. Waits a moment for the idle ones.
    void close();

private:
    struct Workers {
        std::shared_ptr<WorkerStem> stem;
        bool needsStem = false;
        std::vector<std::unique_ptr<WorkerProcess>> idle; ///< Used last, taken first.
        int busy = 0;
        int failedStarts = 0; ///< In a row: ended, or given up, without a word.
        std::chrono::steady_clock::time_point lastFailure;
    };

    void endAll();
    void keep(const std::stop_token& stop);
    [[nodiscard]] std::unique_ptr<WorkerProcess> takeOne(WorkerKind kind, Purpose purpose,
                                                         const Worker::JobLimits& limits);
    static void noteFailedStart(Workers& own);
    void loseStem(Workers& own);
    [[nodiscard]] bool hasKeeper();
    [[nodiscard]] bool needsStem() const;
    void startStem(std::unique_lock<std::mutex>& lock);
    void retire(std::unique_lock<std::mutex>& lock);
    [[nodiscard]] bool hasIdle() const;
    [[nodiscard]] Workers& workers(WorkerKind kind) { return workers_[std::size_t(kind)]; }

    const QByteArray program_;
    std::mutex mutex_;
    std::condition_variable_any workToKeep_;
    std::condition_variable_any workerReady_;
    std::array<Workers, workerKinds> workers_;
    std::vector<std::shared_ptr<WorkerStem>> lostStems_; ///< For the keeper to wait for.
    std::optional<Worker::Hello> lastHello_;
    bool isClosed_ = false;
    std::jthread keeper_; ///< Last, so that it ends before what it works on goes. None where the system allowed none.
};

} // namespace ferrow::WorkerPool
