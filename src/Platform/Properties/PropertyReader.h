// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/FileType.h"
#include "Platform/Properties/PropertyMap.h"

namespace ferrow {

/// Reads the listed metadata of a photo, nothing more. Never fails for damage: a broken block costs its own fields.
/// Throws InputOutputError alone. Safe from several threads.
[[nodiscard]] ImageProperties readProperties(FileType type, const ByteSource& source);

/// Whether a file has a place where a position could stand: a directory of GPS tags, or blocks of kinds that Ferrow
/// never writes (XMP, IPTC). Nothing of what they say is read. Throws InputOutputError.
[[nodiscard]] bool mayHoldPosition(FileType type, const ByteSource& source);

} // namespace ferrow
