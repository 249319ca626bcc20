// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/ExportCheck.h"

#include "SessionTestSupport.h"
#include "Support/Pictures.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <new>
#include <set>
#include <thread>

namespace ferrow {

namespace {

using Severity = ExportFinding::Severity;

/// An export of three photos where all is well, for rows to spoil.
struct Situation {
    Situation()
    {
        for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
            request.photos.push_back(test::photoAt(test::photoUrl(name)));
        request.framing.batch.captions.front().setCaptionTemplate(QStringLiteral("Here: {camera}"));
        for (ImportedPhoto& photo : request.photos)
            photo.metadata.cameraModel = QStringLiteral("Model");
        request.configuration.chosenFolder = FileUrl::fromPath(QByteArray("/out"));
        operations.isReadable = [this](const FileUrl& file) {
            return !gone.contains(file.lastPathComponent().toStdString());
        };
        operations.exists = [this](const FileUrl& file) { return present.contains(file.path().toStdString()); };
        operations.checkWritable = [this](const FileUrl& folder) {
            if (refused.contains(folder.path().toStdString()))
                throw SystemError{EACCES, folder};
        };
        operations.freeBytes = [](const FileUrl&) { return 48'000'000'000; };
        operations.encodedSize = [](const BatchExportJob& job, const std::stop_token&) {
            return job.photo.pixelSize.width * 1000;
        };
        operations.loadLogo = [](const LogoAssetReference&, const std::stop_token&) -> Bitmap {
            throw LogoAssetError{LogoAssetError::Case::missingManagedAsset};
        };
    }

    ExportRequest request;
    std::set<std::string> gone;
    std::set<std::string> present{"/out", "/photos"};
    std::set<std::string> refused;
    ExportCheckOperations operations;
};

struct Row {
    const char* title; ///< Of the finding that must be there, besides those that say that all is well.
    Severity severity;
    std::size_t photos;
    const char* detail; ///< Part of it.
    std::function<void(Situation&)> spoil;
};

} // namespace

TEST(ExportFindings, findsNothingWhereAllIsWell)
{
    const Situation well;
    const auto findings = findingsFor(well.request, well.operations, {}).lines;
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[0].title, QStringLiteral("All 3 photos can be read"));
    EXPECT_EQ(findings[1].title, QStringLiteral("The folder can be written"));
    EXPECT_EQ(findings[1].detail, QStringLiteral("48 GB free"));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(static_cast<void>(findingsFor(well.request, well.operations, stop.get_token())), Canceled);
}

TEST(ExportFindings, namesEachCauseOnce)
{
    const auto beside = [](Situation& s, const char* photo, const char* refused) {
        s.request.configuration.destinationMode = ExportDestinationMode::sourceSubfolder;
        s.request.photos[1].url = FileUrl::fromPath(QByteArray(photo));
        s.refused = {refused};
    };
    // Copies named like the originals beside them, or like what stands in the chosen folder.
    const auto colliding = [](Situation& s, CollisionRule rule, const char* folder, const char* nameTemplate) {
        s.present.merge(std::set<std::string>{"/out/c_framed.jpg", "/photos/a.jpg", "/photos/b.jpg", "/photos/c.jpg"});
        s.request.configuration.collisionRule = rule;
        s.request.configuration.chosenFolder = FileUrl::fromPath(QByteArray(folder));
        s.request.configuration.filenameTemplate = QString::fromUtf8(nameTemplate);
    };
    const Row rows[] = {
        {"No photo is included", Severity::error, 0, "", [](auto& s) { s.request.photos.clear(); }},
        {"1 photo can’t be read", Severity::warning, 1, "where it was added from: b.jpg",
         [](auto& s) { s.gone = {"b.jpg"}; }},
        {"3 photos can’t be read", Severity::error, 3, "where they were added from",
         [](auto& s) {
             s.gone = {"a.jpg", "b.jpg", "c.jpg"};
         }},
        {"No folder is chosen", Severity::error, 0, "Choose an export folder.",
         [](auto& s) { s.request.configuration.chosenFolder.reset(); }},
        {"The folder can’t be written", Severity::error, 3, "out", [](auto& s) { s.refused = {"/out"}; }},
        {"The folder can’t be written", Severity::error, 3, "out", [](auto& s) { s.present.erase("/out"); }},
        {"The folder can’t be written", Severity::error, 3, "photos",
         [&](auto& s) { beside(s, "/photos/b.jpg", "/photos"); }},
        {"1 photo can’t be written", Severity::warning, 1, "locked",
         [&](auto& s) { beside(s, "/locked/b.jpg", "/locked"); }},
        {"The subfolder can’t have this name", Severity::error, 0, "Enter a valid source subfolder name.",
         [&](auto& s) {
             beside(s, "/photos/b.jpg", "");
             s.request.configuration.sourceSubfolderName = QStringLiteral("a/b");
         }},
        {"1 name is taken already", Severity::info, 1, "c_framed 2.jpg",
         [&](auto& s) { colliding(s, CollisionRule::appendNumber, "/out", "{filename}_framed"); }},
        {"2 names are taken already", Severity::info, 2, "same 2.jpg, same 3.jpg",
         [&](auto& s) { colliding(s, CollisionRule::replace, "/out", "same"); }},
        {"1 name is taken already", Severity::info, 1, "skipped: c.jpg",
         [&](auto& s) { colliding(s, CollisionRule::skip, "/out", "{filename}_framed"); }},
        {"1 name is taken already", Severity::warning, 1, "replaced",
         [&](auto& s) { colliding(s, CollisionRule::replace, "/out", "{filename}_framed"); }},
        {"3 photos would replace themselves", Severity::error, 3, "",
         [&](auto& s) { colliding(s, CollisionRule::replace, "/photos", "{filename}"); }},
        {"1 photo has no Camera", Severity::warning, 1, "leaves it out",
         [](auto& s) {
             s.request.framing.batch.captions.front().setCaptionTemplate(QStringLiteral("{camera} {artist|nobody}"));
             s.request.photos[1].metadata.cameraModel.reset();
         }},
        {"1 photo has no Camera", Severity::warning, 1, "leaves it out",
         [](auto& s) { s.request.photos[1].corrections[MetadataField::cameraModel] = {}; }},
        {"2 photos have an empty caption", Severity::warning, 2, "",
         [](auto& s) {
             s.request.framing.batch.captions.front().setCaptionTemplate(QStringLiteral("{artist}"));
             s.request.photos[1].corrections[MetadataField::artist] = QStringLiteral("x");
         }},
        {"3 photos have an empty caption", Severity::warning, 3, "",
         [](auto& s) {
             for (int i = 0; i < 2; ++i)
                 s.request.framing.batch.captions.emplace_back().setCaptionTemplate(QStringLiteral("{artist}"));
         }},
        {"1 photo has a caption that doesn’t fit", Severity::warning, 1, "cut off",
         [](auto& s) {
             s.request.photos[1].pixelSize = {40, 400};
         }},
        {"3 photos have captions that don’t fit", Severity::warning, 3, "cut off",
         [](auto& s) { s.request.framing.batch.border.width = 30; }},
        {"3 photos have captions that overlap", Severity::warning, 3, "over the other",
         [](auto& s) {
             std::vector<Caption>& captions = s.request.framing.batch.captions;
             captions.push_back(captions.front());
         }},
        {"3 photos have captions that overlap the logo", Severity::warning, 3, "drawn over",
         [](auto& s) {
             s.operations.loadLogo = [](const LogoAssetReference&, const std::stop_token&) {
                 return test::flat({30, 20}, rgba8, {0, 0, 0});
             };
             s.request.framing.batch.logo.emplace().position = CaptionPosition::borderBottomRight;
         }},
        {"The font “No Such Family” is not installed", Severity::warning, 3, "stands in",
         [](auto& s) {
             s.request.framing.batch.captions.front().face = FontFace{QStringLiteral("No Such Family"), {}};
         }},
        {"The logo can’t be drawn", Severity::error, 3, "", [](auto& s) { s.request.framing.batch.logo.emplace(); }},
        {"1 photo can’t be framed like this", Severity::warning, 1, "",
         [](auto& s) {
             s.request.photos[0].pixelSize = {49'900, 100};
         }},
        {"1 photo can’t be framed like this", Severity::warning, 1, "32,768",
         [](auto& s) {
             s.request.settings.format = ExportFormat::heic;
             s.request.photos[0].pixelSize = {32'529, 100};
         }},
        {"1 photo has its own framing, not used while Entire Batch is chosen", Severity::warning, 1, "b.jpg",
         [](auto& s) { s.request.framing.own[s.request.photos[1].id()].border.width = 7; }},
        {"2 photos have their own framing, not used while Entire Batch is chosen", Severity::warning, 2, "a.jpg, b.jpg",
         [](auto& s) {
             for (const std::size_t photo : {0, 1})
                 s.request.framing.own[s.request.photos[photo].id()].border.width = 7;
         }},
        {"1 photo can’t be framed like this", Severity::warning, 1, "",
         [](auto& s) {
             s.request.framing.scope = RecipeScope::selected;
             s.request.framing.own[s.request.photos[2].id()] = s.request.framing.batch;
             s.request.framing.own[s.request.photos[2].id()].border.width = 30'000;
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.title);
        Situation situation;
        row.spoil(situation);
        std::vector<ExportFinding> bad = findingsFor(situation.request, situation.operations, {}).lines;
        EXPECT_EQ(hasErrors(bad), row.severity == Severity::error);
        std::erase_if(bad, [](const ExportFinding& finding) { return finding.severity == Severity::ok; });
        ASSERT_EQ(bad.size(), 1u);
        EXPECT_EQ(bad[0].title, QString::fromUtf8(row.title));
        EXPECT_EQ(bad[0].severity, row.severity);
        EXPECT_EQ(bad[0].photos.size(), row.photos);
        EXPECT_TRUE(bad[0].detail.contains(QString::fromUtf8(row.detail))) << bad[0].detail.toStdString();
    }
}

TEST(ExportFindings, countsWhatCannotKeepItsDataByReason)
{
    Situation situation;
    situation.request.settings.keepsPhotoData = true;
    situation.request.photos[0].codedData = CodedData{.grid = {8, 8}, .keepsColors = {true, true, true}};
    situation.request.photos[1].type = FileType::png;
    situation.request.photos[2].codedData = CodedData{.grid = {8, 8}};
    const auto finding = [&]() -> std::optional<ExportFinding> {
        const auto findings = findingsFor(situation.request, situation.operations, {}).lines;
        for (const ExportFinding& found : findings)
            if (found.severity == Severity::info)
                return found;
        return std::nullopt;
    };
    ASSERT_TRUE(finding());
    EXPECT_EQ(finding()->title, QStringLiteral("2 photos can’t keep their data"));
    EXPECT_EQ(finding()->detail, QStringLiteral("Written at 90 %: 1 not JPEG, 1 another color profile."));
    EXPECT_EQ(finding()->photos, (std::vector{situation.request.photos[1].id(), situation.request.photos[2].id()}));
    situation.request.settings.format = ExportFormat::png;
    EXPECT_FALSE(finding());
}

TEST(ExportFindings, judgesTheSizeThatIsWritten)
{
    const auto isWell = [](const OutputSize& size, ExportFormat format) {
        Situation situation;
        situation.request.settings = {.format = format, .size = size};
        situation.request.photos[0].pixelSize = {49'900, 100};
        const auto findings = findingsFor(situation.request, situation.operations, {}).lines;
        return std::ranges::all_of(findings, [](const ExportFinding& f) { return f.severity == Severity::ok; });
    };
    EXPECT_FALSE(isWell({}, ExportFormat::jpeg));
    EXPECT_TRUE(isWell(OutputSize::withLongSide(50'000), ExportFormat::jpeg));
    EXPECT_FALSE(isWell(OutputSize::withLongSide(32'769), ExportFormat::heic));
    EXPECT_TRUE(isWell(OutputSize::withLongSide(32'768), ExportFormat::heic));

    Situation situation;
    situation.request.settings.size = OutputSize::withLongSide(2'000);
    situation.request.photos[0].pixelSize = {49'900, 100};
    situation.request.framing.batch.captions.front().fontSize.value = 300;
    const auto findings = findingsFor(situation.request, situation.operations, {}).lines;
    EXPECT_TRUE(std::ranges::any_of(findings, [](const ExportFinding& finding) {
        return finding.title == QStringLiteral("3 photos have captions that don’t fit");
    })) << "the one too, that is too large at full size";
}

TEST(SpaceEstimate, countsEachPhotoByTheSampleNearestToItsSize)
{
    const auto jobOf = [](std::int64_t side) {
        BatchExportJob job;
        job.photo = test::photoAt(test::photoUrl("a.jpg"));
        job.photo.pixelSize = {side, side};
        job.recipe.border.width = 0;
        return job;
    };
    const auto estimateOf = [&](std::initializer_list<std::int64_t> sides) {
        std::vector<BatchExportJob> jobs;
        for (const std::int64_t side : sides)
            jobs.push_back(jobOf(side));
        // Large photos take less a pixel, as they do.
        return estimatedSpace(spaceSamples(jobs),
                              [](const BatchExportJob& job, const std::stop_token&) {
                                  const std::int64_t side = job.photo.pixelSize.width;
                                  return side * side * (side < 1000 ? 3 : 2);
                              },
                              {});
    };
    const std::int64_t small = 300 * 300;
    const std::int64_t large = 4000 * 4000;
    EXPECT_EQ(estimateOf({}), std::nullopt);
    EXPECT_EQ(estimateOf({300}), (SpaceEstimate{3 * small, 1}));
    EXPECT_EQ(estimateOf({4000, 300}), (SpaceEstimate{3 * small + 2 * large, 2}));
    EXPECT_EQ(estimateOf({300, 4000, 300, 4000, 4000, 4000}), (SpaceEstimate{6 * small + 8 * large, 3}));
    EXPECT_EQ(estimateOf({10'000, 300}), (SpaceEstimate{3 * small + 3 * 10'000 * 10'000, 1})) << "held in memory";
    EXPECT_EQ(estimateOf({60'000, 300}), (SpaceEstimate{3 * small, 1})) << "can’t be framed";
    EXPECT_EQ(estimatedSpace(spaceSamples({jobOf(300)}),
                             [](const auto&, const auto&) -> std::int64_t {
                                 throw ImagePipelineError(ImagePipelineError::decodingFailed);
                             },
                             {}),
              std::nullopt);
}

TEST(ExportCheck, measuresTheRoomOnceAndTellsWhereItDoesNotSuffice)
{
    Situation situation;
    std::atomic<int> measured = 0;
    std::int64_t free = 48'000'000'000;
    situation.operations.encodedSize = [&](const BatchExportJob&, const std::stop_token&) {
        ++measured;
        return 1'000'000'000;
    };
    situation.operations.freeBytes = [&](const FileUrl&) { return free; };
    ExportCheck check(situation.operations);
    const auto detailAfterCheck = [&] {
        check.start(situation.request);
        EXPECT_TRUE(test::waitUntil(
            [&] { return !check.isChecking() && check.findings().at(1).detail.startsWith(QStringLiteral("About")); }));
        return check.findings().at(1);
    };
    const QString needed = QStringLiteral("About 3 GB, measured on 3 photos · ");
    EXPECT_EQ(detailAfterCheck().detail, needed + QStringLiteral("48 GB free"));
    free = 2'000'000'000;
    situation.request.configuration.filenameTemplate = QStringLiteral("{index}");
    const ExportFinding finding = detailAfterCheck();
    EXPECT_EQ(finding.detail, needed + QStringLiteral("2 GB free"));
    EXPECT_EQ(finding.severity, Severity::warning);
    EXPECT_EQ(measured, 3) << "names make no file larger";
    situation.request.settings.quality = 0.5;
    static_cast<void>(detailAfterCheck());
    EXPECT_TRUE(test::waitUntil([&] { return measured == 6; }));
}

TEST(ExportCheck, answersTheLastQuestion)
{
    Situation situation;
    ExportCheck check(situation.operations);
    check.start(situation.request);
    situation.request.photos.clear();
    check.start(situation.request);
    ASSERT_TRUE(test::waitUntil([&] { return !check.isChecking(); }));
    ASSERT_EQ(check.findings().size(), 1u);
    EXPECT_TRUE(hasErrors(check.findings()));
    EXPECT_EQ(
        exampleFilename(QStringLiteral("{index} {filename}"), test::photoUrl("caf\xe9.png"), 2, ExportFormat::heic),
        QStringLiteral("3 caf\uFFFD.heic"));
    situation.request.photos = {test::photoAt(test::photoUrl("a.jpg"))};
    situation.operations.isReadable = [](const FileUrl&) -> bool { throw std::bad_alloc(); };
    ExportCheck broken(situation.operations);
    broken.start(situation.request);
    ASSERT_TRUE(test::waitUntil([&] { return !broken.isChecking(); }));
    ASSERT_EQ(broken.findings().size(), 1u);
    EXPECT_EQ(broken.findings()[0].title, QStringLiteral("The check could not be completed"));
}

TEST(ExportCheck, stopsALogoThatIsBeingDrawnWhenItGoes)
{
    Situation situation;
    situation.request.framing.batch.logo = LogoConfiguration{};
    std::atomic<bool> isDrawing = false;
    std::atomic<bool> wasStopped = false;
    situation.operations.loadLogo = [&](const LogoAssetReference&, const std::stop_token& stop) -> Bitmap {
        isDrawing = true;
        while (!stop.stop_requested())
            std::this_thread::yield();
        wasStopped = true;
        throw Canceled{};
    };
    {
        ExportCheck check(situation.operations);
        check.start(situation.request);
        QObject::connect(&check, &ExportCheck::isCheckingChanged, [] { ADD_FAILURE(); });
        ASSERT_TRUE(test::waitUntil([&] { return isDrawing.load(); }));
    }
    EXPECT_TRUE(test::waitUntil([&] { return wasStopped && WorkQueue::threadsLeftBehind() == 0; }));
}

} // namespace ferrow
