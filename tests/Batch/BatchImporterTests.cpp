// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/BatchImporter.h"

#include "Support/Pictures.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <atomic>
#include <latch>
#include <mutex>
#include <thread>

namespace ferrow {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

namespace {

class BatchImporterTest : public testing::Test {
protected:
    void makeFolders(std::initializer_list<const char*> names) const
    {
        for (const char* name : names)
            ASSERT_EQ(::mkdir(folder.file(name).path().constData(), 0777), 0) << name;
    }
    void link(const char* target, const char* name) const
    {
        ASSERT_EQ(::symlink(target, folder.file(name).path().constData()), 0);
    }
    [[nodiscard]] std::vector<QByteArray> below(const std::vector<FileUrl>& urls) const
    {
        std::vector<QByteArray> names;
        for (const FileUrl& url : urls)
            names.push_back(url.path().mid(folder.url().path().size() + 1));
        return names;
    }

    test::TemporaryFolder folder;
};

} // namespace

TEST_F(BatchImporterTest, sortsWhatAFolderHolds)
{
    const QByteArray longest = QByteArray(251, 'n') + ".jpg";
    makeFolders({"in", "in/folder.jpg", "in/My.app", "in/.hidden", "elsewhere"});
    for (const QByteArray& name :
         {QByteArray("in/a.JPG"), QByteArray("in/b.heif"), QByteArray("in/c.cr2"), QByteArray("in/d.gif"),
          QByteArray("in/.hidden.jpg"), QByteArray("in/notes.txt"), QByteArray("in/jpg"), QByteArray("in/x.jpg.part"),
          QByteArray("in/folder.jpg/inside.png"), QByteArray("in/My.app/icon.png"), QByteArray("in/.hidden/e.jpg"),
          QByteArray("elsewhere/far.jpg"), QByteArray("in/caf\xe9.jpg"), QByteArray("in/g\nh.tiff"), "in/" + longest})
        folder.write(name, "");
    link("../elsewhere/far.jpg", "in/linked.jpg");
    link("../elsewhere", "in/linkedFolder");
    link("..", "in/loop");
    link("nowhere", "in/dangling.jpg");

    const BatchImportScan scan = BatchImporter::scan({folder.file("in")});
    EXPECT_THAT(below(scan.candidates), UnorderedElementsAreArray(std::vector<QByteArray>{
                                            "in/a.JPG", "in/b.heif", "in/folder.jpg/inside.png", "in/linked.jpg",
                                            "in/dangling.jpg", "in/caf\xe9.jpg", "in/g\nh.tiff", "in/" + longest}));
    EXPECT_THAT(below(scan.unsupported), ElementsAre("in/c.cr2", "in/d.gif"));
}

TEST_F(BatchImporterTest, takesEachFileOnceAndInTheOrderOfFileBrowsers)
{
    makeFolders({"in"});
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
    for (const int concurrency : {1, 3}) {
        std::atomic<int> running = 0;
        std::atomic<int> most = 0;
        std::latch together(concurrency);
        std::mutex mutex;
        std::vector<FileUrl> seen;
        const auto result = BatchImporter::load(urls, concurrency, [&](const FileUrl& url) {
            const int now = ++running;
            int before = most;
            while (before < now && !most.compare_exchange_weak(before, now))
                continue;
            {
                const std::scoped_lock lock(mutex);
                seen.push_back(url);
            }
            // Passed only if that many really run at once.
            if (std::find(urls.begin(), urls.begin() + concurrency, url) != urls.begin() + concurrency)
                together.arrive_and_wait();
            std::this_thread::yield();
            --running;
            ImportedPhoto photo;
            photo.url = url;
            return photo;
        });
        EXPECT_EQ(most, concurrency);
        EXPECT_THAT(seen, UnorderedElementsAreArray(urls));
        EXPECT_EQ(result.photos.size(), urls.size());
    }
    EXPECT_THAT(BatchImporter::load(urls, 0).photos, IsEmpty());
}

} // namespace ferrow
