// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/InProcessAnswerer.h"

#include "Engine/PhotoRows.h"
#include "Engine/PictureSummary.h"
#include "Platform/Base/Cancellation.h"
#include "Support/Pictures.h"
#include "Support/PipelineErrors.h"

#include <cmath>

#include <cstring>
#include <tuple>

namespace ferrow::Engine {

namespace {

using Error = ImagePipelineError;
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
    request.composition.photoX = request.composition.photoY = border;
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

/// The photo's rows reduced to `size`, read `atOnce` rows at a time.
Bitmap rowsOf(OpenedPhoto& photo, PixelSize size, std::int64_t atOnce)
{
    PhotoRows rows(photo, ColorProfile::sRGB(), size);
    Bitmap picture(rows.size(), rows.format(), ColorProfile::sRGB());
    for (std::int64_t y = 0; y < picture.size().height; y += atOnce)
        rows.readRows(std::min(atOnce, picture.size().height - y), picture.row(y), picture.stride());
    rows.finish();
    return picture;
}

Bitmap rowsOf(const QByteArray& bytes, PixelSize size, std::int64_t atOnce)
{
    const MemoryFile file(bytes);
    OpenedPhoto photo = openPhoto(sourceOf(file), decodingFor(size));
    return rowsOf(photo, size, atOnce);
}

double signalToNoise(const Bitmap& a, const Bitmap& b)
{
    double squares = 0;
    const PixelSize size = a.size();
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width * 3; ++x)
            squares += std::pow(component(a, x / 3, y, int(x % 3)) - component(b, x / 3, y, int(x % 3)), 2);
    return 10 * std::log10(255.0 * 255 * double(size.width * size.height * 3) / squares);
}

Error::Case failureOf(const QByteArray& source, PixelSize size)
{
    return test::pipelineErrorOf([&] { return framedBytes(source, size, 4, ExportFormat::png); });
}

} // namespace

TEST(Framing, everyFormatReopensWithCanvasSizeAndProfile)
{
    const QByteArray photo = test::encoded(OutputType::jpeg, test::flat({64, 48}, rgb8, {200, 30, 60}));
    for (const ExportFormat format : allCases<ExportFormat>()) {
        SCOPED_TRACE(rawValue(format).toStdString());
        const Bitmap framed = test::decoded(framedBytes(photo, {64, 48}, 8, format, {0, 0, 1, 1}));
        ASSERT_EQ(framed.size(), (PixelSize{80, 64}));
        EXPECT_TRUE(framed.profile().isEquivalentTo(ColorProfile::sRGB()));
        EXPECT_NEAR(component(framed, 40, 32, 0), 200, 4);
        EXPECT_NEAR(component(framed, 1, 1, 2), 255, 4);
    }
}

TEST(Framing, keepsSixteenBitsUntouchedAndWidensEight)
{
    struct Row {
        const char* name;
        PixelFormat photo;
        OutputType source;
    };
    const Row rows[] = {{"PNG", rgb16, OutputType::png},
                        {"TIFF", rgb16, OutputType::tiff},
                        {"PNG with alpha", rgba16, OutputType::png},
                        {"TIFF with alpha", rgba16, OutputType::tiff},
                        {"8 bits", rgb8, OutputType::png},
                        {"8 bits with alpha", rgba8, OutputType::tiff}};
    for (const Row& row : rows)
        for (const ExportFormat format : {ExportFormat::png, ExportFormat::tiff})
            for (const int orientation : {1, 6}) {
                SCOPED_TRACE(testing::Message()
                             << row.name << " to " << rawValue(format).toStdString() << ' ' << orientation);
                if (orientation != 1 && row.source == OutputType::png)
                    continue;
                const Bitmap photo = test::noise({31, 23}, row.photo);
                QByteArray source = test::encoded(row.source, photo);
                if (orientation != 1)
                    source = test::withOrientation(source, orientation);
                const Bitmap wide = row.photo.bitsPerComponent == 16 ? photo : test::widened(photo);
                const Bitmap upright = oriented(wide, orientation);
                const double alpha = row.photo.hasAlpha() ? 0 : 1; // Over nothing even straight colors stay.
                const MemoryFile in(source);
                const MemoryFile out;
                FrameRequest request = requestFor(in, out, upright.size(), 3);
                request.format = format;
                request.depth = BitDepth::sixteen;
                request.composition.borderColor = {0.2, 0.4, 0.00003, alpha};
                InProcessAnswerer().frame(request, {});
                const Bitmap framed = test::decoded(out.bytes());
                EXPECT_EQ(framed.format(), rgbFormat(16, row.photo.hasAlpha()));
                EXPECT_TRUE(test::holdsAt(framed, 3, 3, upright));
                const int border[] = {13107, 26214, 2};
                for (int c = 0; c < 3; ++c)
                    EXPECT_EQ(component(framed, 1, 1, c), border[c]);
            }
}

