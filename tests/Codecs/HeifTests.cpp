// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ExifBlock.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"

#include "Support/TestSupport.h"

#include <libheif/heif.h>

#include <array>
#include <cmath>
#include <optional>
#include <vector>

namespace ferrow {
namespace {

using test::MemoryFile;
using Pixel = std::array<int, 4>;

Pixel colorAt(PixelSize size, std::int64_t x, std::int64_t y)
{
    const auto ramp = [](std::int64_t at, std::int64_t side) {
        return int(40 + at * 160 / std::max<std::int64_t>(side, 200));
    };
    return {ramp(x, size.width), ramp(y, size.height), 120, x < size.width / 2 ? 255 : 90};
}

QByteArray encode(const EncodeOptions& options, std::optional<Pixel> flat = {})
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    const auto encoder = openHeifEncoder(sink, options);
    const auto channels = std::size_t(options.format.channels());
    std::vector<std::byte> row(std::size_t(options.size.width) * channels);
    for (std::int64_t y = 0; y < options.size.height; ++y) {
        for (std::int64_t x = 0; x < options.size.width; ++x) {
            const Pixel pixel = flat ? *flat : colorAt(options.size, x, y);
            for (std::size_t i = 0; i < channels; ++i)
                row[std::size_t(x) * channels + i] = std::byte(pixel[i]);
        }
        encoder->writeRows(1, row.data(), row.size());
    }
    encoder->finish();
    return file.bytes();
}

EncodeOptions optionsFor(PixelSize size, PixelFormat format = rgb8)
{
    EncodeOptions options;
    options.size = size;
    options.format = format;
    options.profile = ColorProfile::displayP3();
    return options;
}

struct Decoded {
    PixelSize size;
    PixelFormat format;
    ColorProfile profile;
    std::vector<std::byte> pixels;

    [[nodiscard]] Pixel at(std::int64_t x, std::int64_t y) const
    {
        Pixel pixel{0, 0, 0, 255};
        const auto channels = std::size_t(format.channels());
        for (std::size_t i = 0; i < channels; ++i)
            pixel[i] = std::to_integer<int>(pixels[std::size_t(y * size.width + x) * channels + i]);
        return pixel;
    }
    [[nodiscard]] std::uint16_t component16(std::size_t index) const
    {
        return reinterpret_cast<const std::uint16_t*>(pixels.data())[index];
    }
};

/// In bands of seven rows, which no size here is a multiple of.
Decoded decode(const QByteArray& bytes)
{
    const MemoryFile file(bytes);
    const ByteSource source(file.descriptor(), file.size());
    const auto decoder = openHeifDecoder(source, {});
    Decoded decoded{decoder->storedSize(), decoder->format(), decoder->profile(), {}};
    const auto stride = std::size_t(decoded.size.width * decoded.format.bytesPerPixel());
    decoded.pixels.resize(stride * std::size_t(decoded.size.height));
    for (std::int64_t y = 0; y < decoded.size.height; y += 7)
        decoder->readRows(std::min<std::int64_t>(7, decoded.size.height - y),
                          decoded.pixels.data() + std::size_t(y) * stride, stride);
    decoder->finish();
    return decoded;
}

/// Absent where the file is read to the end.
std::optional<CodecError> failureOf(const QByteArray& bytes)
{
    try {
        decode(bytes);
        return {};
    } catch (const CodecError& error) {
        return error;
    }
}

std::optional<CodecError::Reason> reasonOf(const QByteArray& bytes)
{
    const auto failure = failureOf(bytes);
    return failure ? std::optional(failure->reason) : std::nullopt;
}

void expectNear(const Pixel& actual, const Pixel& expected, int tolerance)
{
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
}

// Boxes written by hand, for structures that no encoder would write.

QByteArray number(quint64 value, int width)
{
    QByteArray bytes;
    while (--width >= 0)
        bytes += char(value >> (8 * width));
    return bytes;
}

QByteArray box(const QByteArray& type, const QByteArray& content)
{
    return number(quint64(content.size() + 8), 4) + type + content;
}

QByteArray fullBox(const QByteArray& type, const QByteArray& content, quint32 versionAndFlags = 0)
{
    return box(type, number(versionAndFlags, 4) + content);
}

QByteArray sizeProperty(quint32 width, quint32 height)
{
    return fullBox("ispe", number(width, 4) + number(height, 4));
}

struct TestItem {
    QByteArray type;
    QByteArray data = {};
    std::vector<int> properties = {}; ///< Counted from 1.
    std::vector<int> sources = {};    ///< Item numbers, counted from 1.
};

/// Item 1 is the primary one.
QByteArray makeHeif(const std::vector<TestItem>& items, const QByteArray& properties)
{
    QByteArray entries;
    QByteArray associations;
    QByteArray references;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const QByteArray id = number(i + 1, 2);
        entries += fullBox("infe", id + number(0, 2) + items[i].type + number(0, 1), 2u << 24);
        associations += id + number(items[i].properties.size(), 1);
        for (const int property : items[i].properties)
            associations += number(quint64(property), 1);
        if (items[i].sources.empty())
            continue;
        QByteArray list;
        for (const int source : items[i].sources)
            list += number(quint64(source), 2);
        references += box("dimg", id + number(items[i].sources.size(), 2) + list);
    }
    const QByteArray count = number(items.size(), 2);
    const QByteArray start = box("ftyp", "heic" + number(0, 4) + "mif1heic");
    const auto description = [&](qsizetype dataStart) {
        QByteArray locations;
        qsizetype offset = dataStart;
        for (std::size_t i = 0; i < items.size(); ++i) {
            locations += number(i + 1, 2) + number(0, 2) + number(1, 2) + number(quint64(offset), 4) +
                         number(quint64(items[i].data.size()), 4);
            offset += items[i].data.size();
        }
        return fullBox(
            "meta", fullBox("hdlr", number(0, 4) + "pict" + QByteArray(13, '\0')) + fullBox("pitm", number(1, 2)) +
                        fullBox("iinf", count + entries) +
                        (references.isEmpty() ? QByteArray() : fullBox("iref", references)) +
                        box("iprp", box("ipco", properties) + fullBox("ipma", number(items.size(), 4) + associations)) +
                        fullBox("iloc", number(0x4400, 2) + count + locations));
    };
    QByteArray data;
    for (const TestItem& item : items)
        data += item.data;
    return start + description(start.size() + description(0).size() + 8) + box("mdat", data);
}

