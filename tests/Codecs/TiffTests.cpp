// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/TiffDirectory.h"

#include "Codecs/CodecTesting.h"
#include "Codecs/TiffBytes.h"

#include <tiffio.h>

#include <cmath>
#include <limits>
#include <memory>
#include <span>

namespace ferrow {

namespace {

using namespace test;
using Integers = std::vector<std::int64_t>;

const auto decode = [](const QByteArray& file, Tolerance tolerance = Tolerance::strict) {
    return decodeAs(FileType::tiff, file, tolerance);
};

std::unique_ptr<TIFF, decltype(&TIFFClose)> open(const MemoryFile& file, const char* mode)
{
    ::lseek(file.descriptor(), 0, SEEK_SET);
    return {TIFFFdOpen(::dup(file.descriptor()), "test", mode), TIFFClose};
}

constexpr int black = PHOTOMETRIC_MINISBLACK;
constexpr int white = PHOTOMETRIC_MINISWHITE;
constexpr int colour = PHOTOMETRIC_RGB;
const TiffTag isFloat = shortTag(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);

/// How the library is to store a picture: RGB, or fax where that is the compression.
struct Layout {
    const char* name;
    int compression = COMPRESSION_NONE;
    int tile = 0; ///< Side of a tile; 0 for strips.
    bool isPlanar = false;
    int rowsPerStrip = 3;
    PixelSize size = {21, 20};
    const char* mode = "w";

    [[nodiscard]] bool isFax() const { return compression == COMPRESSION_CCITTFAX4; }
    [[nodiscard]] int sample(std::int64_t x, std::int64_t y, int channel) const
    {
        return isFax() ? (x % 3 == 0 ? 0 : 255) : int(x * 3 + y * 7 + channel * 50) % 256;
    }
};

QByteArray written(const Layout& layout)
{
    const MemoryFile file;
    auto owner = open(file, layout.mode);
    TIFF* tiff = owner.get();
    const auto [width, height] = layout.size;
    const bool isTiled = layout.tile != 0;
    const std::int64_t across = isTiled ? layout.tile : width;
    const std::int64_t down = isTiled ? layout.tile : layout.rowsPerStrip;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, std::uint32_t(width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, std::uint32_t(height));
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, layout.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, layout.isFax() ? white : colour);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, layout.isFax() ? 1 : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, layout.isFax() ? 1 : 3);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, layout.isPlanar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, isTiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, std::uint32_t(down));
    if (isTiled)
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, std::uint32_t(across));
    std::uint32_t index = 0;
    for (int plane = 0; plane < (layout.isPlanar ? 3 : 1); ++plane)
        for (std::int64_t y = 0; y < height; y += down)
            for (std::int64_t x = 0; x < width; x += across) {
                QByteArray chunk;
                const std::int64_t rows = isTiled ? down : std::min(down, height - y);
                for (std::int64_t i = 0; i < rows * across; ++i)
                    for (int c = layout.isPlanar ? plane : 0; c < (layout.isPlanar ? plane + 1 : 3); ++c)
                        chunk += char(layout.sample(x + i % across, y + i / across, c));
                if (layout.isFax())
                    chunk = QByteArray("\x92\x49\x20").repeated(rows);
                (isTiled ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip)(tiff, index++, chunk.data(), chunk.size());
            }
    owner.reset();
    return file.bytes();
}

void expectPixels(const Layout& layout, const Decoded& decoded)
{
    SCOPED_TRACE(layout.name);
    ASSERT_EQ(decoded.error, std::nullopt);
    ASSERT_EQ(decoded.size, layout.size);
    for (std::int64_t y = 0; y < layout.size.height; ++y)
        for (std::int64_t x = 0; x < layout.size.width; ++x)
            for (int channel = 0; channel < decoded.format.channels(); ++channel)
                ASSERT_EQ(decoded.at(x, y)[std::size_t(channel)], layout.sample(x, y, channel)) << x << ", " << y;
}

const Layout fax{"fax", COMPRESSION_CCITTFAX4};

/// More than 4 MB a strip: decompressed row by row.
const Layout large{"large", COMPRESSION_ADOBE_DEFLATE, 0, false, 1200, {1300, 3600}};

/// `bytes` must outlive it.
std::optional<TiffStructure> structureOf(const QByteArray& bytes)
{
    return TiffStructure::open(std::as_bytes(std::span(bytes.constData(), std::size_t(bytes.size()))));
}

} // namespace

