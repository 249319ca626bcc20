// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ImageExporter.h"

#include "Engine/InProcessAnswerer.h"
#include "Files/OrdinaryUser.h"
#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FileAccess.h"
#include "Support/Pictures.h"

#include <gmock/gmock.h>

#include <QDir>

#include <exiv2/exiv2.hpp>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <limits>

namespace ferrow {

namespace {

using Error = ImagePipelineError;

/// Frames as this process does, with something happening right before or after.
class Meddler : public Engine::InProcessAnswerer {
public:
    std::function<void(const Engine::FrameRequest&)> before = [](const auto&) {};
    std::function<void()> after = [] {};

    void frame(const Engine::FrameRequest& request, const std::stop_token& stop) override
    {
        before(request);
        InProcessAnswerer::frame(request, stop);
        after();
    }
};

RenderRecipe plainRecipe()
{
    RenderRecipe recipe;
    recipe.borderWidth = 10;
    recipe.captionEnabled = false;
    return recipe;
}

QByteArray photoBytes(PixelSize size = {60, 40})
{
    return test::encoded(OutputType::jpeg, test::noise(size, rgb8));
}

/// What must not change about a source.
struct FileState {
    QByteArray bytes;
    mode_t mode = 0;
    timespec modified{};

    explicit FileState(const FileUrl& url) : bytes(test::readFile(url))
    {
        struct stat status {};
        EXPECT_EQ(::lstat(url.path().constData(), &status), 0);
        mode = status.st_mode;
        modified = status.st_mtim;
    }
    bool operator==(const FileState& other) const
    {
        return bytes == other.bytes && mode == other.mode && modified.tv_sec == other.modified.tv_sec &&
               modified.tv_nsec == other.modified.tv_nsec;
    }
};

class ImageExporterTest : public testing::Test {
protected:
    ImageExporterTest()
    {
        auto made = std::make_unique<Meddler>();
        meddler = made.get();
        Engine::setAnswerer(std::move(made));
        ::mkdir(folder.file("sources").path().constData(), 0777);
        ::mkdir(output.path().constData(), 0777);
    }
    ~ImageExporterTest() override { Engine::setAnswerer(std::make_unique<Engine::InProcessAnswerer>()); }

    FileUrl writeSource(const QByteArray& bytes) const { return folder.write("sources/photo.jpg", bytes); }
    [[nodiscard]] QStringList namesInOutput() const
    {
        return QDir(output.displayPath())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    void frame(const ImportedPhoto& photo, const FileUrl& place, bool replace = false,
               const ExportSettings& settings = {}) const
    {
        ImageExporter::exportPhoto(photo, plainRecipe(), settings, place, replace, stop.get_token());
    }
    /// The error of framing `photo` to `destination`.
    [[nodiscard]] Error::Case failure(const ImportedPhoto& photo, const FileUrl& place, bool replace = false,
                                      const ExportSettings& settings = {}) const
    {
        try {
            frame(photo, place, replace, settings);
        } catch (const Error& error) {
            return error.value;
        }
        throw std::runtime_error("it was exported");
    }

    test::TemporaryFolder folder;
    FileUrl output = folder.file("out");
    FileUrl destination = output.appending("framed.jpg");
    Meddler* meddler = nullptr;
    std::stop_source stop;
};

const ExportFormat allFormats[] = {ExportFormat::jpeg, ExportFormat::png, ExportFormat::tiff, ExportFormat::heic};

} // namespace

TEST_F(ImageExporterTest, refusesTheSourceUnderAnySpelling)
{
    const FileUrl source = writeSource(photoBytes());
    const ImportedPhoto photo = ImageLoader::load(source, 0);
    const auto link = [&](const QByteArray& target, const QByteArray& name) {
        EXPECT_EQ(::symlink(target.constData(), folder.file(name).path().constData()), 0);
    };
    ::mkdir(folder.file("sources/deep").path().constData(), 0777);
    link("../sources/photo.jpg", "out/link.jpg");
    link("link.jpg", "out/linkToLink.jpg");
    link("sources", "folderLink");
    link("sources/deep", "deepLink");
    ASSERT_EQ(::link(source.path().constData(), folder.file("out/hard.jpg").path().constData()), 0);
    const FileState before(source);
    const QStringList names = namesInOutput();
    for (const char* name :
         {"sources/photo.jpg", "sources//./photo.jpg", "sources/../sources/photo.jpg", "none/../sources/photo.jpg",
          "out/link.jpg", "out/linkToLink.jpg", "folderLink/photo.jpg", "deepLink/../photo.jpg", "out/hard.jpg"})
        for (const bool replace : {false, true}) {
            SCOPED_TRACE(std::string(name) + (replace ? ", replacing" : ""));
            EXPECT_EQ(failure(photo, folder.file(name), replace), Error(Error::destinationIsSource).value);
        }
    EXPECT_EQ(FileState(source), before);
    EXPECT_EQ(namesInOutput(), names);
}

TEST_F(ImageExporterTest, leavesAnExistingFileAloneAlsoOneThatAppearsMeanwhile)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes()), 0);
    folder.write("out/framed.jpg", "mine");
    EXPECT_EQ(failure(photo, destination), Error(Error::destinationExists).value);
    EXPECT_EQ(test::readFile(destination), "mine");

    ASSERT_EQ(::symlink("nowhere", output.appending("dangling.jpg").path().constData()), 0);
    EXPECT_EQ(failure(photo, output.appending("dangling.jpg")), Error(Error::destinationExists).value);

    meddler->before = [this](const auto&) { folder.write("out/late.jpg", "theirs"); };
    EXPECT_EQ(failure(photo, output.appending("late.jpg")), Error(Error::destinationExists).value);
    EXPECT_EQ(test::readFile(output.appending("late.jpg")), "theirs");
    EXPECT_EQ(namesInOutput(),
              (QStringList{QStringLiteral("dangling.jpg"), QStringLiteral("framed.jpg"), QStringLiteral("late.jpg")}));
}

