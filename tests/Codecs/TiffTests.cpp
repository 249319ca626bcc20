// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"
#include "Platform/Codecs/TiffDirectory.h"

#include "Codecs/TiffBytes.h"
#include "Support/TestSupport.h"

#include <tiffio.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace ferrow {

inline void PrintTo(const CodecError& error, std::ostream* out)
{
    *out << "reason " << int(error.reason) << " \"" << error.kind.toStdString() << '"';
}

namespace {

using namespace test;
using Components = std::vector<int>;

constexpr auto malformed = CodecError::Reason::malformed;
constexpr auto unsupported = CodecError::Reason::unsupported;
constexpr auto damaged = CodecError::Reason::damaged;
constexpr auto tooLarge = CodecError::Reason::tooLarge;

/// What decoding a file gave: its pixels, or why there are none.
struct Decoded {
    PixelSize size;
    PixelFormat format;
    std::vector<std::byte> pixels;
    std::optional<CodecError> error;

    [[nodiscard]] Components at(std::int64_t x, std::int64_t y) const
    {
        Components components;
        const auto* pixel = pixels.data() + (y * size.width + x) * format.bytesPerPixel();
        for (int i = 0; i < format.channels(); ++i) {
            std::uint16_t wide = 0;
            std::memcpy(&wide, pixel + i * 2, format.bitsPerComponent == 16 ? 2 : 0);
            components.push_back(format.bitsPerComponent == 16 ? wide : std::to_integer<int>(pixel[i]));
        }
        return components;
    }
};

Decoded decode(const QByteArray& bytes, Tolerance tolerance = Tolerance::strict)
{
    const MemoryFile file(bytes);
    const ByteSource source(file.descriptor(), file.size());
    Decoded result;
    try {
        const auto decoder = openTiffDecoder(source, {0, tolerance});
        result.size = decoder->size();
        result.format = decoder->format();
        const auto stride = std::size_t(result.size.width * result.format.bytesPerPixel());
        result.pixels.resize(stride * std::size_t(result.size.height));
        // Bands of 7 rows cross every boundary of strips and tiles sooner or later.
        for (std::int64_t y = 0; y < result.size.height; y += 7)
            decoder->readRows(std::min<std::int64_t>(7, result.size.height - y),
                              result.pixels.data() + std::size_t(y) * stride, stride);
        decoder->finish();
    } catch (const CodecError& error) {
        result.error = error;
    }
    return result;
}

void expectRefusal(const QByteArray& bytes, CodecError::Reason reason, const char* kind = "")
{
    const Decoded result = decode(bytes);
    ASSERT_TRUE(result.error.has_value());
    EXPECT_EQ(*result.error, (CodecError{reason, QString::fromUtf8(kind)}));
}

struct Closer {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Handle = std::unique_ptr<TIFF, Closer>;

Handle openFile(const MemoryFile& file, const char* mode)
{
    ::lseek(file.descriptor(), 0, SEEK_SET);
    return Handle(TIFFFdOpen(::dup(file.descriptor()), "test", mode));
}

/// How the library is to store a picture whose pixel (x, y) has the samples pixels[(x + 3 * y) % count].
struct Stored {
    const char* name;
    int photometric;
    int bits;
    std::vector<std::vector<std::uint64_t>> pixels; ///< Each sample as its bits.
    std::vector<Components> expected;               ///< Per entry of `pixels`, the delivered components.
    std::vector<std::uint16_t> extraSamples = {};
    int sampleFormat = 0; ///< 0 leaves a tag out, here and below.
    const char* mode = "w";
    int compression = COMPRESSION_NONE;
    bool isPlanar = false;
    int tile = 0; ///< Side of a tile; 0 for strips.
    int rowsPerStrip = 3;
    int fillOrder = 0;
    int predictor = 0;
    PixelSize size = {21, 20};
};

QByteArray packed(const Stored& stored, std::int64_t x, std::int64_t y, std::int64_t width, int sample)
{
    QByteArray row;
    std::uint64_t window = 0;
    int held = 0;
    for (std::int64_t i = x; i < x + width; ++i) {
        const auto& pixel = stored.pixels[std::size_t(i + 3 * y) % stored.pixels.size()];
        for (std::size_t s = 0; s < pixel.size(); ++s) {
            if (stored.isPlanar && int(s) != sample)
                continue;
            // Whole bytes go in the machine's order, as the library wants them; bits the highest first.
            if (stored.bits % 8 == 0 && stored.bits != 24) {
                row.append(reinterpret_cast<const char*>(&pixel[s]), stored.bits / 8);
                continue;
            }
            window = window << stored.bits | pixel[s];
            for (held += stored.bits; held >= 8; held -= 8)
                row.append(char(window >> (held - 8)));
        }
    }
    if (held > 0)
        row.append(char(window << (8 - held)));
    return row;
}

void setTags(TIFF* tiff, const Stored& stored)
{
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, std::uint32_t(stored.size.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, std::uint32_t(stored.size.height));
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, stored.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, stored.photometric);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, stored.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, int(stored.pixels[0].size()));
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, stored.isPlanar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (stored.sampleFormat != 0)
        TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, stored.sampleFormat);
    if (stored.fillOrder != 0)
        TIFFSetField(tiff, TIFFTAG_FILLORDER, stored.fillOrder);
    if (stored.predictor != 0)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, stored.predictor);
    if (!stored.extraSamples.empty())
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, int(stored.extraSamples.size()), stored.extraSamples.data());
    if (stored.tile != 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, stored.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, stored.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, stored.rowsPerStrip);
    }
    if (stored.photometric == PHOTOMETRIC_PALETTE) {
        std::vector<std::uint16_t> ramp(std::size_t(1) << stored.bits, 0x1234);
        std::vector<std::uint16_t> flat(ramp.size(), 0xffff);
        ramp[2] = 0x8080;
        TIFFSetField(tiff, TIFFTAG_COLORMAP, ramp.data(), flat.data(), ramp.data());
    }
}

