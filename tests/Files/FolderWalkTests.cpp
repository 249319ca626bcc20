// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FolderWalk.h"

#include "Files/OrdinaryUser.h"
#include "Platform/Files/FilePlacement.h"
#include "Support/Files.h"

#include <set>

namespace ferrow {

using namespace test;

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
    const TemporaryFolder folder;
    for (const char* name : {"sub/deeper", "x.jpg", ".hidden", "Trip.photoslibrary/sub", "Tool.APP", "closed"})
        createFolder(folder.file(name));
    for (const char* name :
         {"a.jpg", "sub/deeper/b.jpg", "x.jpg/c.jpg", "caf\xe9.jpg", ".hidden.jpg", "..jpg", ".hidden/d.jpg",
          "Trip.photoslibrary/sub/e.jpg", "Tool.APP/f.jpg", "closed/g.jpg", "plain"})
        folder.write(name, "x");
    for (const auto& [name, target] :
         {std::pair{"link.jpg", "a.jpg"}, {"dangling", "none"}, {"tosub", "sub"}, {"sub/up", ".."}, {"loop", "loop"}})
        makeLink(folder.file(name), target);
    makePipe(folder.file("pipe.jpg"));
    setMode(folder.file("closed"), 0);
    const std::set<QByteArray> expected{"a.jpg",    "sub/deeper/b.jpg", "x.jpg/c.jpg", "caf\xe9.jpg", "plain",
                                        "link.jpg", "dangling",         "loop",        "pipe.jpg"};
    {
        const OrdinaryUser user(folder.url());
        EXPECT_EQ(walked(folder.url()), expected);
    }
    setMode(folder.file("closed"), 0755); // Or the folder could not be removed.
}

TEST(FolderWalk, entersTheRootItWasGivenWhateverItIs)
{
    const TemporaryFolder folder;
    createFolder(folder.file(".hidden.photoslibrary"));
    folder.write(".hidden.photoslibrary/a.jpg", "x");
    makeLink(folder.file("link"), ".hidden.photoslibrary");
    for (const char* root : {".hidden.photoslibrary", "link"})
        EXPECT_EQ(walked(folder.file(root)), std::set<QByteArray>{"a.jpg"}) << root;
    for (const char* root : {"none", "link/a.jpg"})
        EXPECT_TRUE(walked(folder.file(root)).empty()) << root;
}

} // namespace ferrow
