// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifItems.h"

#include "Platform/Codecs/HeifCursor.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ferrow::heif {
namespace {

/// Boxes at the top of a file that are looked through for the one that describes its items.
constexpr int mostTopLevelBoxes = 1'000;
constexpr int mostDescriptionBoxes = 100;

/// Largest description box that is read into memory, in bytes. The property box is the largest in practice: it holds
/// the color profile, of which 16 MB are taken.
constexpr std::int64_t largestBox = 20'000'000;

/// A 200-megapixel phone picture has about 800 items.
constexpr std::size_t mostItems = 10'000;
constexpr std::size_t mostReferences = 200'000;

/// The library's own limit.
constexpr std::uint32_t mostExtents = 32;

/// Of all metadata items together. Phones write some kilobytes.
constexpr std::uint64_t mostMetadataBytes = 64'000'000;

/// In one decoder configuration; the format has numbers for 16.
constexpr std::size_t mostSequences = 16;

struct BoxPlace {
    std::uint32_t type = 0;
    std::uint64_t content = 0;
    std::uint64_t end = 0;
};

class ItemReader {
public:
    explicit ItemReader(const ByteSource& source) : source_(source) {}

    Items read()
    {
        readItemDescription(findItemDescription());
        return std::move(result_);
    }

private:
    std::optional<BoxPlace> boxAt(std::uint64_t offset, std::uint64_t end) const;
    std::vector<std::byte> contentOf(const BoxPlace& place) const;
    BoxPlace findItemDescription() const;
    void readItemDescription(const BoxPlace& place);
    void readPrimaryItem(Cursor content);
    void readItems(Cursor content);
    void readReferences(Cursor content);
    void readProperties(Cursor content);
    void readAssociations(Cursor content);
    void readLocations(Cursor content);

    const ByteSource& source_;
    Items result_;
};

/// Absent where the box is not whole.
std::optional<BoxPlace> ItemReader::boxAt(std::uint64_t offset, std::uint64_t end) const
{
    std::array<std::byte, 16> bytes{};
    const std::size_t count = source_.readAt(std::int64_t(offset), bytes);
    Cursor cursor(bytes);
    std::uint64_t size = cursor.number(4);
    BoxPlace place;
    place.type = cursor.number32(4);
    std::uint64_t headerSize = 8;
    if (size == 1) {
        size = cursor.number(8);
        headerSize = 16;
    } else if (size == 0) {
        size = end - offset;
    }
    if (count < headerSize || size < headerSize || size > end - offset)
        return std::nullopt;
    place.content = offset + headerSize;
    place.end = offset + size;
    return place;
}

std::vector<std::byte> ItemReader::contentOf(const BoxPlace& place) const
{
    if (place.end - place.content > largestBox)
        refuse();
    auto bytes = source_.bytesAt(std::int64_t(place.content), std::size_t(place.end - place.content));
    if (bytes.size() != place.end - place.content)
        refuse();
    return bytes;
}

/// The one description there is: of several the library takes the last. Behind it a file may be cut.
BoxPlace ItemReader::findItemDescription() const
{
    const auto size = std::uint64_t(source_.size());
    std::optional<BoxPlace> description;
    bool hasTracks = false;
    std::uint64_t offset = 0;
    for (int count = 0; offset < size; ++count) {
        const auto place = boxAt(offset, size);
        if (!place && description)
            break;
        const bool isDescription = place && place->type == fourCharacters("meta");
        if (!place || count == mostTopLevelBoxes || (isDescription && description))
            refuse();
        if (isDescription)
            description = place;
        hasTracks = hasTracks || place->type == fourCharacters("moov");
        offset = place->end;
    }
    if (!description && hasTracks)
        refuseKind(QStringLiteral("HEIF image sequence"));
    if (!description)
        refuse();
    return *description;
}

/// The boxes are read one by one, so that picture data inside the description is never loaded.
void ItemReader::readItemDescription(const BoxPlace& place)
{
    std::map<std::uint32_t, BoxPlace> boxes;
    int count = 0;
    for (std::uint64_t offset = place.content + 4; offset < place.end;) {
        const auto inner = boxAt(offset, place.end);
        if (!inner)
            refuse();
        boxes.emplace(inner->type, *inner);
        offset = inner->end;
        if (++count > mostDescriptionBoxes)
            refuse();
    }
    const auto read = [&](std::uint32_t type, void (ItemReader::*reader)(Cursor)) {
        const auto found = boxes.find(type);
        if (found == boxes.end())
            return;
        const std::vector<std::byte> content = contentOf(found->second);
        (this->*reader)(Cursor(content));
    };
    read(fourCharacters("pitm"), &ItemReader::readPrimaryItem);
    read(fourCharacters("iinf"), &ItemReader::readItems);
    read(fourCharacters("iref"), &ItemReader::readReferences);
    read(fourCharacters("iprp"), &ItemReader::readProperties);
    read(fourCharacters("iloc"), &ItemReader::readLocations);
    if (const auto found = boxes.find(fourCharacters("idat")); found != boxes.end())
        result_.itemData = {found->second.content, found->second.end - found->second.content};
}

void ItemReader::readPrimaryItem(Cursor content)
{
    result_.primary = content.number32(content.versionAndFlags().version == 0 ? 2 : 4);
}

void ItemReader::readItems(Cursor content)
{
    const std::uint32_t count = content.number32(content.versionAndFlags().version == 0 ? 2 : 4);
    if (count > mostItems)
        refuse();
    // The library takes all entries there are, and of two with the same number the first.
    while (!content.isAtEnd()) {
        auto entry = content.box();
        const int version = entry.content.versionAndFlags().version;
        // Older versions name no item types, which pictures need.
        if (entry.type != fourCharacters("infe") || version < 2)
            continue;
        const std::uint32_t id = entry.content.number32(version == 2 ? 2 : 4);
        entry.content.take(2); // Protection.
        const bool isNew = result_.all.emplace(id, Item{entry.content.number32(4)}).second;
        if (!isNew || result_.all.size() > mostItems)
            refuse();
    }
}

void ItemReader::readReferences(Cursor content)
{
    const std::uint64_t idWidth = content.versionAndFlags().version == 0 ? 2 : 4;
    std::size_t total = 0;
    while (!content.isAtEnd()) {
        auto reference = content.box();
        const std::uint32_t from = reference.content.number32(idWidth);
        const std::uint32_t count = reference.content.number32(2);
        total += count;
        if (total > mostReferences)
            refuse();
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t to = reference.content.number32(idWidth);
            if (reference.type == fourCharacters("dimg") && result_.all.contains(from))
                result_.all[from].sources.push_back(to);
            else if (reference.type == fourCharacters("auxl") && result_.all.contains(to))
                result_.all[to].auxiliaries.push_back(from);
            else if (reference.type == fourCharacters("thmb") && result_.all.contains(to))
                result_.thumbnailOf.emplace(from, to);
        }
    }
}

