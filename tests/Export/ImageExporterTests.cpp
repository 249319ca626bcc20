// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ImageExporter.h"

#include "Engine/InProcessAnswerer.h"
#include "Files/OrdinaryUser.h"
#include "Imaging/ImageLoader.h"
#include "Persistence/ManagedLogoStore.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/FileAccess.h"
#include "Platform/Files/FileStatus.h"
#include "Support/Files.h"
#include "Support/Pictures.h"
#include "Support/PipelineErrors.h"

#include <exiv2/exiv2.hpp>
#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <map>

namespace ferrow {

namespace {

using Error = ImagePipelineError;

/// Frames as this process does, with something happening right before or after.
class Meddler : public Engine::InProcessAnswerer {
public:
    std::function<void(const Engine::FrameRequest&)> before = [](const auto&) {};
    std::function<void()> after = [] {};

    std::optional<Engine::PictureSummary> frame(const Engine::FrameRequest& request,
                                                const std::stop_token& stop) override
    {
        before(request);
        auto summary = InProcessAnswerer::frame(request, stop);
        after();
        return summary;
    }
};

RenderRecipe plainRecipe()
{
    RenderRecipe recipe;
    recipe.border.width = 10;
    recipe.captions.front().isEnabled = false;
    return recipe;
}

QByteArray photoBytes(PixelSize size = {60, 40})
{
    return test::encoded(OutputType::jpeg, test::noise(size, rgb8));
}

/// What must not change about a source.
QByteArray stateOf(const FileUrl& url)
{
    struct stat status {};
    EXPECT_EQ(::lstat(url.path().constData(), &status), 0);
    return test::readFile(url) + QByteArray::number(status.st_mode) + ' ' +
           QByteArray::number(qint64(status.st_mtime)) + ' ' + QByteArray::number(qint64(status.st_mtim.tv_nsec));
}

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
    void frame(const ImportedPhoto& photo, const FileUrl& place, bool replace = false,
               const ExportSettings& settings = {}) const
    {
        ImageExporter::exportPhoto({photo, plainRecipe(), settings, place, replace}, stop.get_token());
    }
    [[nodiscard]] Error::Case failure(const ImportedPhoto& photo, const FileUrl& place, bool replace = false,
                                      const ExportSettings& settings = {}) const
    {
        return test::pipelineErrorOf([&] { frame(photo, place, replace, settings); });
    }

    [[nodiscard]] std::optional<SystemError> systemError(const ImportedPhoto& photo, const FileUrl& place,
                                                         bool replace = false) const
    {
        return test::errorOf<SystemError>([&] { return frame(photo, place, replace), 0; });
    }

    test::TemporaryFolder folder;
    FileUrl output = folder.file("out");
    FileUrl destination = output.appending("framed.jpg");
    Meddler* meddler = nullptr;
    std::stop_source stop;
};

RenderRecipe keptRecipe()
{
    RenderRecipe recipe = plainRecipe();
    recipe.border.width = 20;
    return recipe;
}

const ExportFormat allFormats[] = {ExportFormat::jpeg, ExportFormat::png, ExportFormat::tiff, ExportFormat::heic};

} // namespace

TEST_F(ImageExporterTest, refusesTheSourceUnderAnySpelling)
{
    const FileUrl source = writeSource(photoBytes());
    const ImportedPhoto photo = ImageLoader::load(source, 0);
    ::mkdir(folder.file("sources/deep").path().constData(), 0777);
    test::makeLink(folder.file("out/link.jpg"), "../sources/photo.jpg");
    test::makeLink(folder.file("out/linkToLink.jpg"), "link.jpg");
    test::makeLink(folder.file("folderLink"), "sources");
    test::makeLink(folder.file("deepLink"), "sources/deep");
    ASSERT_EQ(::link(source.path().constData(), folder.file("out/hard.jpg").path().constData()), 0);
    const QByteArray before = stateOf(source);
    const QStringList names = test::namesIn(output);
    for (const char* name :
         {"sources/photo.jpg", "sources//./photo.jpg", "sources/../sources/photo.jpg", "none/../sources/photo.jpg",
          "out/link.jpg", "out/linkToLink.jpg", "folderLink/photo.jpg", "deepLink/../photo.jpg", "out/hard.jpg"})
        for (const bool replace : {false, true}) {
            SCOPED_TRACE(std::string(name) + (replace ? ", replacing" : ""));
            EXPECT_EQ(failure(photo, folder.file(name), replace), Error(Error::destinationIsSource).value);
        }
    EXPECT_EQ(stateOf(source), before);
    EXPECT_EQ(test::namesIn(output), names);
}

