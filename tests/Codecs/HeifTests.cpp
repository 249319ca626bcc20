// SPDX-License-Identifier: GPL-3.0-or-later
#include "Codecs/CodecTesting.h"

#include "Platform/Codecs/ExifBlock.h"
#include "Platform/Codecs/HeifTiles.h"

namespace ferrow {

namespace {

using namespace test;

const auto decode = [](const QByteArray& bytes) { return decodeAs(FileType::heif, bytes); };

// Boxes written by hand, for structures that no encoder would write.

QByteArray fullBox(const QByteArray& type, const QByteArray& content, quint32 versionAndFlags = 0)
{
    return box(type, bigEndian(versionAndFlags) + content);
}

QByteArray sized(quint32 width, quint32 height)
{
    return fullBox("ispe", bigEndian(width) + bigEndian(height));
}

struct Item {
    QByteArray type;
    QByteArray data;
    QByteArray properties;   ///< Each a byte, counted from 1.
    QByteArray sources = {}; ///< Item numbers, each a byte, counted from 1.
    QByteArray reference = "dimg";
};

/// Item 1 is the primary one.
QByteArray makeHeif(const std::vector<Item>& items, const QByteArray& properties)
{
    QByteArray entries, associations, references, data;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const QByteArray id = bigEndian(i + 1, 2);
        entries += fullBox("infe", id + bigEndian(0, 2) + items[i].type + '\0', 2u << 24);
        associations += id + char(items[i].properties.size()) + items[i].properties;
        data += items[i].data;
        QByteArray list;
        for (const char source : items[i].sources)
            list += bigEndian(quint8(source), 2);
        if (!list.isEmpty())
            references += box(items[i].reference, id + bigEndian(quint64(items[i].sources.size()), 2) + list);
    }
    const QByteArray count = bigEndian(items.size(), 2);
    const QByteArray start = box("ftyp", "heic" + bigEndian(0) + "mif1heic");
    const auto description = [&](qsizetype offset) {
        QByteArray locations;
        for (std::size_t i = 0; i < items.size(); offset += items[i++].data.size())
            locations += bigEndian(i + 1, 2) + bigEndian(1, 4) + bigEndian(quint64(offset)) +
                         bigEndian(quint64(items[i].data.size()));
        return fullBox(
            "meta", fullBox("hdlr", bigEndian(0) + "pict" + QByteArray(13, '\0')) + fullBox("pitm", bigEndian(1, 2)) +
                        fullBox("iinf", count + entries) +
                        (references.isEmpty() ? QByteArray() : fullBox("iref", references)) +
                        box("iprp", box("ipco", properties) + fullBox("ipma", bigEndian(items.size()) + associations)) +
                        fullBox("iloc", bigEndian(0x4400, 2) + count + locations));
    };
    return start + description(start.size() + description(0).size() + 8) + box("mdat", data);
}

QByteArray grid(int rows, int columns, quint32 width, quint32 height)
{
    return QByteArray("\0\1", 2) + char(rows - 1) + char(columns - 1) + bigEndian(width) + bigEndian(height);
}

/// A coded picture of one color, 64 x 64, and the property that its decoder needs.
struct Tile {
    QByteArray configuration;
    QByteArray data;
};

Tile makeTile(const Components& color, std::int64_t side = 64)
{
    const EncodeOptions options = optionsFor({side, side});
    Pixels pixels;
    for (std::int64_t i = 0; i < side * side; ++i)
        pixels.insert(pixels.end(), color.begin(), color.end());
    const QByteArray file = encode(OutputType::heif, options, pixels);
    const auto contentOf = [&](const char* type) {
        const qsizetype at = file.indexOf(type);
        return file.mid(at + 4, (quint8(file[at - 2]) << 8 | quint8(file[at - 1])) - 8);
    };
    // Metadata follows the picture in the data box, after the four bytes of its own header.
    const qsizetype metadata = makeExifBlock(options.metadata, options.size, false).size() + 4;
    return {box("hvcC", contentOf("hvcC")), contentOf("mdat").chopped(metadata)};
}

/// A coded picture whose own properties are numbers 2 and 3 of `properties`.
struct Heif : testing::Test {
    const Tile tile = makeTile({90, 90, 90});
    const Item coded{"hvc1", tile.data, "\2\3"};
    const QByteArray properties = sized(128, 128) + sized(64, 64) + tile.configuration;

