// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/CellPictures.h"

#include "Export/ImageExporter.h"
#include "Imaging/ImageLoader.h"
#include "Persistence/ManagedLogoStore.h"
#include "Session/SessionTestSupport.h"
#include "Support/Pictures.h"

#include <QSignalSpy>

#include <atomic>
#include <cmath>
#include <thread>

namespace ferrow {

namespace {

/// A landscape of soft shapes and slow waves: what a photo is at the size of a cell.
Bitmap landscape(PixelSize size)
{
    Bitmap picture(size, rgb8, ColorProfile::sRGB());
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width; ++x) {
            const double u = double(x) / double(size.width);
            const double v = double(y) / double(size.height);
            const double wave = std::sin(21 * u + 9 * v * v) * std::cos(17 * v);
            std::byte* pixel = picture.row(y) + 3 * x;
            pixel[0] = std::byte(int(120 + 90 * wave));
            pixel[1] = std::byte(int(110 + 80 * u - 25 * wave));
            pixel[2] = std::byte(int(200 - 150 * v));
        }
    return picture;
}

/// Reduced by covering each pixel's area, by nothing that the program has.
QImage reducedByArea(const Bitmap& picture, QSize size)
{
    QImage result(size, QImage::Format_RGB32);
    const int channels = picture.format().bytesPerPixel();
    const double across = double(picture.size().width) / size.width();
    const double down = double(picture.size().height) / size.height();
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            double sums[3] = {};
            double area = 0;
            for (auto row = std::int64_t(y * down);
                 double(row) < std::min((y + 1) * down, double(picture.size().height)); ++row) {
                const double tall = std::min(double(row) + 1, (y + 1) * down) - std::max(double(row), y * down);
                for (auto column = std::int64_t(x * across);
                     double(column) < std::min((x + 1) * across, double(picture.size().width)); ++column) {
                    const double share =
                        tall * (std::min(double(column) + 1, (x + 1) * across) - std::max(double(column), x * across));
                    for (int c = 0; c < 3; ++c)
                        sums[c] += share * std::to_integer<int>(picture.row(row)[column * channels + c]);
                    area += share;
                }
            }
            result.setPixel(x, y,
                            qRgb(int(std::lround(sums[0] / area)), int(std::lround(sums[1] / area)),
                                 int(std::lround(sums[2] / area))));
        }
    return result;
}

double peakSignalToNoise(const QImage& left, const QImage& right)
{
    double sum = 0;
    for (int y = 0; y < left.height(); ++y)
        for (int x = 0; x < left.width(); ++x) {
            const QRgb a = left.pixel(x, y);
            const QRgb b = right.pixel(x, y);
            for (const int difference : {qRed(a) - qRed(b), qGreen(a) - qGreen(b), qBlue(a) - qBlue(b)})
                sum += difference * difference;
        }
    const double mean = sum / (3.0 * left.width() * left.height());
    return mean == 0 ? 100 : 10 * std::log10(255 * 255 / mean);
}

} // namespace

TEST(CellPictures, showTheExportReduced)
{
    struct Row {
        const char* name;
        std::function<void(RenderRecipe&)> change;
    };
    const test::TemporaryFolder home;
    qputenv("XDG_DATA_HOME", home.url().path());
    const FileUrl logoFile =
        home.write("logo.png", test::encoded(OutputType::png, test::flat({300, 120}, rgb8, {200, 30, 60})));
    const LogoAssetReference logo = ManagedLogoStore::importAsset(logoFile);
    const auto caption = [](CaptionPosition position, double size) {
        return [position, size](RenderRecipe& recipe) {
            Caption& first = recipe.captions.front();
            first.isEnabled = true;
            first.setCaptionTemplate(QStringLiteral("Harbor Road · 1987"));
            first.position = position;
            first.fontSize = {size};
        };
    };
    const std::vector<Row> rows{
        {"border", [](RenderRecipe&) {}},
        {"sides",
         [](RenderRecipe& recipe) {
             recipe.border.sides = {30, 61, 250, 7};
         }},
        {"percent",
         [](RenderRecipe& recipe) {
             recipe.border.unit = BorderUnit::percent;
             recipe.border.width = 3.7;
         }},
        {"dark border",
         [](RenderRecipe& recipe) {
             recipe.border.color = {0.02, 0.02, 0.1, 1};
         }},
        {"shape", [](RenderRecipe& recipe) { recipe.border.shape = {.width = 1, .height = 1, .balance = -30}; }},
        {"blurred",
         [](RenderRecipe& recipe) {
             recipe.border.blurredBackground.emplace();
             recipe.border.width = 200;
         }},
        {"line",
         [](RenderRecipe& recipe) {
             recipe.border.line = FrameLine{};
             recipe.border.line->thickness = {9};
         }},
        {"corners", [](RenderRecipe& recipe) { recipe.border.photoEdge.cornerRadius = {70}; }},
        {"shadow", [](RenderRecipe& recipe) { recipe.border.photoEdge.hasShadow = true; }},
        {"caption below", caption(CaptionPosition::borderBottomCenter, 60)},
        {"caption on the photo", caption(CaptionPosition::imageTopLeft, 90)},
        {"logo",
         [&](RenderRecipe& recipe) {
             recipe.logo = LogoConfiguration{};
             recipe.logo->asset = logo;
         }},
    };
    const FileUrl file = home.write("photo.jpg", test::encoded(OutputType::jpeg, landscape({1'503, 1'002})));
    PhotoSession session;
    test::importInto(session, {file});
    ASSERT_EQ(session.photos().size(), 1);
    int number = 0;
    for (const QSize room : {QSize(160, 123), QSize(376, 296)}) {
        CellPictures cells(session);
        cells.setInSight({file}, room);
        for (const Row& row : rows) {
            SCOPED_TRACE(row.name);
            RenderRecipe recipe;
            recipe.border.width = 100;
            recipe.captions.front().isEnabled = false;
            row.change(recipe);
            session.setBatchRecipe(recipe);
            ASSERT_TRUE(test::waitUntil([&] { return !cells.isBusy() && !cells.image(file).isNull(); }));
            BatchExportJob job;
            job.photo = session.photos().front();
            job.recipe = recipe;
            job.settings.format = ExportFormat::png;
            job.destination = home.file("framed" + QByteArray::number(++number) + ".png");
            ImageExporter::exportPhoto(job, {});
            const Bitmap exported = test::decoded(test::readFile(job.destination));
            const QImage cell = cells.image(file);
            EXPECT_TRUE(cell.width() == room.width() || cell.height() == room.height());
            const double ratio = peakSignalToNoise(cell, reducedByArea(exported, cell.size()));
            EXPECT_GE(ratio, 40);
        }
    }
}

