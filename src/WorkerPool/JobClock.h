// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Platform/Base/PixelSize.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace ferrow::WorkerPool {

/// How long a worker may take before it counts as stuck. Many times what was measured (docs/workers.md), since machines
/// are slower and busier than the one that measured: what is meant to be caught takes for ever.
namespace Allowance {

using Duration = std::chrono::milliseconds;

/// For every job, with photos of up to some megapixels. A PDF page gets no more, so that its answer, whatever it is,
/// is there within ten seconds.
inline constexpr Duration base{9'000};

[[nodiscard]] Duration decoding(std::int64_t pixels, bool isHeif);
[[nodiscard]] Duration encoding(PixelSize canvas, ExportFormat format);

} // namespace Allowance

/// Counts down while somebody looks. A look that comes late (this process was stopped, or the machine asleep) counts as
/// a slice: the worker may have been stopped as well.
class JobClock {
public:
    explicit JobClock(Allowance::Duration allowed) : left_(allowed) {}

    void extend(Allowance::Duration more) { left_ += more; }
    /// What passed since the last look was not the worker's time.
    void restart() { lastLook_ = std::chrono::steady_clock::now(); }

    [[nodiscard]] Allowance::Duration left() const { return std::max(left_, Allowance::Duration(0)); }
    /// How long to wait before the next look.
    [[nodiscard]] Allowance::Duration slice() const { return std::clamp(left_, Allowance::Duration(0), longestSlice); }
    /// Takes off what passed since the last look; whether the time is over.
    [[nodiscard]] bool isOver()
    {
        const auto before = lastLook_;
        restart();
        const auto passed = std::chrono::ceil<Allowance::Duration>(lastLook_ - before);
        left_ -= std::min(passed, longestSlice);
        return left_ <= Allowance::Duration(0);
    }

private:
    static constexpr Allowance::Duration longestSlice{1'000};

    Allowance::Duration left_;
    std::chrono::steady_clock::time_point lastLook_ = std::chrono::steady_clock::now();
};

} // namespace ferrow::WorkerPool
