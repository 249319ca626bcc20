// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ExportPlanner.h"

#include "Platform/Base/SystemErrors.h"
#include "Support/TestSupport.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <set>

namespace ferrow {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

FileUrl place(const QByteArray& path)
{
    return FileUrl::fromPath(path);
}

std::vector<ImportedPhoto> photos(const std::vector<QByteArray>& paths)
{
    std::vector<ImportedPhoto> list;
    for (const QByteArray& path : paths)
        list.emplace_back().url = place(path);
    return list;
}

BatchExportConfiguration into(const QByteArray& folder)
{
    return {.chosenFolder = place(folder)};
}

BatchExportConfiguration besideEach(const QString& name)
{
    return {.destinationMode = ExportDestinationMode::sourceSubfolder, .sourceSubfolderName = name};
}

/// A disk of names alone, which notes what it is asked to do.
struct FakeDisk {
    std::set<FileUrl> existing = {};
    std::map<FileUrl, int> refusedFolders = {}; ///< errno by folder that can't be created.
    std::map<FileUrl, int> lockedFolders = {};  ///< errno by folder that can't be written.
    std::vector<FileUrl> created = {};
    std::vector<FileUrl> checked = {};

    BatchExportPlan plan(const std::vector<ImportedPhoto>& list, const BatchExportConfiguration& configuration,
                         const ExportSettings& settings = {})
    {
        return planner().plan(list, configuration, settings, RecipeScope::batch, {}, {});
    }
    ExportPlanner planner()
    {
        return {.createDirectory =
                    [this](const FileUrl& folder) {
                        created.push_back(folder);
                        refuse(refusedFolders, folder);
                    },
                .fileExists = [this](const FileUrl& url) { return existing.contains(url); },
                .checkWritable =
                    [this](const FileUrl& folder) {
                        checked.push_back(folder);
                        refuse(lockedFolders, folder);
                    }};
    }

private:
    static void refuse(const std::map<FileUrl, int>& folders, const FileUrl& folder)
    {
        if (const auto found = folders.find(folder); found != folders.end())
            throw SystemError{found->second, folder};
    }
};

std::vector<QByteArray> destinations(const BatchExportPlan& plan)
{
    std::vector<QByteArray> paths;
    for (const BatchExportJob& job : plan.jobs)
        paths.push_back((job.replaceExisting ? "! " : "") + job.destination.path());
    return paths;
}

std::vector<QByteArray> paths(const std::vector<FileUrl>& urls)
{
    std::vector<QByteArray> list;
    for (const FileUrl& url : urls)
        list.push_back(url.path());
    return list;
}

int errorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const SystemError& error) {
        return error.errorNumber;
    }
    return 0;
}

} // namespace

