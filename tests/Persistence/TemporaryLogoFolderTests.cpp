// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/TemporaryLogoFolder.h"

#include "Support/Files.h"

#include <ctime>
#include <memory>

namespace ferrow {

namespace {

void makeOld(const FileUrl& place)
{
    const time_t twoDaysAgo = std::time(nullptr) - 2 * 24 * 60 * 60;
    const timespec times[] = {{twoDaysAgo, 0}, {twoDaysAgo, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, place.path().constData(), times, 0), 0);
}

} // namespace

TEST(TemporaryLogoFolder, goesWithItsRunAndTakesTheFoldersOfKilledOnesAlong)
{
    const test::TemporaryFolder parent;
    auto running = std::make_unique<TemporaryLogoFolder>(parent.url());
    struct stat status {};
    ASSERT_EQ(::stat(running->url().path().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);
    for (const char* name : {"ferrow-logo-killed", "ferrow-logo-recent", "ferrow-logo-of-mine"}) {
        ::mkdir(parent.file(name).path().constData(), 0700);
        parent.write(QByteArray(name) + "/logo.png", "x");
    }
    for (const FileUrl& old : {running->url(), parent.file("ferrow-logo-killed"), parent.file("ferrow-logo-of-mine")})
        makeOld(old);
    const QByteArray kept = running->url().lastPathComponentBytes();
    {
        const TemporaryLogoFolder next(parent.url());
        EXPECT_FALSE(test::exists(parent.file("ferrow-logo-killed")));
        EXPECT_TRUE(test::exists(parent.file("ferrow-logo-recent/logo.png")));
        EXPECT_TRUE(test::exists(parent.file("ferrow-logo-of-mine/logo.png")));
        EXPECT_TRUE(test::exists(parent.file(kept)));
        parent.write(next.url().lastPathComponentBytes() + "/logo.png", "x");
    }
    EXPECT_EQ(test::namesIn(parent.url()).size(), 3);
    running.reset();
    EXPECT_EQ(test::namesIn(parent.url()).size(), 2);
    EXPECT_EQ(test::errnoOf([&] { return TemporaryLogoFolder(parent.file("none")), 0; }), ENOENT);
}

} // namespace ferrow