QByteArray gridData(int rows, int columns, quint32 width, quint32 height)
{
    return number(0, 1) + number(1, 1) + number(quint64(rows - 1), 1) + number(quint64(columns - 1), 1) +
           number(width, 4) + number(height, 4);
}

/// A coded 64 x 64 picture of one colour, and the property that its decoder needs.
struct Tile {
    QByteArray configuration;
    QByteArray data;
};

Tile makeTile(const Pixel& color)
{
    const EncodeOptions options = optionsFor({64, 64});
    const QByteArray file = encode(options, color);
    const auto contentOf = [&](const char* type) {
        const qsizetype at = file.indexOf(type);
        const qsizetype size = qsizetype(quint8(file[at - 2])) << 8 | quint8(file[at - 1]);
        return file.mid(at + 4, size - 8);
    };
    // Metadata follows the picture in the data box, after the four bytes of its own header.
    const qsizetype metadata = makeExifBlock(options.metadata, options.size, false).size() + 4;
    return {box("hvcC", contentOf("hvcC")), contentOf("mdat").chopped(metadata)};
}

TEST(Heif, givesBackWhatWasWritten)
{
    const struct {
        const char* name;
        PixelSize size;
        PixelFormat format;
    } rows[] = {
        {"ordinary", {320, 200}, rgb8},
        {"odd sides", {451, 333}, rgb8},
        {"smaller than a coding block", {7, 5}, rgb8},
        {"one pixel", {1, 1}, rgb8},
        {"tall", {3, 500}, rgb8},
        {"alpha", {128, 96}, rgba8},
        {"alpha with odd sides", {65, 33}, rgba8},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Decoded decoded = decode(encode(optionsFor(row.size, row.format)));
        ASSERT_EQ(decoded.size, row.size);
        EXPECT_EQ(decoded.format, row.format);
        EXPECT_EQ(decoded.profile, ColorProfile::displayP3());
        for (const auto& [x, y] : {std::pair(0, 0), {1, 2}, {3, 1}, {4, 4}, {6, 3}}) {
            const std::int64_t atX = x * (row.size.width - 1) / 6;
            const std::int64_t atY = y * (row.size.height - 1) / 4;
            Pixel expected = colorAt(row.size, atX, atY);
            if (!row.format.hasAlpha())
                expected[3] = 255;
            SCOPED_TRACE(atX);
            expectNear(decoded.at(atX, atY), expected, 8);
        }
    }
}

