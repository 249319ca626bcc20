// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Answerer.h"
#include "Engine/JobObserver.h"
#include "Engine/LogoRasterizer.h"

namespace ferrow::Engine {

/// Answers in the calling thread of this process: for tests and benchmarks, and inside the process that confines
/// itself.
class InProcessAnswerer : public Answerer {
public:
    using LogoRasterizer = decltype(&Engine::rasterizeLogo);

    InProcessAnswerer() : logos_(&Engine::rasterizeLogo) {}
    /// `observer` must outlive the answerer, and looks on at one job at a time. Without `logos` none are answered.
    explicit InProcessAnswerer(JobObserver& observer, LogoRasterizer logos = nullptr)
        : observer_(&observer), logos_(logos)
    {
    }
    InProcessAnswerer(const InProcessAnswerer&) = delete;
    InProcessAnswerer& operator=(const InProcessAnswerer&) = delete;

    [[nodiscard]] InspectAnswer inspect(const InspectRequest& request, const std::stop_token& stop) override;
    std::optional<PictureSummary> frame(const FrameRequest& request, const std::stop_token& stop) override;
    [[nodiscard]] PictureSummary readBack(const ReadBackRequest& request, const std::stop_token& stop) override;
    [[nodiscard]] Bitmap composeRegion(const RegionRequest& request, const std::stop_token& stop) override;
    [[nodiscard]] LogoAnswer rasterizeLogo(const LogoRequest& request, const std::stop_token& stop) override;

private:
    JobObserver ignorant_;
    JobObserver* observer_ = &ignorant_;
    LogoRasterizer logos_;
};

} // namespace ferrow::Engine