TEST(TiffDecoder, readsEveryKindOfSample)
{
    const auto expect = [](const char* name, int photometric, int bits, int samples, const QByteArray& row,
                           const Components& expected, const std::vector<TiffTag>& more = {}) {
        const int width = int(row.size()) * 8 / (bits * samples);
        const Decoded decoded = decode(tiffFile(pictureTags(width, 1, more, photometric, bits, samples), row));
        ASSERT_EQ(decoded.error, std::nullopt) << name;
        Components found;
        for (int x = 0; x < width; ++x)
            std::ranges::copy(decoded.at(x, 0), std::back_inserter(found));
        EXPECT_EQ(found, expected) << name;
    };
    const auto wide = [](std::initializer_list<int> values) {
        QByteArray bytes;
        for (const int value : values)
            bytes += littleEndian(std::uint16_t(value));
        return bytes;
    };
    const QByteArray floats =
        littleEndian(0.5F) + littleEndian(2.0F) + littleEndian(std::numeric_limits<float>::quiet_NaN());
    const QByteArray ramp = wide({0x1234, 0x8080}) + wide({0}).repeated(14);
    const TiffTag palette{TIFFTAG_COLORMAP, 3, 3 * 16, ramp + wide({0xffff}).repeated(16) + ramp};
    const TiffTag straight = shortTag(TIFFTAG_EXTRASAMPLES, EXTRASAMPLE_UNASSALPHA);
    const TiffTag times = shortTag(TIFFTAG_EXTRASAMPLES, EXTRASAMPLE_ASSOCALPHA);
    const TiffTag both{TIFFTAG_EXTRASAMPLES, 3, 2, wide({EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNASSALPHA})};
    expect("bilevel", white, 1, 1, "\x7e", {255, 0, 0, 0, 0, 0, 0, 255});
    expect("2-bit", black, 2, 1, "\x1b", {0, 85, 170, 255});
    expect("8-bit, white is 0", white, 8, 1, "\x64", {155});
    expect("12-bit", black, 12, 1, "\x55\x5f\xff", {21845, 65535});
    expect("32-bit", black, 32, 1, littleEndian(0x80000001), {0x8000});
    expect("half", black, 16, 1, wide({0x3800, 0x3c00, 0xbc00}), {32768, 65535, 0}, {isFloat});
    expect("float", black, 32, 1, floats, {32768, 65535, 0}, {isFloat});
    expect("double", black, 64, 1, littleEndian(0.5), {32768}, {isFloat});
    expect("palette", PHOTOMETRIC_PALETTE, 4, 2, "\x03\x1f", {18, 255, 18, 51, 128, 255, 128, 255},
           {palette, straight});
    expect("CMYK", PHOTOMETRIC_SEPARATED, 8, 4, "abcd", {'a', 'b', 'c', 'd'});
    // 8 bits: a and b are signed. 16 bits: L as it is, a and b 256 a unit, against 257 around 128 delivered.
    expect("CIE Lab", PHOTOMETRIC_CIELAB, 8, 3, "\x80\1\xf6", {128, 129, 118});
    expect("16-bit CIE Lab", PHOTOMETRIC_CIELAB, 16, 3, wide({1, 0x7fff, 0x0080}), {1, 65535, 33025});
    expect("ICC Lab", PHOTOMETRIC_ICCLAB, 8, 3, "\x80\1\xf6", {128, 1, 246});
    expect("16-bit ICC Lab", PHOTOMETRIC_ICCLAB, 16, 3, wide({65280, 32768, 0}), {65535, 32896, 0});
    expect("times alpha", colour, 8, 4, "\x40\x20\x10\x80\x9\x9\x1\x3", {128, 64, 32, 128, 255, 255, 85, 3}, {times});
    expect("wide", colour, 16, 4, wide({0x4000, 0, 0x7fff, 0x7fff}), {0x8001, 0, 0xffff, 0x7fff}, {times});
    expect("grey times alpha", black, 8, 2, "\x32\x64", {128, 100}, {times});
    expect("unnamed sample before alpha", colour, 8, 5, "abcde", {'a', 'b', 'c', 'e'}, {both});
}

