// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/ExportPlanner.h"

#include "Platform/Base/Cancellation.h"
#include "Support/Files.h"

#include <gmock/gmock.h>

#include <map>
#include <set>

namespace ferrow {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Paths = std::vector<QByteArray>;

FileUrl place(const QByteArray& path)
{
    return FileUrl::fromPath(path);
}

BatchExportConfiguration into(const QByteArray& folder, CollisionRule rule = CollisionRule::appendNumber)
{
    return {.chosenFolder = place(folder), .collisionRule = rule};
}

BatchExportConfiguration besideEach(const char* name)
{
    return {.destinationMode = ExportDestinationMode::sourceSubfolder, .sourceSubfolderName = QString::fromUtf8(name)};
}

/// A disk of names alone, which notes what it is asked to do.
struct FakeDisk {
    std::set<FileUrl> existing = {};
    std::map<FileUrl, int> uncreatable = {}; ///< With the errno.
    std::map<FileUrl, int> locked = {};
    std::map<FileUrl, int> unknown = {};        ///< Where asking what stands there fails.
    std::map<FileUrl, FileNumber> numbers = {}; ///< Of files that have more than one name.
    bool folds = false;
    std::vector<FileUrl> originals = {};
    std::vector<FileUrl> created = {};
    std::vector<FileUrl> checked = {};
    int questions = 0;

    BatchExportPlan plan(const Paths& sources, const BatchExportConfiguration& configuration,
                         const ExportSettings& settings = {}, const BatchFraming& framing = {})
    {
        const auto refuse = [](const std::map<FileUrl, int>& folders, const FileUrl& folder) {
            if (folders.contains(folder))
                throw SystemError{folders.at(folder), folder};
        };
        ExportPlanner planner;
        planner.createDirectory = [&](const FileUrl& folder) {
            created.push_back(folder);
            refuse(uncreatable, folder);
        };
        planner.fileExists = [&](const FileUrl& url) {
            ++questions;
            refuse(unknown, url);
            return existing.contains(url);
        };
        planner.foldsNames = [&](const FileUrl&) { return folds; };
        planner.checkWritable = [&](const FileUrl& folder) {
            checked.push_back(folder);
            refuse(locked, folder);
        };
        planner.fileNumber = [&](const FileUrl& url) {
            const auto found = numbers.find(url);
            return found == numbers.end() ? std::nullopt : std::optional(found->second);
        };
        ExportRequest request{
            .configuration = configuration, .settings = settings, .framing = framing, .originals = originals};
        for (const QByteArray& path : sources)
            request.photos.emplace_back().url = place(path);
        return planner.plan(request, {});
    }
};

/// With "! " before what replaces.
Paths destinations(const BatchExportPlan& plan)
{
    Paths paths;
    for (const BatchExportJob& job : plan.jobs)
        paths.push_back((job.replaceExisting ? "! " : "") + job.destination.path());
    return paths;
}

Paths paths(const std::vector<FileUrl>& urls)
{
    Paths list;
    for (const FileUrl& url : urls)
        list.push_back(url.path());
    return list;
}

} // namespace

