// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Answerer.h"
#include "WorkerPool/MemoryBudget.h"
#include "WorkerPool/Pool.h"

#include <memory>

namespace ferrow::WorkerPool {

struct Assignment;

/// Has the requests answered by confined workers. A worker that dies, hangs or talks nonsense costs its own request:
/// decodingFailed for photos, malformed for logos, workerUnavailable where there is none to be asked. Since what an
/// earlier photo did to a worker may show late, one that dies or talks nonsense after its first job costs nothing yet:
/// another is asked the same, once. Nothing is ever decoded in this process.
class WorkerAnswerer : public Engine::Answerer {
public:
    explicit WorkerAnswerer(std::shared_ptr<Pool> pool, std::int64_t memoryBudget = MemoryBudget::ofThisMachine());

    [[nodiscard]] Engine::InspectAnswer inspect(const Engine::InspectRequest& request,
                                                const std::stop_token& stop) override;
    std::optional<Engine::PictureSummary> frame(const Engine::FrameRequest& request,
                                                const std::stop_token& stop) override;
    [[nodiscard]] Engine::PictureSummary readBack(const Engine::ReadBackRequest& request,
                                                  const std::stop_token& stop) override;
    [[nodiscard]] Bitmap composeRegion(const Engine::RegionRequest& request, const std::stop_token& stop) override;
    [[nodiscard]] Engine::LogoAnswer rasterizeLogo(const Engine::LogoRequest& request,
                                                   const std::stop_token& stop) override;

    /// How workers are confined. Throws NoAnswer when none can be started.
    [[nodiscard]] Worker::Hello confinement();

private:
    /// What `steps` answer, which ask the worker of the JobRun they are given. Throws NoAnswer, Canceled and whatever
    /// they throw.
    template <typename Steps>
    auto onWorker(const Assignment& assignment, const std::stop_token& stop, const Steps& steps);

    std::shared_ptr<Pool> pool_;
    MemoryBudget budget_;
};

} // namespace ferrow::WorkerPool
