// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/SandboxAccessBroker.h"

#include "Support/TestSupport.h"

namespace ferrow {

namespace {

using Outcome = SandboxAccessBroker::SourceAccessOutcome;

FileUrl url(const char* path)
{
    return FileUrl::fromPath(QByteArray(path));
}

class SandboxAccessBrokerTest : public testing::Test {
protected:
    /// Every call by its path; paths that contain "denied" are not opened, and those with a dot are no folders.
    SandboxAccessBroker broker{{
        [this](const FileUrl& place) {
            started += place.path();
            return !place.path().contains("denied");
        },
        [this](const FileUrl& place) { stopped += place.path(); },
        [](const FileUrl& place) { return !place.path().contains('.'); },
    }};
    QByteArrayList started;
    QByteArrayList stopped;
};

} // namespace

TEST_F(SandboxAccessBrokerTest, holdsEachPlaceOnce)
{
    broker.retainAccess({url("/a/folder"), url("/a/./folder/"), url("/denied"), url("/b/photo.jpg"), url("/a/folder")});
    EXPECT_EQ(started, (QByteArrayList{"/a/folder", "/denied", "/b/photo.jpg"}));
    EXPECT_EQ(broker.accessedRoots(), (std::vector{url("/a/folder"), url("/b/photo.jpg")}));
    EXPECT_EQ(broker.writableSourceFolders(), std::vector{url("/a/folder")});

    broker.retainDestination(url("/out"));
    broker.retainDestination(url("/denied"));
    EXPECT_EQ(stopped, QByteArrayList{"/out"});
    EXPECT_EQ(broker.accessedDestination(), std::nullopt);

    broker.retainDestination(url("/out2"));
    broker.stopAllAccess();
    EXPECT_EQ(stopped, (QByteArrayList{"/out", "/a/folder", "/b/photo.jpg", "/out2"}));
    EXPECT_TRUE(broker.accessedRoots().empty() && broker.writableSourceFolders().empty());
    EXPECT_EQ(broker.accessedDestination(), std::nullopt);
}

TEST_F(SandboxAccessBrokerTest, asksForSourceFoldersUntilAllAreWritable)
{
    const std::vector photos{url("/p/b10/x.jpg"), url("/p/b2/x.jpg"), url("/held/sub/x.jpg"), url("/p/b2/y.jpg")};
    using Case = Outcome::Case;
    // What comes of it, and the folders asked for, when the user answers so; an empty answer is a dismissal.
    const auto asking = [&](const QByteArrayList& answers, const QByteArrayList& expected) {
        broker.stopSourceAccess();
        broker.retainAccess({url("/held"), url("/p/b2/x.jpg")});
        QByteArrayList asked;
        const auto ask = [&](const FileUrl& folder, std::size_t index, std::size_t total) -> std::optional<FileUrl> {
            asked += folder.path() + ' ' + QByteArray::number(index) + '/' + QByteArray::number(total);
            const QByteArray answer = answers.value(asked.size() - 1);
            return answer.isEmpty() ? std::nullopt : std::optional(FileUrl::fromPath(answer));
        };
        const Outcome outcome = broker.ensureSourceFolderAccess(photos, ask);
        EXPECT_EQ(asked, expected);
        return outcome;
    };
    EXPECT_EQ(asking({"/p/b2", "/p/b10"}, {"/p/b2 0/2", "/p/b10 1/2"}), (Outcome{Case::granted, {}}));
    EXPECT_EQ(asking({"/p/"}, {"/p/b2 0/2"}), (Outcome{Case::granted, {}})); // A parent covers both.
    EXPECT_EQ(asking({""}, {"/p/b2 0/2"}), (Outcome{Case::canceled, {}}));
    for (const char* elsewhere : {"/p/b", "/"})
        EXPECT_EQ(asking({elsewhere}, {"/p/b2 0/2"}), (Outcome{Case::outsideScope, url("/p/b2")}));
    broker.stopSourceAccess();
    const auto denied = broker.ensureSourceFolderAccess(
        {url("/denied/sub/x.jpg")}, [](const FileUrl&, auto, auto) { return std::optional(url("/denied")); });
    EXPECT_EQ(denied, (Outcome{Case::accessDenied, url("/denied")}));
    EXPECT_TRUE(broker.accessedRoots().empty());
}

} // namespace ferrow
