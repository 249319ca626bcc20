// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FileAccess.h"

#include "Support/Files.h"

#include <cerrno>

namespace ferrow {

using namespace test;

TEST(FileAccess, opensRegularFilesAloneAndNeverWaits)
{
    const TemporaryFolder folder;
    folder.write("photo.jpg", "12345");
    makePipe(folder.file("pipe.jpg"));
    makeLink(folder.file("loop.jpg"), "loop.jpg");
    makeLink(folder.file("link.jpg"), "photo.jpg");
    makeLink(folder.file("zero.jpg"), "/dev/zero");
    const std::pair<QByteArray, int> rows[] = {
        {"photo.jpg", 0},     {"link.jpg", 0},     {".", EISDIR},        {"pipe.jpg", EINVAL},
        {"zero.jpg", EINVAL}, {"loop.jpg", ELOOP}, {"none.jpg", ENOENT}, {QByteArray("photo.jpg\0.png", 14), EINVAL}};
    for (const auto& [name, number] : rows) {
        const FileUrl url = folder.file(name);
        EXPECT_EQ(errnoOf([&] { return OpenedFile::open(url); }), number) << name.toStdString();
    }
    EXPECT_EQ(errnoOf([] { return OpenedFile::open(FileUrl()); }), ENOENT);
    EXPECT_EQ(OpenedFile::open(FileUrl::fromPath(QByteArray("/proc/self/status"))).size(), 0);
}

TEST(FileAccess, seesThatAFileChangedSinceItWasOpened)
{
    const TemporaryFolder folder;
    const FileUrl url = folder.write("photo.jpg", "12345");
    OpenedFile file = OpenedFile::open(url);
    EXPECT_EQ(file.currentIdentity(), file.identity());
    folder.write("photo.jpg", "123");
    EXPECT_NE(file.currentIdentity(), file.identity());

    file = OpenedFile::open(url);
    EXPECT_EQ(file.size(), 3);
    EXPECT_EQ(::fcntl(file.descriptor(), F_GETFD), FD_CLOEXEC);
}

} // namespace ferrow
