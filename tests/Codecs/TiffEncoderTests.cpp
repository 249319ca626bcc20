// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ImageEncoder.h"

#include "Support/TestSupport.h"

#include <tiffio.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <vector>

namespace ferrow {

namespace {

using namespace test;

struct Closer {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

std::vector<std::byte> pattern(PixelSize size, PixelFormat format)
{
    std::vector<std::byte> pixels(std::size_t(size.width * size.height * format.bytesPerPixel()));
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = std::byte(i * i / 7);
    return pixels;
}

/// In bands of 5 rows, as callers do, which do not match the strips.
void encode(ByteSink& sink, const EncodeOptions& options)
{
    const auto pixels = pattern(options.size, options.format);
    const auto stride = std::size_t(options.size.width * options.format.bytesPerPixel());
    const auto encoder = openTiffEncoder(sink, options);
    for (std::int64_t y = 0; y < options.size.height; y += 5)
        encoder->writeRows(std::min<std::int64_t>(5, options.size.height - y), pixels.data() + std::size_t(y) * stride,
                           stride);
    encoder->finish();
}

struct Written {
    MemoryFile file;
    std::unique_ptr<TIFF, Closer> tiff;

    explicit Written(const EncodeOptions& options)
    {
        ByteSink sink(file.descriptor());
        encode(sink, options);
        tiff.reset(TIFFFdOpen(::dup(file.descriptor()), "test", "r"));
    }

    [[nodiscard]] QByteArray text(std::uint32_t tag) const
    {
        const char* value = nullptr;
        return TIFFGetField(tiff.get(), tag, &value) == 1 ? QByteArray(value) : QByteArray();
    }
    [[nodiscard]] int number(std::uint32_t tag) const
    {
        std::uint16_t value = 0;
        return TIFFGetField(tiff.get(), tag, &value) == 1 ? value : -1;
    }
    [[nodiscard]] std::vector<int> tags() const
    {
        const QByteArray bytes = file.bytes();
        const auto* raw = reinterpret_cast<const uchar*>(bytes.constData());
        const uchar* table = raw + (raw[4] | raw[5] << 8 | raw[6] << 16);
        std::vector<int> found;
        for (int i = 0; i < (table[0] | table[1] << 8); ++i)
            found.push_back(table[2 + i * 12] | table[3 + i * 12] << 8);
        return found;
    }
};

EncodeOptions options(PixelFormat format)
{
    EncodeOptions made;
    made.size = {701, 523};
    made.format = format;
    made.profile = ColorProfile::displayP3();
    return made;
}

} // namespace

TEST(TiffEncoder, writesPixelsThatAnotherReaderGetsBack)
{
    for (const PixelFormat format : {rgb8, rgba8}) {
        SCOPED_TRACE(format.channels());
        const Written written(options(format));
        ASSERT_TRUE(written.tiff);
        const std::size_t stride = std::size_t(701 * format.channels());
        ASSERT_EQ(TIFFScanlineSize(written.tiff.get()), tmsize_t(stride));
        ASSERT_GT(TIFFNumberOfStrips(written.tiff.get()), 1u);
        const auto pixels = pattern({701, 523}, format);
        std::vector<std::byte> row(stride);
        for (std::uint32_t y = 0; y < 523; ++y) {
            ASSERT_EQ(TIFFReadScanline(written.tiff.get(), row.data(), y, 0), 1);
            ASSERT_TRUE(std::equal(row.begin(), row.end(), pixels.begin() + std::ptrdiff_t(y * stride))) << y;
        }
        std::uint16_t extraCount = 0;
        std::uint16_t* extra = nullptr;
        TIFFGetField(written.tiff.get(), TIFFTAG_EXTRASAMPLES, &extraCount, &extra);
        ASSERT_EQ(extraCount, format.hasAlpha() ? 1 : 0);
        EXPECT_TRUE(!format.hasAlpha() || extra[0] == EXTRASAMPLE_UNASSALPHA);
    }
}

TEST(TiffEncoder, writesTheMetadataAskedForAndNothingElse)
{
    const std::vector<int> always{256, 257, 258, 259, 262, 273, 274, 277, 278, 279, 282, 283, 284, 296, 317, 34675};
    const Written bare(options(rgb8));
    EXPECT_EQ(bare.tags(), always);

    EncodeOptions full = options(rgb8);
    full.metadata = {QStringLiteral("Maker"), QStringLiteral("Model 1"), QString::fromUtf8("J\u00f3n"),
                     QString::fromUtf8("\u00a9 2024"), QStringLiteral("2024:03:05 10:11:12")};
    const Written written(full);
    std::vector<int> all = always;
    all.insert(all.end(), {271, 272, 315, 33432, 34665});
    std::sort(all.begin(), all.end());
    EXPECT_EQ(written.tags(), all);
    EXPECT_EQ(written.number(TIFFTAG_ORIENTATION), 1);
    EXPECT_EQ(written.text(TIFFTAG_MAKE), "Maker");
    EXPECT_EQ(written.text(TIFFTAG_MODEL), "Model 1");
    EXPECT_EQ(written.text(TIFFTAG_ARTIST), "J\xc3\xb3n");
    EXPECT_EQ(written.text(TIFFTAG_COPYRIGHT), "\xc2\xa9 2024");
    std::uint32_t length = 0;
    const char* icc = nullptr;
    ASSERT_EQ(TIFFGetField(written.tiff.get(), TIFFTAG_ICCPROFILE, &length, &icc), 1);
    EXPECT_EQ(QByteArray(icc, length), full.profile.icc());

    std::uint64_t exif = 0;
    ASSERT_EQ(TIFFGetField(written.tiff.get(), TIFFTAG_EXIFIFD, &exif), 1);
    EXPECT_EQ(TIFFNumberOfDirectories(written.tiff.get()), 1);
    ASSERT_EQ(TIFFReadEXIFDirectory(written.tiff.get(), exif), 1);
    EXPECT_EQ(written.text(EXIFTAG_DATETIMEORIGINAL), "2024:03:05 10:11:12");
    EXPECT_EQ(written.number(EXIFTAG_COLORSPACE), 0xffff);
}

TEST(TiffEncoder, takesTheLargeFormatOnlyWherePixelsMayNeedIt)
{
    const auto version = [](PixelSize size) {
        EncodeOptions made = options(rgb8);
        made.size = size;
        const MemoryFile file;
        ByteSink sink(file.descriptor());
        const auto encoder = openTiffEncoder(sink, made);
        sink.flush();
        return int(file.bytes().at(2));
    };
    EXPECT_EQ(version({50'000, 4'000}), 42);
    EXPECT_EQ(version({50'000, 24'000}), 43);
}

TEST(TiffEncoder, tellsWhyWritingFailed)
{
    const int full = ::open("/dev/full", O_RDWR | O_CLOEXEC);
    ASSERT_GE(full, 0);
    ByteSink sink(full);
    try {
        encode(sink, options(rgba8));
        ADD_FAILURE() << "a full device took everything";
    } catch (const EncoderError& error) {
        EXPECT_EQ(error.errorNumber, ENOSPC);
    }
    ::close(full);
}

} // namespace ferrow
