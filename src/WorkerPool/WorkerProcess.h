// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Worker/Channel.h"

#include <QByteArray>

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace ferrow::WorkerPool {

/// One kind for photos, and one that may read fonts, for the text of PDF logos.
enum class WorkerKind { photos, logos };
inline constexpr int workerKinds = 2;

/// A running worker with the connection to it. Used by one thread at a time.
class WorkerProcess {
public:
    /// Null when the program can't be started. The kernel ends the worker with the calling thread, so that this must
    /// be one that lives as long as workers do.
    [[nodiscard]] static std::unique_ptr<WorkerProcess> start(const QByteArray& program, WorkerKind kind);

    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;
    /// Kills it, and does not wait: one that is deep in a file system which does not answer can't be killed before that
    /// does.
    ~WorkerProcess();

    [[nodiscard]] WorkerKind kind() const { return kind_; }
    [[nodiscard]] Worker::Channel& channel() { return channel_; }
    [[nodiscard]] pid_t process() const { return process_; }

    /// How it is confined, once it has said so.
    [[nodiscard]] const std::optional<Worker::Hello>& hello() const { return hello_; }
    void setHello(const Worker::Hello& hello) { hello_ = hello; }
    /// Between jobs: neither gone nor talking unasked.
    [[nodiscard]] bool isFit() const { return hello_ ? !channel_.hasNews() : !channel_.isClosed(); }

    [[nodiscard]] std::uint32_t nextJob() { return ++jobs_; }
    [[nodiscard]] std::uint32_t jobs() const { return jobs_; }

    /// Lets it take that many bytes of address space beyond what small jobs may, or no more than those.
    void allowMemory(std::int64_t bytes);
    void kill();
    /// Kills it; whether it is gone. Does not wait.
    [[nodiscard]] bool hasEnded();
    /// Kills it and waits at most that long; whether it is gone.
    [[nodiscard]] bool hasEndedWithin(std::chrono::milliseconds patience);

    std::chrono::steady_clock::time_point idleSince{};

private:
    WorkerProcess(pid_t process, WorkerKind kind, Worker::Descriptor socket);

    pid_t process_; ///< 0 once it is gone: the number may be another's by then.
    WorkerKind kind_;
    Worker::Channel channel_;
    std::optional<Worker::Hello> hello_;
    std::uint32_t jobs_ = 0;
    std::int64_t allowed_ = 0;
};

} // namespace ferrow::WorkerPool