TEST(Heif, keepsSaturatedColorsAndWhite)
{
    for (const Pixel& color :
         {Pixel{255, 255, 255, 255}, {0, 0, 0, 255}, {255, 0, 0, 255}, {0, 0, 255, 255}, {128, 128, 128, 255}}) {
        SCOPED_TRACE(testing::PrintToString(color));
        expectNear(decode(encode(optionsFor({64, 64}), color)).at(20, 40), color, 2);
    }
}

TEST(Heif, writesTheMetadataAndNoTurn)
{
    EncodeOptions options = optionsFor({64, 64});
    options.metadata.make = QStringLiteral("Maker");
    const QByteArray bytes = encode(options);
    EXPECT_TRUE(bytes.contains(makeExifBlock(options.metadata, options.size, false)));
    EXPECT_FALSE(bytes.contains("irot"));
    EXPECT_FALSE(bytes.contains("imir"));
}

TEST(Heif, spendsMoreBytesOnMoreQuality)
{
    qsizetype previous = 0;
    for (const double quality : {0.0, 0.5, 1.0}) {
        EncodeOptions options = optionsFor({400, 300});
        options.quality = quality;
        const qsizetype size = encode(options).size();
        EXPECT_GT(size, previous) << quality;
        previous = size;
    }
}

TEST(Heif, refusesSidesThatItsReadersRefuse)
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    EXPECT_THROW(openHeifEncoder(sink, optionsFor({heifMaximumSide + 1, 1})), EncoderError);
    EXPECT_EQ(file.size(), 0);
    const PixelSize largest{heifMaximumSide, 2};
    EXPECT_EQ(decode(encode(optionsFor(largest))).size, largest);
}

TEST(Heif, saysWhyWritingFailed)
{
    const int full = ::open("/dev/full", O_RDWR | O_CLOEXEC);
    ByteSink sink(full);
    const auto encoder = openHeifEncoder(sink, optionsFor({64, 64}));
    const std::vector<std::byte> row(64 * 3);
    for (int y = 0; y < 64; ++y)
        encoder->writeRows(1, row.data(), row.size());
    try {
        encoder->finish();
        ADD_FAILURE() << "written";
    } catch (const EncoderError& error) {
        EXPECT_EQ(error.errorNumber, ENOSPC);
    }
    ::close(full);
}

