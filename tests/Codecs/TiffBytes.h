// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtEndian>

#include <cstdint>
#include <utility>
#include <vector>

namespace ferrow::test {

/// One tag with its values as they go into the file, in little-endian order.
struct TiffTag {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint32_t count;
    QByteArray values;
};

template <typename Number>
QByteArray littleEndian(Number value)
{
    QByteArray bytes(sizeof(Number), Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

inline TiffTag shortTag(std::uint16_t tag, std::uint16_t value)
{
    return {tag, 3, 1, littleEndian(value)};
}
inline TiffTag longTag(std::uint16_t tag, std::uint32_t value)
{
    return {tag, 4, 1, littleEndian(value)};
}
inline TiffTag textTag(std::uint16_t tag, const QByteArray& text)
{
    return {tag, 2, std::uint32_t(text.size() + 1), text + '\0'};
}

/// A directory as it stands at `offset`, with the longer values behind it.
inline QByteArray tiffDirectory(const std::vector<TiffTag>& tags, std::uint32_t offset, std::uint32_t next = 0)
{
    QByteArray table = littleEndian(std::uint16_t(tags.size()));
    QByteArray values;
    const auto valuesAt = std::uint32_t(offset + 2 + tags.size() * 12 + 4);
    for (const TiffTag& tag : tags) {
        table += littleEndian(tag.tag) + littleEndian(tag.type) + littleEndian(tag.count);
        if (tag.values.size() > 4) {
            table += littleEndian(std::uint32_t(valuesAt + values.size()));
            values += tag.values;
        } else {
            table += tag.values.leftJustified(4, '\0');
        }
    }
    return table + littleEndian(next) + values;
}

/// A whole little-endian file whose only directory comes right behind the header, with `rest` behind that.
inline QByteArray tiffFile(const std::vector<TiffTag>& tags, const QByteArray& rest = {})
{
    return QByteArray("II*\0\x08\0\0\0", 8) + tiffDirectory(tags, 8) + rest;
}

/// The tags of an uncompressed 8-bit grey picture whose only strip follows the directory directly, `more` among them.
inline std::vector<TiffTag> grayTags(std::uint16_t width, std::uint16_t height, const std::vector<TiffTag>& more = {})
{
    std::vector<TiffTag> tags{shortTag(256, width), shortTag(257, height), shortTag(258, 8),
                              shortTag(259, 1),     shortTag(262, 1),      longTag(273, 0),
                              shortTag(277, 1),     shortTag(278, height), longTag(279, std::uint32_t(width) * height)};
    tags.insert(tags.end(), more.begin(), more.end());
    tags[5] = longTag(273, std::uint32_t(8 + tiffDirectory(tags, 8).size()));
    return tags;
}

} // namespace ferrow::test
