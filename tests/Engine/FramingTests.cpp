// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/InProcessAnswerer.h"

#include "Engine/PhotoRows.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Support/Pictures.h"

namespace ferrow::Engine {

namespace {

using test::component;
using test::MemoryFile;

SourceFile sourceOf(const MemoryFile& file)
{
    return {file.descriptor(), file.size()};
}

FrameRequest requestFor(const MemoryFile& source, const MemoryFile& output, PixelSize size, int border)
{
    FrameRequest request;
    request.source = sourceOf(source);
    request.outputDescriptor = output.descriptor();
    request.expectedSize = size;
    request.composition.canvasSize = {size.width + 2 * border, size.height + 2 * border};
    request.composition.photoX = border;
    request.composition.photoY = border;
    request.composition.borderColor = RGBAColor::white;
    return request;
}

QByteArray framedBytes(const QByteArray& source, PixelSize size, int border, ExportFormat format,
                       const RGBAColor& color = RGBAColor::white)
{
    const MemoryFile in(source);
    const MemoryFile out;
    FrameRequest request = requestFor(in, out, size, border);
    request.format = format;
    request.composition.borderColor = color;
    InProcessAnswerer().frame(request, {});
    return out.bytes();
}

ImagePipelineError::Case failureOf(const QByteArray& source, PixelSize size)
{
    try {
        framedBytes(source, size, 4, ExportFormat::png);
    } catch (const ImagePipelineError& error) {
        return error.value;
    }
    throw std::runtime_error("it did not fail");
}

} // namespace

TEST(Framing, losslessFormatsKeepEveryPixelOfThePhoto)
{
    const Bitmap photo = test::noise({61, 43}, rgb8);
    for (const OutputType source : {OutputType::png, OutputType::tiff})
        for (const ExportFormat format : {ExportFormat::png, ExportFormat::tiff}) {
            SCOPED_TRACE(rawValue(format).toStdString());
            const Bitmap framed = test::decoded(framedBytes(test::encoded(source, photo), photo.size(), 7, format));
            ASSERT_EQ(framed.size(), (PixelSize{75, 57}));
            ASSERT_EQ(framed.format(), rgb8);
            EXPECT_EQ(component(framed, 0, 0, 0), 255);
            for (std::int64_t y = 0; y < 43; ++y)
                ASSERT_EQ(std::memcmp(framed.row(y + 7) + 21, photo.row(y), 61 * 3), 0) << y;
        }
}

TEST(Framing, everyFormatReopensWithCanvasSizeAndProfile)
{
    const QByteArray photo = test::encoded(OutputType::jpeg, test::flat({64, 48}, rgb8, {200, 30, 60}));
    for (const ExportFormat format : allCases<ExportFormat>()) {
        SCOPED_TRACE(rawValue(format).toStdString());
        const Bitmap framed = test::decoded(framedBytes(photo, {64, 48}, 8, format, {0, 0, 1, 1}));
        ASSERT_EQ(framed.size(), (PixelSize{80, 64}));
        EXPECT_TRUE(framed.profile().isEquivalentTo(ColorProfile::sRGB()));
        EXPECT_NEAR(component(framed, 40, 32, 0), 200, 4);
        EXPECT_NEAR(component(framed, 40, 32, 1), 30, 4);
        EXPECT_NEAR(component(framed, 1, 1, 2), 255, 4);
    }
}

TEST(Framing, alphaIsKeptWhereSomethingCanBeTransparentAndFlattenedForJpeg)
{
    const QByteArray opaque = test::encoded(OutputType::png, test::flat({16, 16}, rgb8, {10, 20, 30}));
    const QByteArray clear = test::encoded(OutputType::png, test::flat({16, 16}, rgba8, {200, 100, 0, 128}));
    const RGBAColor glass{1, 0, 0, 0.5};
    const struct {
        const char* name;
        QByteArray source;
        RGBAColor border;
        bool hasAlpha;
    } rows[] = {{"opaque", opaque, RGBAColor::white, false},
                {"border", opaque, glass, true},
                {"photo", clear, RGBAColor::white, true},
                {"both", clear, glass, true}};
    for (const auto& row : rows)
        for (const ExportFormat format : {ExportFormat::png, ExportFormat::tiff, ExportFormat::heic}) {
            SCOPED_TRACE(row.name + rawValue(format).toStdString());
            EXPECT_EQ(test::decoded(framedBytes(row.source, {16, 16}, 4, format, row.border)).format().hasAlpha(),
                      row.hasAlpha);
        }
    const Bitmap flattened = test::decoded(framedBytes(clear, {16, 16}, 8, ExportFormat::jpeg, {1, 0, 0, 0}));
    EXPECT_NEAR(component(flattened, 1, 1, 1), 255, 3) << "a clear border over white";
    EXPECT_NEAR(component(flattened, 16, 16, 1), 177, 6) << "100 at half opacity over white";
}

TEST(Framing, allOrientationsComeOutUpright)
{
    const Bitmap stored = test::noise({33, 20}, rgb8, 5);
    const QByteArray tiff = test::encoded(OutputType::tiff, stored);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const Bitmap upright = oriented(stored, orientation);
        const QByteArray output =
            framedBytes(test::withOrientation(tiff, orientation), upright.size(), 5, ExportFormat::png);
        const Bitmap framed = test::decoded(output);
        ASSERT_EQ(framed.size().width, upright.size().width + 10);
        for (std::int64_t y = 0; y < upright.size().height; ++y)
            ASSERT_EQ(std::memcmp(framed.row(y + 5) + 15, upright.row(y), std::size_t(upright.size().width) * 3), 0)
                << y;
        const MemoryFile file(output);
        EXPECT_EQ(openPhoto(sourceOf(file), {}).orientation, 1) << "the output must not be turned again";
    }
}