TEST(Framing, readsBackWhetherEveryBitOfSixteenIsThere)
{
    for (const ExportFormat format : {ExportFormat::png, ExportFormat::tiff}) {
        Bitmap photo = test::noise({31, 23}, rgb16);
        const MemoryFile in(test::encoded(OutputType::png, photo));
        const MemoryFile out;
        FrameRequest request = requestFor(in, out, photo.size(), 0);
        request.format = format;
        request.depth = BitDepth::sixteen;
        request.summarizes = true;
        const std::optional<PictureSummary> written = InProcessAnswerer().frame(request, {});
        ASSERT_TRUE(written);
        const auto isRead = [&](const QByteArray& bytes) {
            const MemoryFile file(bytes);
            return isSamePicture(*written, InProcessAnswerer().readBack({sourceOf(file), format}, {}), format, 1);
        };
        EXPECT_TRUE(isRead(out.bytes()));
        photo.row(11)[50] ^= std::byte{1}; // The lowest bit of a component.
        EXPECT_FALSE(isRead(test::encoded(format == ExportFormat::png ? OutputType::png : OutputType::tiff, photo)));
    }
}

TEST(Framing, givesHeicTenBitsAndReadsThemBack)
{
    const Bitmap photo = test::flat({64, 64}, rgb16, {20000, 30000, 40100}); // The last half between two levels of 8.
    const MemoryFile in(test::encoded(OutputType::tiff, photo));
    const MemoryFile out;
    FrameRequest request = requestFor(in, out, photo.size(), 8);
    request.format = ExportFormat::heic;
    request.quality = 1;
    request.depth = BitDepth::ten;
    request.summarizes = true;
    const std::optional<PictureSummary> written = InProcessAnswerer().frame(request, {});
    ASSERT_TRUE(written);
    const Bitmap framed = test::decoded(out.bytes());
    EXPECT_EQ(framed.format(), rgb16);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(component(framed, 40, 40, c), component(photo, 32, 32, c), 100) << c;
    const PictureSummary read = InProcessAnswerer().readBack({sourceOf(out), ExportFormat::heic}, {});
    EXPECT_TRUE(isSamePicture(*written, read, ExportFormat::heic, 1));
}

TEST(Framing, alphaIsKeptWhereSomethingCanBeTransparentAndFlattenedForJpeg)
{
    const QByteArray opaque = test::encoded(OutputType::png, test::flat({16, 16}, rgb8, {10, 20, 30}));
    const QByteArray clear = test::encoded(OutputType::png, test::flat({16, 16}, rgba8, {200, 100, 0, 128}));
    const RGBAColor glass{1, 0, 0, 0.5};
    for (const ExportFormat format : {ExportFormat::png, ExportFormat::tiff, ExportFormat::heic}) {
        SCOPED_TRACE(rawValue(format).toStdString());
        const auto hasAlpha = [format](const QByteArray& source, const RGBAColor& border) {
            return test::decoded(framedBytes(source, {16, 16}, 4, format, border)).format().hasAlpha();
        };
        EXPECT_FALSE(hasAlpha(opaque, RGBAColor::white));
        EXPECT_TRUE(hasAlpha(opaque, glass));
        EXPECT_TRUE(hasAlpha(clear, RGBAColor::white));
    }
    const Bitmap flattened = test::decoded(framedBytes(clear, {16, 16}, 8, ExportFormat::jpeg, {1, 0, 0, 0}));
    EXPECT_NEAR(component(flattened, 1, 1, 1), 255, 3) << "a clear border over white";
    EXPECT_NEAR(component(flattened, 16, 16, 1), 177, 6) << "100 at half opacity over white";
}

