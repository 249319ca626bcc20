// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Base/PixelSize.h"
#include "Platform/Codecs/HevcSequence.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

/// What a HEIF's boxes say about its items, for the HEIF codec's own files.
namespace ferrow::heif {

/// A range of the file's bytes.
struct Extent {
    std::uint64_t offset = 0;
    std::uint64_t length = 0; ///< 0 in an item's extent: up to the end of the file.
};

/// What matters here of a property that items share.
struct Property {
    std::uint32_t type = 0;
    PixelSize size;      ///< Of a size property.
    bool isTurn = false; ///< A rotation other than by nothing.
    bool isCrop = false;
    std::vector<HevcSequence> sequences; ///< Of a decoder configuration.
    int peak = 0;                        ///< Of the picture's light, or of the display it was made for, in cd/m².
};

struct Item {
    std::uint32_t type = 0;
    std::vector<std::uint32_t> sources;     ///< What it is derived from: tiles, or a picture that it turns or crops.
    std::vector<std::uint32_t> auxiliaries; ///< Transparency, depth and the like, which refer to it.
    std::vector<std::uint16_t> properties;  ///< Counted from 1.
    std::vector<Extent> extents;            ///< Of pictures only.
    bool isInItemDataBox = false;           ///< Extents count from the start of the item data box, not the file.
};

struct Items {
    std::uint32_t primary = 0;
    std::map<std::uint32_t, Item> all;
    std::map<std::uint32_t, std::uint32_t> thumbnailOf;
    std::vector<Property> properties;
    Extent itemData;

    /// Refuses an item that the file does not have.
    [[nodiscard]] const Item& at(std::uint32_t id) const;
    /// The properties of `item` that the file has, in its order.
    [[nodiscard]] std::vector<const Property*> propertiesOf(const Item& item) const;
    /// Whether the file has all the bytes that the item is said to have.
    [[nodiscard]] bool isWhole(const ByteSource& source, const Item& item) const;
    /// Fills `into` with the item's bytes from `offset` on, and answers how many it holds.
    std::size_t read(const ByteSource& source, const Item& item, std::uint64_t offset, std::span<std::byte> into) const;

private:
    /// What the item's extents count from.
    [[nodiscard]] Extent placeOf(const ByteSource& source, const Item& item) const;
};

/// Bounded in time and memory. Throws CodecError (malformed, unsupported) and InputOutputError.
[[nodiscard]] Items readItems(const ByteSource& source);

} // namespace ferrow::heif
