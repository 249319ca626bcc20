// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Requests.h"
#include "Models/BatchExportModels.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Files/FileAccess.h"
#include "Platform/Pixels/Bitmap.h"

#include <QRect>

#include <functional>
#include <optional>
#include <stop_token>

namespace ferrow {

/// Whether the photo's coded data stands in the output. Where that is wanted and nothing is known against it, only
/// reading the data may show that it can't.
enum class PhotoData { codedAnew, kept };

struct WrittenPhoto {
    PhotoData data = PhotoData::codedAnew;
    std::optional<Engine::PictureSummary> summary; ///< Where the settings ask for a check.
};

} // namespace ferrow

/// Writes one framed copy of one photo, or shows a part of what it would write. Keeps no state; any thread, several at
/// once.
namespace ferrow::ImageExporter {

/// Decodes the job's source, frames it at full size and moves the encoded result to the destination, which is never
/// replaced unless the job says so, and never when it is the source itself. Whatever happens, the destination holds the
/// whole output or what it held before, and no staging file is left. Logos come from `managedLogoDirectory`, or from
/// the program's own. Where the settings ask for it, the file is read back before it gets its name; else `framed` is
/// called once nothing is left but to flush the output and to name it, which waits for the disk alone. Throws
/// ImagePipelineError, LogoAssetError, SystemError and Canceled; a stop that comes after the last row is ignored unless
/// the file is to be read back.
PhotoData exportPhoto(const BatchExportJob& job, const std::stop_token& stop,
                      const std::optional<FileUrl>& managedLogoDirectory = {},
                      const std::function<void()>& framed = {});

/// The same into an empty file that is open for reading and writing, for whoever checks it and gives it its place: a
/// failure or a stop leaves rubbish in it.
WrittenPhoto writePhoto(const OpenedFile& source, const ImportedPhoto& photo, const RenderRecipe& recipe,
                        const ExportSettings& settings, int outputDescriptor, const std::stop_token& stop,
                        const std::optional<FileUrl>& managedLogoDirectory = {});

/// Reads a file back that holds what `composed` sums up. Throws ImagePipelineError, with writtenFileDiffers where it
/// holds anything else, and Canceled.
void checkWritten(const OpenedFile& written, const Engine::PictureSummary& composed, const ExportSettings& settings,
                  const std::stop_token& stop);

/// The pixels that an export of `photo` has in `region` (output pixels, origin at the top left; what reaches beyond the
/// picture is cut off), at `scale` where that is below 1: 8-bit RGB or straight RGBA in the output's color space. As in
/// a preview, a logo that can't be loaded is left out. Throws ImagePipelineError and Canceled.
[[nodiscard]] Bitmap region(const ImportedPhoto& photo, const RenderRecipe& recipe, const QRect& region, double scale,
                            const std::stop_token& stop);

} // namespace ferrow::ImageExporter
