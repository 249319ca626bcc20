// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifBoxes.h"

#include "Platform/Codecs/ImageDecoder.h"

#include <QString>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace ferrow {
namespace {

/// Boxes at the top of a file that are looked through for the one that describes its items.
constexpr int mostTopLevelBoxes = 1'000;
constexpr int mostDescriptionBoxes = 100;

/// Largest description box that is read into memory, in bytes. The property box is the largest in practice: it holds
/// the colour profile, of which 16 MB are taken.
constexpr std::int64_t largestBox = 20'000'000;

/// A 200-megapixel phone picture has about 800 items.
constexpr std::size_t mostItems = 10'000;
constexpr std::size_t mostReferences = 200'000;

/// The library's own limit.
constexpr std::uint32_t mostExtents = 32;

/// The largest ordinary grid is that of a 200-megapixel picture of 512-pixel tiles: 768.
constexpr std::int64_t mostTiles = 4'096;

/// Of all metadata items together. Phones write some kilobytes.
constexpr std::uint64_t mostMetadataBytes = 64'000'000;

/// Pictures visited from the primary one down: its tiles and those of a transparency, depth or gain picture.
constexpr std::int64_t mostVisits = 4 * mostTiles;

/// Steps from the primary picture to a coded one. A cropped grid has two.
constexpr int deepestDerivation = 8;

constexpr std::uint32_t fourCharacters(const char (&name)[5])
{
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<unsigned char>(name[i]);
    return code;
}

[[noreturn]] void refuse()
{
    throw CodecError{CodecError::Reason::malformed, {}};
}

[[noreturn]] void refuseKind(const QString& kind)
{
    throw CodecError{CodecError::Reason::unsupported, kind};
}

/// Big-endian values from the front of a byte range; refuses to read past its end.
class Cursor {
public:
    explicit Cursor(std::span<const std::byte> bytes) : rest_(bytes) {}

    [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }

    std::span<const std::byte> take(std::uint64_t count)
    {
        if (count > rest_.size())
            refuse();
        const auto taken = rest_.first(static_cast<std::size_t>(count));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    /// `width` in bytes, 0…8; 0 gives 0.
    std::uint64_t number(std::uint64_t width)
    {
        std::uint64_t value = 0;
        for (const std::byte byte : take(width))
            value = value << 8 | std::to_integer<std::uint64_t>(byte);
        return value;
    }
    std::uint32_t number32(std::uint64_t width) { return static_cast<std::uint32_t>(number(width)); }

    struct VersionAndFlags {
        int version = 0;
        std::uint32_t flags = 0;
    };
    VersionAndFlags versionAndFlags()
    {
        const std::uint32_t both = number32(4);
        return {static_cast<int>(both >> 24), both & 0xffffff};
    }

    struct Box;
    Box box();

private:
    std::span<const std::byte> rest_;
};

struct Cursor::Box {
    std::uint32_t type = 0;
    Cursor content;
};

Cursor::Box Cursor::box()
{
    std::uint64_t size = number(4);
    const std::uint32_t type = number32(4);
    std::uint64_t headerSize = 8;
    if (size == 1) {
        size = number(8);
        headerSize = 16;
    } else if (size == 0) {
        size = headerSize + rest_.size();
    }
    if (size < headerSize)
        refuse();
    return {type, Cursor(take(size - headerSize))};
}

/// A range of the file's bytes.
struct Extent {
    std::uint64_t offset = 0;
    std::uint64_t length = 0; ///< 0 in an item's extent: up to the end of the file.
};

/// What matters here of a property that items share.
struct Property {
    std::uint32_t type = 0;
    PixelSize size;      ///< Of a size property.
    bool isTurn = false; ///< A rotation other than by nothing, or a crop.
};

struct Item {
    std::uint32_t type = 0;
    std::vector<std::uint32_t> sources;     ///< What it is derived from: tiles, or a picture that it turns or crops.
    std::vector<std::uint32_t> auxiliaries; ///< Transparency, depth and the like, which refer to it.
    std::vector<std::uint16_t> properties;  ///< Counted from 1.
    std::vector<Extent> extents;            ///< Of grids only.
    bool isInItemDataBox = false;           ///< Extents count from the start of the item data box, not the file.
};

class HeifFile {
public:
    explicit HeifFile(const ByteSource& source) : source_(source) {}