TEST(TiffDecoder, readsEveryKindOfStorageAndGivesNoHalfPictures)
{
    constexpr int lzw = COMPRESSION_LZW;
    const Layout layouts[]{{"BigTIFF", lzw, 0, false, 20, {21, 20}, "w8"},
                           {"big-endian", lzw, 0, false, 3, {21, 20}, "wb"},
                           {"planes", COMPRESSION_NONE, 0, true},
                           {"tiles", COMPRESSION_NONE, 16},
                           {"tiles in planes", lzw, 64, true},
                           {"PackBits", COMPRESSION_PACKBITS},
                           fax};
    for (const Layout& layout : layouts) {
        const QByteArray file = written(layout);
        expectPixels(layout, decode(file));
        expectNoHalfPictures(FileType::tiff, file);
    }
    expectPixels(large, decode(written(large)));
}

TEST(TiffDecoder, turnsYCbCrInBlocksIntoRgb)
{
    // Y, Cb and Cr of R 200, G 100, B 50 by the standard weights, rounded, in blocks of 2 x 2.
    const QByteArray blocks = QByteArray("\x7c\x7c\x7c\x7c\x56\xb6").repeated(10 * 11);
    const TiffTag subsampling{TIFFTAG_YCBCRSUBSAMPLING, 3, 2, littleEndian(0x20002)};
    auto tags = pictureTags(21, 20, {subsampling}, PHOTOMETRIC_YCBCR, 8, 3);
    tags[8] = longTag(TIFFTAG_STRIPBYTECOUNTS, std::uint32_t(blocks.size()));
    const Decoded decoded = decode(tiffFile(tags, blocks));
    ASSERT_EQ(decoded.error, std::nullopt);
    EXPECT_LE(worstDifference(decoded.at(20, 19), Components{200, 100, 50}), 2);
}

TEST(TiffDecoder, namesWhatItCannotRead)
{
    const auto errorOf = [](int photometric, int bits, int samples, const std::vector<TiffTag>& more = {}) {
        const auto tags = pictureTags(2, 2, more, photometric, bits, samples);
        return decode(tiffFile(tags, QByteArray(48, 'x'))).error;
    };
    EXPECT_EQ(errorOf(colour, 8, 9), unsupported("9-band TIFF image"));
    EXPECT_EQ(errorOf(colour, 8, 2), unsupported("2-band TIFF image of this colour model"));
    EXPECT_EQ(errorOf(black, 16, 1, {shortTag(339, 2)}), unsupported("16-bit signed TIFF image"));
    EXPECT_EQ(errorOf(PHOTOMETRIC_CIELAB, 32, 3, {isFloat}), unsupported("32-bit floating-point TIFF image"));
    EXPECT_EQ(errorOf(PHOTOMETRIC_ITULAB, 8, 3), unsupported("ITU Lab TIFF image"));
    EXPECT_EQ(errorOf(PHOTOMETRIC_SEPARATED, 8, 4, {shortTag(332, 2)}),
              unsupported("TIFF image in inks other than CMYK"));
}

TEST(TiffDecoder, givesNoPictureForACutFileButItsRowsWhenTolerant)
{
    // The directory comes first here, so that a cut takes pixels; 4 bytes between say that no page follows.
    const QByteArray rows("0123456789abcdefghijklmnopqrstuvwxyz", 36);
    const QByteArray whole = tiffFile(pictureTags(6, 6), rows);
    ASSERT_EQ(decode(whole).error, std::nullopt);
    for (qsizetype lost = 1; lost <= whole.size(); ++lost) {
        EXPECT_EQ(decode(whole.chopped(lost)).error, lost <= 40 ? damaged : malformed) << lost;
        const Decoded tolerant = decode(whole.chopped(lost), Tolerance::tolerant);
        const qsizetype rowsLeft = lost > 36 ? 0 : (36 - lost) / 6;
        ASSERT_EQ(tolerant.error.has_value(), rowsLeft == 0) << lost;
        for (qsizetype y = 0; y < 6 && rowsLeft > 0; ++y)
            EXPECT_EQ(tolerant.at(5, y)[0], y < rowsLeft ? rows[y * 6 + 5] : 0x80) << lost << ", row " << y;
    }
}

