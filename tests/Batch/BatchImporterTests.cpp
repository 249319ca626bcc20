// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/BatchImporter.h"

#include "Files/OrdinaryUser.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Support/Files.h"
#include "Support/Pictures.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <mutex>

namespace ferrow {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

namespace {

class BatchImporterTest : public testing::Test {
protected:
    [[nodiscard]] std::vector<QByteArray> below(const std::vector<FileUrl>& urls) const
    {
        std::vector<QByteArray> names;
        for (const FileUrl& url : urls)
            names.push_back(url.path().mid(folder.url().path().size() + 1));
        return names;
    }

    [[nodiscard]] std::vector<QByteArray> below(const BatchImportResult& result) const
    {
        std::vector<FileUrl> urls;
        for (const ImportedPhoto& photo : result.photos)
            urls.push_back(photo.url);
        for (const BatchExportFailure& failure : result.failures)
            urls.push_back(failure.source);
        return below(urls);
    }

    test::TemporaryFolder folder;
};

ImportedPhoto photoAt(const FileUrl& url)
{
    ImportedPhoto photo;
    photo.url = url;
    return photo;
}

} // namespace

TEST_F(BatchImporterTest, sortsWhatAFolderHolds)
{
    for (const char* name : {"in", "in/folder.jpg", "in/My.app", "in/.hidden", "elsewhere"})
        ::mkdir(folder.file(name).path().constData(), 0777);
    for (const char* name :
         {"in/a.JPG", "in/c.cr2", "in/d.gif", "in/.hidden.jpg", "in/notes.txt", "in/jpg", "in/x.jpg.part", "in/k.HIF",
          "in/l.jfif", "in/m.jpe", "in/folder.jpg/inside.png", "in/My.app/icon.png", "in/.hidden/e.jpg",
          "elsewhere/far.jpg", "in/caf\xe9.jpg", "in/g\nh.tiff"})
        folder.write(name, "");
    test::makeLink(folder.file("in/linked.jpg"), "../elsewhere/far.jpg");
    test::makeLink(folder.file("in/linkedFolder"), "../elsewhere");
    test::makeLink(folder.file("in/loop"), "..");
    test::makeLink(folder.file("in/dangling.jpg"), "nowhere");
    const BatchImportScan scan = BatchImporter::scan({folder.file("in")});
    EXPECT_THAT(below(scan.candidates), UnorderedElementsAreArray(std::vector<QByteArray>{
                                            "in/a.JPG", "in/folder.jpg/inside.png", "in/linked.jpg", "in/dangling.jpg",
                                            "in/caf\xe9.jpg", "in/g\nh.tiff", "in/k.HIF", "in/l.jfif", "in/m.jpe"}));
    EXPECT_THAT(below(scan.unsupported), ElementsAre("in/c.cr2", "in/d.gif"));
}

TEST_F(BatchImporterTest, takesEachFileOnceAndInTheOrderOfFileBrowsers)
{
    ::mkdir(folder.file("in").path().constData(), 0777);
    for (const char* name : {"in/IMG_10.jpg", "in/img_2.jpg", "in/IMG_1.jpg", "in/x.gif"})
        folder.write(name, "");
    const FileUrl in = folder.file("in");
    const auto all = ElementsAre("in/IMG_1.jpg", "in/img_2.jpg", "in/IMG_10.jpg");
    EXPECT_THAT(below(BatchImporter::scan({in, in}).candidates), all);
    EXPECT_THAT(
        below(BatchImporter::scan({folder.file("in/IMG_10.jpg"), in, folder.file("in/./IMG_1.jpg")}).candidates), all);
    // Named directly, a file is always tried, and so is one that isn't there.
    const BatchImportScan named = BatchImporter::scan({folder.file("in/x.gif"), folder.file("in/none")});
    EXPECT_THAT(below(named.candidates), ElementsAre("in/none", "in/x.gif"));
    EXPECT_THAT(named.unsupported, IsEmpty());
    EXPECT_THAT(BatchImporter::scan({}).candidates, IsEmpty());
    EXPECT_THAT(named.unreadable, IsEmpty());
}

TEST_F(BatchImporterTest, namesAFolderThatItWasGivenAndMayNotRead)
{
    const FileUrl closed = folder.file("in/closed");
    ::mkdir(folder.file("in").path().constData(), 0777);
    ::mkdir(closed.path().constData(), 0);
    std::vector<BatchExportFailure> unreadable;
    {
        const test::OrdinaryUser user(folder.url());
        EXPECT_THAT(BatchImporter::scan({folder.file("in")}).unreadable, IsEmpty());
        unreadable = BatchImporter::scan({folder.file("in"), closed}).unreadable;
    }
    test::setMode(closed, 0777);
    ASSERT_EQ(unreadable.size(), 1U);
    EXPECT_EQ(unreadable[0].source, closed);
    EXPECT_EQ(unreadable[0].filename, QStringLiteral("closed"));
    EXPECT_EQ(unreadable[0].message, (SystemError{EACCES, closed}.description()));
}

TEST_F(BatchImporterTest, loadsThumbnailsAndNamesWhatItCouldNotLoad)
{
    const FileUrl good = folder.write("good.jpg", test::encoded(OutputType::jpeg, test::noise({600, 300}, rgb8)));
    const std::vector<FileUrl> urls{good, folder.write("x.gif", "GIF89a"), folder.file("none \xe9.jpg"), folder.url()};
    const BatchImportResult result = BatchImporter::load(urls, 4);
    ASSERT_EQ(result.photos.size(), 1u);
    EXPECT_EQ(result.photos[0].url, good);
    EXPECT_EQ(result.photos[0].previewSource.size(), (PixelSize{280, 140}));
    ASSERT_EQ(result.failures.size(), 3u);
    for (const BatchExportFailure& failure : result.failures) {
        EXPECT_EQ(failure.filename, failure.source.lastPathComponent());
        EXPECT_FALSE(failure.message.isEmpty());
        EXPECT_EQ(failure.message.contains(QStringLiteral("GIF")), failure.source == urls[1]);
    }
}

TEST_F(BatchImporterTest, loadsEachUrlOnceAndNeverMoreThanAllowedAtOnce)
{
    std::vector<FileUrl> urls;
    for (int i = 0; i < 100; ++i)
        urls.push_back(folder.file(QByteArray::number(i)));
    std::atomic<int> running = 0;
    std::latch together(3);
    std::mutex mutex;
    std::vector<FileUrl> seen;
    const auto result = BatchImporter::load(urls, 3, [&](const FileUrl& url, const std::stop_token&) {
        EXPECT_LE(++running, 3);
        {
            const std::scoped_lock lock(mutex);
            seen.push_back(url);
        }
        if (url == urls[0] || url == urls[1] || url == urls[2])
            together.arrive_and_wait(); // Passed only if that many really run at once.
        --running;
        return photoAt(url);
    });
    EXPECT_THAT(seen, UnorderedElementsAreArray(urls));
    EXPECT_EQ(result.photos.size(), urls.size());
    EXPECT_THAT(BatchImporter::load(urls, 0).photos, IsEmpty());
}

TEST_F(BatchImporterTest, answersInTheScansOrderHoweverFastEachIsRead)
{
    BatchImportScan scan;
    for (const char* name : {"a/10.jpg", "a/bad.jpg", "b/10.jpg", "b/bad.jpg"})
        scan.candidates.push_back(folder.file(name));
    scan.unsupported = {folder.file("a/9.gif")};
    std::atomic<std::size_t> left = 4;
    // All four are read at once, and each waits for the one behind it.
    const auto backwards = [&](const FileUrl& url, const std::stop_token&) {
        const auto last = std::size_t(std::ranges::find(scan.candidates, url) - scan.candidates.begin()) + 1;
        for (std::size_t now = left; now != last; now = left)
            left.wait(now);
        left = last - 1;
        left.notify_all();
        if (url.path().endsWith("bad.jpg"))
            throw ImagePipelineError(ImagePipelineError::malformedImage);
        return photoAt(url);
    };
    EXPECT_THAT(below(BatchImporter::load(scan.candidates, 4, backwards)),
                ElementsAre("a/10.jpg", "b/10.jpg", "a/bad.jpg", "b/bad.jpg"));
    left = 4;
    EXPECT_THAT(below(BatchImporter::importScanned(scan, backwards, {}, {})),
                ElementsAre("a/10.jpg", "b/10.jpg", "a/9.gif", "a/bad.jpg", "b/bad.jpg"));
}

TEST_F(BatchImporterTest, keepsNothingOfWhatItHandsOver)
{
    const std::vector<FileUrl> urls{folder.file("0"), folder.file("1"), folder.file("2"), folder.file("3")};
    std::stop_source stop;
    std::vector<bool> read; // As handed over.
    BatchImporter::loadEach(
        urls, 1,
        [&](const FileUrl& url, const std::stop_token&) {
            EXPECT_EQ(url, urls[read.size()]); // All before it are out of hand.
            return photoAt(url);
        },
        [&](std::size_t index, const BatchImporter::Outcome& outcome) {
            EXPECT_EQ(index, read.size());
            read.push_back(std::holds_alternative<ImportedPhoto>(outcome));
            if (index == 1)
                stop.request_stop();
        },
        {}, stop.get_token());
    EXPECT_THAT(read, ElementsAre(true, true, false, false));
}

TEST_F(BatchImporterTest, keepsWhatWasReadBeforeAStopAndNamesTheRest)
{
    const std::vector<FileUrl> urls{folder.file("1"), folder.file("2"), folder.file("3"), folder.file("4")};
    std::stop_source stop;
    const auto stopped = [&](const FileUrl& url, const std::stop_token& token) {
        if (url == urls[2])
            stop.request_stop();
        throwIfCanceled(token);
        return photoAt(url);
    };
    const BatchImportResult result = BatchImporter::load(urls, 1, stopped, {}, stop.get_token());
    EXPECT_THAT(below(result), ElementsAre("1", "2"));
    EXPECT_THAT(below(result.unread), ElementsAre("3", "4"));
}

} // namespace ferrow
