// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ImportedPhoto.h"
#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"

#include <optional>
#include <stop_token>

/// Writes one framed copy of one photo. Keeps no state; any thread, several at once.
namespace ferrow::ImageExporter {

/// Decodes the source, frames it at full size and moves the encoded result to `destination`, which is never replaced
/// unless `replaceExisting`, and never when it is the source itself. Whatever happens, `destination` holds the whole
/// output or what it held before, and no staging file is left. Logos come from `managedLogoDirectory`, or from the
/// program's own. Throws ImagePipelineError, LogoAssetError, SystemError and Cancelled; a stop that comes after the
/// last row is ignored.
void exportPhoto(const ImportedPhoto& photo, const RenderRecipe& recipe, const ExportSettings& settings,
                 const FileUrl& destination, bool replaceExisting, const std::stop_token& stop,
                 const std::optional<FileUrl>& managedLogoDirectory = {});

} // namespace ferrow::ImageExporter
