// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FolderWalk.h"

#include "Files/OrdinaryUser.h"
#include "Platform/Files/FilePlacement.h"
#include "Support/TestSupport.h"

#include <sys/stat.h>

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

} // namespace ferrow
