// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FilePlacement.h"

#include "Files/OrdinaryUser.h"
#include "Support/TestSupport.h"

#include <gmock/gmock.h>

#include <QDir>

#include <sys/resource.h>
#include <sys/stat.h>

#include <barrier>
#include <cerrno>
#include <csignal>
#include <thread>

namespace ferrow {

namespace {

int errnoOf(const std::function<void()>& steps)
{
    try {
        steps();
        return 0;
    } catch (const SystemError& error) {
        return error.errorNumber;
    }
}

QStringList namesIn(const FileUrl& folder)
{
    return QDir(folder.displayPath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

mode_t modeOf(const FileUrl& url)
{
    struct stat status {};
    return ::lstat(url.path().constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

bool isLink(const FileUrl& url)
{
    struct stat status {};
    return ::lstat(url.path().constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// Ends every write beyond `bytes` as a full disk does: short first, then refused.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit before_{};
    void (*handler_)(int);
};

} // namespace

TEST(FilePlacement, choosesTheCallThatTheVolumeOffers)
{
    using Result = PlacementResult;
    const struct {
        const char* name;
        bool replace;
        int renameExclusively;
        int link;
        bool exists;
        int rename;
        Result result;
        int errorNumber;
        const char* calls; ///< e: exclusive rename, l: link, x: existence check, r: rename.
    } rows[] = {
        {"exclusive rename", false, 0, 0, false, 0, Result::placed, 0, "e"},
        {"name taken", false, EEXIST, 0, false, 0, Result::destinationExists, EEXIST, "e"},
        {"read-only volume", false, EROFS, 0, false, 0, Result::failed, EROFS, "e"},
        {"not permitted is no reason to try less", false, EPERM, 0, false, 0, Result::failed, EPERM, "e"},
        {"flag refused, link", false, EINVAL, 0, false, 0, Result::placed, 0, "el"},
        {"call unknown, link", false, ENOSYS, 0, false, 0, Result::placed, 0, "el"},
        {"link finds the name taken", false, EINVAL, EEXIST, false, 0, Result::destinationExists, EEXIST, "el"},
        {"no links either", false, EINVAL, EPERM, false, 0, Result::placed, 0, "elxr"},
        {"links unknown", false, EINVAL, ENOSYS, false, 0, Result::placed, 0, "elxr"},
        {"no links, name taken", false, EINVAL, EPERM, true, 0, Result::destinationExists, EEXIST, "elx"},
        {"no links, rename fails", false, EINVAL, EPERM, false, ENOSPC, Result::failed, ENOSPC, "elxr"},
        {"replacing", true, EEXIST, EEXIST, true, 0, Result::placed, 0, "r"},
    };
    const test::TemporaryFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::string made;
        const auto answering = [&made](char letter, int number) {
            return [&made, letter, number](const QByteArray&, const QByteArray&) {
                made += letter;
                return number;
            };
        };
        const PlacementCalls calls{answering('e', row.renameExclusively), answering('l', row.link),
                                   answering('r', row.rename), [&](const QByteArray&) {
                                       made += 'x';
                                       return row.exists;
                                   }};
        int errorNumber = -1;
        EXPECT_EQ(place(folder.file("staged"), folder.file("photo.jpg"), row.replace, &errorNumber, calls), row.result);
        EXPECT_EQ(errorNumber, row.errorNumber);
        EXPECT_EQ(made, row.calls);
    }
}

TEST(FilePlacement, letsOneOfTwoRacersWin)
{
    PlacementCalls linksOnly = PlacementCalls::system();
    linksOnly.renameExclusively = [](const QByteArray&, const QByteArray&) { return EINVAL; };
    constexpr int rounds = 2'000;
    const test::TemporaryFolder folder;
    const FileUrl photo = folder.file("photo.jpg");
    const QByteArray contents[] = {"one", "other"};
    PlacementResult results[2]{};
    bool isStillStaged[2]{};
    std::barrier start(3);
    std::barrier finish(3);
    const auto race = [&](int racer) {
        for (int round = 0; round < rounds; ++round) {
            const FileUrl staged = folder.write("staged " + QByteArray::number(racer), contents[racer]);
            start.arrive_and_wait();
            results[racer] = place(staged, photo, false, nullptr, round % 2 ? linksOnly : PlacementCalls::system());
            isStillStaged[racer] = ::access(staged.path().constData(), F_OK) == 0;
            finish.arrive_and_wait();
        }
    };
    const std::jthread one(race, 0);
    const std::jthread other(race, 1);
    int badRounds = 0;
    for (int round = 0; round < rounds; ++round) {
        start.arrive_and_wait();
        finish.arrive_and_wait();
        const int winner = results[0] == PlacementResult::placed ? 0 : 1;
        if (results[winner] != PlacementResult::placed || results[1 - winner] != PlacementResult::destinationExists ||
            test::readFile(photo) != contents[winner] || isStillStaged[winner] || !isStillStaged[1 - winner])
            ++badRounds;
        ::unlink(photo.path().constData());
    }
    EXPECT_EQ(badRounds, 0);
}

TEST(StagedFile, isHiddenFreshAndGoneUnlessPlaced)
{
    const test::TemporaryFolder folder;
    {
        StagedFile staged = StagedFile::create(folder.url(), "tiff");
        EXPECT_THAT(staged.url().lastPathComponentBytes().toStdString(),
                    testing::MatchesRegex("\\.Ferrow-[0-9A-F]{8}-([0-9A-F]{4}-){3}[0-9A-F]{12}\\.tiff"));
        const mode_t mask = ::umask(0);
        ::umask(mask);
        EXPECT_EQ(modeOf(staged.url()), 0666 & ~mask);
        StagedFile moved = std::move(staged);
        EXPECT_EQ(namesIn(folder.url()).size(), 1);
    }
    EXPECT_EQ(namesIn(folder.url()).size(), 0);
    EXPECT_EQ(errnoOf([&] { static_cast<void>(StagedFile::create(folder.file("none"), "jpg")); }), ENOENT);
}

TEST(WriteAtomically, keepsTheOldFileWhenTheDiskIsFull)
{
    const test::TemporaryFolder folder;
    const FileUrl file = folder.write("presets.json", "old");
    const QByteArray bytes(600'000, 'n');
    for (const rlim_t limit : {0, 1, 4'096, 300'000, 599'999}) {
        SCOPED_TRACE(limit);
        const int errorNumber = [&] {
            const FileSizeLimit full(limit);
            return errnoOf([&] { writeAtomically(file, bytes); });
        }();
        EXPECT_EQ(errorNumber, EFBIG);
        EXPECT_EQ(test::readFile(file), "old");
        EXPECT_EQ(namesIn(folder.url()).size(), 1);
    }
    writeAtomically(file, bytes);
    EXPECT_EQ(test::readFile(file), bytes);
}

TEST(WriteAtomically, replacesWhatLinksLeadTo)
{
    const test::TemporaryFolder folder;
    createFolder(folder.file("real/deep"));
    ASSERT_EQ(::symlink("real/deep", folder.file("way").path().constData()), 0);
    const FileUrl target = folder.write("real/presets.json", "old");
    ASSERT_EQ(::chmod(target.path().constData(), 0640), 0);
    // ".." behind "way" is "real", not the folder that "way" stands in.
    ASSERT_EQ(::symlink("way/../presets.json", folder.file("second").path().constData()), 0);
    ASSERT_EQ(::symlink(folder.file("second").path().constData(), folder.file("first").path().constData()), 0);

    writeAtomically(folder.file("first"), "new");

    EXPECT_EQ(test::readFile(target), "new");
    EXPECT_EQ(modeOf(target), 0640u);
    EXPECT_TRUE(isLink(folder.file("first")) && isLink(folder.file("second")));
    EXPECT_EQ(namesIn(folder.file("real")), (QStringList{QStringLiteral("deep"), QStringLiteral("presets.json")}));

    ASSERT_EQ(::symlink("real/fresh.json", folder.file("dangling").path().constData()), 0);
    writeAtomically(folder.file("dangling"), "made");
    EXPECT_EQ(test::readFile(folder.file("real/fresh.json")), "made");
}

TEST(WriteAtomically, refusesWhatIsNoFileAndFoldersItMayNotChange)
{
    const test::TemporaryFolder folder;
    createFolder(folder.file("folder"));
    createFolder(folder.file("closed"));
    folder.write("closed/presets.json", "old");
    ASSERT_EQ(::chmod(folder.file("closed").path().constData(), 0555), 0);
    ASSERT_EQ(::mkfifo(folder.file("pipe").path().constData(), 0644), 0);
    ASSERT_EQ(::symlink("loop", folder.file("loop").path().constData()), 0);
    const struct {
        const char* name;
        QByteArray file;
        int errorNumber;
    } rows[] = {
        {"folder", "folder", EISDIR},
        {"pipe", "pipe", EINVAL},
        {"circle of links", "loop", ELOOP},
        {"no folder", "none/presets.json", ENOENT},
        {"file as folder", "closed/presets.json/presets.json", ENOTDIR},
        {"closed folder", "closed/presets.json", EACCES},
        {"NUL byte", QByteArray("a\0b", 3), EINVAL},
    };
    const test::OrdinaryUser user(folder.url());
    const QStringList before = namesIn(folder.url());
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(errnoOf([&] { writeAtomically(folder.file(row.file), "new"); }), row.errorNumber);
        EXPECT_EQ(namesIn(folder.url()), before);
    }
    EXPECT_EQ(test::readFile(folder.file("closed/presets.json")), "old");
}

TEST(CopyWithoutReplacing, copiesBytesAndNeverOverAnotherFile)
{
    const test::TemporaryFolder folder;
    QByteArray bytes;
    for (int i = 0; i < 200'000; ++i)
        bytes += QByteArray::number(i);
    const OpenedFile source = OpenedFile::open(folder.write("source", bytes));
    copyWithoutReplacing(source, folder.file("copy"));
    EXPECT_EQ(test::readFile(folder.file("copy")), bytes);
    EXPECT_EQ(errnoOf([&] { copyWithoutReplacing(source, folder.file("copy")); }), EEXIST);

    folder.write("source", "cut");
    EXPECT_EQ(errnoOf([&] { copyWithoutReplacing(source, folder.file("second")); }), EBUSY);
    EXPECT_EQ(namesIn(folder.url()), (QStringList{QStringLiteral("copy"), QStringLiteral("source")}));
}

TEST(SweepStaleStagingFiles, takesOurOldFilesAlone)
{
    constexpr time_t day = 24 * 60 * 60;
    const QByteArray uuid = "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0";
    const struct {
        const char* why;
        QByteArray name;
        time_t age;
        bool swept;
    } rows[] = {
        {"old", ".Ferrow-" + uuid + ".jpg", day + 60, true},
        {"old, without extension", ".Ferrow-" + uuid, day + 60, true},
        {"not a day old", ".Ferrow-" + uuid + ".png", day - 60, false},
        {"small letters", ".Ferrow-" + uuid.toLower() + ".jpg", 9 * day, false},
        {"something behind", ".Ferrow-" + uuid + "x.jpg", 9 * day, false},
        {"braces", ".Ferrow-{" + uuid.chopped(2) + "}.jpg", 9 * day, false},
        {"visible", "Ferrow-" + uuid + ".jpg", 9 * day, false},
    };
    const test::TemporaryFolder folder;
    const auto makeOld = [](const FileUrl& url, time_t age) {
        const timespec when{::time(nullptr) - age, 0};
        const timespec times[] = {when, when};
        ASSERT_EQ(::utimensat(AT_FDCWD, url.path().constData(), times, AT_SYMLINK_NOFOLLOW), 0);
    };
    for (const auto& row : rows)
        makeOld(folder.write(row.name, "x"), row.age);
    sweepStaleStagingFiles(folder.url());

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(::access(folder.file(row.name).path().constData(), F_OK) != 0, row.swept);
    }
}

} // namespace ferrow