TEST(Framing, allOrientationsComeOutUprightAndEveryPixelInPlace)
{
    const Bitmap stored = test::noise({33, 20}, rgb8, 5);
    const QByteArray tiff = test::encoded(OutputType::tiff, stored);
    for (int orientation = 1; orientation <= 8; ++orientation)
        for (const ExportFormat format : {ExportFormat::png, ExportFormat::tiff}) {
            SCOPED_TRACE(orientation);
            const Bitmap upright = oriented(stored, orientation);
            const MemoryFile output(framedBytes(test::withOrientation(tiff, orientation), upright.size(), 5, format));
            const Bitmap framed = test::decoded(output.bytes());
            ASSERT_EQ(framed.size().width, upright.size().width + 10);
            EXPECT_TRUE(test::holdsAt(framed, 5, 5, upright));
            EXPECT_EQ(openPhoto(sourceOf(output), {}).orientation, 1) << "the output must not be turned again";
        }
}

TEST(Framing, aTurnedPhotoIsItsOwnBackgroundUpright)
{
    // Left half dark, right half bright, to be turned clockwise: dark above, also behind itself.
    Bitmap stored = test::flat({60, 40}, rgb8, {220, 220, 220});
    for (std::int64_t y = 0; y < 40; ++y)
        std::memset(stored.row(y), 20, 30 * 3);
    const MemoryFile source(test::withOrientation(test::encoded(OutputType::tiff, stored), 6));
    const MemoryFile output;
    FrameRequest request = requestFor(source, output, {40, 60}, 20);
    request.composition.blurredPhoto = BlurredPhoto{2, 1};
    request.format = ExportFormat::png;
    InProcessAnswerer().frame(request, {});
    const Bitmap framed = test::decoded(output.bytes());
    ASSERT_EQ(framed.size(), (PixelSize{80, 100}));
    for (const auto& [x, y, level] : {std::tuple(40, 5, 20), {5, 30, 20}, {75, 70, 220}, {40, 95, 220}})
        EXPECT_NEAR(component(framed, x, y, 1), level, 2) << x << ' ' << y;
}

TEST(Framing, refusesWhatIsNotTheWholePhoto)
{
    const Bitmap photo = test::noise({80, 60}, rgb8);
    for (const OutputType type : {OutputType::jpeg, OutputType::png, OutputType::tiff}) {
        const QByteArray whole = test::encoded(type, photo);
        for (const int percent : {40, 60, 80, 95}) {
            SCOPED_TRACE(percent);
            const auto failure = failureOf(whole.left(whole.size() * percent / 100), photo.size());
            EXPECT_TRUE(failure == Error(Error::decodingFailed).value || failure == Error(Error::malformedImage).value);
        }
    }
    EXPECT_EQ(failureOf(test::encoded(OutputType::png, photo), {80, 61}),
              Error(Error::FullResolutionMismatch{{80, 61}, {80, 60}}).value);
    EXPECT_EQ(std::get<Error::UnsupportedType>(failureOf("GIF89a\1\0\1\0\0\0\0;", {1, 1})).type,
              QStringLiteral("GIF image"));
}

TEST(Framing, heedsAStopWhileItsBackgroundIsRead)
{
    struct StopsAfterHeader : JobObserver {
        std::stop_source stop;
        void headerRead(const JobSize&) override { stop.request_stop(); }
    } observer;
    const PixelSize size{80, 60};
    const QByteArray whole = test::encoded(OutputType::png, test::noise(size, rgb8));
    // Whoever reads on gets no further than to its damage.
    const MemoryFile cut(whole.left(whole.size() / 2));
    const MemoryFile output;
    FrameRequest request = requestFor(cut, output, size, 5);
    request.composition.blurredPhoto = BlurredPhoto{2, 1};
    EXPECT_THROW(InProcessAnswerer(observer).frame(request, observer.stop.get_token()), Canceled);
}