namespace {

/// Photos of 600 x 400 without thumbnails, and cells that count what is read of them.
struct Cells : testing::Test {
    std::atomic<int> reads = 0;
    std::atomic<bool> waits = false;
    std::atomic<int> canceled = 0;
    std::atomic<bool> fails = false;
    test::DisklessSession session;
    CellPictures cells{session,
                       {.load = [this](const FileUrl&, std::int64_t dimension,
                                       const std::stop_token& stop) { return read(dimension, stop); },
                        .loadLogo = [](const auto&, const auto&) { return std::optional<Bitmap>(); }}};
    const QSize room{120, 90};

    ~Cells() override { waits = false; }

    Bitmap read(std::int64_t dimension, const std::stop_token& stop)
    {
        ++reads;
        while (waits && !stop.stop_requested())
            std::this_thread::yield();
        if (stop.stop_requested())
            ++canceled;
        throwIfCanceled(stop);
        if (fails)
            throw ImagePipelineError(ImagePipelineError::unreadableFile);
        return test::flat({dimension, dimension * 2 / 3}, rgb8, {90, 90, 90});
    }
    void settle()
    {
        EXPECT_TRUE(test::waitUntil([&] { return !cells.isBusy(); }));
    }
    [[nodiscard]] QColor corner(const FileUrl& photo) const { return cells.image(photo).pixelColor(0, 0); }
    void setBorder(const RGBAColor& color)
    {
        RenderRecipe recipe = test::border(60);
        recipe.captions.front().isEnabled = false;
        recipe.border.color = color;
        session.setBatchRecipe(recipe);
    }
};

} // namespace

TEST_F(Cells, composeEditsFromWhatWasReadAndShowTheOldPictureUntilThen)
{
    const auto photos = test::photoUrls({"a", "b"});
    test::importInto(session, photos);
    setBorder(RGBAColor::white);
    EXPECT_TRUE(cells.image(photos[0]).isNull());
    EXPECT_EQ(reads, 0) << "nothing is in sight";
    cells.setInSight(photos, room);
    settle();
    EXPECT_EQ(reads, 2);
    EXPECT_EQ(corner(photos[1]), QColor(Qt::white));
    setBorder({0, 0, 0, 1});
    EXPECT_EQ(corner(photos[1]), QColor(Qt::white));
    settle();
    EXPECT_EQ(corner(photos[1]), QColor(Qt::black));
    session.setPhotoRecipe(photos[0], test::border(90));
    settle();
    EXPECT_EQ(corner(photos[0]), QColor(Qt::black)) << "own framing without its scope";
    session.setRecipeScope(RecipeScope::selected);
    settle();
    EXPECT_EQ(corner(photos[0]), QColor(Qt::white));
    EXPECT_EQ(corner(photos[1]), QColor(Qt::black));
    EXPECT_EQ(reads, 2);
}

TEST_F(Cells, giveUpWhatGoesOutOfSightAndDoNothingForNobody)
{
    std::vector<FileUrl> photos;
    for (int i = 0; i < 40; ++i)
        photos.push_back(test::photoUrl("p" + QByteArray::number(i)));
    test::importInto(session, photos);
    waits = true;
    cells.setInSight({photos.begin(), photos.begin() + 20}, room);
    ASSERT_TRUE(test::waitUntil([&] { return reads > 0; }));
    cells.setInSight({photos.begin() + 20, photos.end()}, room);
    waits = false;
    settle();
    EXPECT_GT(canceled, 0);
    EXPECT_LE(reads, 20 + canceled);
    EXPECT_TRUE(cells.image(photos[19]).isNull());
    EXPECT_FALSE(cells.image(photos[39]).isNull());
    const int before = reads;
    cells.setInSight({}, {});
    setBorder({0, 0, 0, 1});
    EXPECT_FALSE(cells.isBusy());
    cells.setInSight({photos[39]}, room);
    settle();
    EXPECT_EQ(corner(photos[39]), QColor(Qt::black));
    EXPECT_EQ(reads, before);
}

TEST_F(Cells, tellOfWhatCantBeReadAndTryItOnce)
{
    const auto photos = test::photoUrls({"a"});
    test::importInto(session, photos);
    const QSignalSpy unreadable(&cells, &CellPictures::unreadable);
    fails = true;
    cells.setInSight(photos, room);
    settle();
    EXPECT_EQ(unreadable.size(), 1);
    cells.setInSight({}, {});
    cells.setInSight(photos, room);
    EXPECT_FALSE(cells.isBusy());
    EXPECT_EQ(reads, 1);
}

} // namespace ferrow
