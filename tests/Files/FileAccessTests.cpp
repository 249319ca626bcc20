// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FileAccess.h"

#include "Support/TestSupport.h"

#include <sys/stat.h>

#include <cerrno>

namespace ferrow {

namespace {

int errnoOfOpening(const FileUrl& url)
{
    try {
        static_cast<void>(OpenedFile::open(url));
        return 0;
    } catch (const SystemError& error) {
        EXPECT_EQ(error.file, url);
        return error.errorNumber;
    }
}

} // namespace

TEST(FileAccess, opensRegularFilesAloneAndNeverWaits)
{
    const test::TemporaryFolder folder;
    folder.write("photo.jpg", "12345");
    ASSERT_EQ(::mkfifo(folder.file("pipe.jpg").path().constData(), 0644), 0);
    ASSERT_EQ(::symlink("loop.jpg", folder.file("loop.jpg").path().constData()), 0);
    ASSERT_EQ(::symlink("photo.jpg", folder.file("link.jpg").path().constData()), 0);
    ASSERT_EQ(::symlink("/dev/zero", folder.file("zero.jpg").path().constData()), 0);

    const struct {
        const char* name;
        FileUrl url;
        int errorNumber;
    } rows[] = {
        {"regular file", folder.file("photo.jpg"), 0},
        {"link to a file", folder.file("link.jpg"), 0},
        {"folder", folder.url(), EISDIR},
        {"pipe without a writer", folder.file("pipe.jpg"), EINVAL},
        {"device behind a link", folder.file("zero.jpg"), EINVAL},
        {"circle of links", folder.file("loop.jpg"), ELOOP},
        {"missing", folder.file("none.jpg"), ENOENT},
        {"existing name before a NUL byte", folder.file(QByteArray("photo.jpg\0.png", 14)), EINVAL},
        {"no place", FileUrl(), ENOENT},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(errnoOfOpening(row.url), row.errorNumber);
    }
}

TEST(FileAccess, readsNoMoreThanTheSizeSeenAtOpen)
{
    const OpenedFile endless = OpenedFile::open(FileUrl::fromPath(QByteArray("/proc/self/status")));
    EXPECT_EQ(endless.size(), 0);
    std::byte buffer[64];
    EXPECT_EQ(endless.source().readAt(0, buffer), 0u);
}

TEST(FileAccess, seesThatAFileChangedSinceItWasOpened)
{
    const test::TemporaryFolder folder;
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
