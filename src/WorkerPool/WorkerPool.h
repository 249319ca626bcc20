// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

/// What a program calls so that photos and logos are read by confined processes instead of by itself.
namespace ferrow::WorkerPool {

class Pool;
class WorkerAnswerer;

/// Workers for as long as it lives. Ends them all when it goes, which must be after the last request was answered;
/// requests that come later are refused. Moves only.
class Installation {
public:
    Installation(std::shared_ptr<Pool> pool, WorkerAnswerer& answerer);
    Installation(Installation&&) noexcept;
    ~Installation();

    /// One line for the user: "Photos are read in separate processes with …". Starts a worker when none runs yet.
    [[nodiscard]] QString confinementInForce() const;
    /// One line for the user where this system does not offer all that confines workers; empty where it does, and
    /// before a worker was asked anything. Does not wait.
    [[nodiscard]] QString missingWallsNote() const;

private:
    std::shared_ptr<Pool> pool_;
    WorkerAnswerer* answerer_;
};

/// Makes workers the process-wide answerer. Returns at once: the first one starts in the background. Call it once, from
/// the main thread before any other asks something. `program` is for tests; else the worker's program is
/// the one that was installed with this one.
[[nodiscard]] Installation installWorkers(const QByteArray& program = {});

} // namespace ferrow::WorkerPool
