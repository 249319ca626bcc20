// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/MemoryBudget.h"

#include "Platform/Base/Cancellation.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <limits>
#include <string>
#include <utility>

namespace ferrow::WorkerPool {

namespace {

constexpr std::int64_t leastBudget = 512 << 20;

/// What holds a job back for longer may be no photo, but a worker that claims what it likes.
constexpr std::chrono::seconds patience{5};

std::int64_t availableBytes()
{
    std::ifstream file("/proc/meminfo");
    for (std::string label; file >> label; file.ignore(std::numeric_limits<std::streamsize>::max(), '\n')) {
        std::int64_t kilobytes = 0;
        if (label == "MemAvailable:" && file >> kilobytes)
            return kilobytes * 1024;
    }
    return 0;
}

} // namespace

std::int64_t MemoryBudget::ofThisMachine()
{
    return std::max(availableBytes() / 2, leastBudget);
}

MemoryBudget::Share::Share(Share&& other) noexcept
    : budget_(std::exchange(other.budget_, nullptr)), bytes_(other.bytes_)
{
}

MemoryBudget::Share& MemoryBudget::Share::operator=(Share&& other) noexcept
{
    std::swap(budget_, other.budget_);
    std::swap(bytes_, other.bytes_);
    return *this;
}

MemoryBudget::Share::~Share()
{
    if (budget_)
        budget_->giveBack(bytes_);
}

MemoryBudget::Share MemoryBudget::acquire(std::int64_t bytes, const std::stop_token& stop)
{
    const std::int64_t wanted = std::clamp<std::int64_t>(bytes, 0, bytes_);
    std::unique_lock lock(mutex_);
    queue_.push_back(&wanted);
    const auto comesNext = [&] { return queue_.front() == &wanted && used_ + wanted <= bytes_; };
    const auto fitsReserve = [&] { return comesNext() || used_ + wanted <= bytes_ + bytes_ / 2; };
    const bool isOurTurn = changed_.wait_for(lock, stop, patience, comesNext) ||
                           (!stop.stop_requested() && changed_.wait(lock, stop, fitsReserve));
    std::erase(queue_, &wanted);
    changed_.notify_all(); // The next one may fit as well.
    if (!isOurTurn)
        throw Canceled{};
    used_ += wanted;
    return {*this, wanted};
}

void MemoryBudget::giveBack(std::int64_t bytes)
{
    const std::scoped_lock lock(mutex_);
    used_ -= bytes;
    changed_.notify_all();
}

} // namespace ferrow::WorkerPool
