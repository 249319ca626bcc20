// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/Releaser.h"

#include <tiffio.h>

#include <memory>

namespace ferrow {

/// Frees without writing: what must reach a file is written before.
using TiffHandle = std::unique_ptr<TIFF, Releaser<TIFFCleanup>>;
using TiffOptions = std::unique_ptr<TIFFOpenOptions, Releaser<TIFFOpenOptionsFree>>;

} // namespace ferrow
