// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Requests.h"
#include "Platform/Codecs/JpegFraming.h"

#include <memory>
#include <optional>
#include <stop_token>

namespace ferrow::Engine {

/// Who answers the requests: this process, or a worker that owns nothing but the descriptors it is handed. Safe from
/// several threads at once. Photo requests throw ImagePipelineError, logo requests LogoAssetError, all of them
/// Canceled; nothing else.
class Answerer {
public:
    virtual ~Answerer() = default;

    [[nodiscard]] virtual InspectAnswer inspect(const InspectRequest& request, const std::stop_token& stop) = 0;
    /// On return the output file is complete, but not yet flushed to disk. A stop is honored until the last row is
    /// composed. The summary is there where the request asks for one. Also throws CannotKeep, where photo or frame
    /// forbid what keepsPhotoData asks for; the output then holds rubbish.
    virtual std::optional<PictureSummary> frame(const FrameRequest& request, const std::stop_token& stop) = 0;
    /// By somebody who has seen neither the photo nor any other.
    [[nodiscard]] virtual PictureSummary readBack(const ReadBackRequest& request, const std::stop_token& stop) = 0;
    /// 8-bit RGB or straight RGBA in the output's color space.
    [[nodiscard]] virtual Bitmap composeRegion(const RegionRequest& request, const std::stop_token& stop) = 0;
    [[nodiscard]] virtual LogoAnswer rasterizeLogo(const LogoRequest& request, const std::stop_token& stop) = 0;
};

/// The process-wide answerer, which each program chooses at its start: none is there by itself, so that no program
/// links the codecs that only workers call. Throws std::logic_error where none was chosen.
[[nodiscard]] Answerer& answerer();
void setAnswerer(std::unique_ptr<Answerer> answerer);

} // namespace ferrow::Engine