TEST_F(ImageExporterTest, leavesAnExistingFileAloneAlsoOneThatAppearsMeanwhile)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes()), 0);
    folder.write("out/framed.jpg", "mine");
    EXPECT_EQ(failure(photo, destination), Error(Error::destinationExists).value);
    EXPECT_EQ(test::readFile(destination), "mine");

    test::makeLink(output.appending("dangling.jpg"), "nowhere");
    EXPECT_EQ(failure(photo, output.appending("dangling.jpg")), Error(Error::destinationExists).value);

    meddler->before = [this](const auto&) { folder.write("out/late.jpg", "theirs"); };
    EXPECT_EQ(failure(photo, output.appending("late.jpg")), Error(Error::destinationExists).value);
    EXPECT_EQ(test::readFile(output.appending("late.jpg")), "theirs");
    EXPECT_EQ(test::namesIn(output),
              (QStringList{QStringLiteral("dangling.jpg"), QStringLiteral("framed.jpg"), QStringLiteral("late.jpg")}));
}

TEST_F(ImageExporterTest, replacesAsAWholeAndLeavesTheSourceAsItWas)
{
    const FileUrl source = writeSource(photoBytes());
    test::setMode(source, 0440);
    const QByteArray before = stateOf(source);
    folder.write("out/framed.jpg", "old");
    test::setMode(destination, 0604);
    const OpenedFile reader = OpenedFile::open(destination);
    frame(ImageLoader::load(source, 0), destination, true);

    // Who had the old file open still reads it whole: nothing was written into it.
    std::byte old[8]{};
    EXPECT_EQ(reader.source().readAt(0, old), 3u);
    EXPECT_EQ(std::memcmp(old, "old", 3), 0);
    EXPECT_EQ(test::decoded(test::readFile(destination)).size(), (PixelSize{80, 60}));
    struct stat replaced {};
    EXPECT_EQ(::stat(destination.path().constData(), &replaced), 0);
    EXPECT_EQ(replaced.st_mode & 07777, 0604u);
    EXPECT_EQ(stateOf(source), before);
    EXPECT_EQ(test::namesIn(output), QStringList{QStringLiteral("framed.jpg")});
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
    // Seen before there is a file for the output: a folder that can't have one is not even asked.
    for (const FileUrl& place : {destination, folder.file("missing/framed.jpg")})
        EXPECT_THROW(ImageExporter::exportPhoto({photo, missingLogo, {}, place}, {}, folder.url()), LogoAssetError);

    meddler->before = [](const auto&) { ADD_FAILURE() << "framed for nothing"; };
    const FileUrl none = folder.file("none");
    EXPECT_EQ(systemError(photo, none.appending("framed.jpg")), (SystemError{ENOENT, none}));
    const FileUrl inTheWay = output.appending("folder.jpg");
    ASSERT_EQ(::mkdir(inTheWay.path().constData(), 0777), 0);
    EXPECT_EQ(systemError(photo, inTheWay, true), (SystemError{EISDIR, inTheWay}));
    EXPECT_EQ(test::namesIn(output), QStringList{QStringLiteral("folder.jpg")});
}

TEST_F(ImageExporterTest, saysWhenItWaitsForTheDiskAlone)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes()), 0);
    int told = 0;
    const auto framed = [&] {
        ++told;
        EXPECT_EQ(lookUp(destination), ENOENT);
        std::vector<FileUrl> staged;
        for (const auto& entry : std::filesystem::directory_iterator(output.path().toStdString()))
            staged.push_back(FileUrl::fromPath(QByteArray::fromStdString(entry.path().string())));
        ASSERT_EQ(staged.size(), 1u);
        EXPECT_GT(ImageLoader::load(staged.front(), 0).pixelSize.width, 60);
    };
    ImageExporter::exportPhoto({photo, plainRecipe(), {}, destination}, {}, {}, framed);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(lookUp(destination), 0);
}