TEST(Framing, refusesWhatIsNotTheWholePhoto)
{
    const Bitmap photo = test::noise({80, 60}, rgb8);
    for (const OutputType type : {OutputType::jpeg, OutputType::png, OutputType::tiff}) {
        const QByteArray whole = test::encoded(type, photo);
        for (const int percent : {40, 60, 80, 95}) {
            SCOPED_TRACE(percent);
            const auto failure = failureOf(whole.left(whole.size() * percent / 100), photo.size());
            ASSERT_TRUE(std::holds_alternative<ImagePipelineError::Plain>(failure));
            const auto plain = std::get<ImagePipelineError::Plain>(failure);
            EXPECT_TRUE(plain == ImagePipelineError::decodingFailed || plain == ImagePipelineError::malformedImage);
        }
    }
    EXPECT_EQ(std::get<ImagePipelineError::FullResolutionMismatch>(
                  failureOf(test::encoded(OutputType::png, photo), {80, 61})),
              (ImagePipelineError::FullResolutionMismatch{{80, 61}, {80, 60}}));
    EXPECT_EQ(std::get<ImagePipelineError::UnsupportedType>(failureOf("GIF89a\1\0\1\0\0\0\0;", {1, 1})).type,
              QStringLiteral("GIF image"));
}

TEST(Framing, heedsAStopAndReportsAFullDisk)
{
    const MemoryFile source(test::encoded(OutputType::png, test::noise({50, 50}, rgb8)));
    const MemoryFile output;
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(InProcessAnswerer().frame(requestFor(source, output, {50, 50}, 5), stop.get_token()), Cancelled);

    const int full = ::open("/dev/full", O_RDWR | O_CLOEXEC);
    ASSERT_GE(full, 0);
    for (const ExportFormat format : allCases<ExportFormat>()) {
        SCOPED_TRACE(rawValue(format).toStdString());
        FrameRequest request = requestFor(source, output, {50, 50}, 5);
        request.outputDescriptor = full;
        request.format = format;
        try {
            InProcessAnswerer().frame(request, {});
            ADD_FAILURE() << "a full disk was not noticed";
        } catch (const ImagePipelineError& error) {
            EXPECT_EQ(std::get<ImagePipelineError::EncodingFailed>(error.value).format, rawValue(format));
        }
    }
    ::close(full);
}

TEST(Region, equalsThatPartOfTheWholePicture)
{
    const MemoryFile source(test::encoded(OutputType::png, test::noise({40, 30}, rgb8)));
    const MemoryFile output;
    const FrameRequest whole = requestFor(source, output, {40, 30}, 6);
    const Bitmap framed = test::decoded(framedBytes(source.bytes(), {40, 30}, 6, ExportFormat::png));
    RegionRequest request{.source = whole.source, .expectedSize = whole.expectedSize, .composition = whole.composition};
    request.x = 3;
    request.y = 25;
    request.size = {20, 100}; // Reaches below the canvas: what is there is answered.
    const Bitmap region = InProcessAnswerer().composeRegion(request, {});
    ASSERT_EQ(region.size(), (PixelSize{20, 17}));
    for (std::int64_t y = 0; y < 17; ++y)
        EXPECT_EQ(std::memcmp(region.row(y), framed.row(y + 25) + 9, 60), 0) << y;
}

TEST(Inspect, givesUprightSizeAndAReducedUprightPicture)
{
    // Left half black, right half white, to be turned clockwise: black on top.
    Bitmap stored = test::flat({1200, 600}, rgb8, {255, 255, 255});
    for (std::int64_t y = 0; y < 600; ++y)
        std::memset(stored.row(y), 0, 600 * 3);
    for (const OutputType type : {OutputType::tiff, OutputType::jpeg}) {
        const MemoryFile file(test::withOrientation(test::encoded(type, stored), 6));
        const InspectAnswer answer = InProcessAnswerer().inspect({sourceOf(file), 100}, {});
        EXPECT_EQ(answer.storedSize, (PixelSize{1200, 600}));
        EXPECT_EQ(answer.uprightSize, (PixelSize{600, 1200}));
        ASSERT_EQ(answer.picture.size(), (PixelSize{50, 100}));
        EXPECT_LT(component(answer.picture, 25, 20, 0), 6);
        EXPECT_GT(component(answer.picture, 25, 80, 0), 249);
        EXPECT_TRUE(InProcessAnswerer().inspect({sourceOf(file), 0}, {}).picture.isNull());
    }
}

} // namespace ferrow::Engine
