// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HeifBoxes.h"

#include "Platform/Codecs/HeifCursor.h"
#include "Platform/Codecs/HeifItems.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ferrow {
namespace {

using namespace heif;

/// The largest ordinary grid is that of a 200-megapixel picture of 512-pixel tiles: 768.
constexpr std::int64_t mostTiles = 4'096;

/// Pictures visited from the primary one down: its tiles and those of a transparency, depth or gain picture.
constexpr std::int64_t mostVisits = 4 * mostTiles;

/// Steps from the primary picture to a coded one. A cropped grid has two.
constexpr int deepestDerivation = 8;

/// Units of coded data that are walked over, in all pictures together. A tile is one, a large picture some dozens.
constexpr std::int64_t mostUnits = 100'000;

/// Pixels that a part may have beyond the whole picture: a tile at the edge, a picture that is cropped.
constexpr std::int64_t allowedSurplus = 16'000'000;

/// Coding blocks have 64 pixels a side at most, and some writers declare whole ones. What is left to disagree is found
/// after decoding.
constexpr std::int64_t codingBlock = 64;

/// The longest side that any part may have, in pixels; areas of such sides fit their numbers.
constexpr std::int64_t longestSide = 65'535;

bool isDerived(std::uint32_t type)
{
    return type == fourCharacters("grid") || type == fourCharacters("iden") || type == fourCharacters("iovl");
}

class PictureCheck {
public:
    explicit PictureCheck(const ByteSource& source) : source_(source), items_(readItems(source)) {}

    HeifPicture run();

private:
    /// A picture that is put together from others: what its own bytes say.
    struct Assembly {
        std::int64_t columns = 1;
        std::int64_t rows = 1;
        PixelSize output;

        [[nodiscard]] std::int64_t tiles() const { return columns * rows; }
    };

    void checkCoding(std::uint32_t id) const;
    void checkDerivation(std::uint32_t id, int depth);
    void checkGrid(const Item& item) const;
    void checkSizes(const Item& item);
    void checkStream(const Item& item, PixelSize declared);
    void expect(bool agreement) { picture_.contradictsItself = picture_.contradictsItself || !agreement; }

    [[nodiscard]] PixelSize declaredSizeOf(const Item& item) const;
    [[nodiscard]] std::optional<Assembly> assemblyOf(const Item& item) const;

