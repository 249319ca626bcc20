// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/JobObserver.h"
#include "Engine/Requests.h"
#include "Platform/Base/ByteSource.h"

#include <optional>
#include <stop_token>

namespace ferrow::Engine {

/// Answers a FrameRequest that keeps the photo's data: the photo is not decoded, only what lies around and over it is
/// drawn and coded. Throws CannotKeep, ImagePipelineError, EncoderError and Canceled.
[[nodiscard]] std::optional<PictureSummary> frameKeepingData(const FrameRequest& request, ByteSink& sink,
                                                             const std::stop_token& stop, JobObserver& observer);

} // namespace ferrow::Engine