TEST(Heif, assemblesTilesAndTurnsThem)
{
    const Pixel colors[] = {{200, 30, 30, 255},   {30, 200, 30, 255}, {30, 30, 200, 255},
                            {220, 220, 220, 255}, {90, 90, 90, 255},  {10, 10, 10, 255}};
    std::vector<TestItem> items = {{"grid", gridData(2, 3, 180, 120), {1}, {2, 3, 4, 5, 6, 7}}};
    QByteArray properties = sizeProperty(180, 120) + sizeProperty(64, 64);
    for (const Pixel& color : colors) {
        const Tile tile = makeTile(color);
        items.push_back({"hvc1", tile.data, {2, 3}});
        properties += items.size() == 2 ? tile.configuration : QByteArray();
    }
    const QByteArray turn = box("irot", number(3, 1));   // A quarter clockwise.
    const QByteArray mirror = box("imir", number(1, 1)); // Left to right.
    const struct {
        const char* name;
        QByteArray transformation;
        PixelSize size;
        std::array<int, 4> corners; ///< Tiles at top left, top right, bottom left, bottom right.
    } rows[] = {
        {"upright", box("free", {}), {180, 120}, {0, 2, 3, 5}},
        {"quarter clockwise", turn, {120, 180}, {3, 0, 5, 2}},
        {"quarter counter-clockwise", box("irot", number(1, 1)), {120, 180}, {2, 5, 0, 3}},
        {"half", box("irot", number(2, 1)), {180, 120}, {5, 3, 2, 0}},
        {"mirrored", mirror, {180, 120}, {2, 0, 5, 3}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        items[0].properties = {1, 4};
        const Decoded decoded = decode(makeHeif(items, properties + row.transformation));
        ASSERT_EQ(decoded.size, row.size);
        const std::int64_t right = row.size.width - 3;
        const std::int64_t bottom = row.size.height - 3;
        expectNear(decoded.at(2, 2), colors[row.corners[0]], 3);
        expectNear(decoded.at(right, 2), colors[row.corners[1]], 3);
        expectNear(decoded.at(2, bottom), colors[row.corners[2]], 3);
        expectNear(decoded.at(right, bottom), colors[row.corners[3]], 3);
    }
}

TEST(Heif, refusesStructuresBeforeTheLibrarySeesThem)
{
    using Reason = CodecError::Reason;
    const Tile tile = makeTile({90, 90, 90, 255});
    const TestItem coded{"hvc1", tile.data, {2, 3}};
    const QByteArray properties = sizeProperty(128, 128) + sizeProperty(64, 64) + tile.configuration;
    const auto chain = [&](int length) {
        std::vector<TestItem> items;
        for (int i = 1; i < length; ++i)
            items.push_back({"iden", {}, {2}, {i + 1}});
        items.push_back(coded);
        return makeHeif(items, properties);
    };
    std::vector<int> manyTiles(65 * 65, 2);
    const struct {
        const char* name;
        QByteArray bytes;
        std::optional<Reason> reason;
    } rows[] = {
        {"a picture", makeHeif({coded}, properties), {}},
        {"a turned picture", chain(2), {}},
        {"itself", makeHeif({{"iden", {}, {2}, {1}}}, properties), Reason::malformed},
        {"a grid of itself", makeHeif({{"grid", gridData(2, 2, 128, 128), {1}, {1, 1, 1, 1}}}, properties),
         Reason::malformed},
        {"a grid that holds itself",
         makeHeif({{"grid", gridData(2, 2, 128, 128), {1}, {2, 2, 1, 2}}, coded}, properties), Reason::malformed},
        {"a long chain", chain(100), Reason::malformed},
        {"missing tiles", makeHeif({{"grid", gridData(2, 2, 128, 128), {1}, {2, 2, 2}}, coded}, properties),
         Reason::malformed},
        {"tiles that are not there", makeHeif({{"grid", gridData(1, 2, 128, 64), {1}, {2, 9}}, coded}, properties),
         Reason::malformed},
        {"too many tiles", makeHeif({{"grid", gridData(65, 65, 4160, 4160), {1}, manyTiles}, coded}, properties),
         Reason::unsupported},
        {"no size", makeHeif({{"hvc1", tile.data, {3}}}, properties), Reason::malformed},
        {"another coding", makeHeif({{"av01", tile.data, {2, 3}}}, properties), Reason::unsupported},
        {"nothing but a track", box("ftyp", "hevc" + number(0, 4) + "hevc") + box("moov", {}), Reason::unsupported},
        {"no picture", box("ftyp", "heic" + number(0, 4) + "mif1"), Reason::malformed},
        {"empty", {}, Reason::malformed},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(reasonOf(row.bytes), row.reason);
    }
    EXPECT_EQ(failureOf(makeHeif({{"av01", tile.data, {2, 3}}}, properties))->kind,
              QStringLiteral("AV1-coded HEIF image"));
}

TEST(Heif, reportsSizesBeyondEveryLimit)
{
    const Tile tile = makeTile({90, 90, 90, 255});
    const auto sized = [&](quint32 width, quint32 height) {
        return makeHeif({{"hvc1", tile.data, {1, 2}}}, sizeProperty(width, height) + tile.configuration);
    };
    const auto grid = makeHeif({{"grid", gridData(1, 1, 60'000, 60'000), {1}, {2}}, {"hvc1", tile.data, {2, 3}}},
                               sizeProperty(64, 64) + sizeProperty(64, 64) + tile.configuration);
    const struct {
        const char* name;
        QByteArray bytes;
        PixelSize size;
    } rows[] = {
        {"above the limits", sized(60'000, 50'000), {60'000, 50'000}},
        {"above the library's", sized(70'000, 3), {70'000, 3}},
        {"all bits", sized(0xffffffff, 0xffffffff), {4'294'967'295, 4'294'967'295}},
        {"only in the grid", grid, {60'000, 60'000}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const MemoryFile file(row.bytes);
        const ByteSource source(file.descriptor(), file.size());
        EXPECT_EQ(openHeifDecoder(source, {})->storedSize(), row.size);
    }
}

TEST(Heif, refusesPixelsOfAnotherSizeThanDeclared)
{
    const Tile tile = makeTile({90, 90, 90, 255});
    for (const quint32 side : {16U, 63U, 65U, 2048U}) {
        SCOPED_TRACE(side);
        const QByteArray bytes = makeHeif({{"hvc1", tile.data, {1, 2}}}, sizeProperty(side, side) + tile.configuration);
        EXPECT_EQ(reasonOf(bytes), CodecError::Reason::damaged);
    }
}

TEST(Heif, refusesEveryCut)
{
    // The data box is the last one, so that each cut takes something from the picture.
    const Tile tile = makeTile({90, 90, 90, 255});
    const QByteArray good = makeHeif({{"hvc1", tile.data, {1, 2}}}, sizeProperty(64, 64) + tile.configuration);
    ASSERT_EQ(failureOf(good), std::nullopt);
    for (qsizetype length = 0; length < good.size(); length += 3)
        EXPECT_TRUE(failureOf(good.left(length))) << length;
}

TEST(Heif, survivesEveryFlippedByteOfItsBoxes)
{
    const Tile tile = makeTile({90, 90, 90, 255});
    QByteArray bytes = makeHeif(
        {{"grid", gridData(1, 2, 128, 64), {1}, {2, 3}}, {"hvc1", tile.data, {2, 3}}, {"hvc1", tile.data, {2, 3}}},
        sizeProperty(128, 64) + sizeProperty(64, 64) + tile.configuration);
    const qsizetype end = bytes.indexOf("mdat");
    int refused = 0;
    for (qsizetype at = 0; at < end; ++at) {
        const char original = bytes[at];
        bytes[at] = char(original ^ 0xff);
        refused += failureOf(bytes) ? 1 : 0;
        bytes[at] = original;
    }
    EXPECT_GT(refused, 100);
}

TEST(Heif, saysWhenTheSystemRefusesToRead)
{
    const int pipe = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    const ByteSource source(pipe, 1000);
    try {
        ADD_FAILURE() << "opened as " << openHeifDecoder(source, {})->storedSize().width;
    } catch (const CodecError& error) {
        EXPECT_EQ(error.reason, CodecError::Reason::unreadable);
    }
    ::close(pipe);
}

/// Pictures that our own encoder never writes: more than eight bits, premultiplied alpha, code points in place of a
/// profile.
struct ForeignPicture {
    int bits = 8;
    bool isPremultiplied = false;
    std::optional<heif_color_primaries> primaries = {};
};

heif_error append(heif_context*, const void* data, size_t size, void* user)
{
    static_cast<QByteArray*>(user)->append(static_cast<const char*>(data), qsizetype(size));
    return {heif_error_Ok, heif_suberror_Unspecified, ""};
}

QByteArray encodeForeign(const ForeignPicture& picture)
{
    constexpr int side = 64;
    heif_context* context = heif_context_alloc();
    heif_image* image = nullptr;
    heif_image_create(side, side, heif_colorspace_RGB, heif_chroma_444, &image);
    const bool hasAlpha = picture.isPremultiplied;
    for (const heif_channel channel : {heif_channel_R, heif_channel_G, heif_channel_B, heif_channel_Alpha}) {
        if (channel == heif_channel_Alpha && !hasAlpha)
            continue;
        heif_image_add_plane(image, channel, side, side, picture.bits);
        int stride = 0;
        std::uint8_t* plane = heif_image_get_plane(image, channel, &stride);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                const int value = channel == heif_channel_Alpha ? 128 : (x + int(channel)) * (1 << picture.bits) / 140;
                if (picture.bits > 8)
                    reinterpret_cast<std::uint16_t*>(plane + y * stride)[x] = std::uint16_t(value);
                else
                    plane[y * stride + x] = std::uint8_t(value);
            }
        }
    }
    heif_image_set_premultiplied_alpha(image, hasAlpha);
    heif_encoding_options* options = heif_encoding_options_alloc();
    heif_color_profile_nclx* codePoints = heif_nclx_color_profile_alloc();
    if (picture.primaries) {
        codePoints->color_primaries = *picture.primaries;
        codePoints->full_range_flag = 1;
        heif_image_set_nclx_color_profile(image, codePoints);
        options->macOS_compatibility_workaround_no_nclx_profile = 0;
    }
    heif_encoder* encoder = nullptr;
    heif_context_get_encoder_for_format(context, heif_compression_HEVC, &encoder);
    heif_encoder_set_lossy_quality(encoder, 95);
    const heif_error error = heif_context_encode_image(context, image, encoder, options, nullptr);
    EXPECT_EQ(error.code, heif_error_Ok) << error.message;
    QByteArray bytes;
    heif_writer writer{1, append};
    heif_context_write(context, &writer, &bytes);
    heif_encoder_release(encoder);
    heif_encoding_options_free(options);
    heif_nclx_color_profile_free(codePoints);
    heif_image_release(image);
    heif_context_free(context);
    return bytes;
}