TEST_F(ImageExporterTest, replacesAsAWholeAndLeavesTheSourceAsItWas)
{
    const FileUrl source = writeSource(photoBytes());
    ASSERT_EQ(::chmod(source.path().constData(), 0440), 0);
    const FileState before(source);
    folder.write("out/framed.jpg", "old");
    const OpenedFile reader = OpenedFile::open(destination);
    frame(ImageLoader::load(source, 0), destination, true);

    // Who had the old file open still reads it whole: nothing was written into it.
    std::byte old[8]{};
    EXPECT_EQ(reader.source().readAt(0, old), 3u);
    EXPECT_EQ(std::memcmp(old, "old", 3), 0);
    EXPECT_EQ(test::decoded(test::readFile(destination)).size(), (PixelSize{80, 60}));
    EXPECT_EQ(FileState(source), before);
    EXPECT_EQ(namesInOutput(), QStringList{QStringLiteral("framed.jpg")});
}

TEST_F(ImageExporterTest, leavesNothingBehindWhenItFails)
{
    const QByteArray whole = photoBytes({600, 400});
    const ImportedPhoto photo = ImageLoader::load(writeSource(whole), 0);

    writeSource(whole.left(whole.size() / 2));
    const Error::Case truncated = failure(photo, destination);
    EXPECT_TRUE(truncated == Error(Error::malformedImage).value || truncated == Error(Error::decodingFailed).value);

    writeSource(photoBytes({601, 400}));
    EXPECT_EQ(failure(photo, destination), Error(Error::FullResolutionMismatch{{600, 400}, {601, 400}}).value);

    writeSource(whole);
    ASSERT_EQ(::truncate(photo.url.path().constData(), 0), 0);
    EXPECT_ANY_THROW(frame(photo, destination));
    ASSERT_EQ(::unlink(photo.url.path().constData()), 0);
    EXPECT_EQ(failure(photo, destination), Error(Error::unreadableFile).value);

    writeSource(whole);
    RenderRecipe missingLogo = plainRecipe();
    missingLogo.logo = LogoConfiguration::placeholder();
    missingLogo.logo->asset.managedFilename = QStringLiteral("none.png");
    EXPECT_THROW(ImageExporter::exportPhoto(photo, missingLogo, {}, destination, false, {}, folder.url()),
                 LogoAssetError);

    EXPECT_EQ(failure(photo, folder.file("none/framed.jpg")),
              Error(Error::EncodingFailed{QStringLiteral("JPEG")}).value);
    ASSERT_EQ(::mkdir(output.appending("folder.jpg").path().constData(), 0777), 0);
    EXPECT_EQ(failure(photo, output.appending("folder.jpg"), true),
              Error(Error::OutputWriteFailed{QStringLiteral("JPEG")}).value);
    EXPECT_EQ(namesInOutput(), QStringList{QStringLiteral("folder.jpg")});
}

