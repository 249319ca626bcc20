// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Files/Descriptor.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>

namespace ferrow::WorkerPool {

/// A stop request as a descriptor that becomes readable, for waits that watch descriptors.
class StopSignal {
public:
    explicit StopSignal(const std::stop_token& stop)
    {
        if (!stop.stop_possible())
            return;
        event_ = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
        callback_.emplace(stop, [this] {
            constexpr std::uint64_t one = 1;
            static_cast<void>(::write(event_.get(), &one, sizeof one) == sizeof one); // Full only when signaled.
        });
    }

    /// -1 when nobody can request a stop.
    [[nodiscard]] int descriptor() const { return event_.get(); }

private:
    Descriptor event_;
    std::optional<std::stop_callback<std::function<void()>>> callback_; ///< Goes before what it writes to.
};

} // namespace ferrow::WorkerPool