TEST(TiffDecoder, keepsTheStripsAroundABrokenOneGrey)
{
    for (const Layout& layout : {large, Layout{"whole", COMPRESSION_ADOBE_DEFLATE, 0, false, 7}}) {
        SCOPED_TRACE(layout.name);
        const QByteArray file = written(layout);
        const auto at = qsizetype(TIFFGetStrileOffset(open(MemoryFile(file), "r").get(), 1));
        const QByteArray broken = QByteArray(file).replace(at, 2, "\xff\xff");
        EXPECT_EQ(decode(broken).error, damaged);
        const Decoded decoded = decode(broken, Tolerance::tolerant);
        ASSERT_EQ(decoded.error, std::nullopt);
        const int rows = layout.rowsPerStrip;
        EXPECT_EQ(decoded.at(0, rows - 1)[0], layout.sample(0, rows - 1, 0));
        EXPECT_EQ(decoded.at(20, rows), (Components{0x80, 0x80, 0x80}));
        EXPECT_EQ(decoded.at(0, rows * 2)[0], layout.sample(0, rows * 2, 0));
    }
    // The library's fax decoder complains and then delivers rows all the same.
    EXPECT_EQ(decode(written(fax).replace(9, 2, QByteArray(2, '\0'))).error, damaged);
}

TEST(TiffDecoder, refusesHostileDirectories)
{
    const auto errorWith = [](std::size_t index, const TiffTag& tag) {
        auto tags = pictureTags(2, 2);
        tags[index] = tag;
        return decode(tiffFile(tags, "abcd")).error;
    };
    EXPECT_EQ(decode(QByteArray("II*\0\xff\xff\xff\xff", 8)).error, malformed);
    EXPECT_EQ(decode(tiffFile(std::vector(513, shortTag(256, 2)))).error, malformed);
    // Values that are longer than the file between them.
    const TiffTag shared{700, 1, 250, littleEndian(8)};
    EXPECT_EQ(decode(tiffFile(pictureTags(2, 2, {shared, shared}), QByteArray(300, 'x'))).error, malformed);
    EXPECT_EQ(errorWith(0, shortTag(256, 0)), malformed);
    EXPECT_EQ(errorWith(7, shortTag(278, 0)), malformed);
    EXPECT_EQ(errorWith(5, longTag(273, 0x7fffffff)), damaged);
    // A BigTIFF tag with a count of 2^62, and a tile of 4 EB.
    const QByteArray big("II\x2b\0\x08\0\0\0\x10\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\1\x10\0\0\0\0\0\0\0\0\x40", 36);
    EXPECT_EQ(decode(big + QByteArray(8, '\0')).error, malformed);
    auto tile =
        pictureTags(2, 2, {longTag(322, 0x7ffffff0), longTag(323, 0x7ffffff0), longTag(324, 8), longTag(325, 4)});
    tile.erase(tile.begin() + 5);
    EXPECT_EQ(decode(tiffFile(tile, "abcd")).error, tooLarge);
    auto huge = pictureTags(2, 2);
    huge[0] = longTag(256, 1'000'000);
    huge[1] = longTag(257, 1'000'000);
    EXPECT_EQ(decode(tiffFile(huge, "abcd")).storedSize, (PixelSize{1'000'000, 1'000'000}));
}

TEST(TiffDecoder, tellsWhatItHoldsAndTakesTheProfileOfTheRightModel)
{
    const auto held = [](int tile) {
        return decode(written({"", COMPRESSION_NONE, tile, false, 2048, {2000, 2048}})).heldBytes;
    };
    EXPECT_EQ(held(0), 0);
    EXPECT_EQ(held(16), 0);
    EXPECT_GE(held(2048), 2048 * 2048 * 3);
    const auto profileOf = [](const QByteArray& icc) {
        return decode(tiffFile(pictureTags(2, 2, {{34675, 7, std::uint32_t(icc.size()), icc}}), "abcd")).profile;
    };
    EXPECT_EQ(profileOf(ColorProfile::sGray().icc()), ColorProfile::sGray());
    EXPECT_EQ(profileOf(ColorProfile::sRGB().icc()), ColorProfile());
    EXPECT_EQ(profileOf("no profile at all"), ColorProfile());
}