TEST(ExportPlanner, givesNamesByRule)
{
    const auto append = CollisionRule::appendNumber;
    const auto skip = CollisionRule::skip;
    const FileUrl taken = place("/out/a_framed.jpg");
    const FileUrl taken2 = place("/out/a_framed 2.jpg");
    const Paths alike{"/x/a.jpg", "/y/a.png"};
    const Paths numbered{"/out/a_framed.jpg", "/out/a_framed 2.jpg"};
    const struct {
        Paths sources;
        CollisionRule rule;
        std::set<FileUrl> existing;
        Paths expected;
    } rows[] = {
        {{}, append, {}, {}},
        {alike, append, {}, numbered},
        {alike, skip, {}, numbered},
        {alike, CollisionRule::replace, {taken}, {"! /out/a_framed.jpg", "/out/a_framed 2.jpg"}},
        {{"/x/a.jpg", "/y/a.png", "/y/b.png"}, skip, {taken}, {"/out/b_framed.jpg"}},
        {{"/x/a.jpg"}, append, {taken, taken2}, {"/out/a_framed 3.jpg"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        FakeDisk disk{.existing = row.existing};
        const BatchExportPlan plan = disk.plan(row.sources, into("/out/./", row.rule));
        EXPECT_EQ(destinations(plan), row.expected);
        EXPECT_EQ(std::size_t(plan.skipped), row.sources.size() - row.expected.size());
        EXPECT_EQ(plan.skippedPhotos.size(), row.sources.size() - row.expected.size());
        EXPECT_EQ(paths(plan.outputFolders), row.sources.empty() ? Paths{} : Paths{"/out"});
        EXPECT_THAT(disk.created, IsEmpty());
    }
}

TEST(ExportPlanner, leaveToReplaceNeverCoversAnotherOriginal)
{
    const FileUrl heic = place("/p/a.heic");
    const FileUrl jpeg = place("/p/a.jpg");
    const struct {
        const char* name;
        Paths sources;
        std::vector<FileUrl> originals;
        std::map<FileUrl, FileNumber> numbers;
        Paths expected;
        bool folds = false;
    } rows[] = {
        // Its own name is left to the exporter, which refuses it with the sentence for that.
        {"of the batch", {"/p/a.heic", "/p/a.jpg"}, {}, {}, {"/p/a 2.jpg", "! /p/a.jpg"}},
        {"left out of the batch", {"/p/a.heic"}, {heic, jpeg}, {}, {"/p/a 2.jpg"}},
        {"by another path",
         {"/p/a.heic"},
         {heic, place("/link/a.jpg")},
         {{jpeg, {1, 7}}, {place("/link/a.jpg"), {1, 7}}, {heic, {1, 8}}},
         {"/p/a 2.jpg"}},
        {"in other letters", {"/p/a.heic"}, {heic, place("/p/A.JPG")}, {}, {"/p/a 2.jpg"}, true},
        {"its own in other letters", {"/p/A.JPG"}, {}, {}, {"! /p/A.jpg"}, true},
        {"its own by another path",
         {"/link/a.jpg"},
         {},
         {{jpeg, {1, 7}}, {place("/link/a.jpg"), {1, 7}}},
         {"! /p/a.jpg"}},
        {"no original", {"/p/a.heic"}, {heic}, {{jpeg, {1, 7}}, {heic, {2, 7}}}, {"! /p/a.jpg"}},
    };
    BatchExportConfiguration configuration = into("/p", CollisionRule::replace);
    configuration.filenameTemplate = QStringLiteral("{filename}");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FakeDisk disk{.existing = {heic, jpeg, place("/p/A.jpg")}, .numbers = row.numbers, .folds = row.folds};
        disk.originals = row.originals;
        EXPECT_EQ(destinations(disk.plan(row.sources, configuration)), row.expected);
    }
}

TEST(ExportPlanner, failsPhotosWhosePlaceCannotBeAskedAbout)
{
    // A name that the volume can't hold; and one that stands in the way of numbering.
    FakeDisk disk{.existing = {place("/out/c_framed.jpg")},
                  .unknown = {{place("/out/b_framed.jpg"), EILSEQ}, {place("/out/c_framed 2.jpg"), EIO}}};
    for (const CollisionRule rule : allCases<CollisionRule>()) {
        SCOPED_TRACE(rawValue(rule).toStdString());
        const BatchExportPlan plan = disk.plan({"/x/a.jpg", "/x/b.jpg", "/x/c.jpg"}, into("/out", rule));
        const bool numbers = rule == CollisionRule::appendNumber;
        ASSERT_EQ(plan.failures.size(), numbers ? 2U : 1U);
        EXPECT_EQ(plan.failures[0].source, place("/x/b.jpg"));
        EXPECT_EQ(plan.failures[0].message, (SystemError{EILSEQ, place("/out/b_framed.jpg")}.description()));
        EXPECT_EQ(plan.skipped, rule == CollisionRule::skip ? 1 : 0);
        EXPECT_EQ(destinations(plan).front(), "/out/a_framed.jpg");
    }
}

TEST(ExportPlanner, heedsAStopWhileItNumbers)
{
    std::stop_source stop;
    ExportPlanner planner;
    int questions = 0;
    planner.checkWritable = [](const FileUrl&) {};
    planner.fileExists = [&](const FileUrl&) {
        if (++questions == 100)
            stop.request_stop();
        return questions < 10'000; // Enough to fail, not to run for ever.
    };
    ExportRequest request{.configuration = into("/out")};
    request.photos.emplace_back().url = place("/x/a.jpg");
    EXPECT_THROW((void)planner.plan(request, stop.get_token()), Canceled);
}

TEST(ExportPlanner, neverGivesTwoPhotosOneFile)
{
    const auto replace = CollisionRule::replace;
    const struct {
        const char* name;
        Paths sources;
        FakeDisk disk;
        Paths expected;
    } rows[] = {
        {"bytes count", {"/a/I.jpg", "/b/i.jpg"}, {}, {"/out/I_framed.jpg", "/out/i_framed.jpg"}},
        {"case", {"/a/I.jpg", "/b/i.jpg"}, {.folds = true}, {"/out/I_framed.jpg", "/out/i_framed 2.jpg"}},
        {"case of numbers",
         {"/a/I.jpg", "/b/i.jpg", "/c/I.jpg"},
         {.folds = true},
         {"/out/I_framed.jpg", "/out/i_framed 2.jpg", "/out/I_framed 3.jpg"}},
        {"accents",
         {"/a/\u00e9.jpg", "/b/E\u0301.jpg"},
         {.folds = true},
         {"/out/\u00e9_framed.jpg", "/out/E\u0301_framed 2.jpg"}},
        {"dotless i",
         {"/a/\u0131.jpg", "/b/I.jpg"},
         {.folds = true},
         {"/out/\u0131_framed.jpg", "/out/I_framed 2.jpg"}},
        {"one file under two names",
         {"/a/long.jpg", "/b/lo~1.jpg"},
         {.existing = {place("/out/long_framed.jpg"), place("/out/lo~1_framed.jpg")},
          .numbers = {{place("/out/long_framed.jpg"), {1, 5}}, {place("/out/lo~1_framed.jpg"), {1, 5}}}},
         {"! /out/long_framed.jpg", "/out/lo~1_framed 2.jpg"}},
        {"two files",
         {"/a/a.jpg", "/b/b.jpg"},
         {.existing = {place("/out/a_framed.jpg"), place("/out/b_framed.jpg")},
          .numbers = {{place("/out/a_framed.jpg"), {1, 5}}, {place("/out/b_framed.jpg"), {1, 6}}}},
         {"! /out/a_framed.jpg", "! /out/b_framed.jpg"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FakeDisk disk = row.disk;
        EXPECT_EQ(destinations(disk.plan(row.sources, into("/out", replace))), row.expected);
    }
    // One folder by two ways.
    FakeDisk linked{.numbers = {{place("/p/Framed"), {1, 9}}, {place("/link/Framed"), {1, 9}}}};
    EXPECT_EQ(destinations(linked.plan({"/p/a.jpg", "/link/a.jpg"}, besideEach("Framed"))),
              (Paths{"/p/Framed/a_framed.jpg", "/link/Framed/a_framed 2.jpg"}));
}

TEST(ExportPlanner, numbersByThePlaceInTheListAndResolvesEachPhotosRecipe)
{
    FakeDisk disk{.existing = {place("/out/2.heic")}};
    BatchExportConfiguration configuration = into("/out", CollisionRule::skip);
    configuration.filenameTemplate = QStringLiteral("{index}");
    const ExportSettings settings{.format = ExportFormat::heic, .quality = 0.5};
    const BatchFraming framing{
        RecipeScope::selected, {.border = {.width = 3}}, {{place("/x/c.jpg"), {.border = {.width = 7}}}}};
    const auto plan = disk.plan({"/x/a.jpg", "/x/b.jpg", "/x/c.jpg"}, configuration, settings, framing);
    EXPECT_THAT(destinations(plan), ElementsAre("/out/1.heic", "/out/3.heic"));
    EXPECT_THAT(paths(plan.skippedPhotos), ElementsAre("/x/b.jpg"));
    EXPECT_EQ(plan.jobs.at(0).recipe.border.width, 3);
    EXPECT_EQ(plan.jobs.at(1).recipe.border.width, 7);
    EXPECT_EQ(plan.jobs.at(1).settings, settings);
    EXPECT_EQ(plan.jobs.at(1).photo.url, place("/x/c.jpg"));
}

TEST(ExportPlanner, makesAFolderBesideEachSourceOnce)
{
    FakeDisk disk;
    const BatchExportPlan plan =
        disk.plan({"/p/Shoot 10/a.jpg", "/p/shoot 2/a.jpg", "/p/Shoot 10/b.jpg"}, besideEach(" Framed\n"));
    EXPECT_THAT(destinations(plan), ElementsAre("/p/Shoot 10/Framed/a_framed.jpg", "/p/shoot 2/Framed/a_framed.jpg",
                                                "/p/Shoot 10/Framed/b_framed.jpg"));
    EXPECT_THAT(paths(disk.created), ElementsAre("/p/Shoot 10/Framed", "/p/shoot 2/Framed"));
    EXPECT_EQ(disk.checked, disk.created);
    EXPECT_THAT(paths(plan.outputFolders), ElementsAre("/p/shoot 2/Framed", "/p/Shoot 10/Framed"));
}

TEST(ExportPlanner, failsPhotosOneByOne)
{
    const Paths sources{"/refused/b.jpg", "/good/a.jpg", "/locked/c.jpg", "/good/d.jpg"};
    const struct {
        BatchExportConfiguration configuration;
        Paths failed;
        const char* message; ///< A part of it.
    } rows[] = {
        {{}, sources, "Choose an export folder."},
        {besideEach(".."), sources, "Enter a valid source subfolder name."},
        {besideEach("out"), {"/refused/b.jpg", "/locked/c.jpg"}, "out"},
        {into("/locked/out"), sources, "permission"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        FakeDisk disk{.uncreatable = {{place("/refused/out"), ENOSPC}}, .locked = {{place("/locked/out"), EACCES}}};
        BatchExportConfiguration configuration = row.configuration;
        configuration.filenameTemplate = QStringLiteral("{index}");
        const BatchExportPlan plan = disk.plan(sources, configuration);
        Paths failed;
        for (const BatchExportFailure& failure : plan.failures) {
            failed.push_back(failure.source.path());
            EXPECT_EQ(failure.filename, failure.source.lastPathComponent());
            EXPECT_THAT(failure.message.toStdString(), testing::HasSubstr(row.message));
        }
        EXPECT_EQ(failed, row.failed);
        EXPECT_EQ(destinations(plan), failed == sources ? Paths{} : (Paths{"/good/out/2.jpg", "/good/out/4.jpg"}));
        EXPECT_EQ(plan.outputFolders.size(), failed == sources ? 0U : 1U);
        EXPECT_LE(disk.checked.size(), 2U);
    }
}

TEST(ExportPlanner, asksTheDiskInStepWithThePhotos)
{
    FakeDisk disk;
    Paths sources;
    for (int i = 0; i < 10'000; ++i)
        sources.push_back("/roll " + QByteArray::number(i) + "/IMG_0001.JPG");
    const BatchExportPlan plan = disk.plan(sources, into("/out"));
    ASSERT_EQ(plan.jobs.size(), sources.size());
    EXPECT_EQ(plan.jobs.back().destination, place("/out/IMG_0001_framed 10000.jpg"));
    EXPECT_LE(disk.questions, 10'000);
}

} // namespace ferrow
