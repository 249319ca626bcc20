// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Answerer.h"

namespace ferrow::Engine {

/// Answers in the calling thread of this process: for tests and benchmarks, and inside the process that confines
/// itself.
class InProcessAnswerer : public Answerer {
public:
    [[nodiscard]] InspectAnswer inspect(const InspectRequest& request, const std::stop_token& stop) override;
    void frame(const FrameRequest& request, const std::stop_token& stop) override;
    [[nodiscard]] Bitmap composeRegion(const RegionRequest& request, const std::stop_token& stop) override;
    [[nodiscard]] LogoAnswer rasteriseLogo(const LogoRequest& request, const std::stop_token& stop) override;
};

} // namespace ferrow::Engine
