// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Pixels/Bitmap.h"

namespace ferrow {

/// The first page of a PDF drawn on nothing, longest side exactly `dimension` pixels (the page's own points do not
/// limit it): premultiplied RGBA in sRGB. Throws CodecError (malformed for a broken or encrypted file, a file without
/// pages, or a page without extent).
[[nodiscard]] Bitmap rasterizePdf(const ByteSource& source, std::int64_t dimension);

} // namespace ferrow
