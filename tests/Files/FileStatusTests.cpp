// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FileStatus.h"

#include "Files/OrdinaryUser.h"
#include "Platform/Files/FilePlacement.h"
#include "Platform/Files/VolumeNames.h"
#include "Support/Files.h"

#include <cerrno>

namespace ferrow {

using namespace test;

TEST(FileStatus, knowsAFileByAnyOfItsNames)
{
    const TemporaryFolder folder;
    const FileUrl file = folder.write("a", "1");
    const FileUrl link = folder.file("link");
    makeLink(link, folder.url().path());
    EXPECT_TRUE(fileNumber(file));
    EXPECT_EQ(fileNumber(file), fileNumber(link.appending("a")));
    EXPECT_NE(fileNumber(file), fileNumber(folder.write("b", "1")));
    EXPECT_FALSE(fileNumber(folder.file("c")));
    EXPECT_TRUE(isSameFile(file, link.appending("a")));
    EXPECT_FALSE(isSameFile(folder.file("c"), folder.file("c"))) << "neither is there";
    EXPECT_EQ(resolvingLinks(link.appending("./c")), resolvingLinks(folder.file("c")));
}

TEST(FileStatus, tellsWhatStandsAndWhatCouldBeMade)
{
    const TemporaryFolder folder;
    const FileUrl deep = folder.file("one").appending("two \xFF").appending("three");
    createFolder(deep);
    createFolder(deep);
    checkFolderWritable(deep);
    const FileUrl file = folder.write("file", "x");
    const FileUrl dangling = folder.file("dangling");
    makeLink(dangling, "nowhere");
    EXPECT_TRUE(isTaken(file));
    EXPECT_TRUE(isTaken(deep));
    EXPECT_TRUE(isTaken(dangling));
    EXPECT_FALSE(isTaken(file.appending("inside")));
    EXPECT_EQ(errnoOf([&] { return isTaken(folder.file(QByteArray(300, 'n'))); }), ENAMETOOLONG);
    EXPECT_EQ(nearestExisting(deep.appending("four/five")), deep);
    EXPECT_TRUE(VolumeNames::mayFold(FileUrl::fromPath(QByteArray("/proc/none")))); // Nobody vouches for it.

    const auto creating = [](const FileUrl& url) { return errnoOf([&] { createFolder(url); }); };
    const auto checking = [](const FileUrl& url) { return errnoOf([&] { checkFolderWritable(url); }); };
    EXPECT_EQ(creating(file), ENOTDIR);
    EXPECT_EQ(creating(file.appending("inside")), ENOTDIR);
    EXPECT_EQ(creating(dangling), ENOTDIR);
    EXPECT_EQ(creating(folder.file(QByteArray("a\0b", 3))), EINVAL);
    EXPECT_EQ(creating(folder.file(QByteArray(300, 'n'))), ENAMETOOLONG);
    EXPECT_EQ(checking(file), ENOTDIR);
    EXPECT_EQ(checking(folder.file("missing")), 0);
    EXPECT_EQ(checking(file.appending("inside")), ENOTDIR);
    EXPECT_EQ(checking(dangling), ENOENT);
    EXPECT_EQ(checking(FileUrl::fromPath(QByteArray("/proc/self/fdinfo"))), ::geteuid() == 0 ? 0 : EACCES);
    setMode(deep, 0555);
    {
        const OrdinaryUser user(folder.url());
        EXPECT_EQ(creating(deep.appending("inside")), EACCES);
        EXPECT_EQ(checking(deep.appending("inside")), EACCES);
    }
    // The temporary folder's own clearing passes over names that are not UTF-8.
    std::filesystem::remove_all(folder.file("one").path().toStdString());
}

} // namespace ferrow
