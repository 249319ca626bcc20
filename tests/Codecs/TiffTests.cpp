// SPDX-License-Identifier: GPL-3.0-or-later
#include "Codecs/CodecTesting.h"
#include "Codecs/TiffBytes.h"

#include <tiffio.h>

#include <limits>
#include <memory>

namespace ferrow {

namespace {

using namespace test;

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
constexpr int color = PHOTOMETRIC_RGB;
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
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, layout.isFax() ? white : color);
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
    expect("times alpha", color, 8, 4, "\x40\x20\x10\x80\x9\x9\x1\x3", {128, 64, 32, 128, 255, 255, 85, 3}, {times});
    expect("wide", color, 16, 4, wide({0x4000, 0, 0x7fff, 0x7fff}), {0x8001, 0, 0xffff, 0x7fff}, {times});
    expect("gray times alpha", black, 8, 2, "\x32\x64", {128, 100}, {times});
    expect("unnamed sample before alpha", color, 8, 5, "abcde", {'a', 'b', 'c', 'e'}, {both});
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

TEST(TiffDecoder, turnsYCbCrInPlanesIntoRgb)
{
    const auto planes = [](std::uint32_t subsampling) {
        const QByteArray bytes =
            QByteArray(21 * 20, '\x7c') + QByteArray(21 * 20, '\x56') + QByteArray(21 * 20, '\xb6');
        auto tags =
            pictureTags(21, 20, {shortTag(TIFFTAG_PLANARCONFIG, PLANARCONFIG_SEPARATE)}, PHOTOMETRIC_YCBCR, 8, 3);
        tags.push_back({TIFFTAG_YCBCRSUBSAMPLING, 3, 2, littleEndian(subsampling)});
        tags[8] = {TIFFTAG_STRIPBYTECOUNTS, 4, 3, littleEndian(std::uint32_t(21 * 20)).repeated(3)};
        const auto offsets = [&](std::uint32_t first) {
            return littleEndian(first) + littleEndian(first + 21 * 20) + littleEndian(first + 2 * 21 * 20);
        };
        tags[5] = {TIFFTAG_STRIPOFFSETS, 4, 3, offsets(0)};
        tags[5].values = offsets(std::uint32_t(8 + tiffDirectory(tags, 8).size()));
        return decode(tiffFile(tags, bytes));
    };
    ASSERT_EQ(planes(0x10001).error, std::nullopt);
    EXPECT_LE(worstDifference(planes(0x10001).at(20, 19), Components{200, 100, 50}), 2);
    EXPECT_EQ(planes(0x20002).error, unsupported("YCbCr TIFF image in subsampled planes"));
}

TEST(TiffDecoder, takesPixelsWithAColorMapForItsColors)
{
    auto tags = pictureTags(
        2, 1, {{TIFFTAG_COLORMAP, 3, 3 * 256, QByteArray(512, '\1') + QByteArray(512, '\2') + QByteArray(512, '\3')}});
    tags.erase(tags.begin() + 4); // PhotometricInterpretation
    tags[4] = longTag(TIFFTAG_STRIPOFFSETS, 8);
    EXPECT_EQ(decode(tiffFile(tags, "ab")).at(1, 0), (Components{1, 2, 3}));
}

TEST(TiffDecoder, namesWhatItCannotRead)
{
    const auto errorOf = [](int photometric, int bits, int samples, const std::vector<TiffTag>& more = {}) {
        const auto tags = pictureTags(2, 2, more, photometric, bits, samples);
        return decode(tiffFile(tags, QByteArray(48, 'x'))).error;
    };
    EXPECT_EQ(errorOf(color, 8, 9), unsupported("9-band TIFF image"));
    EXPECT_EQ(errorOf(black, 16, 1, {shortTag(339, 2)}), unsupported("16-bit signed TIFF image"));
    EXPECT_EQ(errorOf(PHOTOMETRIC_CIELAB, 32, 3, {isFloat}), unsupported("32-bit floating-point TIFF image"));
    EXPECT_EQ(errorOf(PHOTOMETRIC_SEPARATED, 8, 4, {shortTag(332, 2)}),
              unsupported("TIFF image in inks other than CMYK"));
}

TEST(TiffDecoder, keepsTheStripsAroundABrokenOneGray)
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
    const auto withTags = [](std::size_t count) {
        const std::vector<TiffTag> more(count - pictureTags(2, 2).size(), shortTag(65'000, 1));
        return decode(tiffFile(pictureTags(2, 2, more), "abcd")).error;
    };
    EXPECT_EQ(withTags(512), std::nullopt);
    EXPECT_EQ(withTags(513), malformed);
    // Without a palette, here behind the file's end, the library would show gray.
    const TiffTag palette{TIFFTAG_COLORMAP, 3, 768, littleEndian(0x7ffffff0)};
    EXPECT_EQ(decode(tiffFile(pictureTags(2, 2, {palette}, PHOTOMETRIC_PALETTE), "abcd")).error, malformed);
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

} // namespace ferrow