    HeifPicture inspect();

private:
    struct BoxPlace {
        std::uint32_t type = 0;
        std::uint64_t content = 0;
        std::uint64_t end = 0;
    };

    BoxPlace boxAt(std::uint64_t offset, std::uint64_t end) const;
    std::vector<std::byte> contentOf(const BoxPlace& place) const;
    BoxPlace findItemDescription() const;
    void readItemDescription(const BoxPlace& place);
    void readPrimaryItem(Cursor content);
    void readItems(Cursor content);
    void readReferences(Cursor content);
    void readProperties(Cursor content);
    void readAssociations(Cursor content);
    void readLocations(Cursor content);

    void checkCoding(std::uint32_t id) const;
    void checkDerivation(std::uint32_t id, int depth);
    const Item& itemAt(std::uint32_t id) const;
    void readProperties(const Item& item, HeifPicture& picture) const;
    struct Grid {
        std::int64_t columns = 0;
        std::int64_t rows = 0;
        std::int64_t tiles = 0;
        PixelSize output;
    };
    Grid gridOf(const Item& item) const;
    std::optional<PixelSize> tileSizeOf(const Item& grid) const;
    std::vector<std::byte> dataOf(const Item& item, std::size_t length) const;

    const ByteSource& source_;
    std::uint32_t primary_ = 0;
    std::map<std::uint32_t, Item> items_;
    std::map<std::uint32_t, std::uint32_t> thumbnailOf_;
    std::vector<Property> properties_;
    Extent itemData_;
    std::int64_t visits_ = 0;
};

HeifFile::BoxPlace HeifFile::boxAt(std::uint64_t offset, std::uint64_t end) const
{
    std::array<std::byte, 16> bytes;
    const std::size_t count = source_.readAt(static_cast<std::int64_t>(offset), bytes);
    Cursor cursor(std::span<const std::byte>(bytes).first(count));
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
    if (size < headerSize || size > end - offset)
        refuse();
    place.content = offset + headerSize;
    place.end = offset + size;
    return place;
}

std::vector<std::byte> HeifFile::contentOf(const BoxPlace& place) const
{
    if (place.end - place.content > largestBox)
        refuse();
    auto bytes =
        source_.bytesAt(static_cast<std::int64_t>(place.content), static_cast<std::size_t>(place.end - place.content));
    if (bytes.size() != place.end - place.content)
        refuse();
    return bytes;
}

HeifFile::BoxPlace HeifFile::findItemDescription() const
{
    const auto size = static_cast<std::uint64_t>(source_.size());
    bool hasTracks = false;
    std::uint64_t offset = 0;
    for (int count = 0; offset < size && count < mostTopLevelBoxes; ++count) {
        const BoxPlace place = boxAt(offset, size);
        if (place.type == fourCharacters("meta"))
            return place;
        hasTracks = hasTracks || place.type == fourCharacters("moov");
        offset = place.end;
    }
    if (hasTracks)
        refuseKind(QStringLiteral("HEIF image sequence"));
    refuse();
}

/// The boxes are read one by one, so that picture data inside the description is never loaded.
void HeifFile::readItemDescription(const BoxPlace& place)
{
    std::map<std::uint32_t, BoxPlace> boxes;
    int count = 0;
    for (std::uint64_t offset = place.content + 4; offset < place.end;) {
        const BoxPlace inner = boxAt(offset, place.end);
        boxes.emplace(inner.type, inner);
        offset = inner.end;
        if (++count > mostDescriptionBoxes)
            refuse();
    }
    const auto read = [&](std::uint32_t type, void (HeifFile::*reader)(Cursor)) {
        const auto found = boxes.find(type);
        if (found == boxes.end())
            return;
        const std::vector<std::byte> content = contentOf(found->second);
        (this->*reader)(Cursor(content));
    };
    read(fourCharacters("pitm"), &HeifFile::readPrimaryItem);
    read(fourCharacters("iinf"), &HeifFile::readItems);
    read(fourCharacters("iref"), &HeifFile::readReferences);
    read(fourCharacters("iprp"), &HeifFile::readProperties);
    read(fourCharacters("iloc"), &HeifFile::readLocations);
    if (const auto found = boxes.find(fourCharacters("idat")); found != boxes.end())
        itemData_ = {found->second.content, found->second.end - found->second.content};
}

void HeifFile::readPrimaryItem(Cursor content)
{
    primary_ = content.number32(content.versionAndFlags().version == 0 ? 2 : 4);
}

void HeifFile::readItems(Cursor content)
{
    const std::uint32_t count = content.number32(content.versionAndFlags().version == 0 ? 2 : 4);
    if (count > mostItems)
        refuse();
    for (std::uint32_t i = 0; i < count && !content.isAtEnd(); ++i) {
        auto entry = content.box();
        const int version = entry.content.versionAndFlags().version;
        // Older versions name no item types, which pictures need.
        if (entry.type != fourCharacters("infe") || version < 2)
            continue;
        const std::uint32_t id = entry.content.number32(version == 2 ? 2 : 4);
        entry.content.take(2); // Protection.
        items_[id].type = entry.content.number32(4);
    }
}

void HeifFile::readReferences(Cursor content)
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
            if (reference.type == fourCharacters("dimg") && items_.contains(from))
                items_[from].sources.push_back(to);
            else if (reference.type == fourCharacters("auxl") && items_.contains(to))
                items_[to].auxiliaries.push_back(from);
            else if (reference.type == fourCharacters("thmb") && items_.contains(to))
                thumbnailOf_.emplace(from, to);
        }
    }
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
        property.isTurn = true;
    }
    return property;
}

