// SPDX-License-Identifier: GPL-3.0-or-later
#include "Codecs/CodecTesting.h"

#include <QImage>

#include <bit>
#include <cstring>
#include <random>

#include <png.h>
#include <zlib.h>

namespace ferrow {

namespace {

using namespace test;
using Reason = CodecError::Reason;

const QByteArray signature("\x89PNG\r\n\x1a\n", 8);

QByteArray bigEndian(quint32 value)
{
    QByteArray bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.append(char(value >> shift));
    return bytes;
}

QByteArray chunk(const QByteArray& name, const QByteArray& data)
{
    const QByteArray body = name + data;
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(body.constData()), uInt(body.size()));
    return bigEndian(quint32(data.size())) + body + bigEndian(quint32(sum));
}

QByteArray header(quint32 width, quint32 height, int depth = 8, int colourType = 2)
{
    return signature +
           chunk("IHDR", bigEndian(width) + bigEndian(height) + char(depth) + char(colourType) + QByteArray(3, '\0'));
}

QByteArray deflated(const QByteArray& bytes)
{
    return qCompress(bytes).mid(4);
}

const QByteArray end = chunk("IEND", {});

/// RGB, 2 x 2, in one IDAT chunk, with room for other chunks before and behind it.
const QByteArray tinyRows("\0abcdef\0ghijkl", 14);
const Pixels tinyPixels{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j', 'k', 'l'};

QByteArray tiny(const QByteArray& before, const QByteArray& behind = end, const QByteArray& stream = deflated(tinyRows))
{
    return header(2, 2) + before + chunk("IDAT", stream) + behind;
}

/// A file straight from the library: noise in samples of `depth` bits, with a palette and transparency where asked.
QByteArray libraryFile(PixelSize size, int colourType, int depth, bool transparency, bool interlaced)
{
    QByteArray file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp to, png_bytep bytes, std::size_t count) {
            static_cast<QByteArray*>(png_get_io_ptr(to))
                ->append(reinterpret_cast<const char*>(bytes), qsizetype(count));
        },
        nullptr);
    png_set_IHDR(png, info, png_uint_32(size.width), png_uint_32(size.height), depth, colourType,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
    if (colourType == PNG_COLOR_TYPE_PALETTE) {
        std::vector<png_color> palette;
        std::vector<png_byte> alphas;
        for (int i = 0; i < 1 << depth; ++i) {
            palette.push_back({png_byte(i), png_byte(255 - i), png_byte(i * 7)});
            alphas.push_back(png_byte(i * 3));
        }
        png_set_PLTE(png, info, palette.data(), int(palette.size()));
        if (transparency)
            png_set_tRNS(png, info, alphas.data(), int(alphas.size()), nullptr);
    } else if (transparency) {
        const png_color_16 key{0, 1, 1, 1, 1};
        png_set_tRNS(png, info, nullptr, 0, &key);
    }
    png_write_info(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    Pixels samples(rowBytes * std::size_t(size.height));
    std::minstd_rand noise;
    std::ranges::generate(samples, [&noise] { return std::uint8_t(noise() >> 8); });
    std::vector<png_bytep> rows;
    for (std::int64_t y = 0; y < size.height; ++y)
        rows.push_back(samples.data() + std::size_t(y) * rowBytes);
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

/// Qt's reader gives transparent pixels no colour, ours the stored one; nobody sees it.
std::vector<std::uint16_t> withoutHiddenColour(std::vector<std::uint16_t> values)
{
    for (std::size_t i = 0; i < values.size(); i += 4)
        if (values[i + 3] == 0)
            std::fill_n(&values[i], 3, 0);
    return values;
}

/// The same through Qt's reader, as 16-bit RGBA.
std::vector<std::uint16_t> throughQt(const QByteArray& file)
{
    const QImage image = QImage::fromData(file, "PNG").convertToFormat(QImage::Format_RGBA64);
    std::vector<std::uint16_t> values;
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const std::uint16_t*>(image.constScanLine(y));
        values.insert(values.end(), row, row + image.width() * 4);
    }
    return withoutHiddenColour(values);
}

std::vector<std::uint16_t> asRgba16(const Decoded& decoded)
{
    std::vector<std::uint16_t> samples;
    for (std::size_t i = 0; i < decoded.pixels.size(); i += std::size_t(decoded.format.bitsPerComponent / 8)) {
        std::uint16_t sample = std::uint16_t(decoded.pixels[i] * 257);
        if (decoded.format.bitsPerComponent == 16)
            std::memcpy(&sample, &decoded.pixels[i], sizeof sample);
        samples.push_back(sample);
    }
    std::vector<std::uint16_t> values;
    const std::size_t colours = std::size_t(decoded.format.colorChannels());
    const std::size_t channels = std::size_t(decoded.format.channels());
    for (std::size_t i = 0; i < samples.size(); i += channels) {
        for (std::size_t c = 0; c < 3; ++c)
            values.push_back(samples[i + std::min(c, colours - 1)]);
        values.push_back(decoded.format.hasAlpha() ? samples[i + colours] : 0xffff);
    }
    return withoutHiddenColour(values);
}

} // namespace

TEST(PngDecoder, equalsAnotherReaderAtEveryDepth)
{
    constexpr PixelSize size{37, 23};
    const struct {
        const char* name;
        int colourType;
        std::vector<int> depths;
        ColorModel model;
    } rows[] = {
        {"grey", PNG_COLOR_TYPE_GRAY, {1, 2, 4, 8, 16}, ColorModel::gray},
        {"grey, alpha", PNG_COLOR_TYPE_GRAY_ALPHA, {8, 16}, ColorModel::gray},
        {"palette", PNG_COLOR_TYPE_PALETTE, {1, 2, 4, 8}, ColorModel::rgb},
        {"RGB", PNG_COLOR_TYPE_RGB, {8, 16}, ColorModel::rgb},
        {"RGBA", PNG_COLOR_TYPE_RGB_ALPHA, {8, 16}, ColorModel::rgb},
    };
    for (const auto& row : rows)
        for (const int depth : row.depths)
            for (const bool transparency : {false, true}) {
                const bool hasAlpha = (row.colourType & PNG_COLOR_MASK_ALPHA) != 0;
                if (hasAlpha && transparency)
                    continue;
                SCOPED_TRACE(row.name);
                SCOPED_TRACE(depth);
                const QByteArray file = libraryFile(size, row.colourType, depth, transparency, false);
                const Decoded decoded = decode(FileType::png, file);
                ASSERT_TRUE(decoded.isWhole());
                EXPECT_EQ(decoded.size, size);
                EXPECT_EQ(decoded.format, (PixelFormat{row.model, depth == 16 ? 16 : 8,
                                                       hasAlpha || transparency ? Alpha::straight : Alpha::none}));
                EXPECT_EQ(decoded.heldBytes, 0);
                // Qt knows no transparent colour beside a 16-bit sample.
                if (!(transparency && depth == 16)) {
                    EXPECT_EQ(asRgba16(decoded), throughQt(file));
                }

                const Decoded interlaced =
                    decode(FileType::png, libraryFile(size, row.colourType, depth, transparency, true));
                EXPECT_EQ(interlaced.pixels, decoded.pixels);
                EXPECT_EQ(interlaced.heldBytes, std::int64_t(decoded.pixels.size()));
            }
    const Decoded native =
        decode(FileType::png, header(1, 1, 16, 0) + chunk("IDAT", deflated(QByteArray("\0\x12\x34", 3))) + end);
    EXPECT_EQ(native.pixels, std::endian::native == std::endian::little ? (Pixels{0x34, 0x12}) : (Pixels{0x12, 0x34}));
}

TEST(PngDecoder, givesNoHalfPictures)
{
    for (const bool interlaced : {false, true}) {
        SCOPED_TRACE(interlaced);
        const QByteArray file = libraryFile({61, 47}, PNG_COLOR_TYPE_RGB, 8, false, interlaced);
        expectNoHalfPictures(FileType::png, file);
        const QByteArray half = file.left(file.size() * 2 / 3);
        EXPECT_EQ(decode(FileType::png, half).error, (CodecError{Reason::damaged, {}}));
        const Decoded shown = decode(FileType::png, half, {0, Tolerance::tolerant});
        ASSERT_TRUE(shown.isWhole());
        const Pixels whole = decode(FileType::png, file).pixels;
        EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + (interlaced ? 3 : 61 * 3 * 10), shown.pixels.begin()));
        EXPECT_NE(shown.pixels, whole);
        if (!interlaced) {
            EXPECT_EQ(shown.pixels.back(), 0x80);
        }
    }
}