TEST_F(ImageExporterTest, saysWhyEachFormatCouldNotBeWritten)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes({300, 200})), 0);
    const QByteArray before = stateOf(photo.url);
    for (const ExportFormat format : allFormats) {
        test::setMode(output, 0777);
        {
            const test::FileSizeLimit limit(1'500);
            EXPECT_EQ(failure(photo, destination, false, {.format = format}),
                      Error(Error::OutputWriteFailed{rawValue(format), SystemError{EFBIG, destination}}).value);
        }
        test::setMode(output, 0555);
        const test::OrdinaryUser user(folder.url());
        EXPECT_EQ(systemError(photo, destination), (SystemError{EACCES, output}));
    }
    test::setMode(output, 0777);
    EXPECT_EQ(stateOf(photo.url), before);
    EXPECT_TRUE(test::namesIn(output).isEmpty());
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
    EXPECT_THROW(frame(photo, destination), Canceled);
    EXPECT_TRUE(test::namesIn(output).isEmpty());

    stop = {};
    meddler->before = [](const auto&) {};
    meddler->after = [this] { stop.request_stop(); };
    frame(photo, destination);
    EXPECT_EQ(test::namesIn(output), QStringList{QStringLiteral("framed.jpg")});
}

TEST_F(ImageExporterTest, readsAFileBackBeforeItGetsItsName)
{
    const PixelSize canvas{340, 260};
    const Bitmap flat = test::flat({320, 240}, rgb8, {200, 90, 40});
    const ImportedPhoto photo = ImageLoader::load(writeSource(test::encoded(OutputType::png, flat)), 0);
    const auto patched = [](const QByteArray& file, int rows, int bytes, std::byte change) {
        Bitmap picture = test::decoded(file);
        for (int y = 60; y < 60 + rows; ++y)
            for (int x = 90; x < 90 + bytes; ++x)
                picture.row(y)[x] ^= change;
        return picture;
    };
    struct Row {
        const char* name;
        std::function<QByteArray(const QByteArray& file, OutputType type)> change;
        bool isSeen = true;
        bool losslessAlone = false;
    };
    const Row rows[] = {
        {"as it was written", [](const auto& file, OutputType) { return file; }, false},
        {"cut short", [](const auto& file, OutputType) { return file.chopped(file.size() / 3); }},
        {"empty", [](const auto&, OutputType) { return QByteArray(); }},
        {"no picture", [](const auto& file, OutputType) { return QByteArray(file.size(), 'x'); }},
        {"another picture",
         [&](const auto&, OutputType type) {
             return test::encoded(type, test::flat(canvas, rgb8, {90, 200, 40}));
         }},
        {"a spot in it",
         [&](const auto& file, OutputType type) { return test::encoded(type, patched(file, 20, 60, std::byte{64})); }},
        {"one level of one byte",
         [&](const auto& file, OutputType type) { return test::encoded(type, patched(file, 1, 1, std::byte{1})); },
         true, true},
        {"another size",
         [&](const auto&, OutputType type) {
             return test::encoded(type, test::flat({canvas.width, canvas.height + 1}, rgb8, {200, 90, 40}));
         }},
        {"other colors",
         [&](const auto& file, OutputType type) {
             Bitmap picture(canvas, rgb8, ColorProfile::displayP3());
             std::memcpy(picture.row(0), test::decoded(file).row(0), picture.stride() * std::size_t(canvas.height));
             return test::encoded(type, picture);
         }},
        {"another format",
         [](const auto& file, OutputType type) {
             return test::encoded(type == OutputType::png ? OutputType::tiff : OutputType::png, test::decoded(file));
         },
         true, true},
    };
    for (const ExportFormat format : allFormats)
        for (const Row& row : rows) {
            if (row.losslessAlone && supportsQuality(format))
                continue;
            SCOPED_TRACE(rawValue(format).toStdString() + ", " + row.name);
            meddler->after = [&] {
                const QByteArray staged = "out/" + test::namesIn(output).constFirst().toUtf8();
                folder.write(staged, row.change(test::readFile(folder.file(staged)), OutputType(format)));
            };
            const ExportSettings settings{.format = format, .checksWritten = true};
            if (row.isSeen)
                EXPECT_EQ(failure(photo, destination, true, settings), Error(Error::writtenFileDiffers).value);
            else
                frame(photo, destination, true, settings);
            EXPECT_EQ(test::exists(destination), !row.isSeen);
            EXPECT_EQ(test::namesIn(output).size(), row.isSeen ? 0 : 1);
            ::unlink(destination.path().constData());
        }
}

