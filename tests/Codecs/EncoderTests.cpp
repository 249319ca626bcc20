// SPDX-License-Identifier: GPL-3.0-or-later
#include "Codecs/CodecTesting.h"

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
        for (const PixelFormat format : {rgb8, rgba8, rgb16, rgba16})
            for (const PixelSize size : {oddSize, PixelSize{1, 1}, {7, 5}, {3, 500}}) {
                if ((type.output == OutputType::jpeg && format != rgb8) ||
                    (type.loss > 0 && format.bitsPerComponent > 8))
                    continue;
                SCOPED_TRACE(testing::Message() << int(type.output) << ' ' << format.channels() << ' ' << size.width);
                EncodeOptions options = optionsFor(size, format);
                options.profile = size == oddSize ? longProfile() : ColorProfile::displayP3();
                const Pixels pixels = picture(size, format.bytesPerPixel());
                const Decoded decoded = decodeAs(type.file, encode(type.output, options, pixels));
                EXPECT_EQ(decoded.format, format);
                EXPECT_EQ(decoded.profile, options.profile);
                EXPECT_LE(worstDifference(decoded.pixels, pixels), type.loss);
            }
}

TEST(Encoder, cutsTextsThatNoBlockHolds)
{
    EncodeOptions options = optionsFor({7, 5});
    options.metadata.copyright = QString(50'000, QChar(u'é'));
    for (const Type& type : types)
        EXPECT_EQ(decodeAs(type.file, encode(type.output, options, picture(options.size, 3))).profile, options.profile);
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
    EXPECT_THROW(static_cast<void>(openHeifEncoder(sink, optionsFor({heifMaximumSide + 1, 1}))), EncoderError);
    const PixelSize largest{heifMaximumSide, 2};
    EXPECT_EQ(decodeAs(FileType::heif, encode(OutputType::heif, optionsFor(largest), picture(largest, 3))).size,
              largest);
}

TEST(HeifEncoder, keepsTenBitsOfSixteen)
{
    const PixelSize size{128, 64};
    Pixels ramp;
    for (int i = 0; i < 128 * 64; ++i)
        for (int c = 0; c < 3; ++c) {
            const int level = 20000 + i % 128 * 48; // Steps of less than a level of ten bits, a fifth of one of eight.
            ramp.insert(ramp.end(), {Pixels::value_type(level & 0xff), Pixels::value_type(level >> 8)});
        }
    const Decoded decoded = decodeAs(FileType::heif, encode(OutputType::heif, optionsFor(size, rgb16), ramp));
    ASSERT_EQ(decoded.format, rgb16);
    for (int x = 0; x < 128; ++x)
        EXPECT_NEAR(decoded.at(x, 31)[1], 20000 + x * 48, 100) << x; // A level of eight bits is 257.
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