    [[nodiscard]] QByteArray withGrid(const QByteArray& data, const QByteArray& sources) const
    {
        return makeHeif({{"grid", data, "\1", sources}, coded}, properties);
    }
    [[nodiscard]] QByteArray declaring(quint32 width, quint32 height) const
    {
        return makeHeif({coded}, sized(1, 1) + sized(width, height) + tile.configuration);
    }
};

} // namespace

TEST_F(Heif, assemblesTilesAndTurnsThem)
{
    const Components colors[]{{200, 30, 30}, {30, 200, 30}, {30, 30, 200}, {220, 220, 220}, {90, 90, 90}, {10, 10, 10}};
    std::vector<Item> items{{"grid", grid(2, 3, 180, 120), "\1\4", "\2\3\4\5\6\7"}};
    for (const Components& color : colors)
        items.push_back({"hvc1", makeTile(color).data, "\2\3"});
    // `corners`: the tiles at top left, top right, bottom left and bottom right.
    const auto expect = [&](const QByteArray& turn, PixelSize size, const Components& corners) {
        SCOPED_TRACE(turn.toHex().toStdString());
        const Decoded decoded = decode(makeHeif(items, sized(180, 120) + sized(64, 64) + tile.configuration + turn));
        ASSERT_EQ(decoded.size, size);
        for (int i = 0; i < 4; ++i) {
            const Components found = decoded.at(i % 2 == 0 ? 2 : size.width - 3, i < 2 ? 2 : size.height - 3);
            EXPECT_LE(worstDifference(found, colors[corners[std::size_t(i)]]), 3) << i;
        }
    };
    expect(box("free", {}), {180, 120}, {0, 2, 3, 5});
    expect(box("irot", "\3"), {120, 180}, {3, 0, 5, 2});
    expect(box("irot", "\1"), {120, 180}, {2, 5, 0, 3});
    expect(box("irot", "\2"), {180, 120}, {5, 3, 2, 0});
    expect(box("imir", "\1"), {180, 120}, {2, 0, 5, 3});
}

TEST_F(Heif, takesNoPictureForWholeThatLacksATile)
{
    Item lost = coded;
    lost.data.fill('\1');
    const auto withTiles = [&](const Item& first, const Item& second) {
        return makeHeif({{"grid", grid(2, 1, 64, 128), "\4", "\2\3"}, first, second}, properties + sized(64, 128));
    };
    const QByteArray file = withTiles(coded, lost);
    EXPECT_EQ(decode(file).error, damaged);
    if (!heif::canWriteTiles)
        return;
    const Decoded shown = decodeAs(FileType::heif, file, Tolerance::tolerant);
    ASSERT_EQ(shown.error, std::nullopt);
    EXPECT_LE(worstDifference(shown.at(30, 30), Components{90, 90, 90}), 3);
    EXPECT_EQ(shown.at(30, 100), (Components{128, 128, 128}));
    EXPECT_EQ(decodeAs(FileType::heif, withTiles(lost, lost), Tolerance::tolerant).error, damaged);
}

TEST(HeifEncoder, keepsLargePicturesWholeAcrossTheirTiles)
{
    const PixelSize size{2500, 1700};
    Pixels pixels;
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width; ++x)
            for (const std::int64_t value : {x * 255 / size.width, y * 255 / size.height, (x + y) / 20})
                pixels.push_back(std::uint8_t(value));
    const QByteArray file = encode(OutputType::heif, optionsFor(size), pixels);
    const Decoded decoded = decode(file);
    ASSERT_EQ(decoded.size, size);
    EXPECT_LE(worstDifference(decoded.pixels, pixels), 6);
    EXPECT_EQ(decoded.profile, ColorProfile::displayP3());
    EXPECT_EQ(file.first(file.indexOf("mdat")).contains("grid"), heif::canWriteTiles);
    // A row of tiles, where there are any.
    EXPECT_EQ(decoded.heldBytes < size.width * size.height * 3, heif::canWriteTiles);
}

