// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <stop_token>

namespace ferrow::WorkerPool {

/// Memory that jobs of all workers may hold at once, in bytes. What does not fit waits for its turn, first come first
/// served, so that a large job is not passed by small ones for ever; what exceeds the whole budget runs alone. Whoever
/// has waited for some seconds may use a reserve of half as much besides, out of turn. Safe from several threads.
class MemoryBudget {
public:
    explicit MemoryBudget(std::int64_t bytes) : bytes_(bytes) {}

    /// Half of what this machine has free, at least 512 MB.
    [[nodiscard]] static std::int64_t ofThisMachine();

    /// A job's share, given back at its end. Moves only.
    class Share {
    public:
        Share() = default;
        Share(Share&& other) noexcept;
        Share& operator=(Share&& other) noexcept;
        ~Share();

    private:
        friend class MemoryBudget;
        Share(MemoryBudget& budget, std::int64_t bytes) : budget_(&budget), bytes_(bytes) {}

        MemoryBudget* budget_ = nullptr;
        std::int64_t bytes_ = 0;
    };

    /// Waits until `bytes` are free. Throws Canceled.
    [[nodiscard]] Share acquire(std::int64_t bytes, const std::stop_token& stop);

private:
    void giveBack(std::int64_t bytes);

    std::int64_t bytes_;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    std::int64_t used_ = 0;
    std::deque<const void*> queue_; ///< Who waits, by the address of something of theirs.
};

} // namespace ferrow::WorkerPool
