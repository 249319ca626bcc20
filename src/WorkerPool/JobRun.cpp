// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/JobRun.h"

#include "Platform/Base/Cancellation.h"

#include <chrono>
#include <utility>
#include <variant>

namespace ferrow::WorkerPool {

namespace {

/// A worker that was told to stop looks between two bands of rows. One that is deep inside a codec is killed.
constexpr std::chrono::milliseconds graceForStopping{300};

/// For a killed worker to be gone, before another is given what it was writing to.
constexpr std::chrono::milliseconds patienceForEnd{1'000};

std::unique_ptr<WorkerProcess> workerFrom(Pool& pool, WorkerKind kind, const std::stop_token& stop)
try {
    return pool.take(kind, stop);
} catch (const NoWorker&) {
    throw NoAnswer{};
}

} // namespace

JobRun::JobRun(Pool& pool, MemoryBudget& budget, WorkerKind kind, const std::stop_token& stop)
    : pool_(pool), budget_(budget), stop_(stop), stopSignal_(stop), worker_(workerFrom(pool, kind, stop))
{
    clock_.restart();
}

JobRun::~JobRun()
{
    if (condition_ == Pool::Condition::fit)
        worker_->allowMemory(0);
    pool_.giveBack(std::move(worker_), condition_);
}

Worker::Channel::Patience JobRun::patience()
{
    const bool heedsStop = !grace_ && !isCompleting_;
    return {.timeout = clock().slice(), .wakeDescriptor = heedsStop ? stopSignal_.descriptor() : -1};
}

const Worker::Hello& JobRun::greet()
{
    if (!worker_->hello()) {
        const Worker::Answer answer = listen();
        const auto* hello = std::get_if<Worker::Hello>(&answer.content);
        if (!hello)
            throw NoAnswer{};
        worker_->setHello(*hello);
    }
    return *worker_->hello();
}

Worker::Answer JobRun::ask(Worker::Request request, Allowance::Duration encoding)
{
    greet();
    clock_ = JobClock(Allowance::base + encoding);
    job_ = request.job = worker_->nextJob();
    send(Worker::encode(request));
    while (true) {
        Worker::Answer answer = listen();
        if (answer.job != job_)
            throw NoAnswer{};
        if (const auto* header = std::get_if<Worker::HeaderRead>(&answer.content)) {
            grant(*header);
        } else if (std::holds_alternative<Worker::LastRowComposed>(answer.content)) {
            if (std::exchange(isCompleting_, true))
                throw NoAnswer{};
            // A stop that was passed on came too late.
            if (grace_)
                clock_.restart();
            grace_.reset();
        } else if (std::holds_alternative<Worker::WasCancelled>(answer.content)) {
            if (!grace_)
                throw NoAnswer{};
            accept();
            throw Cancelled{};
        } else {
            return answer;
        }
    }
}

bool JobRun::mayBeAskedAgain(const NoAnswer& outcome)
{
    const bool hadOthers = worker_->jobs() > 1 || job_ == 0;
    return hadOthers && !outcome.timedOut && !grace_ && worker_->hasEndedWithin(patienceForEnd);
}

void JobRun::send(const Worker::Message& message)
{
    Worker::Channel::Patience patient = patience();
    patient.timeout = clock().left(); // What is half sent can't be taken up again.
    switch (worker_->channel().send(message, patient)) {
    case Outcome::done:
        return;
    case Outcome::woken:
        throw Cancelled{};
    case Outcome::timedOut:
        throw NoAnswer{.timedOut = true};
    case Outcome::closed:
        throw NoAnswer{};
    }
}

Worker::Answer JobRun::listen()
{
    while (true) {
        Worker::Received received;
        const Outcome outcome = worker_->channel().receive(received, patience());
        const bool isOver = clock().isOver(); // Counted whatever arrived, so that talking gains no time.
        if (outcome == Outcome::closed)
            throw NoAnswer{};
        if (outcome == Outcome::done) {
            if (auto answer = Worker::parseAnswer(received.bytes))
                return *std::move(answer);
            throw NoAnswer{};
        }
        if (outcome == Outcome::woken)
            passOnStop();
        else if (isOver && grace_)
            throw Cancelled{};
        else if (isOver)
            throw NoAnswer{.timedOut = true};
    }
}

void JobRun::passOnStop()
{
    if (job_ == 0) {
        accept(); // It has not been asked anything yet.
        throw Cancelled{};
    }
    grace_.emplace(graceForStopping);
    send(Worker::encode(Worker::Request{job_, Worker::Stop{}}));
}

void JobRun::grant(const Worker::HeaderRead& header)
{
    if (std::exchange(headerWasRead_, true))
        throw NoAnswer{};
    clock_.extend(Allowance::decoding(header.pixels, header.isHeif));
    if (header.waits && !grace_)
        waitForMemory(header.bytes);
}

void JobRun::waitForMemory(std::int64_t bytes)
{
    try {
        memory_ = budget_.acquire(bytes, stop_);
    } catch (const Cancelled&) {
        passOnStop();
        return;
    }
    worker_->allowMemory(bytes + bytes / 4);
    clock_.restart(); // Waiting was not the worker's time.
    send(Worker::encode(Worker::Request{job_, Worker::Proceed{}}));
}

} // namespace ferrow::WorkerPool