/// Of a decoder configuration: arrays of units, each array of one kind.
std::vector<HevcSequence> sequencesOf(Cursor configuration)
{
    std::vector<HevcSequence> sequences;
    configuration.take(22); // Profile, level, formats and lengths.
    for (std::uint32_t arrays = configuration.number32(1); arrays > 0; --arrays) {
        configuration.take(1); // Kind: the units say it too, and the decoder goes by them.
        for (std::uint32_t units = configuration.number32(2); units > 0; --units) {
            const auto sequence = readHevcSequence(configuration.take(configuration.number(2)));
            if (sequence && sequences.size() == mostSequences)
                refuse();
            if (sequence)
                sequences.push_back(*sequence);
        }
    }
    return sequences;
}

Property propertyFrom(std::uint32_t type, Cursor content)
{
    Property property;
    property.type = type;
    if (type == fourCharacters("ispe")) {
        content.versionAndFlags();
        property.size.width = content.number32(4);
        property.size.height = content.number32(4);
    } else if (type == fourCharacters("irot")) {
        property.isTurn = (content.number(1) & 3) != 0;
    } else if (type == fourCharacters("clap")) {
        property.isCrop = true;
    } else if (type == fourCharacters("hvcC")) {
        property.sequences = sequencesOf(content);
    } else if (type == fourCharacters("clli")) {
        property.peak = int(content.number(2));
    } else if (type == fourCharacters("mdcv")) {
        content.take(16); // Primaries and white.
        property.peak = int(std::min<std::uint64_t>(content.number(4) / 10'000, 10'000));
    }
    return property;
}

void ItemReader::readProperties(Cursor content)
{
    while (!content.isAtEnd()) {
        auto part = content.box();
        if (part.type == fourCharacters("ipma"))
            readAssociations(part.content);
        if (part.type != fourCharacters("ipco"))
            continue;
        while (!part.content.isAtEnd()) {
            auto [type, property] = part.content.box();
            result_.properties.push_back(propertyFrom(type, property));
        }
    }
}

