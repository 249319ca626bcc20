// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Files/FilePlacement.h"

#include "Files/OrdinaryUser.h"
#include "Platform/Base/Cancellation.h"
#include "Support/Files.h"

#include <gmock/gmock.h>

#include <barrier>
#include <cerrno>
#include <fstream>
#include <thread>

namespace ferrow {

using namespace test;
using namespace Qt::StringLiterals;

namespace {

mode_t modeOf(const FileUrl& url)
{
    struct stat status {};
    return ::stat(url.path().constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

} // namespace

TEST(FilePlacement, choosesTheCallThatTheVolumeOffers)
{
    const TemporaryFolder folder;
    // Which calls were made (e: exclusive rename, l: link, x: existence check, r: rename), and the number that came
    // out.
    using Made = std::pair<std::string, int>;
    const auto placing = [&](bool replace, int exclusively, int link = 0, int standing = ENOENT, int rename = 0) {
        Made made;
        const auto answering = [&](char letter, int number) {
            return [&made, letter, number](const auto&...) { return made.first += letter, number; };
        };
        const PlacementCalls calls{answering('e', exclusively), answering('l', link), answering('r', rename),
                                   answering('x', standing)};
        const auto result = place(folder.file("staged"), folder.file("a.jpg"), replace, &made.second, calls);
        EXPECT_EQ(result == PlacementResult::placed, made.second == 0);
        EXPECT_EQ(result == PlacementResult::destinationExists, made.second == EEXIST);
        return made;
    };
    EXPECT_EQ(placing(false, 0), Made("e", 0));
    EXPECT_EQ(placing(false, EEXIST), Made("e", EEXIST));
    EXPECT_EQ(placing(false, EPERM), Made("e", EPERM)); // Not permitted is no reason to try less.
    EXPECT_EQ(placing(false, EINVAL), Made("el", 0));
    EXPECT_EQ(placing(false, ENOSYS, EEXIST), Made("el", EEXIST));
    EXPECT_EQ(placing(false, EINVAL, EPERM), Made("elxr", 0));
    EXPECT_EQ(placing(false, EINVAL, EPERM, 0), Made("elx", EEXIST));
    EXPECT_EQ(placing(false, EINVAL, EPERM, EIO), Made("elx", EIO)); // Nobody knows whether that is free.
    EXPECT_EQ(placing(false, EINVAL, ENOSYS, ENOENT, ENOSPC), Made("elxr", ENOSPC));
    EXPECT_EQ(placing(true, EEXIST, EEXIST, 0), Made("r", 0));
}

TEST(FilePlacement, letsOneOfTwoRacersWin)
{
    PlacementCalls linksOnly = PlacementCalls::system();
    linksOnly.renameExclusively = [](int, const QByteArray&, const QByteArray&) { return EINVAL; };
    const TemporaryFolder folder;
    const FileUrl photo = folder.file("photo.jpg");
    const QByteArray names[] = {"one", "other"};
    PlacementResult results[2]{};
    int badRounds = 0;
    int round = 0;
    std::barrier start(2);
    std::barrier finish(2, [&]() noexcept {
        const int winner = results[0] == PlacementResult::placed ? 0 : 1;
        const bool isGood = results[winner] == PlacementResult::placed &&
                            results[1 - winner] == PlacementResult::destinationExists &&
                            readFile(photo) == names[winner] && !exists(folder.file(names[winner])) &&
                            exists(folder.file(names[1 - winner]));
        badRounds += isGood ? 0 : 1;
        ++round;
        ::unlink(photo.path().constData());
    });
    const auto race = [&](int racer) {
        while (round < 1'000) {
            const FileUrl staged = folder.write(names[racer], names[racer]);
            start.arrive_and_wait();
            results[racer] = place(staged, photo, false, nullptr, round % 2 ? linksOnly : PlacementCalls::system());
            finish.arrive_and_wait();
        }
    };
    {
        const std::jthread other(race, 1);
        race(0);
    }
    EXPECT_EQ(badRounds, 0);
}

TEST(StagedFile, isHiddenFreshAndGoneUnlessPlaced)
{
    const TemporaryFolder folder;
    {
        StagedFile staged = StagedFile::create(folder.url(), "tiff");
        EXPECT_THAT(staged.url().lastPathComponentBytes().toStdString(),
                    testing::MatchesRegex("\\.Ferrow-[0-9A-F]{8}-([0-9A-F]{4}-){3}[0-9A-F]{12}\\.tiff"));
        std::ofstream(folder.file("any").path().constData()); // As any program makes files: the umask decides.
        EXPECT_EQ(modeOf(staged.url()), modeOf(folder.file("any")));
        const StagedFile moved = std::move(staged);
        EXPECT_EQ(namesIn(folder.url()).size(), 2);
    }
    EXPECT_EQ(namesIn(folder.url()), QStringList(u"any"_s));
    EXPECT_EQ(errnoOf([&] { return StagedFile::create(folder.file("none"), "jpg"); }), ENOENT);
}

TEST(StagedFile, staysWithItsFolder)
{
    const TemporaryFolder folder;
    createFolder(folder.file("out"));
    {
        StagedFile placed = StagedFile::create(folder.file("out"), "jpg");
        const StagedFile dropped = StagedFile::create(folder.file("out"), "jpg");
        ASSERT_EQ(::rename(folder.file("out").path().constData(), folder.file("moved").path().constData()), 0);
        createFolder(folder.file("out")); // Somebody else's.
        placed.flushAndClose();
        EXPECT_EQ(placed.place("a.jpg", false), PlacementResult::placed);
        EXPECT_EQ(placed.place("a.jpg", true), PlacementResult::failed); // It has been placed.
    }
    EXPECT_EQ(namesIn(folder.file("moved")), QStringList(u"a.jpg"_s));
    EXPECT_TRUE(namesIn(folder.file("out")).isEmpty());
}

TEST(StagedFile, triesAnOddNameAndLeavesNothingOfIt)
{
    const TemporaryFolder folder;
    StagedFile staged = StagedFile::create(folder.url(), "jpg");
    const QStringList before = namesIn(folder.url());
    EXPECT_EQ(errnoOf([&] { staged.checkName("wh?t \xC3\xA9.jpg"); }), 0);
    EXPECT_EQ(errnoOf([&] { staged.checkName(QByteArray(250, '?')); }), 0); // Too long for a trial alone.
    EXPECT_EQ(namesIn(folder.url()), before);
    std::filesystem::remove_all(folder.url().path().toStdString());
    EXPECT_EQ(errnoOf([&] { staged.checkName("plain (1).jpg"); }), 0); // Not tried.
    EXPECT_EQ(errnoOf([&] { staged.checkName("wh?t.jpg"); }), ENOENT);
}

TEST(CreatePrivateFolder, keepsOthersOutOfWhatItMakes)
{
    const TemporaryFolder folder;
    createPrivateFolder(folder.file("a/b"));
    createPrivateFolder(folder.file("a/b"));
    EXPECT_EQ(modeOf(folder.file("a")), 0700u);
    EXPECT_EQ(modeOf(folder.file("a/b")), 0700u);
    const FileUrl file = folder.write("file", {});
    EXPECT_EQ(errnoOf([&] { createPrivateFolder(file); }), ENOTDIR);
    EXPECT_EQ(errnoOf([&] { createPrivateFolder(file.appending("inside")); }), ENOTDIR);
}

TEST(WriteAtomically, keepsTheOldFileWhenTheDiskIsFull)
{
    const TemporaryFolder folder;
    const FileUrl file = folder.write("presets.json", "old");
    const QByteArray bytes(600'000, 'n');
    for (const rlim_t limit : {0, 1, 300'000, 599'999}) {
        const int number = [&] {
            const FileSizeLimit full(limit);
            return errnoOf([&] { writeAtomically(file, bytes); });
        }();
        EXPECT_EQ(number, EFBIG) << limit;
        EXPECT_EQ(readFile(file), "old");
        EXPECT_EQ(namesIn(folder.url()).size(), 1);
    }
    writeAtomically(file, bytes);
    EXPECT_EQ(readFile(file), bytes);
}

TEST(WriteAtomically, leavesWhatStandsWhereTheRestNeverComes)
{
    const TemporaryFolder folder;
    const FileUrl file = folder.write("plan", "old");
    const auto breakingOff = [](ByteSink& sink) {
        sink.write(std::vector<std::byte>(1'000'000));
        throw Canceled();
    };
    EXPECT_THROW(writeAtomically(file, breakingOff), Canceled);
    EXPECT_EQ(readFile(file), "old");
    EXPECT_EQ(namesIn(folder.url()).size(), 1);
}

TEST(WriteAtomically, replacesWhatLinksLeadTo)
{
    const TemporaryFolder folder;
    createFolder(folder.file("real/deep"));
    const FileUrl target = folder.write("real/presets.json", "old");
    setMode(target, 0640);
    // ".." behind "way" is "real", not the folder that "way" stands in.
    makeLink(folder.file("way"), "real/deep");
    makeLink(folder.file("second"), "way/../presets.json");
    makeLink(folder.file("first"), folder.file("second").path());
    makeLink(folder.file("dangling"), "real/fresh.json");
    writeAtomically(folder.file("first"), "new");
    writeAtomically(folder.file("dangling"), "made");

    EXPECT_EQ(readFile(target), "new");
    EXPECT_EQ(modeOf(target), 0640u);
    EXPECT_EQ(readFile(folder.file("real/fresh.json")), "made");
    EXPECT_EQ(namesIn(folder.file("real")), (QStringList{u"deep"_s, u"fresh.json"_s, u"presets.json"_s}));
    writeAtomically(folder.file("second"), "newer"); // Still a link.
    EXPECT_EQ(readFile(target), "newer");
}

TEST(WriteAtomically, refusesWhatIsNoFileAndFoldersItMayNotChange)
{
    const TemporaryFolder folder;
    createFolder(folder.file("folder"));
    createFolder(folder.file("closed"));
    const FileUrl old = folder.write("closed/old", "old");
    setMode(folder.file("closed"), 0555);
    makePipe(folder.file("pipe"));
    makeLink(folder.file("loop"), "loop");
    const OrdinaryUser user(folder.url());
    const QStringList before = namesIn(folder.url());
    const auto writing = [&](const QByteArray& name) {
        return errnoOf([&] { writeAtomically(folder.file(name), "new"); });
    };
    EXPECT_EQ(writing("folder"), EISDIR);
    EXPECT_EQ(writing("pipe"), EINVAL);
    EXPECT_EQ(writing("loop"), ELOOP);
    EXPECT_EQ(writing("none/new"), ENOENT);
    EXPECT_EQ(writing("closed/old"), EACCES);
    EXPECT_EQ(writing(QByteArray("a\0b", 3)), EINVAL);
    EXPECT_EQ(namesIn(folder.url()), before);
    EXPECT_EQ(readFile(old), "old");
}

TEST(CopyWithoutReplacing, copiesBytesAndNeverOverAnotherFile)
{
    const TemporaryFolder folder;
    QByteArray bytes;
    for (int i = 0; i < 200'000; ++i)
        bytes += QByteArray::number(i);
    const OpenedFile source = OpenedFile::open(folder.write("source", bytes));
    copyWithoutReplacing(source, folder.file("copy"));
    EXPECT_EQ(readFile(folder.file("copy")), bytes);
    EXPECT_EQ(errnoOf([&] { copyWithoutReplacing(source, folder.file("copy")); }), EEXIST);

    folder.write("source", "cut");
    EXPECT_EQ(errnoOf([&] { copyWithoutReplacing(source, folder.file("second")); }), EBUSY);
    EXPECT_EQ(namesIn(folder.url()), (QStringList{u"copy"_s, u"source"_s}));
}

TEST(SweepStaleStagingFiles, takesOurOldFilesAlone)
{
    constexpr time_t day = 24 * 60 * 60;
    const QByteArray uuid = "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0";
    const std::tuple<QByteArray, time_t, bool> rows[] = {
        {".Ferrow-" + uuid + ".jpg", day + 60, true},  {".Ferrow-" + uuid, day + 60, true},
        {".Ferrow-" + uuid + ".png", day - 60, false}, {".Ferrow-" + uuid.toLower() + ".jpg", 9 * day, false},
        {".Ferrow-" + uuid + "x.jpg", 9 * day, false}, {".Ferrow-{" + uuid.chopped(2) + "}.jpg", 9 * day, false},
        {"Ferrow-" + uuid + ".jpg", 9 * day, false},
    };
    const TemporaryFolder folder;
    for (const auto& [name, age, isSwept] : rows) {
        const timespec when{::time(nullptr) - age, 0};
        const timespec times[] = {when, when};
        ASSERT_EQ(::utimensat(AT_FDCWD, folder.write(name, "x").path().constData(), times, 0), 0);
    }
    sweepStaleStagingFiles(folder.url());
    for (const auto& [name, age, isSwept] : rows)
        EXPECT_NE(exists(folder.file(name)), isSwept) << name.toStdString();
}

} // namespace ferrow