void writePage(TIFF* tiff, const Stored& stored)
{
    setTags(tiff, stored);
    const int planes = stored.isPlanar ? int(stored.pixels[0].size()) : 1;
    const auto [width, height] = stored.size;
    const std::int64_t across = stored.tile != 0 ? stored.tile : width;
    const std::int64_t down = stored.tile != 0 ? stored.tile : stored.rowsPerStrip;
    std::uint32_t index = 0;
    for (int plane = 0; plane < planes; ++plane) {
        for (std::int64_t y = 0; y < height; y += down) {
            for (std::int64_t x = 0; x < width; x += across) {
                const std::int64_t rows = stored.tile != 0 ? down : std::min(down, height - y);
                QByteArray chunk;
                for (std::int64_t row = y; row < y + rows; ++row)
                    chunk += packed(stored, x, row, across, plane);
                if (stored.tile != 0)
                    TIFFWriteEncodedTile(tiff, index++, chunk.data(), chunk.size());
                else
                    TIFFWriteEncodedStrip(tiff, index++, chunk.data(), chunk.size());
            }
        }
    }
    TIFFWriteDirectory(tiff);
}

QByteArray written(const Stored& stored)
{
    const MemoryFile file;
    writePage(openFile(file, stored.mode).get(), stored);
    return file.bytes();
}

void expectPixels(const Stored& stored, const Decoded& decoded, int slack = 0)
{
    ASSERT_FALSE(decoded.error.has_value()) << testing::PrintToString(*decoded.error);
    ASSERT_EQ(decoded.size, stored.size);
    for (std::int64_t y = 0; y < stored.size.height; ++y) {
        for (std::int64_t x = 0; x < stored.size.width; ++x) {
            const auto& expected = stored.expected[std::size_t(x + 3 * y) % stored.expected.size()];
            const Components found = decoded.at(x, y);
            ASSERT_EQ(found.size(), expected.size());
            for (std::size_t i = 0; i < found.size(); ++i)
                ASSERT_NEAR(found[i], expected[i], slack) << "component " << i << " at " << x << ", " << y;
        }
    }
}