void ItemReader::readAssociations(Cursor content)
{
    const auto [version, flags] = content.versionAndFlags();
    const std::uint64_t indexWidth = (flags & 1) != 0 ? 2 : 1;
    const std::uint32_t indexMask = indexWidth == 2 ? 0x7fff : 0x7f; // The topmost bit says "essential".
    for (std::uint32_t left = content.number32(4); left > 0; --left) {
        const std::uint32_t id = content.number32(version == 0 ? 2 : 4);
        const std::uint32_t count = content.number32(1);
        const auto item = result_.all.find(id);
        if (item != result_.all.end() && !item->second.properties.empty())
            refuse();
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t index = content.number32(indexWidth) & indexMask;
            if (item != result_.all.end())
                item->second.properties.push_back(std::uint16_t(index));
        }
    }
}

/// Whether something in the item's own bytes bears on how large its picture is.
bool holdsPicture(std::uint32_t type)
{
    return type == fourCharacters("grid") || type == fourCharacters("iovl") || type == fourCharacters("hvc1");
}

void ItemReader::readLocations(Cursor content)
{
    const int version = content.versionAndFlags().version;
    const std::uint32_t widths = content.number32(2);
    const std::uint32_t offsetWidth = widths >> 12 & 15;
    const std::uint32_t lengthWidth = widths >> 8 & 15;
    const std::uint32_t baseWidth = widths >> 4 & 15;
    const std::uint32_t indexWidth = version == 0 ? 0 : widths & 15;
    if (version > 2 || std::max({offsetWidth, lengthWidth, baseWidth, indexWidth}) > 8)
        refuse();
    const auto fileSize = std::uint64_t(source_.size());
    std::uint64_t metadataBytes = 0;
    for (std::uint32_t left = content.number32(version == 2 ? 4 : 2); left > 0; --left) {
        const std::uint32_t id = content.number32(version == 2 ? 4 : 2);
        const std::uint32_t method = version == 0 ? 0 : content.number32(2) & 15;
        content.take(2); // Data reference.
        const std::uint64_t base = content.number(baseWidth);
        const std::uint32_t count = content.number32(2);
        if (count > mostExtents)
            refuse();
        const auto item = result_.all.find(id);
        const bool isKept =
            item != result_.all.end() && holdsPicture(item->second.type) && method <= 1 && item->second.extents.empty();
        std::uint64_t itemBytes = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            content.take(indexWidth);
            const std::uint64_t offset = base + content.number(offsetWidth);
            const std::uint64_t length = content.number(lengthWidth);
            itemBytes += std::min(length, fileSize); // At most 32 times 2 GB: no overflow.
            if (isKept)
                item->second.extents.push_back({offset, length});
        }
        if (isKept)
            item->second.isInItemDataBox = method == 1;
        // The library loads an item whole, and every metadata item while it opens the file: extents that lie over one
        // another would make it load the same bytes again and again.
        const bool isMetadata = item != result_.all.end() && (item->second.type == fourCharacters("Exif") ||
                                                              item->second.type == fourCharacters("mime"));
        metadataBytes += isMetadata ? itemBytes : 0;
        if (itemBytes > fileSize || metadataBytes > mostMetadataBytes)
            refuse();
    }
}

} // namespace

const Item& Items::at(std::uint32_t id) const
{
    const auto found = all.find(id);
    if (found == all.end())
        refuse();
    return found->second;
}

std::vector<const Property*> Items::propertiesOf(const Item& item) const
{
    std::vector<const Property*> present;
    for (const std::uint16_t index : item.properties)
        if (index >= 1 && index <= properties.size())
            present.push_back(&properties[index - 1U]);
    return present;
}

Extent Items::placeOf(const ByteSource& source, const Item& item) const
{
    return item.isInItemDataBox ? itemData : Extent{0, std::uint64_t(source.size())};
}

bool Items::isWhole(const ByteSource& source, const Item& item) const
{
    const std::uint64_t size = placeOf(source, item).length;
    return std::ranges::all_of(item.extents, [size](const Extent& extent) {
        return extent.offset <= size && extent.length <= size - extent.offset;
    });
}

std::size_t Items::read(const ByteSource& source, const Item& item, std::uint64_t offset,
                        std::span<std::byte> into) const
{
    const auto [start, size] = placeOf(source, item);
    std::size_t done = 0;
    for (const Extent& extent : item.extents) {
        if (extent.offset > size)
            refuse();
        const std::uint64_t available = size - extent.offset;
        const std::uint64_t length = extent.length == 0 ? available : std::min(extent.length, available);
        if (offset >= length) {
            offset -= length;
            continue;
        }
        const auto part = std::size_t(std::min<std::uint64_t>(length - offset, into.size() - done));
        done += source.readAt(std::int64_t(start + extent.offset + offset), into.subspan(done, part));
        offset = 0;
        if (done == into.size())
            break;
    }
    return done;
}

Items readItems(const ByteSource& source)
{
    return ItemReader(source).read();
}

} // namespace ferrow::heif
