// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ImageLoader.h"

#include "Models/ErrorTexts.h"
#include "Support/Pictures.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace ferrow {

namespace {

ImagePipelineError::Case failureOf(const FileUrl& url)
{
    try {
        (void)ImageLoader::load(url);
    } catch (const ImagePipelineError& error) {
        return error.value;
    }
    throw std::runtime_error("it loaded");
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
    EXPECT_EQ(photo.type, SupportedImageType::jpeg);
    EXPECT_EQ(photo.pixelSize, (PixelSize{1000, 2000}));
    EXPECT_EQ(photo.previewSource.size(), (PixelSize{800, 1600}));
    EXPECT_EQ(photo.metadata.cameraMake, QStringLiteral("FUJIFILM"));
    EXPECT_EQ(photo.metadata.artist, QStringLiteral("Jón"));
    EXPECT_EQ(photo.metadata.filename, QStringLiteral("misnamed \ufffd.png"));
    EXPECT_EQ(photo.colorProfileName, QStringLiteral("sRGB IEC61966-2.1"));
    EXPECT_EQ(ImageLoader::loadBatchThumbnail(photo.url).previewSource.size().height, 280);
    EXPECT_TRUE(ImageLoader::load(photo.url, 0).previewSource.isNull());
}

TEST(ImageLoader, refusesWhatIsNoPhotoWithoutWaiting)
{
    const test::TemporaryFolder folder;
    const FileUrl fifo = folder.file("pipe.jpg");
    ASSERT_EQ(::mkfifo(fifo.path().constData(), 0600), 0);
    const FileUrl socketPlace = folder.file("s.jpg");
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    qstrncpy(address.sun_path, socketPlace.path().constData(), sizeof address.sun_path);
    const int socketDescriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::bind(socketDescriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const FileUrl locked = folder.write("locked.jpg", "x");
    ::chmod(locked.path().constData(), 0);
    const QByteArray huge = folder.file("huge.jpg").path();
    ::close(::open(huge.constData(), O_CREAT | O_WRONLY, 0600));
    ASSERT_EQ(::truncate(huge.constData(), 2'000'000'001), 0);

    const struct {
        const char* name;
        FileUrl url;
        ImagePipelineError::Case expected;
    } rows[] = {{"missing", folder.file("none.jpg"), ImagePipelineError::unreadableFile},
                {"folder", folder.url(), ImagePipelineError::unreadableFile},
                {"pipe", fifo, ImagePipelineError::unreadableFile},
                {"socket", socketPlace, ImagePipelineError::unreadableFile},
                {"device", FileUrl::fromPath(QByteArray("/dev/zero")), ImagePipelineError::unreadableFile},
                {"empty", folder.write("empty.jpg", {}), ImagePipelineError::malformedImage},
                {"size 0 yet full of bytes", FileUrl::fromPath(QByteArray("/proc/self/status")),
                 ImagePipelineError::malformedImage},
                {"text", folder.write("text.jpg", "just words"), ImagePipelineError::malformedImage},
                {"too large", FileUrl::fromPath(huge), ImagePipelineError::FileTooLarge{2'000'000'001}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(failureOf(row.url), row.expected);
    }
    if (::geteuid() != 0) { // Locks don't hold for root.
        EXPECT_EQ(failureOf(locked), ImagePipelineError::Case(ImagePipelineError::unreadableFile));
    }
    ASSERT_EQ(::truncate(huge.constData(), 2'000'000'000), 0);
    EXPECT_EQ(failureOf(FileUrl::fromPath(huge)), ImagePipelineError::Case(ImagePipelineError::malformedImage));
    ::close(socketDescriptor);
}

TEST(ImageLoader, refusesDimensionsSeenInTheHeader)
{
    // A PNG header alone: the limits must speak before anything is decoded.
    const auto header = [](std::uint32_t width, std::uint32_t height) {
        QByteArray bytes = test::encoded(OutputType::png, test::flat({1, 1}, rgb8, {0, 0, 0}));
        const auto put = [&bytes](qsizetype at, std::uint32_t value) {
            for (int i = 0; i < 4; ++i)
                bytes[at + i] = char(value >> (24 - 8 * i));
        };
        put(16, width);
        put(20, height);
        std::uint32_t crc = 0xffffffff;
        for (qsizetype i = 12; i < 29; ++i) {
            crc ^= std::uint8_t(bytes[i]);
            for (int bit = 0; bit < 8; ++bit)
                crc = (crc >> 1) ^ (crc & 1 ? 0xedb88320 : 0);
        }
        put(29, ~crc);
        return bytes;
    };
    const test::TemporaryFolder folder;
    const struct {
        std::uint32_t width;
        std::uint32_t height;
        ImagePipelineError::Case expected;
    } rows[] = {{50'001, 1, ImagePipelineError::UnreasonableDimensions{50'001, 1}},
                {1, 50'001, ImagePipelineError::UnreasonableDimensions{1, 50'001}},
                {50'000, 4'001, ImagePipelineError::UnreasonableDimensions{50'000, 4'001}},
                {0x7fffffff, 0x7fffffff, ImagePipelineError::UnreasonableDimensions{0x7fffffff, 0x7fffffff}},
                {0, 100, ImagePipelineError::malformedImage}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.width);
        EXPECT_EQ(failureOf(folder.write("header.png", header(row.width, row.height))), row.expected);
    }
    EXPECT_EQ(ImageLoader::load(folder.write("limit.png", header(50'000, 4'000)), 0).pixelSize,
              (PixelSize{50'000, 4'000}));
}

} // namespace ferrow
