// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/MetadataText.h"

#include "Platform/Base/ByteText.h"

namespace ferrow::MetadataText {

namespace {

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

} // namespace

QString decoded(QByteArray bytes)
{
    if (bytes.size() > maximumLength) {
        // A cut inside a UTF-8 character would make the whole text count as Windows-1252.
        qsizetype end = maximumLength;
        while (end > maximumLength - 4 && continuesCharacter(bytes.at(end)))
            --end;
        bytes.truncate(end);
    }
    return ByteText::fromMetadata(bytes);
}

} // namespace ferrow::MetadataText
