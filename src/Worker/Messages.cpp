// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/Messages.h"

#include "Worker/MessageParts.h"

#include <cstring>
#include <utility>

namespace ferrow::Worker {

namespace {

/// Requests and answers each count on from their first.
template <MessageKind First>
bool isFrom(MessageKind kind)
{
    return kind >= First && kind <= lastEnumerator<First>();
}

} // namespace

std::optional<MessageHeader> parseHeader(std::span<const std::byte, headerLength> bytes)
{
    ByteReader reader(bytes);
    MessageHeader header;
    header.kind = MessageKind(reader.number<std::uint32_t>());
    header.job = reader.number<std::uint32_t>();
    header.bodyLength = reader.number<std::uint32_t>(0, maximumBodyLength);
    header.descriptorCount = reader.number<std::uint32_t>(0, maximumDescriptors);
    const bool isRequest = isFrom<MessageKind::setup>(header.kind);
    const bool isAnswer = isFrom<MessageKind::hello>(header.kind);
    if (!reader.isWhole() || !(isRequest || isAnswer))
        return std::nullopt;
    return header;
}

ByteWriter beginMessage()
{
    ByteWriter writer;
    static_cast<void>(writer.room(headerLength));
    return writer;
}

Message sealed(ByteWriter&& writer, MessageKind kind, std::uint32_t job, std::vector<int> descriptors)
{
    Message message{std::move(writer.bytes()), std::move(descriptors)};
    ByteWriter header;
    header.number(std::uint32_t(kind));
    header.number(job);
    header.number(std::uint32_t(message.bytes.size() - headerLength));
    header.number(std::uint32_t(message.descriptors.size()));
    std::memcpy(message.bytes.data(), header.bytes().data(), headerLength);
    return message;
}

void write(ByteWriter& writer, PixelSize size)
{
    writer.number(size.width);
    writer.number(size.height);
}

PixelSize readSize(ByteReader& reader, std::int64_t least, std::int64_t most)
{
    const auto width = reader.number<std::int64_t>(least, most);
    const auto height = reader.number<std::int64_t>(least, most);
    return {width, height};
}

WellKnown readSpace(ByteReader& reader)
{
    const auto space = reader.enumerator<WellKnown>();
    if (space != WellKnown::none && ColorProfile::of(space).isEmpty())
        reader.fail();
    return space;
}

void writePixels(ByteWriter& writer, const Bitmap& picture)
{
    const auto rowBytes = std::size_t(picture.size().width * picture.format().bytesPerPixel());
    std::byte* out = writer.room(byteCount(picture.size(), picture.format()));
    for (std::int64_t y = 0; y < picture.size().height; ++y, out += rowBytes)
        std::memcpy(out, picture.row(y), rowBytes);
}

void readPixels(ByteReader& reader, Bitmap& picture)
{
    const auto rowBytes = std::size_t(picture.size().width * picture.format().bytesPerPixel());
    const auto bytes = reader.raw(byteCount(picture.size(), picture.format()));
    for (std::int64_t y = 0; y < picture.size().height && !bytes.empty(); ++y)
        std::memcpy(picture.row(y), bytes.data() + std::size_t(y) * rowBytes, rowBytes);
}

} // namespace ferrow::Worker