std::uint64_t bits(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

const Stored rgbStrips{"RGB", PHOTOMETRIC_RGB, 8, {{1, 2, 3}, {9, 200, 255}}, {{1, 2, 3}, {9, 200, 255}}};

/// `rgbStrips` with a change.
template <typename Change>
Stored rgb(const char* name, Change change)
{
    Stored stored = rgbStrips;
    stored.name = name;
    change(stored);
    return stored;
}

std::vector<Stored> sampleKinds()
{
    const auto nan = bits(std::numeric_limits<float>::quiet_NaN());
    const auto half = std::bit_cast<std::uint64_t>(0.5);
    return {
        {"bilevel", PHOTOMETRIC_MINISBLACK, 1, {{0}, {1}}, {{0}, {255}}},
        {"bilevel, white is 0", PHOTOMETRIC_MINISWHITE, 1, {{0}, {1}}, {{255}, {0}}},
        {"2-bit", PHOTOMETRIC_MINISBLACK, 2, {{0}, {1}, {2}, {3}}, {{0}, {85}, {170}, {255}}},
        {"4-bit", PHOTOMETRIC_MINISBLACK, 4, {{0}, {5}, {15}}, {{0}, {85}, {255}}},
        {"8-bit, white is 0", PHOTOMETRIC_MINISWHITE, 8, {{0}, {100}}, {{255}, {155}}},
        {"12-bit", PHOTOMETRIC_MINISBLACK, 12, {{0}, {1365}, {4095}}, {{0}, {21845}, {65535}}},
        {"16-bit", PHOTOMETRIC_MINISBLACK, 16, {{0x0102}, {0xfffe}}, {{0x0102}, {0xfffe}}},
        {"16-bit, big-endian", PHOTOMETRIC_MINISBLACK, 16, {{0x0102}, {0xfffe}}, {{0x0102}, {0xfffe}}, {}, 0, "wb"},
        {"32-bit", PHOTOMETRIC_MINISBLACK, 32, {{0x80000000}, {0xffffffff}}, {{0x8000}, {0xffff}}},
        {"half float",
         PHOTOMETRIC_MINISBLACK,
         16,
         {{0x3800}, {0x3c00}, {0xbc00}},
         {{32768}, {65535}, {0}},
         {},
         SAMPLEFORMAT_IEEEFP},
        {"float, big-endian",
         PHOTOMETRIC_MINISBLACK,
         32,
         {{bits(0.5F)}, {bits(2.F)}, {nan}},
         {{32768}, {65535}, {0}},
         {},
         SAMPLEFORMAT_IEEEFP,
         "wb"},
        {"double", PHOTOMETRIC_MINISBLACK, 64, {{half}}, {{32768}}, {}, SAMPLEFORMAT_IEEEFP},
        {"palette", PHOTOMETRIC_PALETTE, 4, {{1}, {2}}, {{18, 255, 18}, {128, 255, 128}}},
        {"CMYK", PHOTOMETRIC_SEPARATED, 8, {{0, 10, 20, 255}}, {{0, 10, 20, 255}}},
        // 8 bits: a and b are signed. 16 bits: L as it is, a and b 256 a unit, against 257 a unit around 128 delivered.
        {"CIE Lab", PHOTOMETRIC_CIELAB, 8, {{128, 0, 0xf6}}, {{128, 128, 118}}},
        {"CIE Lab, 16-bit",
         PHOTOMETRIC_CIELAB,
         16,
         {{65535, 0, 0x8000}, {1, 0x7fff, 0x0080}},
         {{65535, 32896, 0}, {1, 65535, 33025}}},
        {"ICC Lab", PHOTOMETRIC_ICCLAB, 8, {{128, 0, 0xf6}}, {{128, 0, 0xf6}}},
        {"ICC Lab, 16-bit", PHOTOMETRIC_ICCLAB, 16, {{65280, 32768, 0}}, {{65535, 32896, 0}}},
        {"RGB and straight alpha",
         PHOTOMETRIC_RGB,
         8,
         {{9, 8, 7, 0}, {6, 5, 4, 99}},
         {{9, 8, 7, 0}, {6, 5, 4, 99}},
         {EXTRASAMPLE_UNASSALPHA}},
        {"RGB times alpha",
         PHOTOMETRIC_RGB,
         8,
         {{64, 32, 0, 128}, {0, 0, 0, 0}, {9, 9, 9, 3}},
         {{128, 64, 0, 128}, {0, 0, 0, 0}, {255, 255, 255, 3}},
         {EXTRASAMPLE_ASSOCALPHA}},
        {"16-bit RGB times alpha",
         PHOTOMETRIC_RGB,
         16,
         {{0x4000, 0, 0x7fff, 0x7fff}},
         {{0x8001, 0, 0xffff, 0x7fff}},
         {EXTRASAMPLE_ASSOCALPHA}},
        {"grey times alpha", PHOTOMETRIC_MINISBLACK, 8, {{50, 100}}, {{128, 100}}, {EXTRASAMPLE_ASSOCALPHA}},
        {"RGB and something unnamed", PHOTOMETRIC_RGB, 8, {{9, 8, 7, 0}}, {{9, 8, 7}}, {EXTRASAMPLE_UNSPECIFIED}},
        {"unnamed sample before alpha",
         PHOTOMETRIC_RGB,
         8,
         {{9, 8, 7, 1, 77}},
         {{9, 8, 7, 77}},
         {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNASSALPHA}},
    };
}

std::vector<Stored> storageKinds()
{
    std::vector<Stored> kinds{
        rgb("BigTIFF", [](Stored& s) { s.mode = "w8"; }),
        rgb("one strip", [](Stored& s) { s.rowsPerStrip = 20; }),
        rgb("planes", [](Stored& s) { s.isPlanar = true; }),
        rgb("tiles", [](Stored& s) { s.tile = 16; }),
        rgb("compressed tiles in planes",
            [](Stored& s) { s.tile = 16, s.isPlanar = true, s.compression = COMPRESSION_LZW; }),
        rgb("tile larger than the picture", [](Stored& s) { s.tile = 64; }),
        rgb("LZW", [](Stored& s) { s.compression = COMPRESSION_LZW; }),
        rgb("PackBits", [](Stored& s) { s.compression = COMPRESSION_PACKBITS; }),
        rgb("Deflate with predictor", [](Stored& s) { s.compression = COMPRESSION_ADOBE_DEFLATE, s.predictor = 2; }),
        rgb("reversed bits", [](Stored& s) { s.fillOrder = FILLORDER_LSB2MSB; }),
        {"fax", PHOTOMETRIC_MINISWHITE, 1, {{0}, {0}, {1}}, {{255}, {255}, {0}}, {}, 0, "w", COMPRESSION_CCITTFAX4},
    };
    // More than 4 MB a strip: decompressed row by row.
    const auto large = [](Stored& s) {
        s.compression = COMPRESSION_ADOBE_DEFLATE;
        s.size = {1300, 1250};
        s.rowsPerStrip = 1200;
    };
    kinds.push_back(rgb("large strips", large));
    kinds.push_back(rgb("large strips in planes", [&](Stored& s) { large(s), s.isPlanar = true; }));
    return kinds;
}

} // namespace

