// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What libraries load when they are first used must be loaded while files can still be opened.
namespace ferrow::Worker {

/// For reading photos, and writing them as anything but HEIC.
void warmUpCodecs();

void warmUpHeicEncoder();

} // namespace ferrow::Worker