void HeifFile::readProperties(Cursor content)
{
    while (!content.isAtEnd()) {
        auto part = content.box();
        if (part.type == fourCharacters("ipma"))
            readAssociations(part.content);
        if (part.type != fourCharacters("ipco"))
            continue;
        while (!part.content.isAtEnd()) {
            auto [type, property] = part.content.box();
            properties_.push_back(propertyFrom(type, property));
        }
    }
}

void HeifFile::readAssociations(Cursor content)
{
    const auto [version, flags] = content.versionAndFlags();
    const std::uint64_t indexWidth = (flags & 1) != 0 ? 2 : 1;
    const std::uint32_t indexMask = indexWidth == 2 ? 0x7fff : 0x7f; // The topmost bit says "essential".
    for (std::uint32_t left = content.number32(4); left > 0; --left) {
        const std::uint32_t id = content.number32(version == 0 ? 2 : 4);
        const std::uint32_t count = content.number32(1);
        const auto item = items_.find(id);
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t index = content.number32(indexWidth) & indexMask;
            if (item != items_.end())
                item->second.properties.push_back(static_cast<std::uint16_t>(index));
        }
    }
}

void HeifFile::readLocations(Cursor content)
{
    const int version = content.versionAndFlags().version;
    const std::uint32_t widths = content.number32(2);
    const std::uint32_t offsetWidth = widths >> 12 & 15;
    const std::uint32_t lengthWidth = widths >> 8 & 15;
    const std::uint32_t baseWidth = widths >> 4 & 15;
    const std::uint32_t indexWidth = version == 0 ? 0 : widths & 15;
    if (version > 2 || std::max({offsetWidth, lengthWidth, baseWidth, indexWidth}) > 8)
        refuse();
    const auto fileSize = static_cast<std::uint64_t>(source_.size());
    std::uint64_t metadataBytes = 0;
    for (std::uint32_t left = content.number32(version == 2 ? 4 : 2); left > 0; --left) {
        const std::uint32_t id = content.number32(version == 2 ? 4 : 2);
        const std::uint32_t method = version == 0 ? 0 : content.number32(2) & 15;
        content.take(2); // Data reference.
        const std::uint64_t base = content.number(baseWidth);
        const std::uint32_t count = content.number32(2);
        if (count > mostExtents)
            refuse();
        const auto item = items_.find(id);
        const bool isKept = item != items_.end() && item->second.type == fourCharacters("grid") && method <= 1 &&
                            item->second.extents.empty();
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
        const bool isMetadata = item != items_.end() && (item->second.type == fourCharacters("Exif") ||
                                                         item->second.type == fourCharacters("mime"));
        metadataBytes += isMetadata ? itemBytes : 0;
        if (itemBytes > fileSize || metadataBytes > mostMetadataBytes)
            refuse();
    }
}