TEST_F(ImageExporterTest, saysThatAFullDiskOrClosedFolderFailedTheEncodingOfEachFormat)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes({300, 200})), 0);
    const FileState before(photo.url);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    ::getrlimit(RLIMIT_FSIZE, &unlimited);
    for (const ExportFormat format : allFormats) {
        SCOPED_TRACE(rawValue(format).toStdString());
        const rlimit limit{1'500, unlimited.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const Error::Case full = failure(photo, destination, false, {.format = format});
        ::setrlimit(RLIMIT_FSIZE, &unlimited);
        EXPECT_EQ(full, Error(Error::EncodingFailed{rawValue(format)}).value);
    }
    std::signal(SIGXFSZ, handler);

    ::chmod(output.path().constData(), 0555);
    {
        const test::OrdinaryUser user(folder.url());
        EXPECT_EQ(failure(photo, destination), Error(Error::EncodingFailed{QStringLiteral("JPEG")}).value);
    }
    ::chmod(output.path().constData(), 0755);
    EXPECT_EQ(FileState(photo.url), before);
    EXPECT_TRUE(namesInOutput().isEmpty());
}

TEST_F(ImageExporterTest, failsOnASourceThatChangesAndHeedsAStopUntilTheLastRow)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes()), 0);
    meddler->after = [&] {
        const timespec times[] = {{1, 0}, {1, 0}};
        ::utimensat(AT_FDCWD, photo.url.path().constData(), times, 0);
    };
    EXPECT_EQ(failure(photo, destination), Error(Error::decodingFailed).value);
    meddler->after = [] {};

    meddler->before = [this](const Engine::FrameRequest& request) {
        EXPECT_EQ(::write(request.outputDescriptor, "half", 4), 4);
        stop.request_stop();
    };
    EXPECT_THROW(frame(photo, destination), Cancelled);
    EXPECT_TRUE(namesInOutput().isEmpty());

    stop = {};
    meddler->before = [](const auto&) {};
    meddler->after = [this] { stop.request_stop(); };
    frame(photo, destination);
    EXPECT_EQ(namesInOutput(), QStringList{QStringLiteral("framed.jpg")});
}

namespace {

/// The Exif block inside an output of any format: each holds it as it is.
Exiv2::ExifData exifOf(const QByteArray& file)
{
    const qsizetype little = file.indexOf(QByteArray("II*\0", 4));
    const qsizetype big = file.indexOf(QByteArray("MM\0*", 4));
    const qsizetype start = little < 0 ? big : big < 0 ? little : std::min(little, big);
    Exiv2::ExifData data;
    if (start >= 0)
        Exiv2::ExifParser::decode(data, reinterpret_cast<const Exiv2::byte*>(file.constData()) + start,
                                  std::uint32_t(file.size() - start));
    return data;
}

std::string valueOf(const Exiv2::ExifData& data, const char* key)
{
    const auto found = data.findKey(Exiv2::ExifKey(key));
    return found == data.end() ? "absent" : found->toString();
}

} // namespace