TEST_F(ImageExporterTest, noticesAPlaceForAPositionInAWrittenFile)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes()), 0);
    for (const ExportFormat format : {ExportFormat::jpeg, ExportFormat::png, ExportFormat::tiff})
        for (const char* tag : {"GPS", "XMP", "orientation"}) {
            SCOPED_TRACE(rawValue(format).toStdString() + ", " + tag);
            meddler->after = [&] {
                const FileUrl staged = output.appending(test::namesIn(output).constFirst().toUtf8());
                const auto image = Exiv2::ImageFactory::open(staged.path().toStdString());
                image->readMetadata();
                if (tag == std::string("GPS"))
                    image->exifData()["Exif.GPSInfo.GPSLatitude"] = "52/1 31/1 0/1";
                else if (tag == std::string("XMP"))
                    image->xmpData()["Xmp.exif.GPSLatitude"] = "52,31N";
                else
                    image->exifData()["Exif.Image.Orientation"] = std::uint16_t(6);
                image->writeMetadata();
            };
            EXPECT_EQ(failure(photo, destination, false, {.format = format, .checksWritten = true}),
                      Error(Error::writtenFileDiffers).value);
            EXPECT_TRUE(test::namesIn(output).isEmpty());
        }
}

TEST_F(ImageExporterTest, writesTheSafeMetadataAndNothingElseInEveryFormat)
{
    using Values = std::map<std::string, std::string>;
    const Values safe{{"Exif.Image.Make", "Café"},
                      {"Exif.Image.Model", "Модель 5"},
                      {"Exif.Image.Artist", "Jón Ærø 山"},
                      {"Exif.Image.Copyright", "© 2024 Zoë"},
                      {"Exif.Photo.DateTimeOriginal", "2024:07:01 12:34:56"}};
    const FileUrl source = writeSource(photoBytes());
    const auto image = Exiv2::ImageFactory::open(source.path().toStdString());
    for (const auto& [key, value] : safe)
        image->exifData()[key] = value;
    image->exifData()["Exif.Photo.BodySerialNumber"] = "SECRET1";
    image->exifData()["Exif.Photo.UserComment"] = "charset=Ascii SECRET2";
    image->exifData()["Exif.Image.Software"] = "SECRET3";
    image->exifData()["Exif.GPSInfo.GPSLatitude"] = "52/1 31/1 0/1";
    image->exifData()["Exif.GPSInfo.GPSMapDatum"] = "SECRET4";
    image->iptcData()["Iptc.Application2.Keywords"] = "SECRET5";
    image->xmpData()["Xmp.dc.subject"] = "SECRET6";
    image->writeMetadata();
    for (const char number : {'1', '2', '3', '4', '5', '6'})
        ASSERT_TRUE(test::readFile(source).contains(QByteArray("SECRET") + number));
    ImportedPhoto photo = ImageLoader::load(source, 0);
    ImportedPhoto bare = photo;
    bare.metadata = {};
    photo.corrections = {{MetadataField::artist, QStringLiteral("For captions")}, {MetadataField::captureDate, {}}};

    // Every format holds the Exif block as it is.
    const auto written = [&](const ImportedPhoto& from, ExportFormat format) {
        frame(from, destination, true, {.format = format});
        const QByteArray file = test::readFile(destination);
        EXPECT_FALSE(file.contains("SECRET"));
        const std::size_t little = std::size_t(file.indexOf(QByteArray("II*\0", 4)));
        const std::size_t big = std::size_t(file.indexOf(QByteArray("MM\0*", 4)));
        const std::size_t start = std::min(little, big);
        Exiv2::ExifData exif;
        Exiv2::ExifParser::decode(exif, reinterpret_cast<const Exiv2::byte*>(file.constData()) + start,
                                  std::uint32_t(std::size_t(file.size()) - start));
        EXPECT_EQ(exif["Exif.Image.Orientation"].toString(), "1");
        Values texts;
        for (const auto& datum : exif) {
            EXPECT_THAT(datum.groupName(), testing::AnyOf("Image", "Photo"));
            EXPECT_NE(datum.key(), "Exif.Image.GPSTag");
            if (datum.typeId() == Exiv2::asciiString)
                texts[datum.key()] = datum.toString();
        }
        return texts;
    };
    for (const ExportFormat format : allFormats) {
        SCOPED_TRACE(rawValue(format).toStdString());
        EXPECT_EQ(written(photo, format), safe);
        EXPECT_THAT(written(bare, format), testing::IsEmpty());
    }
}