TEST_F(Heif, refusesStructuresBeforeTheLibrarySeesThem)
{
    const auto chain = [&](char length) {
        std::vector<Item> items;
        for (char i = 1; i < length; ++i)
            items.push_back({"iden", {}, "\2", QByteArray(1, char(i + 1))});
        items.push_back(coded);
        return makeHeif(items, properties);
    };
    const QByteArray av1 = makeHeif({{"av01", tile.data, "\2\3"}}, properties);
    const QByteArray large = grid(2, 2, 128, 128);
    EXPECT_EQ(decode(chain(2)).error, std::nullopt);
    EXPECT_EQ(decode(chain(100)).error, malformed);
    EXPECT_EQ(decode(withGrid(large, "\1\1\1\1")).error, malformed);
    EXPECT_EQ(decode(withGrid(large, "\2\2\1\2")).error, malformed);
    EXPECT_EQ(decode(withGrid(large, "\2\2\2")).error, malformed);
    EXPECT_EQ(decode(withGrid(grid(1, 2, 128, 64), "\2\x9")).error, malformed);
    EXPECT_EQ(decode(withGrid(grid(2, 2, 16, 16), "\2\2\2\2")).error, malformed);
    const auto tooMany = decode(withGrid(grid(65, 65, 4160, 4160), QByteArray(65 * 65, '\2'))).error;
    EXPECT_EQ(tooMany.value_or(malformed).reason, CodecError::Reason::unsupported);
    EXPECT_EQ(decode(makeHeif({{"hvc1", tile.data, "\3"}}, properties)).error, malformed);
    EXPECT_EQ(decode(av1).error, unsupported("AV1-coded HEIF image"));
    // The library reads an item's first entry, the entries behind the last one that is counted, and the last
    // description.
    const QByteArray good = makeHeif({coded, coded}, properties);
    const qsizetype second = good.lastIndexOf("infe");
    EXPECT_EQ(decode(good).error, std::nullopt);
    EXPECT_EQ(decode(withByte(good, second + 9, 1)).error, malformed);
    const QByteArray uncounted = withByte(withGrid(grid(2, 2, 128, 128), "\2\2\2\2"), good.indexOf("iinf") + 9, 1);
    EXPECT_EQ(decode(uncounted).error.value_or(malformed), malformed) << "newer libraries refuse it";
    const QByteArray longChain = chain(100);
    EXPECT_EQ(decode(withByte(longChain, longChain.indexOf("iinf") + 9, 1)).error, malformed);
    EXPECT_EQ(decode(good + good.mid(good.indexOf("meta") - 4)).error, malformed);
    EXPECT_EQ(decode(makeHeif({coded}, properties).chopped(1)).error, malformed);
    EXPECT_EQ(decode({}).error, malformed);
}

TEST_F(Heif, takesNoPixelsOfAnotherSizeThanDeclared)
{
    // Sizes beyond every limit are still to be named.
    EXPECT_EQ(decode(declaring(60'000, 50'000)).storedSize, (PixelSize{60'000, 50'000}));
    EXPECT_EQ(decode(declaring(0xffffffff, 0xffffffff)).storedSize, (PixelSize{4'294'967'295, 4'294'967'295}));
    for (const quint32 side : {16U, 63U, 65U})
        EXPECT_EQ(decode(declaring(side, side)).error, damaged) << side;
}