TEST(PngDecoder, tellsLostPixelsFromOddFiles)
{
    QByteArray wrongSum = deflated(tinyRows);
    wrongSum.back() = char(wrongSum.back() + 1);
    QByteArray wrongCrc = tiny({}, {});
    wrongCrc.back() = char(wrongCrc.back() + 1);
    QByteArray badAncillary = chunk("gAMA", bigEndian(45'455));
    badAncillary.back() = char(badAncillary.back() + 1);
    QByteArray beyondFile = chunk("tEXt", "a");
    beyondFile[0] = 0x7f;
    const CodecError damaged{Reason::damaged, {}};
    const CodecError malformed{Reason::malformed, {}};
    const struct {
        const char* name;
        QByteArray file;
        std::optional<CodecError> expected;
    } rows[] = {
        {"as it should be", tiny({}), {}},
        {"no end chunk", tiny({}, {}), {}},
        {"half an end chunk", tiny({}, end.left(6)), {}},
        {"junk at the end", tiny({}, end + QByteArray(999, 'x')), {}},
        {"a broken chunk behind the picture", tiny({}, badAncillary + end), {}},
        {"a broken chunk before it", tiny(badAncillary), {}},
        {"more compressed bytes than pixels", tiny({}, end, deflated(tinyRows + QByteArray(5000, 'x'))), {}},
        {"bytes behind the stream", tiny({}, end, deflated(tinyRows) + "surplus"), {}},
        {"a second picture's data", tiny({}, chunk("IDAT", "surplus") + end), {}},
        {"a row missing", tiny({}, end, deflated(tinyRows.left(7))), damaged},
        {"wrong sum over the pixels", tiny({}, end, wrongSum), damaged},
        {"wrong sum over the chunk", wrongCrc + end, damaged},
        {"a chunk longer than the file", tiny(beyondFile), malformed},
        {"no width", header(0, 2) + chunk("IDAT", deflated(tinyRows)) + end, malformed},
        {"a private critical chunk before the header", signature + chunk("CgBI", "abcd") + tiny({}).mid(8), malformed},
        {"nothing", QByteArray(), malformed},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Decoded decoded = decode(FileType::png, row.file);
        EXPECT_EQ(decoded.error, row.expected);
        if (!row.expected) {
            EXPECT_EQ(decoded.pixels, tinyPixels);
        }
    }
}

TEST(PngDecoder, leavesAStreamThatGoesOnForLong)
{
    Pixels surplus(500'000);
    std::ranges::generate(surplus, std::minstd_rand());
    const QByteArray stream = deflated(tinyRows + QByteArray(reinterpret_cast<const char*>(surplus.data()), 500'000));
    const Decoded decoded = decode(FileType::png, tiny({}, end, stream));
    EXPECT_EQ(decoded.error, (CodecError{Reason::damaged, {}}));
}

TEST(PngDecoder, reportsSizesBeyondAnyLimit)
{
    const QByteArray file = header(0x7fffffff, 0x7fffffff) + chunk("IDAT", deflated(tinyRows)) + end;
    const Decoded decoded = decode(FileType::png, file);
    EXPECT_EQ(decoded.storedSize, (PixelSize{0x7fffffff, 0x7fffffff}));
    EXPECT_EQ(decoded.error, (CodecError{Reason::tooLarge, {}}));
}

TEST(PngDecoder, takesTheProfileThatCounts)
{
    const auto icc = [](const ColorProfile& profile, const QByteArray& stream = {}) {
        return chunk("iCCP", QByteArray("p\0\0", 3) + (stream.isEmpty() ? deflated(profile.icc()) : stream));
    };
    const ColorProfile& p3 = ColorProfile::displayP3();
    const QByteArray srgb = chunk("sRGB", QByteArray(1, '\0'));
    const QByteArray gamma = chunk("gAMA", bigEndian(100'000));
    const struct {
        const char* name;
        QByteArray before;
        ColorProfile expected;
    } rows[] = {
        {"none", {}, {}},
        {"gamma alone", gamma, {}},
        {"profile", icc(p3), p3},
        {"sRGB", srgb, ColorProfile::sRGB()},
        {"profile before sRGB", icc(p3) + srgb, p3},
        {"profile behind sRGB and gamma", gamma + srgb + icc(p3), p3},
        {"broken profile", icc({}, deflated("nothing of the kind")), {}},
        {"profile of another model", icc(ColorProfile::sGray()), {}},
        {"sRGB and a broken profile", srgb + icc({}, "nothing"), ColorProfile::sRGB()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Decoded decoded = decode(FileType::png, tiny(row.before));
        EXPECT_TRUE(decoded.isWhole());
        EXPECT_EQ(decoded.profile, row.expected);
    }
}

TEST(PngEncoder, isReadBackUnchanged)
{
    for (const PixelFormat format : {rgb8, rgba8}) {
        SCOPED_TRACE(format.channels());
        EncodeOptions options;
        options.size = {83, 59};
        options.format = format;
        options.profile = ColorProfile::displayP3();
        options.metadata = someMetadata();
        const Pixels pixels = picture(options.size, format.channels());
        const QByteArray file = encode(OutputType::png, options, pixels);
        const Decoded decoded = decode(FileType::png, file);
        EXPECT_EQ(decoded.format, format);
        EXPECT_EQ(decoded.pixels, pixels);
        EXPECT_EQ(decoded.profile, options.profile);
        EXPECT_EQ(throughQt(file), asRgba16(decoded));

        QByteArrayList names;
        for (qsizetype at = 8; at < file.size(); at += 12 + qsizetype(quint8(file[at + 2]) << 8 | quint8(file[at + 3])))
            if (names.isEmpty() || names.back() != file.mid(at + 4, 4))
                names.append(file.mid(at + 4, 4));
        EXPECT_EQ(names, (QByteArrayList{"IHDR", "iCCP", "eXIf", "IDAT", "IEND"}));
    }
}

TEST(PngEncoder, embedsAProfileOfAnyLength)
{
    EncodeOptions options;
    options.size = {2, 2};
    options.profile = longProfile();
    EXPECT_EQ(decode(FileType::png, encode(OutputType::png, options, tinyPixels)).profile, options.profile);
}

} // namespace ferrow
