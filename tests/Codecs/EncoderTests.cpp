// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ExifBlock.h"

#include "Codecs/CodecTesting.h"

#include <exiv2/exiv2.hpp>

namespace ferrow {

namespace {

using namespace test;

constexpr PixelSize oddSize{451, 333};

struct Type {
    OutputType output;
    FileType file;
    int loss; ///< Of the best quality, in levels.
};

constexpr Type types[]{{OutputType::jpeg, FileType::jpeg, 6},
                       {OutputType::png, FileType::png, 0},
                       {OutputType::tiff, FileType::tiff, 0},
                       {OutputType::heif, FileType::heif, 12}};

} // namespace

TEST(Encoder, isReadBackAsWritten)
{
    for (const Type& type : types)
        for (const PixelFormat format : {rgb8, rgba8})
            for (const PixelSize size : {oddSize, PixelSize{1, 1}, {7, 5}, {3, 500}}) {
                if (type.output == OutputType::jpeg && format.hasAlpha())
                    continue;
                SCOPED_TRACE(testing::Message() << int(type.output) << ' ' << format.channels() << ' ' << size.width);
                EncodeOptions options = optionsFor(size, format);
                options.profile = size == oddSize ? longProfile() : ColorProfile::displayP3();
                const Pixels pixels = picture(size, format.channels());
                const Decoded decoded = decodeAs(type.file, encode(type.output, options, pixels));
                EXPECT_EQ(decoded.format, format);
                EXPECT_EQ(decoded.profile, options.profile);
                EXPECT_LE(worstDifference(decoded.pixels, pixels), type.loss);
            }
}

TEST(Encoder, writesMetadataForOtherReadersAndNothingElse)
{
    EncodeOptions options = optionsFor({101, 67});
    options.profile = ColorProfile::sRGB();
    const Pixels pixels = picture(options.size, 3);
    const auto exifOf = [&](OutputType type) {
        const QByteArray file = encode(type, options, pixels);
        const auto* bytes = reinterpret_cast<const Exiv2::byte*>(file.constData());
        const auto image = Exiv2::ImageFactory::open(bytes, long(file.size()));
        image->readMetadata();
        EXPECT_TRUE(image->xmpData().empty() && image->iptcData().empty());
        return image->exifData();
    };
    // TIFF's texts are in the file's own directory, and its Exif directory comes with the date.
    for (const auto& [type, more, most] :
         {std::tuple(OutputType::jpeg, 5, 6'000), {OutputType::png, 5, 6'000}, {OutputType::tiff, 9, 20'000}}) {
        SCOPED_TRACE(int(type));
        options.metadata = {};
        const long least = exifOf(type).count();
        options.metadata = {QStringLiteral("Fabrikat"), QStringLiteral("Modell\0 7"), QStringLiteral("Jón Þór"),
                            QString(20'000, QChar(u'é')), QStringLiteral("2024:07:19 09:14:31")};
        Exiv2::ExifData exif = exifOf(type);
        const auto text = [&](const char* key) { return exif[key].toString(); };
        EXPECT_EQ(exif.count(), least + more);
        EXPECT_EQ(text("Exif.Image.Model"), "Modell");
        EXPECT_EQ(text("Exif.Image.Artist"), "Jón Þór");
        EXPECT_TRUE(text("Exif.Image.Copyright") == QString(most, QChar(u'é')).toStdString());
        EXPECT_EQ(text("Exif.Image.Orientation"), "1");
        EXPECT_EQ(text("Exif.Photo.DateTimeOriginal"), "2024:07:19 09:14:31");
        EXPECT_EQ(text("Exif.Photo.ColorSpace"), "1");
    }
    EXPECT_TRUE(
        encode(OutputType::heif, options, pixels).contains(makeExifBlock(options.metadata, options.size, true)));
}

TEST(Encoder, tellsWhyWritingFailed)
{
    for (const Type& type : types) {
        const int full = ::open("/dev/full", O_RDWR | O_CLOEXEC);
        ByteSink sink(full);
        try {
            encode(type.output, sink, optionsFor(oddSize), picture(oddSize, 3));
            ADD_FAILURE() << int(type.output);
        } catch (const EncoderError& error) {
            EXPECT_EQ(error.errorNumber, ENOSPC) << int(type.output);
        }
        ::close(full);
    }
}

TEST(TiffEncoder, takesTheLargeFormatOnlyWherePixelsMayNeedIt)
{
    for (const std::int64_t height : {4'000, 24'000}) {
        const MemoryFile file;
        ByteSink sink(file.descriptor());
        const auto encoder = openTiffEncoder(sink, optionsFor({50'000, height}));
        sink.flush();
        EXPECT_EQ(int(file.bytes().at(2)), height == 4'000 ? 42 : 43);
    }
}

TEST(HeifEncoder, refusesSidesThatItsReadersRefuse)
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    EXPECT_THROW(openHeifEncoder(sink, optionsFor({heifMaximumSide + 1, 1})), EncoderError);
    const PixelSize largest{heifMaximumSide, 2};
    EXPECT_EQ(decodeAs(FileType::heif, encode(OutputType::heif, optionsFor(largest), picture(largest, 3))).size,
              largest);
}

TEST(HeifEncoder, keepsSaturatedColorsAndSpendsBytesOnQuality)
{
    EncodeOptions options = optionsFor({64, 64});
    for (const Components& color : {Components{255, 255, 255}, {0, 0, 0}, {255, 0, 0}, {0, 0, 255}, {128, 128, 128}}) {
        Pixels pixels;
        for (int i = 0; i < 64 * 64; ++i)
            pixels.insert(pixels.end(), color.begin(), color.end());
        const Decoded decoded = decodeAs(FileType::heif, encode(OutputType::heif, options, pixels));
        EXPECT_LE(worstDifference(decoded.at(20, 40), color), 2) << testing::PrintToString(color);
    }
    const Pixels pixels = picture(options.size, 3);
    const qsizetype best = encode(OutputType::heif, options, pixels).size();
    options.quality = 0.5;
    EXPECT_LT(encode(OutputType::heif, options, pixels).size(), best);
}

} // namespace ferrow
