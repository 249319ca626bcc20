// SPDX-License-Identifier: GPL-3.0-or-later
#include "Codecs/CodecTesting.h"

#include "Platform/Codecs/ExifBlock.h"

#include <libheif/heif.h>

namespace ferrow {

namespace {

using namespace test;

Decoded decode(const QByteArray& bytes)
{
    return test::decode(FileType::heif, bytes);
}

// Boxes written by hand, for structures that no encoder would write.

QByteArray box(const QByteArray& type, const QByteArray& content)
{
    return bigEndian(quint64(content.size() + 8)) + type + content;
}

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
            references += box("dimg", id + bigEndian(quint64(items[i].sources.size()), 2) + list);
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

/// A coded 64 x 64 picture of one colour, and the property that its decoder needs.
struct Tile {
    QByteArray configuration;
    QByteArray data;
};

Tile makeTile(const Components& color)
{
    const EncodeOptions options = optionsFor({64, 64});
    Pixels pixels;
    for (int i = 0; i < 64 * 64; ++i)
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
    EXPECT_EQ(decode(makeHeif({coded}, properties)).error, std::nullopt);
    EXPECT_EQ(decode(chain(2)).error, std::nullopt);
    EXPECT_EQ(decode(chain(100)).error, malformed);
    EXPECT_EQ(decode(makeHeif({{"iden", {}, "\2", "\1"}}, properties)).error, malformed);
    EXPECT_EQ(decode(withGrid(large, "\1\1\1\1")).error, malformed);
    EXPECT_EQ(decode(withGrid(large, "\2\2\1\2")).error, malformed);
    EXPECT_EQ(decode(withGrid(large, "\2\2\2")).error, malformed);
    EXPECT_EQ(decode(withGrid(grid(1, 2, 128, 64), "\2\x9")).error, malformed);
    const auto tooMany = decode(withGrid(grid(65, 65, 4160, 4160), QByteArray(65 * 65, '\2'))).error;
    EXPECT_EQ(tooMany.value_or(malformed).reason, CodecError::Reason::unsupported);
    EXPECT_EQ(decode(makeHeif({{"hvc1", tile.data, "\3"}}, properties)).error, malformed);
    EXPECT_EQ(decode(av1).error, unsupported("AV1-coded HEIF image"));
    EXPECT_EQ(decode(box("ftyp", "heic" + bigEndian(0) + "mif1")).error, malformed);
    EXPECT_EQ(decode({}).error, malformed);
}

TEST_F(Heif, takesNoPixelsOfAnotherSizeThanDeclared)
{
    // Sizes beyond every limit are still to be named.
    EXPECT_EQ(decode(declaring(60'000, 50'000)).storedSize, (PixelSize{60'000, 50'000}));
    EXPECT_EQ(decode(declaring(70'000, 3)).storedSize, (PixelSize{70'000, 3}));
    EXPECT_EQ(decode(declaring(0xffffffff, 0xffffffff)).storedSize, (PixelSize{4'294'967'295, 4'294'967'295}));
    EXPECT_EQ(decode(withGrid(grid(1, 1, 60'000, 60'000), "\2")).storedSize, (PixelSize{60'000, 60'000}));
    for (const quint32 side : {16U, 63U, 65U, 2048U})
        EXPECT_EQ(decode(declaring(side, side)).error, damaged) << side;
}

TEST_F(Heif, refusesEveryCutAndSurvivesEveryFlippedByteOfItsBoxes)
{
    // The data box is the last one, so that each cut takes something from the picture.
    const QByteArray good = makeHeif({{"grid", grid(1, 2, 128, 64), "\1", "\2\3"}, coded, coded},
                                     sized(128, 64) + sized(64, 64) + tile.configuration);
    ASSERT_EQ(decode(good).error, std::nullopt);
    for (qsizetype length = 0; length < good.size(); length += 3)
        EXPECT_NE(decode(good.left(length)).error, std::nullopt) << length;
    int refused = 0;
    for (qsizetype at = 0; at < good.indexOf("mdat"); ++at)
        refused += decode(withByte(good, at, good[at] ^ 0xff)).error ? 1 : 0;
    EXPECT_GT(refused, 100);
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

namespace {

constexpr heif_color_primaries noPrimaries = heif_color_primaries_unspecified;

/// A ramp that ends in white halfway, as our own encoder never writes it: with more than eight bits, premultiplied
/// alpha, or code points in place of a profile.
QByteArray encodeForeign(int bits, bool isPremultiplied = false, heif_color_primaries primaries = noPrimaries)
{
    constexpr int side = 64;
    heif_image* image = nullptr;
    heif_image_create(side, side, heif_colorspace_RGB, heif_chroma_444, &image);
    std::vector channels{heif_channel_R, heif_channel_G, heif_channel_B, heif_channel_Alpha};
    channels.resize(isPremultiplied ? 4 : 3);
    for (const heif_channel channel : channels) {
        heif_image_add_plane(image, channel, side, side, bits);
        int stride = 0;
        std::uint8_t* plane = heif_image_get_plane(image, channel, &stride);
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x) {
                const int level = std::min((x + int(channel)) * (1 << bits) / 32, (1 << bits) - 1);
                const auto value = std::uint16_t(channel == heif_channel_Alpha ? 128 : level);
                std::memcpy(plane + y * stride + x * (bits > 8 ? 2 : 1), &value, bits > 8 ? 2 : 1);
            }
    }
    heif_image_set_premultiplied_alpha(image, isPremultiplied);
    heif_encoding_options* options = heif_encoding_options_alloc();
    heif_color_profile_nclx* codePoints = heif_nclx_color_profile_alloc();
    codePoints->color_primaries = primaries;
    codePoints->full_range_flag = 1;
    heif_image_set_nclx_color_profile(image, codePoints);
    options->macOS_compatibility_workaround_no_nclx_profile = 0;
    heif_context* context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    heif_context_get_encoder_for_format(context, heif_compression_HEVC, &encoder);
    heif_encoder_set_lossy_quality(encoder, 95);
    EXPECT_EQ(heif_context_encode_image(context, image, encoder, options, nullptr).code, heif_error_Ok);
    QByteArray file;
    heif_writer writer{1, [](heif_context*, const void* data, size_t size, void* to) {
                           static_cast<QByteArray*>(to)->append(static_cast<const char*>(data), qsizetype(size));
                           return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
                       }};
    heif_context_write(context, &writer, &file);
    heif_encoder_release(encoder);
    heif_context_free(context);
    heif_nclx_color_profile_free(codePoints);
    heif_encoding_options_free(options);
    heif_image_release(image);
    return file;
}

} // namespace

TEST(HeifDecoder, stretchesDeepComponentsToSixteenBits)
{
    for (const int bits : {10, 12}) {
        const Decoded decoded = decode(encodeForeign(bits));
        ASSERT_EQ(decoded.format.bitsPerComponent, 16);
        EXPECT_EQ(decoded.at(60, 30), (Components{65535, 65535, 65535})) << bits;
        EXPECT_NEAR(decoded.at(10, 30)[0], (10 + heif_channel_R) * 65536 / 32, 700) << bits;
    }
}

TEST(HeifDecoder, dividesPremultipliedColorsByTheirAlpha)
{
    const Decoded decoded = decode(encodeForeign(8, true));
    ASSERT_EQ(decoded.format, rgba8);
    for (const int x : {3, 8, 12, 20}) {
        const int color = std::min(255, (x + heif_channel_R) * 8 * 255 / 128);
        EXPECT_NEAR(decoded.at(x, 30)[0], color, 6) << x;
        EXPECT_NEAR(decoded.at(x, 30)[3], 128, 1) << x;
    }
}

TEST(HeifDecoder, readsColorSpacesFromCodePoints)
{
    const auto profileOf = [](heif_color_primaries primaries) {
        return decode(encodeForeign(8, false, primaries)).profile;
    };
    EXPECT_EQ(profileOf(heif_color_primaries_ITU_R_BT_709_5), ColorProfile::sRGB());
    EXPECT_EQ(profileOf(heif_color_primaries_SMPTE_EG_432_1), ColorProfile::displayP3());
    EXPECT_EQ(profileOf(heif_color_primaries_ITU_R_BT_2020_2_and_2100_0), ColorProfile::rec2020());
    EXPECT_EQ(profileOf(noPrimaries), ColorProfile());
}

} // namespace ferrow