TEST_F(ImageExporterTest, bringsTheQualityIntoItsRange)
{
    const ImportedPhoto photo = ImageLoader::load(writeSource(photoBytes()), 0);
    double asked = -1;
    meddler->before = [&asked](const Engine::FrameRequest& request) { asked = request.quality; };
    for (const ExportFormat format : allFormats) {
        SCOPED_TRACE(rawValue(format).toStdString());
        const auto exported = [&](double quality) {
            frame(photo, destination, true, {.format = format, .quality = quality});
            return test::readFile(destination);
        };
        EXPECT_EQ(exported(1) != exported(0), supportsQuality(format));
        EXPECT_EQ(exported(1.7), exported(1));
        EXPECT_EQ(exported(-0.2), exported(0));
        (void)exported(std::nan(""));
        EXPECT_EQ(asked, 0);
    }
}

TEST_F(ImageExporterTest, showsThePixelsThatItWrites)
{
    const FileUrl source = writeSource(test::encoded(OutputType::png, test::noise({90, 60}, rgb8)));
    const ImportedPhoto photo = ImageLoader::load(source);
    RenderRecipe recipe = plainRecipe();
    recipe.border.width = 20;
    recipe.border.color = {0.2, 0.4, 0.6, 1};
    recipe.captions.front().isEnabled = true;
    recipe.captions.front().setCaptionTemplate(QStringLiteral("{filename}"));
    recipe.captions.front().fontSize = {9};
    recipe.logo = LogoConfiguration::placeholder(); // Nowhere to be found.
    const Bitmap shown = ImageExporter::region(photo, recipe, {15, 33, 110, 80}, 1, {});
    recipe.logo.reset();
    ImageExporter::exportPhoto({photo, recipe, {.format = ExportFormat::png}, output.appending("out.png")}, {});
    const Bitmap whole = test::decoded(test::readFile(output.appending("out.png")));
    ASSERT_EQ(shown.size(), (PixelSize{110, 67})) << "what the picture has of it";
    EXPECT_TRUE(test::holdsAt(whole, 15, 33, shown));
    EXPECT_EQ(ImageExporter::region(photo, recipe, {0, 0, 130, 100}, 0.5, {}).size(), (PixelSize{65, 50}));
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
    ImageExporter::exportPhoto({photo, recipe, {.format = ExportFormat::png}, destination}, {}, managed);

    const Bitmap framed = test::decoded(test::readFile(destination));
    ASSERT_EQ(framed.size(), (PixelSize{80, 60}));
    EXPECT_EQ(test::component(framed, 5, 5, 1), 255);
    EXPECT_NEAR(test::component(framed, 20, 20, 0), 200, 1);
    EXPECT_EQ(test::component(framed, 60, 20, 0), 0);
    EXPECT_NEAR(test::component(framed, 60, 20, 1), 99, 1);
}

TEST_F(ImageExporterTest, keepsThePhotosDataAndCodesItAnewWhereThatFails)
{
    const ExportSettings keeping{.quality = 0.2, .checksWritten = true, .keepsPhotoData = true};
    const QByteArray bytes = photoBytes();
    const ImportedPhoto photo = ImageLoader::load(writeSource(bytes), 0);
    const auto run = [&] {
        return ImageExporter::exportPhoto({photo, keptRecipe(), keeping, destination, true}, stop.get_token());
    };
    const auto pixel = [&] { return test::component(test::decoded(test::readFile(destination)), 44, 44, 0); };
    EXPECT_EQ(run(), PhotoData::kept);
    EXPECT_EQ(test::decoded(test::readFile(destination)).size(), (PixelSize{108, 88})) << "24 pixels in place of 20";
    const int exact = test::component(test::decoded(bytes), 20, 20, 0);
    EXPECT_EQ(pixel(), exact);

    class Refuser : public Engine::InProcessAnswerer {
    public:
        std::optional<Engine::PictureSummary> frame(const Engine::FrameRequest& request,
                                                    const std::stop_token& token) override
        {
            auto summary = InProcessAnswerer::frame(request, token);
            if (request.keepsPhotoData)
                throw CannotKeep{};
            return summary;
        }
    };
    Engine::setAnswerer(std::make_unique<Refuser>());
    EXPECT_EQ(run(), PhotoData::codedAnew);
    const QByteArray written = test::readFile(destination);
    EXPECT_EQ(written.indexOf("\xff\xd9"), written.size() - 2) << "nothing is left of the first try";
    EXPECT_EQ(test::decoded(written).size(), (PixelSize{108, 88}));
}

} // namespace ferrow