TEST(TiffDecoder, readsEveryKindOfSample)
{
    for (Stored stored : sampleKinds()) {
        for (const bool isPlanar : {false, true}) {
            SCOPED_TRACE(testing::Message() << stored.name << (isPlanar ? ", in planes" : ""));
            stored.isPlanar = isPlanar;
            expectPixels(stored, decode(written(stored)));
        }
    }
}

TEST(TiffDecoder, readsEveryKindOfStorage)
{
    for (const Stored& stored : storageKinds()) {
        SCOPED_TRACE(stored.name);
        expectPixels(stored, decode(written(stored)));
    }
}

TEST(TiffDecoder, turnsJpegAndSubsampledYCbCrIntoRgb)
{
    // Y, Cb and Cr of R 200, G 100, B 50 by the standard weights, rounded.
    const Stored expected = rgb("", [](Stored& s) { s.expected = {{200, 100, 50}}; });
    for (const bool isJpeg : {true, false}) {
        SCOPED_TRACE(isJpeg ? "JPEG" : "blocks of 2 x 2");
        const MemoryFile file;
        {
            const Handle tiff = openFile(file, "w");
            Stored stored = rgbStrips;
            stored.photometric = PHOTOMETRIC_YCBCR;
            stored.compression = isJpeg ? COMPRESSION_JPEG : COMPRESSION_LZW;
            stored.rowsPerStrip = 16;
            setTags(tiff.get(), stored);
            TIFFSetField(tiff.get(), TIFFTAG_YCBCRSUBSAMPLING, 2, 2);
            float reference[] = {0, 255, 128, 255, 128, 255};
            TIFFSetField(tiff.get(), TIFFTAG_REFERENCEBLACKWHITE, reference);
            if (isJpeg) {
                TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
                TIFFSetField(tiff.get(), TIFFTAG_JPEGQUALITY, 100);
            }
            for (std::uint32_t strip = 0; strip < 2; ++strip) {
                const int rows = strip == 0 ? 16 : 4;
                QByteArray bytes;
                if (isJpeg)
                    bytes = QByteArray("\xc8\x64\x32").repeated(rows * 21);
                else
                    bytes = QByteArray("\x7c\x7c\x7c\x7c\x56\xb6").repeated(rows / 2 * 11);
                ASSERT_EQ(TIFFWriteEncodedStrip(tiff.get(), strip, bytes.data(), bytes.size()), bytes.size());
            }
        }
        expectPixels(expected, decode(file.bytes()), 2);
    }
}

