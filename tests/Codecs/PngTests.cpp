// SPDX-License-Identifier: GPL-3.0-or-later
#include "Codecs/CodecTesting.h"

#include <array>
#include <random>

#include <png.h>
#include <zlib.h>

namespace ferrow {

namespace {

using namespace test;

const auto decode = [](const QByteArray& file, Tolerance tolerance = Tolerance::strict) {
    return decodeAs(FileType::png, file, tolerance);
};

QByteArray chunk(const QByteArray& name, const QByteArray& data)
{
    const QByteArray body = name + data;
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(body.constData()), uInt(body.size()));
    return bigEndian(quint64(data.size())) + body + bigEndian(sum);
}

QByteArray header(quint32 width, quint32 height, int depth = 8, int colorType = 2, bool interlaced = false)
{
    const QByteArray rest = bigEndian(quint64(depth << 8 | colorType), 2) + bigEndian(interlaced, 3);
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", bigEndian(width) + bigEndian(height) + rest);
}

QByteArray deflated(const QByteArray& bytes)
{
    return qCompress(bytes).mid(4);
}

QByteArray lastByteChanged(const QByteArray& bytes)
{
    return bytes.chopped(1) + char(bytes.back() + 1);
}

const QByteArray end = chunk("IEND", {});

/// RGB, 2 x 2, in one IDAT chunk, with room for other chunks before and behind it.
const QByteArray tinyRows("\0abcdef\0ghijkl", 14);
const Pixels tinyPixels{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j', 'k', 'l'};

QByteArray tiny(const QByteArray& before, const QByteArray& behind = end, const QByteArray& stream = deflated(tinyRows))
{
    return header(2, 2) + before + chunk("IDAT", stream) + behind;
}

/// Rows of noise in samples of any kind.
QByteArray noise(std::int64_t width, std::int64_t height, int bits, std::minstd_rand& random)
{
    QByteArray rows;
    for (std::int64_t y = 0; y < height && width > 0; ++y) {
        rows += '\0';
        for (std::int64_t i = 0; i < (width * bits + 7) / 8; ++i)
            rows += char(random() >> 8);
    }
    return rows;
}

/// A file of noise, 37 x 23 of any kind; with transparency beside the pixels where asked.
QByteArray noiseFile(int colorType, int depth, bool transparency, bool interlaced)
{
    constexpr int width = 37;
    constexpr int height = 23;
    constexpr int channels[]{1, 0, 3, 1, 2, 0, 4};
    const int bits = depth * channels[colorType];
    std::minstd_rand random;
    QByteArray rows = interlaced ? QByteArray() : noise(width, height, bits, random);
    // Adam7: where each pass begins and how far its pixels are apart.
    for (const auto& [x, y, across, down] :
         {std::array{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4}, {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}})
        if (interlaced)
            rows += noise((width - x + across - 1) / across, (height - y + down - 1) / down, bits, random);
    QByteArray palette;
    for (int i = 0; i < 3 << std::min(depth, 8); ++i)
        palette += char(i * 7);
    const bool isPalette = colorType == 3;
    const QByteArray key = QByteArray("\0\1", 2).repeated(channels[colorType]);
    return header(width, height, depth, colorType, interlaced) + (isPalette ? chunk("PLTE", palette) : QByteArray()) +
           (transparency ? chunk("tRNS", isPalette ? palette.left(1 << depth) : key) : QByteArray()) +
           chunk("IDAT", deflated(rows)) + end;
}

/// What the library's own reader says against the profile of a file, or that it has none.
QByteArray complaintsOfProfile(const QByteArray& file)
{
    QByteArray complaints;
    QByteArray rest = file;
    png_structp png = png_create_read_struct(
        PNG_LIBPNG_VER_STRING, &complaints, nullptr,
        [](png_structp reader, png_const_charp text) { *static_cast<QByteArray*>(png_get_error_ptr(reader)) += text; });
    png_infop info = png_create_info_struct(png);
    png_set_read_fn(png, &rest, [](png_structp reader, png_bytep into, std::size_t count) {
        auto* left = static_cast<QByteArray*>(png_get_io_ptr(reader));
        std::copy_n(left->constData(), count, into);
        left->remove(0, qsizetype(count));
    });
    png_read_info(png, info);
    if (png_get_valid(png, info, PNG_INFO_iCCP) == 0)
        complaints += " no profile";
    png_destroy_read_struct(&png, &info, nullptr);
    return complaints;
}

} // namespace

TEST(PngEncoder, writesProfilesThatOtherReadersKeep)
{
    // Of no well-known space: green and blue have changed places.
    const QByteArray icc = QByteArray(ColorProfile::displayP3().icc())
                               .replace("gXYZ", "none")
                               .replace("bXYZ", "gXYZ")
                               .replace("none", "bXYZ");
    const auto with = [&](qsizetype at, const QByteArray& bytes) {
        return QByteArray(icc).replace(at, bytes.size(), bytes);
    };
    const QByteArray odd = with(0, bigEndian(quint64(icc.size() + 3))) + QByteArray(3, '\0');
    const std::pair<const char*, QByteArray> rows[]{
        {"as it is", icc}, {"intent", with(64, "\xff\xff\xff\xff")}, {"illuminant", with(68, QByteArray(12, '\0'))},
        {"length", odd},   {"a tag outside", with(132, "none\x7f")},
    };
    for (const auto& [name, given] : rows) {
        EncodeOptions options = optionsFor({1, 1});
        options.profile = ColorProfile::fromIcc(given, ColorModel::rgb).value_or(ColorProfile());
        ASSERT_EQ(options.profile.wellKnown(), WellKnown::none) << name;
        EXPECT_EQ(complaintsOfProfile(encode(OutputType::png, options, Pixels(3))), "") << name;
        EXPECT_EQ(options.profile.icc() == given, given == icc) << name;
    }
}

TEST(PngDecoder, equalsAnotherReaderAtEveryDepth)
{
    const std::vector<int> depths[]{{1, 2, 4, 8, 16}, {}, {8, 16}, {1, 2, 4, 8}, {8, 16}, {}, {8, 16}};
    for (const int colorType : {0, 2, 3, 4, 6})
        for (const int depth : depths[colorType])
            for (const bool transparency : {false, colorType < 4})
                for (const bool interlaced : {false, true}) {
                    SCOPED_TRACE(testing::Message() << colorType << ' ' << depth << transparency << interlaced);
                    const QByteArray file = noiseFile(colorType, depth, transparency, interlaced);
                    const Decoded decoded = decode(file);
                    EXPECT_EQ(decoded.format.bitsPerComponent, depth == 16 ? 16 : 8);
                    EXPECT_EQ(decoded.format.hasAlpha(), colorType >= 4 || transparency);
                    EXPECT_EQ(decoded.heldBytes, interlaced ? std::int64_t(decoded.pixels.size()) : 0);
                    // Qt knows no transparent color beside a 16-bit sample.
                    if (!(transparency && depth == 16))
                        expectWhatQtReads(decoded, file);
                }
}

TEST(PngDecoder, givesNoHalfPictures)
{
    for (const bool interlaced : {false, true}) {
        SCOPED_TRACE(interlaced);
        const QByteArray file = noiseFile(2, 8, false, interlaced);
        expectNoHalfPictures(FileType::png, file);
        const QByteArray half = file.left(file.size() * 2 / 3);
        EXPECT_EQ(decode(half).error, damaged);
        const Decoded shown = decode(half, Tolerance::tolerant);
        const Pixels whole = decode(file).pixels;
        EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + (interlaced ? 3 : 37 * 3 * 10), shown.pixels.begin()));
        EXPECT_TRUE(interlaced || shown.pixels.back() == 0x80);
    }
}