    const ByteSource& source_;
    const Items items_;
    HeifPicture picture_;
    std::int64_t visits_ = 0;
    std::int64_t units_ = 0;
};

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

PixelSize PictureCheck::declaredSizeOf(const Item& item) const
{
    PixelSize size;
    for (const Property* property : items_.propertiesOf(item))
        if (property->type == fourCharacters("ispe"))
            size = property->size;
    return size;
}

/// Of grids and overlays: version, flags, number of rows and columns or a fill color, size.
std::optional<PictureCheck::Assembly> PictureCheck::assemblyOf(const Item& item) const
{
    const bool isGrid = item.type == fourCharacters("grid");
    if (!isGrid && item.type != fourCharacters("iovl"))
        return std::nullopt;
    std::array<std::byte, 18> data{};
    const std::size_t count = items_.read(source_, item, 0, data);
    Cursor cursor(std::span<const std::byte>(data).first(count));
    cursor.take(1);
    const std::uint64_t sideWidth = (cursor.number(1) & 1) != 0 ? 4 : 2;
    Assembly assembly;
    if (isGrid) {
        assembly.rows = std::int64_t(cursor.number(1) + 1);
        assembly.columns = std::int64_t(cursor.number(1) + 1);
    } else {
        cursor.take(8);
    }
    assembly.output.width = std::int64_t(cursor.number(sideWidth));
    assembly.output.height = std::int64_t(cursor.number(sideWidth));
    return assembly;
}

/// Tiles cover the grid's output and are cut at its right and lower edge alone. Otherwise a small output could stand
/// for tiles of any size, all of which get decoded.
bool covers(std::int64_t tiles, std::int64_t tileSide, std::int64_t outputSide)
{
    return tiles * tileSide >= outputSide && tiles * tileSide - outputSide < tileSide;
}

void PictureCheck::checkGrid(const Item& item) const
{
    const Assembly grid = assemblyOf(item).value();
    if (grid.tiles() > mostTiles)
        refuseKind(QStringLiteral("HEIF image of more than 4,096 tiles"));
    if (grid.tiles() != std::int64_t(item.sources.size()))
        refuse();
    // All tiles of a grid must have the first one's size.
    const PixelSize tile = declaredSizeOf(items_.at(item.sources.front()));
    if (tile.shorterSide() > 0 &&
        (!covers(grid.columns, tile.width, grid.output.width) || !covers(grid.rows, tile.height, grid.output.height)))
        refuse();
}

/// Every step counts, so that pictures which share their sources over several levels can't multiply, and pictures
/// derived from themselves end at the depth limit.
void PictureCheck::checkDerivation(std::uint32_t id, int depth)
{
    if (depth > deepestDerivation)
        refuse();
    if (++visits_ > mostVisits)
        refuseKind(QStringLiteral("HEIF image of too many parts"));
    const Item& item = items_.at(id);
    // A picture that was cut off: newer libraries notice while they decode it, and not before.
    if (!items_.isWhole(source_, item) || (isDerived(item.type) && item.sources.empty()))
        refuse();
    if (item.type == fourCharacters("grid"))
        checkGrid(item);
    checkSizes(item);
    if (isDerived(item.type))
        for (const std::uint32_t source : item.sources)
            checkDerivation(source, depth + 1);
    for (const std::uint32_t auxiliary : item.auxiliaries)
        if (items_.all.contains(auxiliary))
            checkDerivation(auxiliary, depth + 1);
}

/// To be called after checkDerivation(), which knows that this ends.
void PictureCheck::checkCoding(std::uint32_t id) const
{
    const Item& item = items_.at(id);
    if (isDerived(item.type))
        for (const std::uint32_t source : item.sources)
            checkCoding(source);
    else if (item.type != fourCharacters("hvc1"))
        refuseKind(nameOfCoding(item.type));
}

bool agrees(const HevcSequence& sequence, PixelSize declared)
{
    const auto isNear = [](std::int64_t shown, std::int64_t said) { return std::abs(shown - said) < codingBlock; };
    return sequence.coded.longestSide() <= longestSide && isNear(sequence.shown.width, declared.width) &&
           isNear(sequence.shown.height, declared.height) &&
           sequence.coded.width - sequence.shown.width < codingBlock &&
           sequence.coded.height - sequence.shown.height < codingBlock;
}

/// The library takes memory for the size that is coded, and for that of an assembly's own bytes, before it compares
/// with what was declared.
void PictureCheck::checkSizes(const Item& item)
{
    const PixelSize declared = declaredSizeOf(item);
    const PixelSize whole = picture_.declaredSize;
    if (std::max(declared.longestSide(), whole.longestSide()) > longestSide) {
        expect(declared.longestSide() <= longestSide);
        return;
    }
    expect(declared.width * declared.height <= whole.width * whole.height + allowedSurplus);
    // The whole is what the library must declare, which is seen when it has opened the file.
    if (const auto assembly = assemblyOf(item))
        expect(assembly->output == declared || assembly->output == whole);
    if (item.type != fourCharacters("hvc1"))
        return;
    for (const Property* property : items_.propertiesOf(item))
        for (const HevcSequence& sequence : property->sequences)
            expect(agrees(sequence, declared));
    checkStream(item, declared);
}

/// Parameters have no place among a picture's data, but a decoder would follow them.
void PictureCheck::checkStream(const Item& item, PixelSize declared)
{
    std::array<std::byte, 4 + hevcSequenceReach> bytes{};
    constexpr std::size_t unitStart = 6; // Length, header.
    for (std::uint64_t offset = 0;; ++units_) {
        if (items_.read(source_, item, offset, std::span(bytes).first(unitStart)) < unitStart)
            return;
        if (units_ > mostUnits)
            refuse();
        const std::uint64_t length = Cursor(bytes).number(4);
        if (readHevcSequence(std::span(bytes).subspan(4, 2))) {
            const std::size_t count = items_.read(source_, item, offset, bytes);
            const auto unit = std::span<const std::byte>(bytes).first(count).subspan(4);
            expect(agrees(readHevcSequence(unit).value(), declared));
        }
        offset += 4 + length;
    }
}

HeifPicture PictureCheck::run()
{
    picture_.item = items_.primary;
    if (const auto original = items_.thumbnailOf.find(items_.primary); original != items_.thumbnailOf.end())
        picture_.item = original->second;
    const Item& item = items_.at(picture_.item);
    picture_.declaredSize = declaredSizeOf(item);
    for (const Property* property : items_.propertiesOf(item)) {
        picture_.isTurned = picture_.isTurned || property->isTurn;
        picture_.isCropped = picture_.isCropped || property->isCrop;
        if (property->peak > 0 && (picture_.peak == 0 || property->type == fourCharacters("clli")))
            picture_.peak = property->peak;
    }
    // An assembly is decoded at the size in its own data, whatever its size property says; they differ in forged files
    // only.
    if (const auto assembly = assemblyOf(item)) {
        picture_.declaredSize = assembly->output;
        picture_.tiles = assembly->tiles();
    }
    checkDerivation(picture_.item, 0);
    checkCoding(picture_.item);
    return picture_;
}

} // namespace

HeifPicture inspectHeifBoxes(const ByteSource& source)
{
    try {
        const HeifPicture picture = PictureCheck(source).run();
        if (picture.declaredSize.shorterSide() < 1)
            refuse();
        return picture;
    } catch (const InputOutputError&) {
        throw CodecError{CodecError::Reason::unreadable, {}};
    }
}

} // namespace ferrow