TEST(TiffDecoder, readsTheFirstOfSeveralPages)
{
    const MemoryFile file;
    {
        const Handle tiff = openFile(file, "w");
        writePage(tiff.get(), rgbStrips);
        writePage(tiff.get(), rgb("", [](Stored& s) { s.pixels = {{7, 7, 7}}, s.size = {3, 3}; }));
    }
    expectPixels(rgbStrips, decode(file.bytes()));
}

TEST(TiffDecoder, namesWhatItCannotRead)
{
    const auto pixel = [](int count) { return std::vector(std::size_t(count), std::uint64_t(1)); };
    const auto with = [&](int photometric, int depth, int count, int format = 0) {
        return written({"", photometric, depth, {pixel(count)}, {}, {}, format});
    };
    expectRefusal(with(PHOTOMETRIC_RGB, 8, 9), unsupported, "9-band TIFF image");
    expectRefusal(with(PHOTOMETRIC_RGB, 8, 2), unsupported, "2-band TIFF image of this colour model");
    expectRefusal(with(PHOTOMETRIC_MINISBLACK, 16, 1, SAMPLEFORMAT_INT), unsupported, "16-bit signed TIFF image");
    expectRefusal(with(PHOTOMETRIC_MINISBLACK, 64, 1), unsupported, "64-bit TIFF image");
    expectRefusal(with(PHOTOMETRIC_CIELAB, 32, 3, SAMPLEFORMAT_IEEEFP), unsupported,
                  "32-bit floating-point TIFF image");
    expectRefusal(with(PHOTOMETRIC_ITULAB, 8, 3), unsupported, "ITU Lab TIFF image");
    expectRefusal(with(PHOTOMETRIC_LOGL, 16, 1), unsupported, "LogLuv TIFF image");
    auto inks = grayTags(2, 2, {shortTag(332, 2)});
    inks[4] = shortTag(262, PHOTOMETRIC_SEPARATED);
    expectRefusal(tiffFile(inks, "abcd"), unsupported, "TIFF image in inks other than CMYK");
}

