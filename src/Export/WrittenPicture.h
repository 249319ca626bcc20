// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Platform/Base/FileUrl.h"
#include "Platform/Base/PixelSize.h"

#include <stop_token>

namespace ferrow {

/// Whether `file` holds a whole picture of that format and size: all its rows are decoded, and nothing is forgiven.
/// Throws Canceled.
[[nodiscard]] bool isWholePicture(const FileUrl& file, ExportFormat format, PixelSize size,
                                  const std::stop_token& stop);

} // namespace ferrow