TEST(Heif, stretchesDeepComponentsToSixteenBits)
{
    for (const int bits : {10, 12}) {
        SCOPED_TRACE(bits);
        const QByteArray bytes = encodeForeign({bits});
        const Decoded decoded = decode(bytes);
        ASSERT_EQ(decoded.format.bitsPerComponent, 16);

        // The library's own interleaved pixels, which keep their depth, are the second opinion.
        heif_context* context = heif_context_alloc();
        heif_context_read_from_memory(context, bytes.constData(), size_t(bytes.size()), nullptr);
        heif_image_handle* handle = nullptr;
        heif_context_get_primary_image_handle(context, &handle);
        heif_image* image = nullptr;
        ASSERT_EQ(
            heif_decode_image(handle, &image, heif_colorspace_RGB, heif_chroma_interleaved_RRGGBB_LE, nullptr).code,
            heif_error_Ok);
        int stride = 0;
        const std::uint8_t* plane = heif_image_get_plane_readonly(image, heif_channel_interleaved, &stride);
        const double most = (1 << bits) - 1;
        for (int y = 0; y < 64; ++y) {
            for (int i = 0; i < 64 * 3; ++i) {
                const auto* samples = reinterpret_cast<const std::uint16_t*>(plane + y * stride);
                ASSERT_EQ(decoded.component16(std::size_t(y * 64 * 3 + i)), std::lround(samples[i] * 65'535 / most));
            }
        }
        heif_image_release(image);
        heif_image_handle_release(handle);
        heif_context_free(context);
    }
}

TEST(Heif, dividesPremultipliedColorsByTheirAlpha)
{
    const Decoded plain = decode(encodeForeign({8}));
    const Decoded decoded = decode(encodeForeign({8, true}));
    ASSERT_EQ(decoded.format, rgba8);
    for (const std::int64_t x : {5, 20, 40, 60}) {
        SCOPED_TRACE(x);
        const Pixel color = plain.at(x, 30);
        const Pixel pixel = decoded.at(x, 30);
        EXPECT_NEAR(pixel[3], 128, 1);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(pixel[i], std::min(255, color[i] * 255 / 128), 4);
    }
}

TEST(Heif, readsColorSpacesFromCodePoints)
{
    const struct {
        heif_color_primaries primaries;
        ColorProfile profile;
    } rows[] = {
        {heif_color_primaries_ITU_R_BT_709_5, ColorProfile::sRGB()},
        {heif_color_primaries_SMPTE_EG_432_1, ColorProfile::displayP3()},
        {heif_color_primaries_ITU_R_BT_2020_2_and_2100_0, ColorProfile::rec2020()},
        {heif_color_primaries_unspecified, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.primaries);
        EXPECT_EQ(decode(encodeForeign({8, false, row.primaries})).profile, row.profile);
    }
}

} // namespace
} // namespace ferrow
