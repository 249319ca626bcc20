// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <tiffio.h>

#include <memory>

namespace ferrow {

/// Frees without writing: what must reach a file is written before.
struct TiffCleaner {
    void operator()(TIFF* tiff) const { TIFFCleanup(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCleaner>;

struct TiffOptionsDeleter {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};
using TiffOptions = std::unique_ptr<TIFFOpenOptions, TiffOptionsDeleter>;

} // namespace ferrow
