// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

namespace ferrow {

/// One of a few photos of a batch that are framed to see how much room the whole batch takes.
struct SpaceSample {
    BatchExportJob job;
    std::int64_t pixels = 0;         ///< Of its framed copy.
    std::int64_t stoodForPixels = 0; ///< Of all copies that are nearest to it in size, its own among them.

    /// Whether both are framed and counted alike.
    bool operator==(const SpaceSample& other) const;
};

/// How many samples are taken: a small photo, a middling one and a large one.
inline constexpr std::size_t mostSpaceSamples = 3;
/// Copies of more pixels than this, which their measuring would hold in memory, are stood for by smaller ones where
/// there are any.
inline constexpr std::int64_t largestSamplePixels = 60'000'000;

/// At most mostSpaceSamples that stand for all jobs but those that can't be laid out.
[[nodiscard]] std::vector<SpaceSample> spaceSamples(const std::vector<BatchExportJob>& jobs);

struct SpaceEstimate {
    std::int64_t bytes = 0;
    std::size_t measured = 0; ///< Photos.

    bool operator==(const SpaceEstimate&) const = default;
};

/// How many bytes a framed copy takes. Throws what framing throws.
using EncodedSize = std::function<std::int64_t(const BatchExportJob&, const std::stop_token&)>;

/// Frames the job into memory.
[[nodiscard]] std::int64_t encodedSize(const BatchExportJob& job, const std::stop_token& stop);

/// Absent where not every sample can be framed: nothing is guessed. Throws Canceled.
[[nodiscard]] std::optional<SpaceEstimate> estimatedSpace(const std::vector<SpaceSample>& samples,
                                                          const EncodedSize& encodedSize, const std::stop_token& stop);

} // namespace ferrow