TEST(TiffDirectory, readsValuesOfEveryWidthFromMemoryAndFile)
{
    const auto rational = [](int above, int below) { return littleEndian(above) + littleEndian(below); };
    const QByteArray bytes = tiffFile({
        textTag(271, "Make"),
        {272, 8, 2, littleEndian(qint16(-2)) + littleEndian(qint16(7))},
        {273, 16, 1, littleEndian(quint64(1) << 63)},
        {274, 10, 2, rational(-1, 3) + rational(5, 0)},
        {275, 11, 1, littleEndian(1.5F)},
        {277, 99, 1, "abcd"},
    });
    const MemoryFile file(bytes);
    const ByteSource source(file.descriptor(), file.size());
    for (const auto& structure : {TiffStructure::open(source), structureOf(bytes)}) {
        const auto directory = structure->firstDirectory();
        ASSERT_TRUE(directory);
        const auto entry = [&](std::uint16_t tag) { return *directory->find(tag); };
        EXPECT_EQ(structure->bytes(entry(271), 2), "Ma");
        EXPECT_EQ(structure->integers(entry(272), 9), (Integers{-2, 7}));
        EXPECT_EQ(structure->integers(entry(273), 1), Integers{std::numeric_limits<std::int64_t>::max()});
        EXPECT_EQ(structure->rationals(entry(274), 2), (std::vector<TiffRational>{{-1, 3}, {5, 0}}));
        EXPECT_TRUE(std::isnan(structure->numbers(entry(274), 2)[1]));
        EXPECT_EQ(structure->numbers(entry(275), 1), std::vector{1.5});
        EXPECT_EQ(entry(277).length, 0);
    }
    const QByteArray big("MM\0*\0\0\0\x08\0\1\1\0\0\3\0\0\0\1\x12\x34\0\0\0\0\0\0", 26);
    const QByteArray bigTiff = QByteArray("II\x2b\0\x08\0\0\0\x10\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0", 24) +
                               QByteArray("\0\1\3\0\1\0\0\0\0\0\0\0\x34\x12\0\0\0\0\0\0", 20);
    for (const QByteArray& other : {big, bigTiff}) {
        const auto structure = structureOf(other);
        EXPECT_EQ(structure->integers(*structure->firstDirectory()->find(256), 1), Integers{0x1234});
    }
}

TEST(TiffDirectory, staysInsideTheFileAndFollowsNoLoop)
{
    // 26 bytes of file; values given as an offset and a count.
    const auto lengthAt = [&](std::uint32_t offset, std::uint32_t count, std::uint16_t type) {
        const QByteArray bytes = tiffFile({{700, type, count, littleEndian(offset)}});
        return structureOf(bytes)->firstDirectory()->entries.front().length;
    };
    EXPECT_EQ(lengthAt(16, 10, 1), 10);
    EXPECT_EQ(lengthAt(17, 10, 1), 0);
    EXPECT_EQ(lengthAt(0xffffffff, 10, 1), 0);
    EXPECT_EQ(lengthAt(8, 0xffffffff, 12), 0);
    EXPECT_EQ(lengthAt(8, 0x20000001, 12), 0);

    const QByteArray loop = tiffFile({longTag(0x8769, 8)});
    EXPECT_FALSE(structureOf(loop)->childDirectory(*structureOf(loop)->firstDirectory(), 0x8769));
    // Two directories of 18 bytes that point to each other.
    const QByteArray pair = tiffFile({longTag(0x8769, 26)}) + tiffDirectory({longTag(0x8769, 8)}, 26);
    const auto structure = structureOf(pair);
    const auto child = structure->childDirectory(*structure->firstDirectory(), 0x8769);
    ASSERT_TRUE(child);
    EXPECT_FALSE(structure->childDirectory(*child, 0x8769));
    EXPECT_FALSE(structure->childDirectory(*structure->firstDirectory(), 0x8769, 1));
}

TEST(TiffDirectory, givesWhatACutTableStillHolds)
{
    const QByteArray whole = tiffFile({shortTag(256, 1), shortTag(257, 2), shortTag(258, 3)});
    for (qsizetype length = 0; length < 46; ++length) {
        const QByteArray cut = whole.left(length);
        const auto structure = structureOf(cut);
        ASSERT_EQ(structure.has_value(), length >= 8) << length;
        const auto directory = structure ? structure->firstDirectory() : std::nullopt;
        ASSERT_EQ(directory.has_value(), length >= 10) << length;
        if (directory) {
            EXPECT_EQ(qsizetype(directory->entries.size()), (length - 10) / 12);
            EXPECT_EQ(directory->isComplete, length >= 46);
        }
    }
}

} // namespace ferrow
