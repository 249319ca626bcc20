// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Base/PixelSize.h"

#include <cstdint>

namespace ferrow {

/// What a HEIF's boxes say about the picture to be shown.
struct HeifPicture {
    std::uint32_t item = 0;
    PixelSize declaredSize; ///< Before rotation and crop. Each side with its full 32 bits.
    std::int64_t tiles = 1;
    bool isTurned = false;  ///< For which the library makes a copy,
    bool isCropped = false; ///< as for this.
    int peak = 0; ///< Of its light, in cd/m², or else of the display that it was made for; 0 where neither is said.
    /// A part is coded, or put together, in another size than it declares, or is far larger than the whole: decoding
    /// would cost far more than the header says.
    bool contradictsItself = false;
};

/// Finds the primary picture (or the picture that the primary one is a thumbnail of), and tells whether it can be
/// handed to the library, which follows references between pictures without end. Bounded in time and memory.
///
/// Throws CodecError: malformed for a broken structure and for pictures derived from themselves or over too many
/// steps; unsupported for codings other than HEVC, pure image sequences, and more tiles than a camera writes;
/// unreadable where the system refused to read.
[[nodiscard]] HeifPicture inspectHeifBoxes(const ByteSource& source);

} // namespace ferrow
