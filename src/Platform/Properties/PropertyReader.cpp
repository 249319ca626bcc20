// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/PropertyReader.h"

#include "Platform/Properties/ExifReader.h"
#include "Platform/Properties/IptcReader.h"
#include "Platform/Properties/MetadataBlocks.h"
#include "Platform/Properties/XmpReader.h"

namespace ferrow {

namespace {

/// A TIFF file is its own Exif structure, and holds the other blocks as tags of its first directory.
MetadataBlocks tiffMetadataBlocks(const TiffStructure& structure)
{
    MetadataBlocks blocks;
    const auto directory = structure.firstDirectory();
    if (!directory)
        return blocks;
    const auto block = [&](std::uint16_t tag) {
        const TiffEntry* entry = directory->find(tag);
        return entry && entry->length <= MetadataBlocks::maximumLength ? structure.bytes(*entry, entry->length)
                                                                       : QByteArray();
    };
    blocks.xmp = block(700);
    blocks.iptc = block(33723);
    if (readIptc(blocks.iptc).isEmpty())
        blocks.iptc = iptcOfPhotoshopResources(block(34377));
    return blocks;
}

std::optional<TiffStructure> structureOf(const QByteArray& block)
{
    return TiffStructure::open(std::as_bytes(std::span(block.constData(), std::size_t(block.size()))));
}

PropertyMap exifOfBlock(const QByteArray& block)
{
    const auto structure = structureOf(block);
    return structure ? readExif(*structure) : PropertyMap();
}

ImageProperties decoded(const MetadataBlocks& blocks, PropertyMap exif)
{
    ImageProperties properties;
    properties.image = std::move(exif);
    PropertyMap iptc = readIptc(blocks.iptc);
    if (!iptc.isEmpty())
        properties.image.set(PropertyKey::iptc, {std::move(iptc)});
    properties.xmp = readXmpPacket(blocks.xmp);
    const PropertyMap extended = readXmpPacket(blocks.extendedXmp);
    for (const auto& [key, value] : extended.entries())
        if (!properties.xmp.find(key))
            properties.xmp.set(key, value);
    return properties;
}

ImageProperties decoded(const MetadataBlocks& blocks)
{
    return decoded(blocks, exifOfBlock(blocks.exif));
}

MetadataBlocks blocksOf(FileType type, const ByteSource& source)
{
    switch (type) {
    case FileType::jpeg:
        return jpegMetadataBlocks(source);
    case FileType::png:
        return pngMetadataBlocks(source);
    case FileType::heif:
        return heifMetadataBlocks(source);
    case FileType::tiff:
        if (const auto structure = TiffStructure::open(source))
            return tiffMetadataBlocks(*structure);
        break;
    case FileType::pdf:
    case FileType::svg:
        break;
    }
    return {};
}

bool hasPositionDirectory(const std::optional<TiffStructure>& structure)
{
    constexpr std::uint16_t positionDirectoryTag = 0x8825;
    const auto first = structure ? structure->firstDirectory() : std::nullopt;
    return first && first->find(positionDirectoryTag);
}

PropertyMap withoutOrientation(const PropertyMap& image)
{
    PropertyMap rest;
    for (const auto& [key, value] : image.entries())
        if (key != PropertyKey::orientation)
            rest.set(key, value);
    return rest;
}

} // namespace

QByteArray withoutExifPrefix(const QByteArray& block)
{
    return block.startsWith(QByteArray("Exif\0\0", 6)) ? block.mid(6) : block;
}

qsizetype xmpNameLength(const QByteArray& block)
{
    const QByteArray name("http://ns.adobe.com/xap/1.0/");
    const qsizetype end = block.startsWith(name) ? block.indexOf('\0', name.size()) : -1;
    return end >= 0 && block.mid(name.size(), end - name.size()).trimmed().isEmpty() ? end + 1 : 0;
}

ImageProperties readProperties(FileType type, const ByteSource& source)
{
    if (type == FileType::tiff) {
        const auto structure = TiffStructure::open(source);
        return structure ? decoded(tiffMetadataBlocks(*structure), readExif(*structure)) : ImageProperties();
    }
    ImageProperties properties = decoded(blocksOf(type, source));
    // The container's own rotation has been applied by the time anybody sees pixels.
    if (type == FileType::heif)
        properties.image = withoutOrientation(properties.image);
    return properties;
}

bool mayHoldPosition(FileType type, const ByteSource& source)
{
    const MetadataBlocks blocks = blocksOf(type, source);
    return !blocks.xmp.isEmpty() || !blocks.extendedXmp.isEmpty() || !blocks.iptc.isEmpty() ||
           hasPositionDirectory(type == FileType::tiff ? TiffStructure::open(source) : structureOf(blocks.exif));
}

} // namespace ferrow
