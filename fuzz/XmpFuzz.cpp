// SPDX-License-Identifier: GPL-3.0-or-later
// XMP packets, and IPTC datasets inside Photoshop resources or alone.
#include "FuzzSupport.h"

#include "Platform/Properties/IptcReader.h"
#include "Platform/Properties/XmpReader.h"

using namespace ferrow;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = fuzz::bytesOf(data, size);
    const PropertyMap xmp = readXmpPacket(bytes);
    fuzz::require(xmp.entries().size() <= 5, "listed properties alone");
    fuzz::require(readXmpPacket("<!DOCTYPE x>" + bytes).isEmpty(), "nothing of a packet with a document type");
    fuzz::require(readIptc(bytes).entries().size() <= 4, "listed datasets alone");
    const QByteArray datasets = iptcOfPhotoshopResources(bytes);
    fuzz::require(datasets.size() <= bytes.size(), "no more than there is");
    static_cast<void>(readIptc(datasets));
    return 0;
}