TEST(PngDecoder, tellsLostPixelsFromOddFiles)
{
    const auto expectWhole = [](const char* name, const QByteArray& file) {
        EXPECT_EQ(decode(file).error, std::nullopt) << name;
        EXPECT_EQ(decode(file).pixels, tinyPixels) << name;
    };
    const QByteArray broken = lastByteChanged(chunk("gAMA", bigEndian(45'455)));
    expectWhole("half an end chunk", tiny({}, end.left(6)));
    expectWhole("a broken chunk behind the picture", tiny({}, broken + end));
    expectWhole("a broken chunk before it", tiny(broken));
    expectWhole("more compressed bytes than pixels", tiny({}, end, deflated(tinyRows + QByteArray(5000, 'x'))));
    expectWhole("bytes behind the stream", tiny({}, end, deflated(tinyRows) + "surplus"));
    expectWhole("a second picture's data", tiny({}, chunk("IDAT", "surplus") + end));

    // A row missing, wrong sums over the pixels and over their chunk, and a stream that goes on for long.
    QByteArray surplus(500'000, '\0');
    std::ranges::generate(surplus, [random = std::minstd_rand()]() mutable { return char(random()); });
    EXPECT_EQ(decode(tiny({}, end, deflated(tinyRows.left(7)))).error, damaged);
    EXPECT_EQ(decode(tiny({}, end, lastByteChanged(deflated(tinyRows)))).error, damaged);
    EXPECT_EQ(decode(lastByteChanged(tiny({}, {})) + end).error, damaged);
    EXPECT_EQ(decode(tiny({}, end, deflated(tinyRows + surplus))).error, damaged);

    // A chunk longer than the file, no width, and a private critical chunk before the header.
    EXPECT_EQ(decode(tiny(withByte(chunk("tEXt", "a"), 0, 0x7f))).error, malformed);
    EXPECT_EQ(decode(header(0, 2) + chunk("IDAT", deflated(tinyRows)) + end).error, malformed);
    EXPECT_EQ(decode(tiny({}).insert(8, chunk("CgBI", "abcd"))).error, malformed);
    EXPECT_EQ(decode({}).error, malformed);

    const Decoded huge = decode(header(0x7fffffff, 0x7fffffff) + chunk("IDAT", deflated(tinyRows)) + end);
    EXPECT_EQ(huge.storedSize, (PixelSize{0x7fffffff, 0x7fffffff}));
    EXPECT_EQ(huge.error, tooLarge);
}

TEST(PngDecoder, takesTheProfileThatCounts)
{
    const auto profileOf = [](const QByteArray& before) {
        const Decoded decoded = decode(tiny(before));
        EXPECT_EQ(decoded.error, std::nullopt);
        return decoded.profile;
    };
    const auto icc = [](const QByteArray& stream) { return chunk("iCCP", QByteArray("p\0\0", 3) + stream); };
    const QByteArray p3 = icc(deflated(ColorProfile::displayP3().icc()));
    const QByteArray srgb = chunk("sRGB", QByteArray(1, '\0'));
    const QByteArray gamma = chunk("gAMA", bigEndian(100'000));
    EXPECT_EQ(profileOf(gamma), ColorProfile());
    EXPECT_EQ(profileOf(p3 + srgb), ColorProfile::displayP3());
    EXPECT_EQ(profileOf(gamma + srgb + p3), ColorProfile::displayP3());
    EXPECT_EQ(profileOf(icc(deflated("nothing of the kind"))), ColorProfile());
    EXPECT_EQ(profileOf(icc(deflated(ColorProfile::sGray().icc()))), ColorProfile());
    EXPECT_EQ(profileOf(srgb + icc("nothing")), ColorProfile::sRGB());

    const auto codes = [](const char* four) { return chunk("cICP", QByteArray(four, 4)); };
    const QByteArray pq = codes("\x09\x10\0\1");
    const QByteArray content = chunk("cLLI", bigEndian(40'000'000) + bigEndian(1));
    const QByteArray display = chunk("mDCV", QByteArray(16, '\1') + bigEndian(15'000'000) + bigEndian(1));
    EXPECT_EQ(profileOf(p3 + srgb + pq), ColorProfile::hdr(WellKnown::bt2100Pq, ColorModel::rgb));
    EXPECT_EQ(profileOf(codes("\x09\x12\0\1")), ColorProfile::hdr(WellKnown::bt2100Hlg, ColorModel::rgb));
    EXPECT_EQ(profileOf(codes("\x09\x10\1\1") + p3), ColorProfile::displayP3()) << "not RGB";
    EXPECT_EQ(profileOf(codes("\x09\x10\0\0") + p3), ColorProfile::displayP3()) << "not in full range";
    EXPECT_EQ(profileOf(pq).peak(), 1'000);
    EXPECT_EQ(profileOf(pq + content).peak(), 4'000);
    EXPECT_EQ(profileOf(display + pq).peak(), 1'500);
    EXPECT_EQ(profileOf(display + content + pq).peak(), 4'000);
    EXPECT_EQ(profileOf(chunk("cLLI", "short") + pq).peak(), 1'000);
}

} // namespace ferrow