QString nameOfCoding(std::uint32_t type)
{
    switch (type) {
    case fourCharacters("av01"):
        return QStringLiteral("AV1-coded HEIF image");
    case fourCharacters("avc1"):
        return QStringLiteral("AVC-coded HEIF image");
    case fourCharacters("vvc1"):
        return QStringLiteral("VVC-coded HEIF image");
    case fourCharacters("evc1"):
        return QStringLiteral("EVC-coded HEIF image");
    case fourCharacters("jpeg"):
        return QStringLiteral("JPEG-coded HEIF image");
    case fourCharacters("j2k1"):
        return QStringLiteral("JPEG 2000-coded HEIF image");
    case fourCharacters("unci"):
        return QStringLiteral("Uncompressed HEIF image");
    case fourCharacters("lhv1"):
        return QStringLiteral("Layered HEIF image");
    default:
        return QStringLiteral("HEIF image of an unknown kind");
    }
}

bool isDerived(std::uint32_t type)
{
    return type == fourCharacters("grid") || type == fourCharacters("iden") || type == fourCharacters("iovl");
}

const Item& HeifFile::itemAt(std::uint32_t id) const
{
    const auto found = items_.find(id);
    if (found == items_.end())
        refuse();
    return found->second;
}

/// The first tile's declared size; all tiles of a grid must have the same. Absent where it declares none.
std::optional<PixelSize> HeifFile::tileSizeOf(const Item& grid) const
{
    HeifPicture tile;
    readProperties(itemAt(grid.sources.front()), tile);
    return tile.declaredSize.shorterSide() > 0 ? std::optional(tile.declaredSize) : std::nullopt;
}

/// Tiles cover the grid's output and are cut at its right and lower edge alone. Otherwise a small output could stand
/// for tiles of any size, all of which get decoded.
bool covers(std::int64_t tiles, std::int64_t tileSide, std::int64_t outputSide)
{
    return tiles * tileSide >= outputSide && tiles * tileSide - outputSide < tileSide;
}

/// Every step counts, so that pictures which share their sources over several levels can't multiply, and pictures
/// derived from themselves end at the depth limit.
void HeifFile::checkDerivation(std::uint32_t id, int depth)
{
    if (depth > deepestDerivation)
        refuse();
    if (++visits_ > mostVisits)
        refuseKind(QStringLiteral("HEIF image of too many parts"));
    const Item& item = itemAt(id);
    if (item.type == fourCharacters("grid")) {
        const Grid grid = gridOf(item);
        if (grid.tiles > mostTiles)
            refuseKind(QStringLiteral("HEIF image of more than 4,096 tiles"));
        if (grid.tiles != static_cast<std::int64_t>(item.sources.size()))
            refuse();
        const std::optional<PixelSize> tile = tileSizeOf(item);
        if (tile && (!covers(grid.columns, tile->width, grid.output.width) ||
                     !covers(grid.rows, tile->height, grid.output.height)))
            refuse();
    }
    if (isDerived(item.type)) {
        if (item.sources.empty())
            refuse();
        for (const std::uint32_t source : item.sources)
            checkDerivation(source, depth + 1);
    }
    for (const std::uint32_t auxiliary : item.auxiliaries) {
        if (items_.contains(auxiliary))
            checkDerivation(auxiliary, depth + 1);
    }
}

