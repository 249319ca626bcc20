// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "WorkerPool/JobClock.h"
#include "WorkerPool/MemoryBudget.h"
#include "WorkerPool/Pool.h"
#include "WorkerPool/StopSignal.h"

#include "Worker/Messages.h"

#include <optional>
#include <stop_token>

namespace ferrow::WorkerPool {

/// The worker is gone, stuck or talks nonsense, or there is none: the job has no answer. What that means depends on
/// what was asked.
struct NoAnswer {
    bool timedOut = false;
    bool hadNoWorker = false; ///< Nobody was asked: whatever is wrong is not wrong with the photo.
};

/// Who is wanted for a job, and what is known of it beforehand.
struct Assignment {
    WorkerKind kind = WorkerKind::photos;
    Purpose purpose = Purpose::reading;
    Worker::JobLimits limits;
    std::int64_t photoPixels = 0; ///< 0 where the header is to tell.
    std::int64_t ownBytes = 0;    ///< Most memory that it takes whatever the photo is, as an encoder's.
};

/// One request, from a worker for it to the answer. Used once, on the caller's thread.
class JobRun {
public:
    JobRun(Pool& pool, MemoryBudget& budget, const Assignment& assignment, const std::stop_token& stop);
    JobRun(const JobRun&) = delete;
    JobRun& operator=(const JobRun&) = delete;
    /// Gives the worker back: broken, unless accept() was called and it has not framed.
    ~JobRun();

    /// How the worker is confined: its first word. One that ends without is replaced, some times. Throws NoAnswer and
    /// Canceled.
    const Worker::Hello& greet();
    /// The request's answer or refusal. `encoding` is time that is allowed beside decoding. Throws NoAnswer and
    /// Canceled.
    [[nodiscard]] Worker::Answer ask(Worker::Request request, Allowance::Duration encoding = {});
    /// After NoAnswer: whether the worker may have suffered from an earlier job and is gone, so that another may be
    /// asked the same.
    [[nodiscard]] bool mayBeAskedAgain(const NoAnswer& outcome);
    /// What the worker said was found good.
    void accept();
    /// Returns once the worker is gone, with every descriptor that it had. Throws NoAnswer where it does not go.
    void awaitEnd();

private:
    using Outcome = Worker::Channel::Outcome;

    void takeAnother(std::chrono::milliseconds pause);
    [[nodiscard]] JobClock& clock() { return grace_ ? *grace_ : clock_; }
    [[nodiscard]] Worker::Channel::Patience patience();
    void send(const Worker::Message& message);
    /// The next thing that the worker says. Sends the stop on, and sees to it that it is heeded.
    [[nodiscard]] Worker::Answer listen();
    void introduce(const Worker::Answer& answer, Worker::Received& received);
    void passOnStop();
    void grant(const Worker::HeaderRead& header);
    void waitForMemory(std::int64_t bytes);

    Pool& pool_;
    MemoryBudget& budget_;
    Assignment assignment_;
    std::stop_token stop_;
    StopSignal stopSignal_;
    std::unique_ptr<WorkerProcess> worker_;
    Pool::Condition condition_ = Pool::Condition::broken;
    MemoryBudget::Share memory_;
    JobClock clock_{Allowance::base};
    std::uint32_t job_ = 0;
    std::optional<JobClock> grace_; ///< Runs once a stop was passed on.
    bool isCompleting_ = false;     ///< The last row is composed: no stop is passed on any more.
    bool headerWasRead_ = false;
};

} // namespace ferrow::WorkerPool
