// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/JobObserver.h"
#include "Engine/Requests.h"
#include "Platform/Pixels/ColorProfile.h"

#include <stop_token>

/// Two ways to a summary, while a picture is written and from its file, and what makes the two alike.
namespace ferrow::Engine {

/// Of a picture that is about to be written. Its pixels are added by the summer that goes with it, once all rows have
/// passed.
[[nodiscard]] PictureSummary summaryToBeWritten(PixelSize size, PixelFormat format, const ColorProfile& profile);
[[nodiscard]] PictureSummer summerFor(PixelSize size, PixelFormat format, ExportFormat written);

/// Decodes the whole file. Throws ImagePipelineError and Canceled.
[[nodiscard]] PictureSummary readSummary(const ReadBackRequest& request, const std::stop_token& stop,
                                         JobObserver& observer);

/// Whether what was read is what was written: the same in every pixel for formats that lose nothing, as close as
/// `quality` (0…1) lets it come for the others. Of a JPEG that was written without being decoded only all else counts.
[[nodiscard]] bool isSamePicture(const PictureSummary& written, const PictureSummary& read, ExportFormat format,
                                 double quality);

} // namespace ferrow::Engine