/// To be called after checkDerivation(), which knows that this ends.
void HeifFile::checkCoding(std::uint32_t id) const
{
    const Item& item = itemAt(id);
    if (isDerived(item.type)) {
        for (const std::uint32_t source : item.sources)
            checkCoding(source);
    } else if (item.type != fourCharacters("hvc1")) {
        refuseKind(nameOfCoding(item.type));
    }
}

void HeifFile::readProperties(const Item& item, HeifPicture& picture) const
{
    for (const std::uint16_t index : item.properties) {
        if (index < 1 || index > properties_.size())
            continue;
        const Property& property = properties_[index - 1U];
        if (property.type == fourCharacters("ispe"))
            picture.declaredSize = property.size;
        picture.isTurned = picture.isTurned || property.isTurn;
    }
}

std::vector<std::byte> HeifFile::dataOf(const Item& item, std::size_t length) const
{
    const auto fileSize = static_cast<std::uint64_t>(source_.size());
    const std::uint64_t start = item.isInItemDataBox ? itemData_.offset : 0;
    const std::uint64_t end = item.isInItemDataBox ? itemData_.offset + itemData_.length : fileSize;
    std::vector<std::byte> data;
    for (const Extent& extent : item.extents) {
        if (extent.offset > end - start)
            refuse();
        const std::uint64_t available = end - start - extent.offset;
        const std::uint64_t whole = extent.length == 0 ? available : extent.length;
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>({whole, available, length - data.size()}));
        const auto bytes = source_.bytesAt(static_cast<std::int64_t>(start + extent.offset), part);
        data.insert(data.end(), bytes.begin(), bytes.end());
    }
    return data;
}

HeifFile::Grid HeifFile::gridOf(const Item& item) const
{
    const std::vector<std::byte> data = dataOf(item, 12);
    Cursor cursor(data);
    cursor.take(1); // Version.
    const std::uint64_t sideWidth = (cursor.number(1) & 1) != 0 ? 4 : 2;
    Grid grid;
    grid.rows = static_cast<std::int64_t>(cursor.number(1) + 1);
    grid.columns = static_cast<std::int64_t>(cursor.number(1) + 1);
    grid.tiles = grid.rows * grid.columns;
    grid.output.width = static_cast<std::int64_t>(cursor.number(sideWidth));
    grid.output.height = static_cast<std::int64_t>(cursor.number(sideWidth));
    return grid;
}

HeifPicture HeifFile::inspect()
{
    readItemDescription(findItemDescription());
    HeifPicture picture;
    picture.item = primary_;
    if (const auto original = thumbnailOf_.find(primary_); original != thumbnailOf_.end())
        picture.item = original->second;
    checkDerivation(picture.item, 0);
    checkCoding(picture.item);

    const Item& item = itemAt(picture.item);
    readProperties(item, picture);
    // A grid is decoded at the size in its own data, whatever its size property says; they differ in forged files only.
    if (item.type == fourCharacters("grid")) {
        const Grid grid = gridOf(item);
        picture.declaredSize = grid.output;
        picture.tiles = grid.tiles;
    }
    return picture;
}

} // namespace

HeifPicture inspectHeifBoxes(const ByteSource& source)
{
    try {
        const HeifPicture picture = HeifFile(source).inspect();
        if (picture.declaredSize.shorterSide() < 1)
            refuse();
        return picture;
    } catch (const InputOutputError&) {
        throw CodecError{CodecError::Reason::unreadable, {}};
    }
}

} // namespace ferrow
