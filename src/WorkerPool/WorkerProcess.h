// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Worker/Channel.h"
#include "Worker/Messages.h"

#include <QByteArray>

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace ferrow::WorkerPool {

/// One kind for photos; one for those that are written as HEIC, whose encoder takes a tenth of a second to load; and
/// one that may read fonts, for the text of PDF logos.
enum class WorkerKind { photos, heicWriting, logos };
inline constexpr int workerKinds = 3;

class WorkerProcess;

/// The process from which workers of a kind are forked: warmed up, behind most of the walls, and without ever seeing a
/// byte of a photo. Its end is theirs. Used by one thread at a time but for its end.
class WorkerStem : public std::enable_shared_from_this<WorkerStem> {
public:
    /// Null when the program can't be started. The kernel ends it with the calling thread, so that this must be one
    /// that lives as long as workers do.
    [[nodiscard]] static std::shared_ptr<WorkerStem> start(const QByteArray& program, WorkerKind kind);

    WorkerStem(const WorkerStem&) = delete;
    WorkerStem& operator=(const WorkerStem&) = delete;
    ~WorkerStem();

    /// Does not wait: whether there is one is found out by its first word. Null where the system refuses a connection.
    [[nodiscard]] std::unique_ptr<WorkerProcess> fork(const Worker::JobLimits& limits);
    /// Safe from several threads.
    [[nodiscard]] bool isGone() const { return channel_.isClosed(); }
    /// Whether a worker of it has ever said a word. Safe from several threads.
    [[nodiscard]] bool hasSpoken() const { return hasSpoken_; }
    void noteWord() { hasSpoken_ = true; }
    [[nodiscard]] std::chrono::steady_clock::time_point startedAt() const { return startedAt_; }
    [[nodiscard]] WorkerKind kind() const { return kind_; }

    /// Has it end, or kills it, and waits at most that long; whether it is gone. One that is deep in a file system
    /// which does not answer can't be killed before that does, and becomes the system's to wait for.
    bool endsWithin(std::chrono::milliseconds patience);

private:
    WorkerStem(pid_t process, WorkerKind kind, Descriptor socket);

    pid_t process_; ///< 0 once it is gone: the number may be another's by then.
    WorkerKind kind_;
    Worker::Channel channel_;
    std::atomic<bool> hasSpoken_ = false;
    const std::chrono::steady_clock::time_point startedAt_ = std::chrono::steady_clock::now();
};

/// A running worker with the connection to it. Used by one thread at a time.
class WorkerProcess {
public:
    WorkerProcess(std::shared_ptr<WorkerStem> stem, Descriptor socket);
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;
    /// Kills it, and does not wait.
    ~WorkerProcess();

    [[nodiscard]] WorkerKind kind() const { return stem_->kind(); }
    [[nodiscard]] const std::shared_ptr<WorkerStem>& stem() const { return stem_; }
    [[nodiscard]] Worker::Channel& channel() { return channel_; }

    /// How it is confined, once it has said so.
    [[nodiscard]] const std::optional<Worker::Hello>& hello() const { return hello_; }
    /// `process`: by which it is killed and its end awaited. What it sends besides from here on is not taken.
    void setHello(const Worker::Hello& hello, Descriptor process);
    /// Between jobs: neither gone nor talking unasked.
    [[nodiscard]] bool isFit() const { return hello_ ? !channel_.hasNews() : !channel_.isClosed(); }

    [[nodiscard]] std::uint32_t nextJob() { return ++jobs_; }
    [[nodiscard]] std::uint32_t jobs() const { return jobs_; }

    /// Lets it take that many bytes of address space beyond what small jobs may, or no more than those. Never more than
    /// this machine has.
    void allowMemory(std::int64_t bytes);
    void kill();
    /// Kills it and waits at most that long; whether it is gone, with all that it had open.
    [[nodiscard]] bool endsWithin(std::chrono::milliseconds patience);

    std::chrono::steady_clock::time_point idleSince{};

private:
    [[nodiscard]] pid_t number() const;

    std::shared_ptr<WorkerStem> stem_;
    Worker::Channel channel_;
    Descriptor process_;
    std::optional<Worker::Hello> hello_;
    std::uint32_t jobs_ = 0;
    std::int64_t allowed_ = 0;
};

} // namespace ferrow::WorkerPool