TEST(Framing, heedsAStopAndReportsAFullDisk)
{
    const MemoryFile source(test::encoded(OutputType::png, test::noise({50, 50}, rgb8)));
    FrameRequest request = requestFor(source, MemoryFile(), {50, 50}, 5);
    request.outputDescriptor = ::open("/dev/full", O_RDWR | O_CLOEXEC);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(InProcessAnswerer().frame(request, stop.get_token()), Canceled);
    for (const ExportFormat format : allCases<ExportFormat>()) {
        SCOPED_TRACE(rawValue(format).toStdString());
        request.format = format;
        EXPECT_EQ(test::pipelineErrorOf([&] { InProcessAnswerer().frame(request, {}); }),
                  Error(Error::OutputWriteFailed{rawValue(format), SystemError{ENOSPC, {}}}).value);
    }
    ::close(request.outputDescriptor);
}

TEST(Framing, keepsThePhotosDataOrSaysThatItCannot)
{
    constexpr PixelSize size{48, 32};
    Bitmap picture = test::noise(size, rgb8, 3);
    const QByteArray photo = test::encoded(OutputType::jpeg, picture);
    const auto frame = [&](const QByteArray& source, const std::function<void(FrameRequest&)>& change) {
        const MemoryFile in(source);
        const MemoryFile out;
        FrameRequest request = requestFor(in, out, size, 16);
        request.keepsPhotoData = true;
        change(request);
        InProcessAnswerer().frame(request, {});
        return out.bytes();
    };
    const QByteArray bytes = frame(photo, [](FrameRequest& request) {
        request.composition.line = PhotoLine{4, 4, RGBAColor::black};
        request.composition.photoArea = {16, 16, 64, 48, 0};
        request.composition.overlays.push_back({test::flat({8, 8}, rgba8Premultiplied, {255, 0, 0, 255}), 16, 16, 1});
        request.metadata.artist = QStringLiteral("Ada");
    });
    const Bitmap framed = test::decoded(bytes);
    ASSERT_EQ(framed.size(), (PixelSize{80, 64}));
    EXPECT_TRUE(framed.profile().isEquivalentTo(ColorProfile::sRGB()));
    EXPECT_TRUE(bytes.contains("Ada"));
    const Bitmap decoded = test::decoded(photo);
    EXPECT_EQ(component(framed, 40, 30, 1), component(decoded, 24, 14, 1));
    EXPECT_EQ(component(framed, 63, 47, 2), component(decoded, 47, 31, 2));
    EXPECT_NEAR(component(framed, 20, 20, 0), 255, 8) << "the overlay";
    EXPECT_NEAR(component(framed, 20, 20, 1), 0, 8);
    EXPECT_NEAR(component(framed, 10, 30, 1), 0, 12) << "the line";
    EXPECT_EQ(component(framed, 2, 2, 1), 255);

    const std::pair<const char*, std::function<void(FrameRequest&)>> refused[]{
        {"off the grid", [](FrameRequest& request) { request.composition.photoX = 12; }},
        {"colors", [](FrameRequest& r) { r.composition.colorProfile = OutputColorProfile::displayP3; }},
        {"translucent", [](FrameRequest& request) { request.composition.borderColor.alpha = 0.5; }},
        {"blurred",
         [](FrameRequest& request) {
             request.composition.blurredPhoto = BlurredPhoto{2, 1};
         }},
        {"corners",
         [](FrameRequest& request) {
             request.composition.photoArea = {16, 16, 64, 48, 5};
         }},
        {"smaller",
         [](FrameRequest& request) {
             request.composition.photoSize = {24, 16};
         }},
        {"PNG", [](FrameRequest& request) { request.format = ExportFormat::png; }},
    };
    for (const auto& [name, change] : refused)
        EXPECT_THROW(frame(photo, change), CannotKeep) << name;
    EXPECT_THROW(frame(test::encoded(OutputType::png, picture), [](auto&) {}), CannotKeep);
    EXPECT_EQ(test::pipelineErrorOf([&] { frame(photo.left(photo.size() / 2), [](auto&) {}); }),
              Error(Error::decodingFailed).value);
    EXPECT_EQ(test::pipelineErrorOf([&] { frame(photo, [](FrameRequest& r) {
                                              r.expectedSize = {32, 48};
                                          }); }),
              Error(Error::FullResolutionMismatch{{32, 48}, size}).value);
}

