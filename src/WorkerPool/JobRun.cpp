// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/JobRun.h"

#include "Engine/MemoryNeed.h"
#include "Platform/Base/Cancellation.h"

#include <poll.h>

#include <array>
#include <chrono>
#include <utility>
#include <variant>

namespace ferrow::WorkerPool {

namespace {

/// A worker that was told to stop looks between two bands of rows. One that is deep inside a codec is killed.
constexpr std::chrono::milliseconds graceForStopping{300};

/// An export whose last row is composed is completed, unless the worker takes longer than this from when it was to
/// stop: large HEICs do, and whoever has been taken over.
constexpr std::chrono::milliseconds graceForCompleting{1'000};

/// For a killed worker to be gone, before another is given what it was writing to, or that gets its name. Many times
/// what the system takes: it frees the memory of a large photo meanwhile.
constexpr std::chrono::milliseconds patienceForEnd{10'000};

/// Before another is asked for in the place of one that ended without a word. The system may be short of processes for
/// a moment, and a stem that is ending takes one to be gone.
constexpr std::array pausesBeforeOthers{std::chrono::milliseconds(20), std::chrono::milliseconds(200)};

std::unique_ptr<WorkerProcess> workerFrom(Pool& pool, const Assignment& wanted, const std::stop_token& stop)
try {
    return pool.take(wanted.kind, wanted.purpose, wanted.limits, stop);
} catch (const NoWorker&) {
    throw NoAnswer{.hadNoWorker = true};
}

} // namespace

JobRun::JobRun(Pool& pool, MemoryBudget& budget, const Assignment& assignment, const std::stop_token& stop)
    : pool_(pool), budget_(budget), assignment_(assignment), stop_(stop), stopSignal_(stop),
      worker_(workerFrom(pool, assignment, stop))
{
    clock_.restart();
}

JobRun::~JobRun()
{
    if (!worker_)
        return;
    if (condition_ == Pool::Condition::fit)
        worker_->allowMemory(0);
    pool_.giveBack(std::move(worker_), condition_);
}

void JobRun::accept()
{
    if (assignment_.purpose == Purpose::reading)
        condition_ = Pool::Condition::fit;
}

Worker::Channel::Patience JobRun::patience()
{
    return {.timeout = clock().slice(), .wakeDescriptor = grace_ ? -1 : stopSignal_.descriptor()};
}

const Worker::Hello& JobRun::greet()
{
    for (std::size_t others = 0; !worker_->hello(); ++others) {
        try {
            static_cast<void>(listen());
        } catch (const NoAnswer& outcome) {
            if (outcome.timedOut)
                condition_ = Pool::Condition::silent;
            if (outcome.timedOut || others == pausesBeforeOthers.size())
                throw NoAnswer{.timedOut = outcome.timedOut, .hadNoWorker = true};
            takeAnother(pausesBeforeOthers[others]);
        }
    }
    return *worker_->hello();
}

void JobRun::takeAnother(std::chrono::milliseconds pause)
{
    pool_.giveBack(std::move(worker_), Pool::Condition::broken);
    pollfd stopped{stopSignal_.descriptor(), POLLIN, 0};
    ::poll(&stopped, 1, int(pause.count())); // Asking for one heeds the stop.
    worker_ = workerFrom(pool_, assignment_, stop_);
    clock_.restart();
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
            if (grace_) // The stop that was passed on came too late.
                grace_.emplace(graceForCompleting);
        } else if (std::holds_alternative<Worker::WasCanceled>(answer.content)) {
            if (!grace_)
                throw NoAnswer{};
            accept();
            throw Canceled{};
        } else {
            return answer;
        }
    }
}

bool JobRun::mayBeAskedAgain(const NoAnswer& outcome)
{
    if (outcome.hadNoWorker)
        return false;
    // What its job can't have done to it: an earlier one may have, or the end of the process it was forked from.
    const bool isInnocent = worker_->jobs() > 1 || worker_->stem()->isGone();
    return isInnocent && !outcome.timedOut && !grace_ && worker_->endsWithin(patienceForEnd);
}

void JobRun::awaitEnd()
{
    if (!worker_->endsWithin(patienceForEnd))
        throw NoAnswer{};
}

void JobRun::send(const Worker::Message& message)
{
    Worker::Channel::Patience patient = patience();
    patient.timeout = clock().left(); // What is half sent can't be taken up again.
    switch (worker_->channel().send(message, patient)) {
    case Outcome::done:
        return;
    case Outcome::woken:
        throw Canceled{};
    case Outcome::timedOut:
        throw NoAnswer{.timedOut = true};
    case Outcome::closed:
        throw NoAnswer{};
    }
}

/// The first word, and that alone, says who a worker is.
void JobRun::introduce(const Worker::Answer& answer, Worker::Received& received)
{
    const auto* hello = std::get_if<Worker::Hello>(&answer.content);
    if ((hello != nullptr) == worker_->hello().has_value() || (hello && received.descriptors.size() != 1))
        throw NoAnswer{};
    if (hello)
        worker_->setHello(*hello, std::move(received.descriptors.front()));
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
            auto answer = Worker::parseAnswer(received.bytes);
            if (!answer)
                throw NoAnswer{};
            introduce(*answer, received);
            return *std::move(answer);
        }
        if (outcome == Outcome::woken)
            passOnStop();
        else if (isOver && grace_)
            throw Canceled{};
        else if (isOver)
            throw NoAnswer{.timedOut = true};
    }
}

void JobRun::passOnStop()
{
    if (job_ == 0) {
        accept(); // It has not been asked anything yet.
        throw Canceled{};
    }
    if (isCompleting_) {
        grace_.emplace(graceForCompleting);
        return;
    }
    grace_.emplace(graceForStopping);
    send(Worker::encode(Worker::Request{job_, Worker::Stop{}}));
}

void JobRun::grant(const Worker::HeaderRead& header)
{
    const bool isExpected = assignment_.photoPixels == 0 || header.pixels == assignment_.photoPixels;
    const std::int64_t most = assignment_.ownBytes + Engine::MemoryNeed::mostOfPhoto(header.pixels);
    if (std::exchange(headerWasRead_, true) || !isExpected || header.bytes > most)
        throw NoAnswer{};
    clock_.extend(Allowance::decoding(header.pixels, header.isHeif));
    if (header.waits && !grace_)
        waitForMemory(header.bytes);
}

void JobRun::waitForMemory(std::int64_t bytes)
{
    try {
        memory_ = budget_.acquire(bytes, stop_);
    } catch (const Canceled&) {
        passOnStop();
        return;
    }
    worker_->allowMemory(bytes + bytes / 4);
    clock_.restart(); // Waiting was not the worker's time.
    send(Worker::encode(Worker::Request{job_, Worker::Proceed{}}));
}

} // namespace ferrow::WorkerPool