TEST_F(ImageExporterTest, writesTheSafeMetadataAndNothingElseInEveryFormat)
{
    const FileUrl source = writeSource(photoBytes());
    {
        const auto image = Exiv2::ImageFactory::open(source.path().toStdString());
        Exiv2::ExifData exif;
        exif["Exif.Image.Make"] = "Café";
        exif["Exif.Image.Model"] = "Модель 5";
        exif["Exif.Image.Artist"] = "Jón Ærø 山";
        exif["Exif.Image.Copyright"] = "© 2024 Zoë";
        exif["Exif.Photo.DateTimeOriginal"] = "2024:07:01 12:34:56";
        exif["Exif.Photo.BodySerialNumber"] = "SECRET1";
        exif["Exif.Photo.UserComment"] = "charset=Ascii SECRET2";
        exif["Exif.Image.Software"] = "SECRET3";
        exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
        exif["Exif.GPSInfo.GPSLatitude"] = "52/1 31/1 0/1";
        exif["Exif.GPSInfo.GPSMapDatum"] = "SECRET4";
        image->setExifData(exif);
        Exiv2::IptcData iptc;
        iptc["Iptc.Application2.Keywords"] = "SECRET5";
        image->setIptcData(iptc);
        Exiv2::XmpData xmp;
        xmp["Xmp.dc.subject"] = "SECRET6";
        image->setXmpData(xmp);
        image->writeMetadata();
    }
    ASSERT_TRUE(test::readFile(source).contains("SECRET4"));
    const ImportedPhoto photo = ImageLoader::load(source, 0);
    ImportedPhoto bare = photo;
    bare.metadata = {};
    for (const ExportFormat format : allFormats) {
        SCOPED_TRACE(rawValue(format).toStdString());
        frame(photo, destination, true, {.format = format});
        const QByteArray file = test::readFile(destination);
        const Exiv2::ExifData exif = exifOf(file);
        EXPECT_EQ(valueOf(exif, "Exif.Image.Make"), "Café");
        EXPECT_EQ(valueOf(exif, "Exif.Image.Model"), "Модель 5");
        EXPECT_EQ(valueOf(exif, "Exif.Image.Artist"), "Jón Ærø 山");
        EXPECT_EQ(valueOf(exif, "Exif.Image.Copyright"), "© 2024 Zoë");
        EXPECT_EQ(valueOf(exif, "Exif.Photo.DateTimeOriginal"), "2024:07:01 12:34:56");
        EXPECT_EQ(valueOf(exif, "Exif.Image.Orientation"), "1");
        EXPECT_EQ(valueOf(exif, "Exif.Image.GPSTag"), "absent");
        EXPECT_FALSE(file.contains("SECRET"));
        std::vector<std::string> exifTags;
        for (const auto& datum : exif) {
            EXPECT_NE(datum.groupName(), "GPSInfo");
            EXPECT_NE(datum.groupName(), "Thumbnail");
            if (datum.groupName() == "Photo")
                exifTags.push_back(datum.tagName());
        }
        EXPECT_THAT(exifTags,
                    testing::IsSubsetOf({"ExifVersion", "DateTimeOriginal", "ComponentsConfiguration",
                                         "FlashpixVersion", "ColorSpace", "PixelXDimension", "PixelYDimension"}));

        frame(bare, destination, true, {.format = format});
        const Exiv2::ExifData none = exifOf(test::readFile(destination));
        EXPECT_EQ(valueOf(none, "Exif.Image.Orientation"), "1");
        for (const char* key : {"Exif.Image.Make", "Exif.Image.Model", "Exif.Image.Artist", "Exif.Image.Copyright",
                                "Exif.Photo.DateTimeOriginal"})
            EXPECT_EQ(valueOf(none, key), "absent");
    }
}

TEST_F(ImageExporterTest, bringsTheQualityIntoItsRange)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes()), 0);
    double asked = -1;
    meddler->before = [&asked](const Engine::FrameRequest& request) { asked = request.quality; };
    const auto exported = [&](ExportFormat format, double quality) {
        frame(photo, destination, true, {.format = format, .quality = quality});
        return test::readFile(destination);
    };
    for (const ExportFormat format : allFormats) {
        SCOPED_TRACE(rawValue(format).toStdString());
        const QByteArray best = exported(format, 1);
        const QByteArray worst = exported(format, 0);
        EXPECT_EQ(best != worst, supportsQuality(format));
        EXPECT_EQ(exported(format, 1.7), best);
        EXPECT_EQ(exported(format, -0.2), worst);
        EXPECT_EQ(exported(format, std::numeric_limits<double>::quiet_NaN()), worst);
        EXPECT_EQ(asked, 0);
    }
}

TEST_F(ImageExporterTest, drawsTheLogoFromTheFolderItIsGiven)
{
    const FileUrl managed = folder.file("managed");
    const FileUrl picked =
        folder.write("logo.png", test::encoded(OutputType::png, test::flat({30, 30}, rgb8, {200, 0, 0})));
    RenderRecipe recipe = plainRecipe();
    recipe.logo = LogoConfiguration{ManagedLogoStore::importAsset(picked, managed)};
    recipe.logo->position = CaptionPosition::imageTopLeft;
    recipe.logo->widthPercent = 50;
    recipe.logo->horizontalPadding = recipe.logo->verticalPadding = 0;
    const QByteArray green = test::encoded(OutputType::png, test::flat({60, 40}, rgb8, {0, 99, 0}));
    const ImportedPhoto photo = ImageLoader::load(writeSource(green), 0);
    ImageExporter::exportPhoto(photo, recipe, {.format = ExportFormat::png}, destination, false, {}, managed);

    const Bitmap framed = test::decoded(test::readFile(destination));
    ASSERT_EQ(framed.size(), (PixelSize{80, 60}));
    EXPECT_EQ(test::component(framed, 5, 5, 1), 255);
    EXPECT_NEAR(test::component(framed, 20, 20, 0), 200, 1);
    EXPECT_EQ(test::component(framed, 60, 20, 0), 0);
    EXPECT_NEAR(test::component(framed, 60, 20, 1), 99, 1);
}

} // namespace ferrow
