// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Worker/ByteCoding.h"
#include "Worker/Messages.h"

/// What requests and answers are put together from, for the .cpp files of this folder alone.
namespace ferrow::Worker {

/// Room for a header; sealed() fills it in once the body is known.
[[nodiscard]] ByteWriter beginMessage();
[[nodiscard]] Message sealed(ByteWriter&& writer, MessageKind kind, std::uint32_t job,
                             std::vector<int> descriptors = {});

void write(ByteWriter& writer, PixelSize size);
/// Each side within the given range.
[[nodiscard]] PixelSize readSize(ByteReader& reader, std::int64_t least, std::int64_t most);

/// A space that pictures come in: one of the well-known RGB spaces, or none.
[[nodiscard]] WellKnown readSpace(ByteReader& reader);

/// The pixels alone, without gaps between rows.
void writePixels(ByteWriter& writer, const Bitmap& picture);
/// Into a picture of its size. The reader fails where the bytes are not there.
void readPixels(ByteReader& reader, Bitmap& picture);

[[nodiscard]] constexpr std::size_t byteCount(PixelSize size, PixelFormat format)
{
    return std::size_t(size.width) * std::size_t(size.height) * std::size_t(format.bytesPerPixel());
}

} // namespace ferrow::Worker
