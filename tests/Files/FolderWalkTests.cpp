// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FolderWalk.h"

#include "Files/OrdinaryUser.h"
#include "Platform/Files/FilePlacement.h"
#include "Support/TestSupport.h"

#include <sys/stat.h>

#include <filesystem>
#include <set>

namespace ferrow {

namespace {

/// Paths below `root` that a walk of it reports, each once.
std::set<QByteArray> walked(const FileUrl& root)
{
    std::set<QByteArray> found;
    walkFolder(root, [&](const FileUrl& url) {
        EXPECT_TRUE(found.insert(url.path().mid(root.path().size() + 1)).second) << url.path().toStdString();
    });
    return found;
}

} // namespace

TEST(FolderWalk, reportsFilesAndLeavesOutWhatIsHiddenPackagedOrALinkToAFolder)
{
    const test::TemporaryFolder folder;
    for (const char* name : {"sub/deeper", "x.jpg", ".hidden", "Trip.photoslibrary/originals", "Tool.APP", "closed"})
        createFolder(folder.file(name));
    for (const char* name :
         {"a.jpg", "sub/deeper/b.jpg", "x.jpg/c.jpg", "caf\xe9.jpg", "line\nbreak.jpg", ".hidden.jpg", "..jpg",
          ".hidden/d.jpg", "Trip.photoslibrary/originals/e.jpg", "Tool.APP/f.jpg", "closed/g.jpg", "noextension"})
        folder.write(name, "x");
    for (const auto& [target, name] : {std::pair{"a.jpg", "link.jpg"},
                                       {"nowhere", "dangling.jpg"},
                                       {"sub", "tosub"},
                                       {"..", "sub/up"},
                                       {"loop.jpg", "loop.jpg"}})
        ASSERT_EQ(::symlink(target, folder.file(name).path().constData()), 0);
    ASSERT_EQ(::mkfifo(folder.file("pipe.jpg").path().constData(), 0644), 0);
    ASSERT_EQ(::chmod(folder.file("closed").path().constData(), 0), 0);

    const std::set<QByteArray> expected{"a.jpg",    "sub/deeper/b.jpg", "x.jpg/c.jpg", "caf\xe9.jpg", "line\nbreak.jpg",
                                        "link.jpg", "dangling.jpg",     "loop.jpg",    "pipe.jpg",    "noextension"};
    {
        const test::OrdinaryUser user(folder.url());
        EXPECT_EQ(walked(folder.url()), expected);
    }
    // QTemporaryDir can't remove what it can't name or enter.
    EXPECT_EQ(::chmod(folder.file("closed").path().constData(), 0755), 0);
    EXPECT_EQ(::unlink(folder.file("caf\xe9.jpg").path().constData()), 0);
}

TEST(FolderWalk, entersTheRootItWasGivenWhateverItIs)
{
    const test::TemporaryFolder folder;
    for (const char* name : {".hidden", "Trip.photoslibrary"}) {
        createFolder(folder.file(name));
        folder.write(QByteArray(name) + "/a.jpg", "x");
    }
    ASSERT_EQ(::symlink(".hidden", folder.file("link").path().constData()), 0);
    const std::set<QByteArray> expected{"a.jpg"};
    for (const char* root : {".hidden", "Trip.photoslibrary", "link"}) {
        SCOPED_TRACE(root);
        EXPECT_EQ(walked(folder.file(root)), expected);
    }
    for (const char* root : {"none", "link/a.jpg"})
        EXPECT_TRUE(walked(folder.file(root)).empty());
}

TEST(FolderWalk, endsWherePathsBecomeTooLong)
{
    const test::TemporaryFolder folder;
    const QByteArray name(250, 'd');
    int descriptor = ::open(folder.url().path().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    constexpr int depth = 30; // Some 7,500 bytes of path; 4,096 can be opened.
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(::mkdirat(descriptor, name.constData(), 0755), 0);
        const int photo = ::openat(descriptor, "p", O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        const int next = ::openat(descriptor, name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(photo);
        ::close(descriptor);
        descriptor = next;
    }
    ::close(descriptor);
    EXPECT_EQ(walked(folder.url()).size(), 17u); // 16 × 251 bytes below the folder's own path.
    std::filesystem::remove_all(folder.file(name).path().toStdString());
}

TEST(FileKind, followsLinks)
{
    const test::TemporaryFolder folder;
    folder.write("file", "x");
    ASSERT_EQ(::symlink("file", folder.file("link").path().constData()), 0);
    ASSERT_EQ(::symlink(".", folder.file("here").path().constData()), 0);
    ASSERT_EQ(::symlink("none", folder.file("dangling").path().constData()), 0);
    EXPECT_EQ(fileKind(folder.file("link")), FileKind::file);
    EXPECT_EQ(fileKind(folder.file("here")), FileKind::folder);
    EXPECT_EQ(fileKind(folder.file("dangling")), FileKind::missing);
    EXPECT_EQ(fileKind(folder.file(QByteArray("file\0x", 6))), FileKind::missing);
}

} // namespace ferrow
