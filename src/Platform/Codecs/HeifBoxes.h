// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Base/PixelSize.h"

namespace ferrow {

/// Reads of a HEIF's boxes what tells whether its primary picture can be handed to the library: which follows
/// references between pictures without end, and starts a task for every tile. Bounded in time and memory. Answers the
/// primary picture's declared size before its rotation and crop: the full 32 bits of each side, which the library
/// doesn't let through.
///
/// Throws CodecError: malformed for a broken structure and for pictures derived from themselves or over too many
/// steps; unsupported for codings other than HEVC, pure image sequences, and more tiles than a camera writes;
/// unreadable where the system refused to read.
[[nodiscard]] PixelSize checkHeifBoxes(const ByteSource& source);

} // namespace ferrow