TEST_F(Heif, asksNoDecoderWhereAPartIsAnotherSizeThanDeclared)
{
    const Tile large = makeTile({90, 90, 90}, 256);
    const qsizetype sequence = large.configuration.indexOf("\x42\1");
    const QByteArray inBand = bigEndian(quint8(large.configuration[sequence - 1])) +
                              large.configuration.mid(sequence, quint8(large.configuration[sequence - 1]));
    const auto overlay = [&](quint32 side, const Item& whole) {
        const QByteArray data = QByteArray("\0\1", 2) + bigEndian(0, 8) + bigEndian(side) + bigEndian(side);
        const Item canvas{"iovl", data + bigEndian(0, 8), "\1", "\2"};
        return makeHeif(whole.type.isEmpty() ? std::vector{canvas, coded} : std::vector{whole, coded, canvas},
                        properties);
    };
    const auto expect = [](const char* name, const QByteArray& file, std::optional<CodecError> error) {
        const Decoded decoded = decode(file);
        EXPECT_EQ(decoded.error, error) << name;
        EXPECT_EQ(decoded.heldBytes == 0, error.has_value()) << name;
    };
    const QByteArray sizes = sized(64, 64) + sized(5'000, 5'000);
    expect("coded larger", makeHeif({{"hvc1", large.data, "\1\2"}}, sized(64, 64) + large.configuration), damaged);
    expect("coded so", makeHeif({{"hvc1", large.data, "\1\2"}}, sized(256, 256) + large.configuration), {});
    expect("larger amid the data", makeHeif({{"hvc1", inBand + tile.data, "\2\3"}}, properties), damaged);
    expect("alpha coded larger",
           makeHeif({coded, {"hvc1", large.data, "\2\4", "\1", "auxl"}}, properties + large.configuration), damaged);
    expect("part larger than all", makeHeif({{"iden", {}, "\1", "\2"}, {"hvc1", {}, "\2"}}, sizes), damaged);
    expect("canvas", overlay(128, {}), {});
    expect("canvas within", overlay(60'000, {"iden", {}, "\1", "\3"}), damaged);
    EXPECT_EQ(decode(overlay(60'000, {})).storedSize, (PixelSize{60'000, 60'000}));
}

TEST(HeifDecoder, saysWhenTheSystemRefusesToRead)
{
    const int unreadable = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    try {
        ADD_FAILURE() << openHeifDecoder(ByteSource(unreadable, 1000), {})->storedSize().width;
    } catch (const CodecError& error) {
        EXPECT_EQ(error.reason, CodecError::Reason::unreadable);
    }
    ::close(unreadable);
}

TEST_F(Heif, readsColorSpacesFromCodePoints)
{
    const auto profileOf = [&](char primaries) {
        const QByteArray codes = "nclx" + QByteArray("\0", 1) + primaries + QByteArray("\0\x0d\0\6\x80", 5);
        return decode(makeHeif({{"hvc1", tile.data, "\2\3\4"}}, properties + box("colr", codes))).profile;
    };
    EXPECT_EQ(profileOf(1), ColorProfile::sRGB());
    EXPECT_EQ(profileOf(12), ColorProfile::displayP3());
    EXPECT_EQ(profileOf(9), ColorProfile::rec2020());
    EXPECT_EQ(profileOf(2), ColorProfile());

    // Light by two bytes of 4,000, and of the display in ten-thousandths: 1,500, behind its colors.
    const QByteArray content = box("clli", QByteArray("\x0f\xa0\x02\x58", 4));
    const QByteArray display = box("mdcv", QByteArray(16, '\1') + QByteArray("\0\xe4\xe1\xc0\0\0\0\1", 8));
    const auto hdrOf = [&](char curve, const QByteArray& light, const QByteArray& theirs) {
        const QByteArray codes = QByteArray("nclx\0\x09\0", 7) + curve + QByteArray("\0\x09\x80", 3);
        return decode(makeHeif({{"hvc1", tile.data, "\2\3\4" + theirs}}, properties + box("colr", codes) + light))
            .profile;
    };
    EXPECT_EQ(hdrOf(16, {}, {}), ColorProfile::hdr(WellKnown::bt2100Pq, ColorModel::rgb));
    EXPECT_EQ(hdrOf(18, {}, {}), ColorProfile::hdr(WellKnown::bt2100Hlg, ColorModel::rgb));
    EXPECT_EQ(hdrOf(16, {}, {}).peak(), 1'000);
    EXPECT_EQ(hdrOf(16, content, "\5").peak(), 4'000);
    EXPECT_EQ(hdrOf(16, display, "\5").peak(), 1'500);
    EXPECT_EQ(hdrOf(16, display + content, "\5\6").peak(), 4'000);
}

TEST_F(Heif, dividesPremultipliedColorsByTheirAlpha)
{
    const Item color{"hvc1", tile.data, "\2\3", "\2", "prem"};
    const Item alpha{"hvc1", makeTile({128, 128, 128}).data, "\2\3\4", "\1", "auxl"};
    const QByteArray isAlpha = fullBox("auxC", QByteArray("urn:mpeg:hevc:2015:auxid:1\0", 27));
    const Decoded decoded = decode(makeHeif({color, alpha}, properties + isAlpha));
    ASSERT_EQ(decoded.format, rgba8);
    EXPECT_LE(worstDifference(decoded.at(30, 30), Components{179, 179, 179, 128}), 3);
}

TEST(HeifDecoder, stretchesDeepComponentsToSixteenBits)
{
    // A picture of 64 x 64 whose components are all 700 of 1023, as a coder of 10 bits writes it.
    const QByteArray configuration = QByteArray::fromHex(
        "0104080000000000000000001ef000fcfdfafa00000f03200001001740010c01ffff0408000003009db800000300001eba024021000100"
        "2a42"
        "01010408000003009db800000300001ea0208104d96ea4929ae6e04040c0800000030080000003008422000100074401c172b02240");
    const QByteArray data = QByteArray::fromHex("000000122801af06b863e29b14ff3e51647c445a0fe0");
    const Decoded decoded = decode(makeHeif({{"hvc1", data, "\1\2"}}, sized(64, 64) + box("hvcC", configuration)));
    ASSERT_EQ(decoded.format.bitsPerComponent, 16);
    EXPECT_EQ(decoded.at(30, 30), (Components{44843, 44843, 44843}));
}

} // namespace ferrow