TEST(TiffDecoder, givesNoPictureForACutFile)
{
    // The directory comes first here, so that a cut takes pixels; 4 bytes between say that no page follows.
    const QByteArray rows("0123456789abcdefghijklmnopqrstuvwxyz", 36);
    const QByteArray whole = tiffFile(grayTags(6, 6), rows);
    ASSERT_FALSE(decode(whole).error.has_value());
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const qsizetype lost = whole.size() - length;
        const Decoded strict = decode(whole.left(length));
        ASSERT_TRUE(strict.error.has_value()) << length;
        EXPECT_EQ(strict.error->reason, lost <= 40 ? damaged : malformed) << length;

        const Decoded tolerant = decode(whole.left(length), Tolerance::tolerant);
        const qsizetype rowsLeft = lost > 36 ? 0 : (36 - lost) / 6;
        ASSERT_EQ(tolerant.error.has_value(), rowsLeft == 0) << length;
        for (qsizetype y = 0; y < 6 && rowsLeft > 0; ++y)
            EXPECT_EQ(tolerant.at(5, y), Components{y < rowsLeft ? rows[y * 6 + 5] : 0x80}) << length << ", row " << y;
    }
}

TEST(TiffDecoder, givesNoHalfPictureForCutOrBrokenLayouts)
{
    std::vector<Stored> all = storageKinds();
    all.resize(all.size() - 2);
    all.push_back({"palette", PHOTOMETRIC_PALETTE, 8, {{1}, {2}}, {}, {}, 0, "w", COMPRESSION_LZW});
    for (const Stored& stored : all) {
        SCOPED_TRACE(stored.name);
        const QByteArray whole = written(stored);
        const Decoded reference = decode(whole);
        for (qsizetype length = 0; length < whole.size(); length += 3) {
            const Decoded cut = decode(whole.left(length));
            EXPECT_TRUE(cut.error || cut.pixels == reference.pixels) << length;
            EXPECT_NO_THROW(decode(whole.left(length), Tolerance::tolerant));
        }
    }
}

TEST(TiffDecoder, keepsTheStripsAroundABrokenOneGrey)
{
    for (const bool isLarge : {false, true}) {
        SCOPED_TRACE(isLarge ? "decompressed row by row" : "decompressed whole");
        const Stored stored = rgb("", [&](Stored& s) {
            s.compression = COMPRESSION_ADOBE_DEFLATE;
            s.rowsPerStrip = isLarge ? 1200 : 5;
            s.size = isLarge ? PixelSize{1300, 3600} : PixelSize{21, 15};
        });
        const MemoryFile file;
        std::uint64_t at = 0;
        {
            const Handle tiff = openFile(file, "w");
            writePage(tiff.get(), stored);
        }
        {
            const Handle tiff = openFile(file, "r");
            at = TIFFGetStrileOffset(tiff.get(), 1);
        }
        QByteArray bytes = file.bytes();
        bytes.replace(qsizetype(at), 2, "\xff\xff");
        expectRefusal(bytes, damaged);
        const Decoded decoded = decode(bytes, Tolerance::tolerant);
        ASSERT_FALSE(decoded.error.has_value());
        const std::int64_t last = stored.rowsPerStrip - 1;
        EXPECT_EQ(decoded.at(0, 0), stored.expected[0]);
        EXPECT_EQ(decoded.at(0, last), stored.expected[std::size_t(3 * last) % 2]);
        EXPECT_EQ(decoded.at(20, last + 1), (Components{0x80, 0x80, 0x80}));
        EXPECT_EQ(decoded.at(0, last * 2 + 2), stored.expected[std::size_t(6 * last + 6) % 2]);
    }
}

TEST(TiffDecoder, takesTheLibrarysWordForBrokenFax)
{
    // Its fax decoder complains and then delivers rows all the same.
    QByteArray bytes = written({"", PHOTOMETRIC_MINISWHITE, 1, {{0}, {0}, {1}}, {}, {}, 0, "w", COMPRESSION_CCITTFAX4});
    ASSERT_FALSE(decode(bytes).error.has_value());
    bytes.replace(9, 2, QByteArray(2, '\0'));
    expectRefusal(bytes, damaged);
}

