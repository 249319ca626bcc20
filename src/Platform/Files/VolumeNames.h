// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

/// What a volume makes of file names. Any thread.
namespace ferrow::VolumeNames {

/// Whether two names that differ in case, or in how accents are composed, may be one file in a folder; for a missing
/// one, what its nearest parent says. False only on file systems that are known to tell names apart by their bytes: a
/// number too many costs less than a photo.
[[nodiscard]] bool mayFold(const FileUrl& folder);

/// One text for all names that any volume may take for this one.
[[nodiscard]] QByteArray folded(const QByteArray& name);

} // namespace ferrow::VolumeNames