TEST(ExportPlanner, givesNamesByRule)
{
    struct Row {
        const char* name;
        std::vector<QByteArray> sources;
        CollisionRule rule;
        std::set<FileUrl> existing;
        std::vector<QByteArray> expected; ///< With "! " before what replaces.
        std::int64_t skipped;
    };
    const auto append = CollisionRule::appendNumber;
    const auto skip = CollisionRule::skip;
    const FileUrl taken = place("/out/a_framed.jpg");
    const FileUrl taken2 = place("/out/a_framed 2.jpg");
    const std::vector<QByteArray> alike{"/x/a.jpg", "/y/a.png"};
    const std::vector<QByteArray> numbered{"/out/a_framed.jpg", "/out/a_framed 2.jpg"};
    const std::vector<QByteArray> replacing{"! /out/a_framed.jpg", "/out/a_framed 2.jpg"};
    const Row rows[] = {
        {"no photos", {}, append, {}, {}, 0},
        {"names alike, appending", alike, append, {}, numbered, 0},
        {"names alike, skipping", alike, skip, {}, numbered, 0},
        {"names alike, replacing", alike, CollisionRule::replace, {taken}, replacing, 0},
        {"both skipped", {"/x/a.jpg", "/y/a.png", "/y/b.png"}, skip, {taken}, {"/out/b_framed.jpg"}, 2},
        {"two taken", {"/x/a.jpg"}, append, {taken, taken2}, {"/out/a_framed 3.jpg"}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FakeDisk disk{.existing = row.existing};
        BatchExportConfiguration configuration = into("/out/./");
        configuration.collisionRule = row.rule;
        const BatchExportPlan plan = disk.plan(photos(row.sources), configuration);
        EXPECT_EQ(destinations(plan), row.expected);
        EXPECT_EQ(plan.skipped, row.skipped);
        EXPECT_EQ(std::int64_t(plan.skippedPhotos.size()), row.skipped);
        EXPECT_THAT(plan.failures, IsEmpty());
        // Listed although all of its photos may be skipped, and never made.
        EXPECT_EQ(paths(plan.outputFolders),
                  row.sources.empty() ? std::vector<QByteArray>{} : std::vector<QByteArray>{"/out"});
        EXPECT_THAT(disk.created, IsEmpty());
    }
}

TEST(ExportPlanner, numbersByThePlaceInTheList)
{
    FakeDisk disk{.existing = {place("/out/2.png")}};
    BatchExportConfiguration configuration = into("/out");
    configuration.filenameTemplate = QStringLiteral("{index}");
    configuration.collisionRule = CollisionRule::skip;
    const BatchExportPlan plan =
        disk.plan(photos({"/x/a.jpg", "/x/b.jpg", "/x/c.jpg"}), configuration, {.format = ExportFormat::png});
    EXPECT_THAT(destinations(plan), ElementsAre("/out/1.png", "/out/3.png"));
    EXPECT_THAT(paths(plan.skippedPhotos), ElementsAre("/x/b.jpg"));
}

TEST(ExportPlanner, resolvesEachPhotosRecipe)
{
    FakeDisk disk;
    const std::unordered_map<FileUrl, RenderRecipe> perPhoto{{place("/x/b.jpg"), {.borderWidth = 7}}};
    const ExportSettings settings{.format = ExportFormat::heic, .quality = 0.5};
    const auto plan = disk.planner().plan(photos({"/x/photo.tar.gz", "/x/b.jpg"}), into("/out"), settings,
                                          RecipeScope::selected, {.borderWidth = 3}, perPhoto);
    EXPECT_THAT(destinations(plan), ElementsAre("/out/photo.tar_framed.heic", "/out/b_framed.heic"));
    EXPECT_EQ(plan.jobs.at(0).recipe.borderWidth, 3);
    EXPECT_EQ(plan.jobs.at(1).recipe.borderWidth, 7);
    EXPECT_EQ(plan.jobs.at(1).settings, settings);
    EXPECT_EQ(plan.jobs.at(1).photo.url, place("/x/b.jpg"));
}

TEST(ExportPlanner, makesAFolderBesideEachSource)
{
    FakeDisk disk;
    const BatchExportPlan plan =
        disk.plan(photos({"/p/Shoot 10/a.jpg", "/p/shoot 2/a.jpg", "/p/Shoot 10/b.jpg", "/p/\xFF/a.jpg"}),
                  besideEach(QStringLiteral(" Framed\n")));
    EXPECT_THAT(destinations(plan), ElementsAre("/p/Shoot 10/Framed/a_framed.jpg", "/p/shoot 2/Framed/a_framed.jpg",
                                                "/p/Shoot 10/Framed/b_framed.jpg", "/p/\xFF/Framed/a_framed.jpg"));
    EXPECT_THAT(paths(disk.created), ElementsAre("/p/Shoot 10/Framed", "/p/shoot 2/Framed", "/p/\xFF/Framed"));
    EXPECT_EQ(disk.checked, disk.created);
    auto folders = paths(plan.outputFolders);
    std::erase(folders, "/p/\xFF/Framed");
    EXPECT_THAT(folders, ElementsAre("/p/shoot 2/Framed", "/p/Shoot 10/Framed"));
    EXPECT_EQ(plan.outputFolders.size(), 3U);
}

TEST(ExportPlanner, failsPhotosOneByOne)
{
    struct Row {
        const char* name;
        BatchExportConfiguration configuration;
        std::vector<QByteArray> failed;
        const char* message; ///< A part of it.
    };
    const std::vector<QByteArray> sources{"/good/a.jpg", "/refused/b.jpg", "/locked/c.jpg", "/good/d.jpg"};
    const Row rows[] = {
        {"no folder chosen", {}, sources, "Choose an export folder."},
        {"a name that leads out", besideEach(QStringLiteral("..")), sources, "Enter a valid source subfolder name."},
        {"folders that refuse", besideEach(QStringLiteral("out")), {"/refused/b.jpg", "/locked/c.jpg"}, "out"},
        {"a chosen folder that can't be written", into("/locked/out"), sources, "permission"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FakeDisk disk{.refusedFolders = {{place("/refused/out"), ENOSPC}},
                      .lockedFolders = {{place("/locked/out"), EACCES}}};
        const BatchExportPlan plan = disk.plan(photos(sources), row.configuration);
        std::vector<QByteArray> failed;
        std::set<QUuid> ids;
        for (const BatchExportFailure& failure : plan.failures) {
            failed.push_back(failure.source.path());
            ids.insert(failure.id);
            EXPECT_EQ(failure.filename, failure.source.lastPathComponent());
            EXPECT_THAT(failure.message.toStdString(), testing::HasSubstr(row.message));
        }
        EXPECT_EQ(failed, row.failed);
        EXPECT_EQ(ids.size(), failed.size());
        EXPECT_EQ(plan.jobs.size(), sources.size() - failed.size());
        EXPECT_EQ(plan.outputFolders.size(), failed.size() == sources.size() ? 0U : 1U);
        EXPECT_LE(disk.checked.size(), 2U);
    }
}

TEST(ExportPlanner, keepsTheNumberOfAPhotoAfterAFailedOne)
{
    FakeDisk disk{.refusedFolders = {{place("/refused/out"), EROFS}}};
    BatchExportConfiguration configuration = besideEach(QStringLiteral("out"));
    configuration.filenameTemplate = QStringLiteral("{index}");
    EXPECT_THAT(destinations(disk.plan(photos({"/refused/a.jpg", "/good/b.jpg"}), configuration)),
                ElementsAre("/good/out/2.jpg"));
}

TEST(ExportPlanner, asksTheDiskInStepWithThePhotos)
{
    FakeDisk disk;
    int questions = 0;
    ExportPlanner planner = disk.planner();
    planner.fileExists = [&](const FileUrl& /*url*/) { return ++questions, false; };
    std::vector<QByteArray> sources;
    for (int i = 0; i < 10'000; ++i)
        sources.push_back("/roll " + QByteArray::number(i) + "/IMG_0001.JPG");
    const BatchExportPlan plan = planner.plan(photos(sources), into("/out"), {}, RecipeScope::batch, {}, {});
    ASSERT_EQ(plan.jobs.size(), sources.size());
    EXPECT_EQ(plan.jobs.back().destination, place("/out/IMG_0001_framed 10000.jpg"));
    EXPECT_LE(questions, 10'000);
}

TEST(ExportPlanner, worksOnARealDisk)
{
    const test::TemporaryFolder folder;
    const FileUrl deep = folder.file("one").appending("two \xFF").appending("three");
    ExportPlanner::createDirectories(deep);
    ExportPlanner::createDirectories(deep);
    ExportPlanner::checkFolderWritable(deep);
    EXPECT_TRUE(std::filesystem::is_directory(deep.path().toStdString()));

    const FileUrl file = folder.write("file", "x");
    const FileUrl dangling = folder.file("dangling");
    ASSERT_EQ(::symlink("nowhere", dangling.path().constData()), 0);
    EXPECT_TRUE(ExportPlanner::existsFollowingLinks(file));
    EXPECT_TRUE(ExportPlanner::existsFollowingLinks(deep));
    EXPECT_FALSE(ExportPlanner::existsFollowingLinks(dangling));
    EXPECT_FALSE(ExportPlanner::existsFollowingLinks(file.appending("inside")));

    EXPECT_EQ(errorOf([&] { ExportPlanner::createDirectories(file); }), ENOTDIR);
    EXPECT_EQ(errorOf([&] { ExportPlanner::createDirectories(file.appending("inside")); }), ENOTDIR);
    EXPECT_EQ(errorOf([&] { ExportPlanner::createDirectories(dangling); }), ENOTDIR);
    EXPECT_EQ(errorOf([&] { ExportPlanner::createDirectories(folder.file(QByteArray("a\0b", 3))); }), EINVAL);
    EXPECT_EQ(errorOf([&] { ExportPlanner::createDirectories(folder.file(QByteArray(300, 'n'))); }), ENAMETOOLONG);
    EXPECT_EQ(errorOf([&] { ExportPlanner::checkFolderWritable(file); }), ENOTDIR);
    EXPECT_EQ(errorOf([&] { ExportPlanner::checkFolderWritable(folder.file("missing")); }), 0);
    // The temporary folder's own clearing passes over names that are not UTF-8.
    std::filesystem::remove_all(folder.file("one").path().toStdString());
}

TEST(ExportPlanner, findsLockedFolders)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "Nothing is locked for the superuser.";
    const test::TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.url().path().constData(), 0555), 0);
    EXPECT_EQ(errorOf([&] { ExportPlanner::checkFolderWritable(folder.url()); }), EACCES);
    EXPECT_EQ(errorOf([&] { ExportPlanner::createDirectories(folder.file("inside")); }), EACCES);
    ::chmod(folder.url().path().constData(), 0755);
}

} // namespace ferrow
