// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ImageLoader.h"

#include "Platform/Base/Cancellation.h"
#include "Support/Pictures.h"
#include "Support/PipelineErrors.h"

#include <sys/stat.h>

namespace ferrow {

namespace {

using Error = ImagePipelineError;
using Case = Error::Case;

Case failureOf(const FileUrl& url)
{
    return test::pipelineErrorOf([&] { return ImageLoader::load(url); });
}

} // namespace

TEST(ImageLoader, readsSizeTypeTextsAndAReducedPictureByContent)
{
    const test::TemporaryFolder folder;
    OutputMetadata metadata;
    metadata.make = QStringLiteral("FUJIFILM");
    metadata.artist = QStringLiteral("Jón");
    const QByteArray bytes =
        test::withOrientation(test::encoded(OutputType::jpeg, test::flat({2000, 1000}, rgb8, {9, 9, 9}), metadata), 8);
    const ImportedPhoto photo = ImageLoader::load(folder.write("misnamed \xe9.png", bytes));
    EXPECT_EQ(photo.type, FileType::jpeg);
    EXPECT_EQ(photo.pixelSize, (PixelSize{1000, 2000}));
    EXPECT_EQ(photo.previewSource.size(), (PixelSize{800, 1600}));
    EXPECT_EQ(photo.metadata.cameraMake, QStringLiteral("FUJIFILM"));
    EXPECT_EQ(photo.metadata.artist, QStringLiteral("Jón"));
    EXPECT_EQ(photo.metadata.filename, QStringLiteral("misnamed \ufffd.png"));
    EXPECT_EQ(photo.colorProfileName, QStringLiteral("sRGB IEC61966-2.1"));
    EXPECT_EQ(ImageLoader::loadBatchThumbnail(photo.url).previewSource.size().height, 280);
    EXPECT_TRUE(ImageLoader::load(photo.url, 0).previewSource.isNull());
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)ImageLoader::load(photo.url, stop.get_token()), Canceled);
    EXPECT_THROW((void)ImageLoader::loadBatchThumbnail(photo.url, stop.get_token()), Canceled);
}

TEST(ImageLoader, refusesWhatIsNoPhotoWithoutWaiting)
{
    const test::TemporaryFolder folder;
    const FileUrl fifo = folder.file("pipe.jpg");
    ASSERT_EQ(::mkfifo(fifo.path().constData(), 0600), 0);
    const FileUrl huge = folder.write("huge.jpg", {});
    ASSERT_EQ(::truncate(huge.path().constData(), 2'000'000'001), 0);
    const std::pair<FileUrl, Case> rows[] = {
        {folder.file("none.jpg"), Error::unreadableFile},
        {folder.url(), Error::unreadableFile},
        {fifo, Error::unreadableFile},
        {FileUrl::fromPath(QByteArray("/dev/zero")), Error::unreadableFile},
        {folder.write("empty.jpg", {}), Error::malformedImage},
        {FileUrl::fromPath(QByteArray("/proc/self/status")), Error::malformedImage}, // Its size is said to be 0.
        {folder.write("text.jpg", "just words"), Error::malformedImage},
        {huge, Error::FileTooLarge{2'000'000'001}},
    };
    for (const auto& [url, expected] : rows)
        EXPECT_EQ(failureOf(url), expected) << url.path().constData();
    ASSERT_EQ(::truncate(huge.path().constData(), 2'000'000'000), 0);
    EXPECT_EQ(failureOf(huge), Case(Error::malformedImage));
}

TEST(ImageLoader, refusesDimensionsSeenInTheHeader)
{
    // The frame header of a JPEG alone is changed: the limits must speak before anything is decoded.
    const test::TemporaryFolder folder;
    const auto sized = [&folder](int width, int height) {
        QByteArray bytes = test::encoded(OutputType::jpeg, test::flat({1, 1}, rgb8, {0, 0, 0}));
        const qsizetype frame = bytes.indexOf("\xff\xc0");
        const char size[] = {char(height >> 8), char(height), char(width >> 8), char(width)};
        return folder.write("header.jpg", bytes.replace(frame + 5, 4, size, 4));
    };
    for (const PixelSize& size : {PixelSize{50'001, 1}, {1, 50'001}, {50'000, 4'001}, {65'535, 65'535}})
        EXPECT_EQ(failureOf(sized(int(size.width), int(size.height))),
                  Case(Error::UnreasonableDimensions{size.width, size.height}));
    EXPECT_EQ(failureOf(sized(0, 100)), Case(Error::malformedImage));
    EXPECT_EQ(ImageLoader::load(sized(50'000, 4'000), 0).pixelSize, (PixelSize{50'000, 4'000}));
}

} // namespace ferrow
