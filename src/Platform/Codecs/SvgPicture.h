// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Pixels/Bitmap.h"

#include <QByteArray>

namespace ferrow {

/// Most that an SVG may be, in bytes, once it is inflated: pictures that are part of it included.
inline constexpr std::int64_t maximumSvgBytes = 32'000'000;
/// More than any mark has, and what some hundred megabytes can hold.
inline constexpr std::int64_t maximumSvgElements = 50'000;

/// The SVG's text, inflated where it is compressed. Throws CodecError: tooLarge beyond maximumSvgBytes.
[[nodiscard]] QByteArray readSvg(const ByteSource& source);

/// What keeps an SVG from being drawn as it is meant.
enum class SvgObstacle {
    none,
    text,      ///< Would be drawn in another font: those of the system can't be read where SVGs are drawn.
    reference, ///< To a file, or to a picture of another kind than PNG and JPEG.
    tooComplex
};

/// The first one. Throws CodecError: malformed for what is not well-formed.
[[nodiscard]] SvgObstacle obstacleIn(const QByteArray& svg);

/// The SVG drawn on nothing, longest side exactly `dimension` pixels: premultiplied RGBA in sRGB. No file and no
/// network is ever touched. Time and memory are not bounded by the file's size: only for a process whose are. Throws
/// CodecError: malformed for what is none, or has no extent.
[[nodiscard]] Bitmap rasterizeSvg(const QByteArray& svg, std::int64_t dimension);

} // namespace ferrow
