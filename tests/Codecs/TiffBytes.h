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

inline TiffTag shortTag(std::uint16_t tag, int value)
{
    return {tag, 3, 1, littleEndian(std::uint16_t(value))};
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
inline QByteArray tiffDirectory(const std::vector<TiffTag>& tags, std::uint32_t offset)
{
    QByteArray table = littleEndian(std::uint16_t(tags.size()));
    QByteArray values;
    for (const TiffTag& tag : tags) {
        const auto place = std::uint32_t(offset + 2 + tags.size() * 12 + 4 + std::size_t(values.size()));
        const bool isLong = tag.values.size() > 4;
        table += littleEndian(tag.tag) + littleEndian(tag.type) + littleEndian(tag.count);
        table += isLong ? littleEndian(place) : tag.values.leftJustified(4, '\0');
        values += isLong ? tag.values : QByteArray();
    }
    return table + littleEndian(0) + values;
}

/// A whole little-endian file whose only directory comes right behind the header, with `rest` behind that.
inline QByteArray tiffFile(const std::vector<TiffTag>& tags, const QByteArray& rest = {})
{
    return QByteArray("II*\0\x08\0\0\0", 8) + tiffDirectory(tags, 8) + rest;
}

/// A file whose first directory ends with tags that point to the directories behind it, each with such a tag's number.
inline QByteArray tiffFile(std::vector<TiffTag> tags,
                           const std::vector<std::pair<std::uint16_t, std::vector<TiffTag>>>& children)
{
    for (const auto& [pointer, child] : children)
        tags.push_back(longTag(pointer, 0));
    auto offset = std::uint32_t(8 + tiffDirectory(tags, 8).size());
    QByteArray below;
    for (std::size_t i = 0; i < children.size(); ++i) {
        tags[tags.size() - children.size() + i] = longTag(children[i].first, offset);
        below += tiffDirectory(children[i].second, offset);
        offset = std::uint32_t(8 + tiffDirectory(tags, 8).size() + below.size());
    }
    return tiffFile(tags, below);
}

/// The tags of an uncompressed picture, 8-bit gray unless said otherwise, whose only strip follows the directory
/// directly, with `more` behind them.
inline std::vector<TiffTag> pictureTags(std::uint16_t width, std::uint16_t height,
                                        const std::vector<TiffTag>& more = {}, std::uint16_t photometric = 1,
                                        std::uint16_t bits = 8, std::uint16_t samples = 1)
{
    const auto bytes = std::uint32_t((width * samples * bits + 7) / 8 * height);
    std::vector<TiffTag> tags{shortTag(256, width), shortTag(257, height)};
    tags.push_back({258, 3, std::uint32_t(samples), littleEndian(std::uint16_t(bits)).repeated(samples)});
    tags.insert(tags.end(), {shortTag(259, 1), shortTag(262, photometric), longTag(273, 0)});
    tags.insert(tags.end(), {shortTag(277, samples), shortTag(278, height), longTag(279, bytes)});
    tags.insert(tags.end(), more.begin(), more.end());
    tags[5] = longTag(273, std::uint32_t(8 + tiffDirectory(tags, 8).size()));
    return tags;
}

} // namespace ferrow::test