TEST(Framing, reducesThePhotoToItsPlaceInAnyOrientation)
{
    const Bitmap stored = test::noise({66, 40}, rgb8, 5);
    const QByteArray tiff = test::encoded(OutputType::tiff, stored);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const PixelSize size = swapsDimensions(orientation) ? PixelSize{20, 33} : PixelSize{33, 20};
        // The reduced picture without a turn is what the pixels are, and the whole pictures show where they belong.
        const Bitmap reduced = rowsOf(test::withOrientation(tiff, orientation), size, 64);
        EXPECT_TRUE(test::samePixels(reduced, oriented(rowsOf(tiff, {33, 20}, 64), orientation)));
        EXPECT_TRUE(test::samePixels(reduced, rowsOf(test::withOrientation(tiff, orientation), size, 1)))
            << "the bytes do not depend on the bands";

        const MemoryFile in(test::withOrientation(tiff, orientation));
        const MemoryFile out;
        FrameRequest request = requestFor(in, out, oriented(stored, orientation).size(), 5);
        request.composition.photoSize = size;
        request.composition.canvasSize = {size.width + 10, size.height + 10};
        request.format = ExportFormat::png;
        InProcessAnswerer().frame(request, {});
        const Bitmap framed = test::decoded(out.bytes());
        ASSERT_EQ(framed.size(), request.composition.canvasSize);
        EXPECT_TRUE(test::holdsAt(framed, 5, 5, reduced));
        EXPECT_EQ(component(framed, 5 + int(size.width), 5, 0), 255);
    }
}

TEST(Framing, decodesAtHalfSizeOnlyWhereAQuarterMoreIsLeft)
{
    // As photos are: the finer a structure, the fainter, with some grain.
    Bitmap photo = test::noise({801, 603}, rgb8, 3);
    for (std::int64_t y = 0; y < 603; ++y)
        for (std::int64_t x = 0; x < 801 * 3; ++x) {
            double level = 100 + std::to_integer<int>(photo.row(y)[x]) / 64;
            for (const double length : {300.0, 90.0, 27.0, 8.0})
                level += 5 * std::sqrt(length) * std::sin((double(x / 3) + 2 * double(y)) / length * 2);
            photo.row(y)[x] = std::byte(std::clamp(int(level), 0, 255));
        }
    const QByteArray jpeg = test::encoded(OutputType::jpeg, photo);
    const MemoryFile file(jpeg);
    for (const auto& [size, decoded] : {std::pair<PixelSize, PixelSize>{{320, 241}, {401, 302}},
                                        {{321, 242}, {801, 603}},
                                        {{100, 75}, {401, 302}},
                                        {{801, 603}, {801, 603}},
                                        {{}, {801, 603}}})
        EXPECT_EQ(openPhoto(sourceOf(file), decodingFor(size)).decoder->size(), decoded) << size.width;
    OpenedPhoto whole = openPhoto(sourceOf(file), {});
    const double decibels = signalToNoise(rowsOf(jpeg, {320, 241}, 64), rowsOf(whole, {320, 241}, 64));
    EXPECT_GT(decibels, 45);
    EXPECT_LT(decibels, 90) << "it was decoded whole";
}

TEST(Region, equalsThatPartOfTheWholePicture)
{
    const Bitmap photo = test::noise({40, 30}, rgb8);
    const MemoryFile source(test::encoded(OutputType::png, photo));
    const MemoryFile output;
    const FrameRequest whole = requestFor(source, output, {40, 30}, 6);
    const Bitmap framed = test::decoded(framedBytes(source.bytes(), {40, 30}, 6, ExportFormat::png));
    // Reaches below the canvas: what is there is answered.
    const RegionRequest request{whole.source, whole.expectedSize, whole.composition, 3, 25, {20, 100}};
    const Bitmap region = InProcessAnswerer().composeRegion(request, {});
    ASSERT_EQ(region.size(), (PixelSize{20, 17}));
    EXPECT_TRUE(test::holdsAt(framed, 3, 25, region));
    EXPECT_TRUE(test::holdsAt(framed, 6, 6, photo));
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