TEST(TiffDecoder, refusesHostileDirectories)
{
    const auto replaced = [](std::size_t index, const TiffTag& tag) {
        auto tags = grayTags(2, 2);
        tags[index] = tag;
        return tiffFile(tags, "abcd");
    };
    const auto expect = [](const char* name, const QByteArray& bytes, CodecError::Reason reason) {
        SCOPED_TRACE(name);
        expectRefusal(bytes, reason);
    };
    expect("no directory", QByteArray("II*\0\0\0\0\0", 8), malformed);
    expect("directory beyond the end", QByteArray("II*\0\xff\xff\xff\xff", 8), malformed);
    expect("513 tags", tiffFile(std::vector(513, shortTag(256, 2))), malformed);
    const TiffTag shared{700, 1, 250, littleEndian(std::uint32_t(8))};
    expect("values longer than the file between them", tiffFile(grayTags(2, 2, {shared, shared}), QByteArray(300, 'x')),
           malformed);
    expect("no width", replaced(0, shortTag(256, 0)), malformed);
    expect("no rows in a strip", replaced(7, shortTag(278, 0)), malformed);
    expect("picture data outside", replaced(5, longTag(273, 0x7fffffff)), damaged);
    expect("count of 2^62",
           QByteArray(
               "II\x2b\0\x08\0\0\0\x10\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\1\x10\0\0\0\0\0\0\0\0\x40\0\0\0\0\0\0\0\0", 44),
           malformed);
    auto tile = grayTags(2, 2, {longTag(322, 0x7ffffff0), longTag(323, 0x7ffffff0), longTag(324, 8), longTag(325, 4)});
    tile.erase(tile.begin() + 5);
    expect("tile of 4 EB", tiffFile(tile, "abcd"), tooLarge);
}

TEST(TiffDecoder, asksForNoMemoryBeforeTheFirstRow)
{
    auto tags = grayTags(2, 2);
    tags[0] = longTag(256, 1'000'000);
    tags[1] = longTag(257, 1'000'000);
    const MemoryFile file(tiffFile(tags, "abcd"));
    const ByteSource source(file.descriptor(), file.size());
    EXPECT_EQ(openTiffDecoder(source, {})->storedSize(), (PixelSize{1'000'000, 1'000'000}));
}

TEST(TiffDecoder, tellsWhatItHolds)
{
    const auto held = [](const Stored& stored) {
        const MemoryFile file(written(stored));
        const ByteSource source(file.descriptor(), file.size());
        return openTiffDecoder(source, {})->heldBytes();
    };
    const auto large = [](Stored& s) { s.size = {2000, 2048}, s.rowsPerStrip = 2048, s.pixels = {{1, 2, 3}}; };
    EXPECT_EQ(held(rgb("one stored strip", large)), 0);
    EXPECT_EQ(held(rgb("tiles", [&](Stored& s) { large(s), s.tile = 16; })), 0);
    EXPECT_GE(held(rgb("one tile", [&](Stored& s) { large(s), s.tile = 2048; })), 2048 * 2048 * 3);
}

TEST(TiffDecoder, takesTheProfileOfTheRightModel)
{
    const auto profileOf = [](const QByteArray& icc) {
        const MemoryFile file(tiffFile(grayTags(2, 2, {{34675, 7, std::uint32_t(icc.size()), icc}}), "abcd"));
        const ByteSource source(file.descriptor(), file.size());
        return openTiffDecoder(source, {})->profile();
    };
    EXPECT_EQ(profileOf(ColorProfile::sGray().icc()), ColorProfile::sGray());
    EXPECT_TRUE(profileOf(ColorProfile::sRGB().icc()).isEmpty());
    EXPECT_TRUE(profileOf("no profile at all").isEmpty());
}

} // namespace ferrow
