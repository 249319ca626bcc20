// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <vector>

/// Pictures drawn by this program, so that screenshots and window benchmarks need nobody's photos.
namespace ferrow::tools {

/// Eleven landscapes of several shapes as JPEGs with camera, artist and date, in `folder`, which must exist.
std::vector<FileUrl> writeSamplePhotos(const FileUrl& folder);

/// `count` small pictures (about 0.1 megapixel) named "Frame 1.jpg" and on.
void writeManySmallPhotos(const FileUrl& folder, int count);

/// A mark on a transparent ground, as a PNG.
FileUrl writeSampleLogo(const FileUrl& folder);

} // namespace ferrow::tools
