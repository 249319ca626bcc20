// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/RunProgram.h"

#include "Persistence/PresetModels.h"
#include "Platform/Base/ByteText.h"

#include <QJsonArray>

#include <gmock/gmock.h>

#include <algorithm>

namespace ferrow {

using test::everythingBelow;
using test::Words;
using testing::ElementsAre;

namespace {

QString text(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1StringView(key)).toString();
}

class BatchCommandTest : public testing::Test {
protected:
    BatchCommandTest()
    {
        ::mkdir(in.path().constData(), 0777);
        OutputMetadata metadata;
        metadata.make = QStringLiteral("Zoë");
        photo = test::encoded(OutputType::jpeg, test::noise({60, 40}, rgb8), metadata);
    }
    [[nodiscard]] Words command(const Words& words) const
    {
        Words all{FERROW_BATCH_PROGRAM};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }
    [[nodiscard]] test::Ended run(const Words& words) const
    {
        return test::Program(command(words), environment).wait();
    }
    /// Frames `in` to `out` without captions, reporting in JSON.
    [[nodiscard]] test::Ended frame(const Words& words = {}) const
    {
        Words all{"--json", "--no-caption", "--border=10px", "--output", out.path(), in.path()};
        all.insert(all.begin(), words.begin(), words.end());
        return run(all);
    }
    /// "a.jpg exported" and so on; the report must be last and its counts add up to the outcomes.
    static QStringList outcomes(const test::Ended& ended)
    {
        QStringList found;
        std::vector<QJsonObject> lines = ended.lines();
        const QJsonObject report = lines.back().value(QLatin1StringView("report")).toObject();
        lines.pop_back();
        for (const QJsonObject& line : lines) {
            found << text(line, "path").section(QLatin1Char('/'), -1) + QLatin1Char(' ') + text(line, "outcome");
            EXPECT_EQ(text(line, "message").isEmpty(), text(line, "outcome") != QLatin1StringView("failed"));
        }
        found.sort();
        EXPECT_EQ(found.removeDuplicates(), 0);
        EXPECT_EQ(report.value(QLatin1StringView("total")).toInt(-1), found.size());
        for (const char* kind : {"exported", "skipped", "canceled", "failures"})
            EXPECT_EQ(report.value(QLatin1StringView(kind)).toInt(-1),
                      found.filter(QLatin1Char(' ') + QString::fromLatin1(kind).left(4)).size());
        return found;
    }
    void writePhotos(int count) const
    {
        for (int i = 0; i < count; ++i)
            folder.write("in/" + QByteArray::number(i) + ".jpg", photo);
    }

    test::TemporaryFolder folder;
    FileUrl in = folder.file("in");
    FileUrl out = folder.file("new/out");
    Words environment{"PATH=/usr/bin:/bin", "LC_ALL=en_US.UTF-8", "TZ=Europe/Berlin",
                      "HOME=" + folder.file("home").path()};
    QByteArray photo;
};

} // namespace

TEST_F(BatchCommandTest, tellsWhatBecameOfEachPhoto)
{
    folder.write("in/a.jpg", photo);
    EXPECT_EQ(frame({"--border=20px"}).status, 0);
    folder.write("in/b.jpg", photo.left(photo.size() / 2));
    folder.write("in/c.gif", "GIF89a");
    folder.write("in/d.jpg", "");
    folder.write("in/notes.txt", "");
    const auto before = everythingBelow(in);
    const test::Ended ended = frame({"--on-collision", "replace"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(outcomes(ended).join(QLatin1Char(' ')),
              QStringLiteral("a.jpg exported b.jpg failed c.gif failed d.jpg failed"));
    EXPECT_THAT(everythingBelow(out), ElementsAre("a_framed.jpg"));
    EXPECT_EQ(test::decoded(test::readFile(out.appending("a_framed.jpg"))).size(), (PixelSize{80, 60}));
    EXPECT_EQ(everythingBelow(in), before);
    EXPECT_EQ(ended.errors, "");
}

TEST_F(BatchCommandTest, replacesNoPhotoThatItCouldNotRead)
{
    folder.write("in/a.jpeg", photo);
    const FileUrl damaged = folder.write("in/a.jpg", "damaged");
    EXPECT_EQ(run({"--template", "{filename}", "--on-collision", "replace", "--output", in.path(), in.path()}).status,
              1);
    EXPECT_EQ(test::readFile(damaged), "damaged");
    EXPECT_THAT(everythingBelow(in), ElementsAre("a 2.jpg", "a.jpeg", "a.jpg"));
}

TEST_F(BatchCommandTest, refusesWrongUseBeforeItWritesAnything)
{
    folder.write("in/a.jpg", photo);
    folder.write("logo.gif", "GIF89a");
    const auto before = everythingBelow(folder.url());
    const QByteArray notPresets = folder.file("in/a.jpg").path();
    const std::pair<const char*, Words> rows[] = {
        {"PATH", {}},
        {"--wrong", {"--wrong", in.path()}},
        {"--output", {in.path()}},
        {"--preset", {"--preset", "none", "--beside", "--", in.path()}},
        {"--preset-file", {"--preset-file", "/none", "--beside", "--", in.path()}},
        {"--preset-file", {"--preset-file", notPresets, "--beside", "--", in.path()}},
        {"--logo", {"--logo", folder.file("logo.gif").path(), "--output", out.path(), in.path()}},
        {"--logo", {"--logo-width", "10", "--output", out.path(), in.path()}},
        {"--shape", {"--balance", "10", "--output", out.path(), in.path()}},
    };
    for (const auto& [option, words] : rows) {
        SCOPED_TRACE(option);
        const test::Ended ended = run(words);
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_TRUE(ended.errors.startsWith(QByteArray("ferrow-batch: ") + option + ": ")) << ended.errors.constData();
        EXPECT_EQ(everythingBelow(folder.url()), before);
    }
}

TEST_F(BatchCommandTest, failsBeforeItReadsAnythingWhereTheOutputCannotStand)
{
    folder.write("in/a.jpg", photo);
    const auto before = everythingBelow(folder.url());
    for (const char* place : {"in/a.jpg", "in/a.jpg/deeper/out"})
        for (const Words& words : {Words{}, Words{"--dry-run"}}) {
            SCOPED_TRACE(place);
            Words all{"--output", folder.file(place).path(), in.path()};
            all.insert(all.begin(), words.begin(), words.end());
            const test::Ended ended = run(all);
            EXPECT_EQ(ended.status, 1);
            EXPECT_EQ(ended.output, "");
            EXPECT_TRUE(ended.errors.contains("“a.jpg” is not a folder")) << ended.errors.constData();
            EXPECT_EQ(everythingBelow(folder.url()), before);
        }
}

TEST_F(BatchCommandTest, plansWithoutWriting)
{
    folder.write("in/a.jpg", photo);
    folder.write("in/b.jpg", "");
    const auto before = everythingBelow(folder.url());
    const test::Ended besides = run({"--dry-run", "--beside=New", folder.file("in/a.jpg").path()});
    EXPECT_EQ(besides.status, 0);
    EXPECT_TRUE(besides.output.contains("in/New/a_framed.jpg")) << besides.output.constData();
    const test::Ended ended = frame({"--dry-run"});
    EXPECT_EQ(ended.status, 1);
    const auto lines = ended.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(text(lines[0], "outcome"), QStringLiteral("planned"));
    EXPECT_EQ(text(lines[0], "destination"), out.appending("a_framed.jpg").displayPath());
    EXPECT_EQ(everythingBelow(folder.url()), before);
}

TEST_F(BatchCommandTest, writesTheSizeThatItSays)
{
    folder.write("in/a.jpg", photo); // 80 × 60 with its border.
    const auto sizeIn = [](const QJsonObject& line) {
        return PixelSize{line.value(QLatin1StringView("width")).toInteger(),
                         line.value(QLatin1StringView("height")).toInteger()};
    };
    for (const auto& [options, size] : {std::pair<Words, PixelSize>{{}, {80, 60}},
                                        {{"--long-side=40"}, {40, 30}},
                                        {{"--fit=70x30", "--format=png"}, {40, 30}},
                                        {{"--long-side=2048"}, {80, 60}}}) {
        Words dryRun = options;
        dryRun.emplace_back("--dry-run");
        EXPECT_EQ(sizeIn(frame(dryRun).lines().front()), size);
        const QJsonObject line = frame(options).lines().front();
        EXPECT_EQ(sizeIn(line), size);
        const QByteArray written = ByteText::encode(text(line, "destination"));
        EXPECT_EQ(test::decoded(test::readFile(FileUrl::fromPath(written))).size(), size) << written.toStdString();
    }
    const QByteArray plan = run({"--dry-run", "--long-side=40", "--beside", in.path()}).output;
    EXPECT_TRUE(plan.contains("a_framed.jpg (40 × ")) << plan.constData();
}

TEST_F(BatchCommandTest, keepsThePhotosDataAndCountsWhereItCannot)
{
    folder.write("in/a.jpg", photo);
    folder.write("in/b.png", test::encoded(OutputType::png, test::noise({20, 20}, rgb8)));
    for (const Words& options : {Words{"--quality=keep", "--dry-run"}, {"--quality=keep"}}) {
        auto lines = frame(options).lines();
        ASSERT_EQ(lines.size(), 3u);
        // They come as photos end, the report last.
        std::sort(lines.begin(), lines.begin() + 2,
                  [](const QJsonObject& a, const QJsonObject& b) { return text(a, "path") < text(b, "path"); });
        EXPECT_EQ(text(lines[0], "photoData"), QStringLiteral("kept"));
        EXPECT_EQ(text(lines[1], "photoData"), QStringLiteral("codedAnew"));
        EXPECT_EQ(text(lines[1], "photoDataObstacle"), QStringLiteral("notJpeg"));
        const QJsonObject counts =
            lines[2].value(QLatin1StringView("report")).toObject().value(QLatin1StringView("photoData")).toObject();
        EXPECT_EQ(counts.value(QLatin1StringView("kept")).toInt(), 1);
        EXPECT_EQ(counts.value(QLatin1StringView("codedAnew")).toObject(),
                  (QJsonObject{{QStringLiteral("notJpeg"), 1}}));
    }
    const QByteArray told =
        run({"--quality", "0.5", "--quality", "keep", "--dry-run", "--beside", "--border=21px", in.path()}).errors;
    EXPECT_TRUE(told.contains("coded at quality 0.5: 1 (1 not JPEG)")) << told.constData();
    EXPECT_TRUE(told.contains("Borders moved onto the photo's blocks: 1, by up to ")) << told.constData();
    EXPECT_FALSE(text(frame({"--quality=keep", "--quality=0.5"}).lines().front(), "photoData").size());
}

TEST_F(BatchCommandTest, saysWhatIsLostOfACaption)
{
    folder.write("in/a.jpg", photo);
    const auto cutOf = [&](const char* caption, const char* size) {
        return run({"--json", "--dry-run", "--caption", caption, "--caption-size", size, "--border=60px", "--output",
                    out.path(), in.path()})
            .lines()
            .front()
            .value(QLatin1StringView("captionCut"));
    };
    EXPECT_TRUE(cutOf("Zoë", "12").isUndefined());
    const QJsonObject cut =
        cutOf("This caption has far more words than the border has lines for the end of it", "12").toObject();
    EXPECT_TRUE(text(cut, "leftOut").endsWith(QStringLiteral("end of it"))) << text(cut, "leftOut").toStdString();
    EXPECT_FALSE(cut.value(QLatin1StringView("letters")).toBool(true));
    EXPECT_TRUE(cutOf("Zoë", "90").toObject().value(QLatin1StringView("letters")).toBool());
}

TEST_F(BatchCommandTest, saysWhatIsWrongWithEachCaption)
{
    folder.write("in/a.jpg", photo);
    const FileUrl logo =
        folder.write("logo.png", test::encoded(OutputType::png, test::flat({30, 20}, rgb8, {0, 0, 0})));
    const std::vector<QByteArray> words{"--dry-run",
                                        "--border=60px",
                                        "--caption",
                                        "i",
                                        "--caption-size=90",
                                        "--caption-position=border-top-right",
                                        "--caption-font",
                                        "No Such Family:Bold",
                                        "--caption",
                                        "ii",
                                        "--caption-size=12",
                                        "--caption-position=border-bottom-left",
                                        "--caption",
                                        "iii",
                                        "--caption-size=12",
                                        "--caption-position=border-bottom-left",
                                        "--logo",
                                        logo.path(),
                                        "--logo-position=border-bottom-left",
                                        "--output",
                                        out.path(),
                                        in.path()};
    std::vector<QByteArray> asJson = words;
    asJson.emplace_back("--json");
    const test::Ended ended = run(asJson);
    const QJsonArray cuts = ended.lines().front().value(QLatin1StringView("captionCuts")).toArray();
    ASSERT_EQ(cuts.size(), 1);
    EXPECT_EQ(cuts[0].toObject().value(QLatin1StringView("caption")).toInt(), 1);
    const QJsonArray overlaps{QJsonArray{2, 3}};
    EXPECT_EQ(ended.lines().front().value(QLatin1StringView("captionOverlaps")).toArray(), overlaps);
    EXPECT_EQ(ended.lines().front().value(QLatin1StringView("captionsOverLogo")).toArray(), (QJsonArray{2, 3}));
    const QByteArray errors = run(words).errors;
    for (const char* said : {"Caption 1 does not fit, letters", "Captions 2 and 3 overlap.",
                             "Caption 3 overlaps the logo.", "“No Such Family” is not"})
        EXPECT_EQ(errors.count(said), 1) << said << " in: " << errors.constData();
}

TEST_F(BatchCommandTest, writesCorrectedCaptionsIntoPicturesAndNothingElse)
{
    const FileUrl a = folder.write("in/a.jpg", photo);
    const FileUrl b = folder.write("in/b.jpg", photo);
    // The first of these is of no photo, and of b there are two, the second of which as reports have odd paths.
    const FileUrl file =
        folder.write("values.jsonl", "{\"path\": \"/none.jpg\", \"lens\": \"L\"}\r\n\n{\"path\": \"" + b.path() +
                                         "\", \"lens\": \"x\", \"cameraMake\": null}\n{\"pathBytes\": \"" +
                                         b.path().toBase64() + "\", \"path\": \"?\", \"lens\": \"Q\"}");
    const auto framed = [&](const FileUrl& source, Words words) {
        words.insert(words.end(), {"--border=60px", "--caption-size=12", "--on-collision=replace", "--output",
                                   out.path(), source.path()});
        const test::Ended ended = run(words);
        EXPECT_EQ(ended.status, 0) << ended.errors.constData();
        return std::pair(test::readFile(out.appending(source.stem() + "_framed.jpg")), ended.errors);
    };
    const Words corrected{"--caption={cameraMake}-{lens}-", "--set=lens=L", "--corrections", file.path()};
    const auto [ofA, errors] = framed(a, corrected);
    EXPECT_EQ(ofA, framed(a, {"--caption=Zoë-L"}).first) << "the metadata of both are as they were read";
    EXPECT_TRUE(errors.contains("values.jsonl, line 1: ") && errors.contains("values.jsonl, line 3: "))
        << errors.constData();
    EXPECT_EQ(framed(b, corrected).first, framed(b, {"--caption=Q"}).first) << "what is said of one photo wins";
    EXPECT_EQ(test::readFile(a), photo);
}

TEST_F(BatchCommandTest, saysInWhichLineACorrectionIsWrong)
{
    folder.write("in/a.jpg", photo);
    for (const QByteArray& line :
         {QByteArray("lens: x"), QByteArray("[]"), QByteArray("{\"lens\": \"x\"}"), QByteArray("{\"path\": \"\"}"),
          QByteArray("{\"path\": \"a\", \"lenz\": \"%1\"}"), QByteArray("{\"path\": \"a\", \"iso\": 400}"),
          QByteArray("{\"path\": \"a\", \"lens\": \"\xff\"}"),
          QByteArray("{\"path\": \"a\", \"captureDate\": \"1987\"}"),
          "{\"path\": \"a\", \"lens\": \"" + QByteArray(5'000, 'x') + "\"}", QByteArray(100'000, '['),
          QByteArray("{\"path\": \"a\"")}) {
        const FileUrl file = folder.write("values.jsonl", "{\"path\": \"a\", \"lens\": \"x\"}\n\n" + line);
        const test::Ended ended = frame({"--corrections", file.path()});
        EXPECT_EQ(ended.status, 2);
        EXPECT_TRUE(ended.errors.contains("values.jsonl, line 3: "))
            << line.left(60).constData() << ended.errors.constData();
    }
    EXPECT_EQ(::truncate(folder.file("values.jsonl").path().constData(), 16'000'001), 0);
    for (const FileUrl& file :
         {folder.file("values.jsonl"), folder.file("none"), in, FileUrl::fromPath(QByteArray("/dev/zero"))}) {
        const test::Ended ended = frame({"--corrections", file.path()});
        EXPECT_EQ(ended.status, 2);
        EXPECT_TRUE(ended.errors.startsWith("ferrow-batch: --corrections: ")) << ended.errors.constData();
    }
    EXPECT_FALSE(everythingBelow(folder.url()).contains("new/"));
}

TEST_F(BatchCommandTest, makesNoFolderForNothing)
{
    folder.write("in/notes.txt", "no photo");
    EXPECT_EQ(frame().status, 0);
    EXPECT_THAT(everythingBelow(folder.url()), ElementsAre("in/", "in/notes.txt"));
}

TEST_F(BatchCommandTest, heedsTheCollisionRule)
{
    folder.write("in/a.jpg", photo);
    EXPECT_EQ(frame().status, 0);
    folder.write("new/out/a_framed.jpg", "mine");
    EXPECT_EQ(outcomes(frame({"--on-collision", "skip"})), QStringList{QStringLiteral("a.jpg skipped")});
    EXPECT_EQ(outcomes(frame()), QStringList{QStringLiteral("a.jpg exported")});
    EXPECT_THAT(everythingBelow(out), testing::SizeIs(2));
    EXPECT_EQ(test::readFile(out.appending("a_framed.jpg")), "mine");
}

TEST_F(BatchCommandTest, letsOptionsOverrideAPreset)
{
    folder.write("in/a.jpg", photo);
    const RenderRecipe recipe{.border = {.width = 20}, .captions = {{.isEnabled = false}}};
    const BatchExportConfiguration configuration{.destinationMode = ExportDestinationMode::sourceSubfolder,
                                                 .sourceSubfolderName = QStringLiteral("Gerahmt"),
                                                 .filenameTemplate = QStringLiteral("{index}")};
    PresetDocument document;
    const QDateTime then = QDateTime::fromSecsSinceEpoch(0).toUTC();
    for (const char* name : {"Wide", "Other"})
        document.presets.push_back({QUuid::createUuid(), QString::fromLatin1(name),
                                    PresetPayload::make(recipe, {.format = ExportFormat::tiff}, configuration), then,
                                    then});
    const QByteArray file = folder.write("presets.json", document.encode()).path();
    const QByteArray source = folder.file("in/a.jpg").path();
    EXPECT_EQ(run({"--preset-file", file, "--preset", "Wide", source}).status, 0);
    EXPECT_EQ(run({"--preset-file", file, "--preset", "Wide", "--format=png", "--border=5px", source}).status, 0);
    EXPECT_EQ(run({"--preset-file", file, in.path()}).status, 2); // Which of the two?
    EXPECT_THAT(everythingBelow(in), ElementsAre("Gerahmt/", "Gerahmt/1.png", "Gerahmt/1.tiff", "a.jpg"));
}

TEST_F(BatchCommandTest, inspects)
{
    folder.write("in/a.jpg", photo);
    folder.write("in/b.jpg", "");
    const auto before = everythingBelow(folder.url());
    const test::Ended ended = run({"inspect", "--json", in.path()});
    EXPECT_EQ(ended.status, 1);
    const auto lines = ended.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(text(lines[0], "path"), folder.file("in/a.jpg").displayPath());
    EXPECT_EQ(text(lines[0], "type"), QStringLiteral("JPEG"));
    EXPECT_EQ(lines[0].value(QLatin1StringView("height")).toInt(), 40);
    EXPECT_EQ(text(lines[0].value(QLatin1StringView("metadata")).toObject(), "cameraMake"), QStringLiteral("Zoë"));
    EXPECT_FALSE(lines[1].value(QLatin1StringView("ok")).toBool(true));
    EXPECT_NE(text(lines[1], "message"), QString());
    EXPECT_EQ(everythingBelow(folder.url()), before);
}

TEST_F(BatchCommandTest, needsNoDisplayHomeOrEnglish)
{
    folder.write("in/a.jpg", photo);
    const QByteArray temporary = "TMPDIR=" + folder.url().path();
    for (const Words& few : {Words{temporary}, Words{temporary, "LC_ALL=de_DE.UTF-8", "LC_NUMERIC=de_DE.UTF-8"}}) {
        environment = few;
        const test::Ended ended = run({"--caption", "{cameraMake} 2,5", "--caption-size", "12.5", "--border", "12.5%",
                                       "--quality=0.75", "--on-collision=replace", "--output", out.path(), in.path()});
        EXPECT_EQ(ended.status, 0) << ended.errors.constData();
        // The distances to the sides leave no room.
        EXPECT_EQ(ended.errors,
                  folder.file("in/a.jpg").path() + ": The caption does not fit, this is left out: Zoë 2,5\n");
        EXPECT_EQ(test::decoded(test::readFile(out.appending("a_framed.jpg"))).size(), (PixelSize{70, 50}));
    }
    EXPECT_THAT(everythingBelow(folder.url()),
                ElementsAre("in/", "in/a.jpg", "new/", "new/out/", "new/out/a_framed.jpg"));
}

TEST_F(BatchCommandTest, framesWhatASandboxWasGiven)
{
    // As in a Flatpak: the system's programs, no network, nobody's files, and no namespaces for the workers. What the
    // user chose lies where the document portal puts it.
    const FileUrl framed = folder.file("framed");
    ::mkdir(framed.path().constData(), 0777);
    const QByteArray programs = FileUrl::fromPath(QByteArray(FERROW_BATCH_PROGRAM "/../..")).standardized().path();
    const QByteArray given = "/run/user/1000/doc/4f3a21c0/Holidays";
    const QByteArray chosen = "/run/user/1000/doc/99aa0011/Framed";
    const auto inSandbox = [&](const Words& words) {
        Words all{"bwrap", "--unshare-all", "--unshare-user", "--disable-userns", "--die-with-parent"};
        for (const Words& part : {Words{"--ro-bind", "/usr", "/usr"},
                                  {"--symlink", "usr/bin", "/bin"},
                                  {"--symlink", "usr/lib", "/lib"},
                                  {"--symlink", "usr/lib64", "/lib64"},
                                  {"--proc", "/proc"},
                                  {"--dev", "/dev"},
                                  {"--tmpfs", "/tmp"},
                                  {"--ro-bind", programs, programs},
                                  {"--ro-bind", in.path(), given},
                                  {"--bind", framed.path(), chosen},
                                  words})
            all.insert(all.end(), part.begin(), part.end());
        return test::Program(all, environment).wait();
    };
    if (inSandbox({"true"}).status != 0)
        GTEST_SKIP() << "NOT TESTED: framing inside a sandbox; bubblewrap does not work here.";
    writePhotos(2);
    ASSERT_NE(inSandbox({"test", "-e", in.path()}).status, 0);
    const test::Ended ended = inSandbox(command({"--json", "--no-caption", "--output", chosen, given}));
    EXPECT_EQ(ended.status, 0) << ended.errors.constData();
    EXPECT_EQ(outcomes(ended), (QStringList{QStringLiteral("0.jpg exported"), QStringLiteral("1.jpg exported")}));
    EXPECT_THAT(everythingBelow(framed), ElementsAre("0_framed.jpg", "1_framed.jpg"));
}

TEST_F(BatchCommandTest, keepsTheBytesOfOddNames)
{
    folder.write("in/caf\xe9\n\x1b[1m.jpg", photo);
    const test::Ended ended = frame();
    EXPECT_EQ(ended.status, 0);
    const QJsonObject line = ended.lines().front();
    EXPECT_EQ(QByteArray::fromBase64(text(line, "pathBytes").toLatin1()),
              folder.file("in/caf\xe9\n\x1b[1m.jpg").path());
    const auto written = everythingBelow(out);
    ASSERT_EQ(written.size(), 1);
    EXPECT_TRUE(written[0].startsWith("caf\xe9")) << written[0].toPercentEncoding().constData();
    EXPECT_EQ(QByteArray::fromBase64(text(line, "destinationBytes").toLatin1()), out.appending(written[0]).path());
    // A terminal is told nothing that it would obey.
    EXPECT_FALSE(run({"--dry-run", "--output", out.path(), in.path()}).output.contains('\x1b'));
}

TEST_F(BatchCommandTest, leavesOnlyWholeFilesWhenInterrupted)
{
    writePhotos(300);
    test::Program program(command({"--json", "--no-caption", "--output", out.path(), in.path()}), environment);
    ASSERT_TRUE(program.signalAfter("\"exported\"", SIGINT));
    const test::Ended ended = program.wait();
    EXPECT_EQ(ended.status, 130);
    const QStringList found = outcomes(ended);
    EXPECT_EQ(found.size(), 300);
    EXPECT_FALSE(found.filter(QStringLiteral("canceled")).isEmpty());
    const auto written = everythingBelow(out);
    EXPECT_EQ(found.filter(QStringLiteral("exported")).size(), written.size());
    for (const QByteArray& name : written) {
        EXPECT_FALSE(name.startsWith('.'));
        EXPECT_EQ(test::readFile(out.appending(name)), test::readFile(out.appending(written[0])));
    }
}

TEST_F(BatchCommandTest, countsWhatAnInterruptionLeftUnread)
{
    writePhotos(300);
    // Waits for the program from before its start on: for all of it, not as raise() does for one thread.
    const auto interrupt = [] {
        sigset_t interruption;
        ::sigemptyset(&interruption);
        ::sigaddset(&interruption, SIGINT);
        ::sigprocmask(SIG_BLOCK, &interruption, nullptr);
        ::kill(::getpid(), SIGINT);
    };
    const test::Ended ended =
        test::Program(command({"--json", "--output", out.path(), in.path()}), environment, interrupt).wait();
    EXPECT_EQ(ended.status, 130);
    EXPECT_EQ(outcomes(ended).filter(QStringLiteral("canceled")).size(), 300);
}

TEST_F(BatchCommandTest, keepsIgnoringWhatItWasStartedToIgnore)
{
    writePhotos(20);
    test::Program program(command({"--json", "--no-caption", "--output", out.path(), in.path()}), environment,
                          [] { std::signal(SIGHUP, SIG_IGN); });
    ASSERT_TRUE(program.signalAfter("\"exported\"", SIGHUP));
    EXPECT_EQ(program.wait().status, 0);
    EXPECT_THAT(everythingBelow(out), testing::SizeIs(20));
}

TEST_F(BatchCommandTest, printsIntoNoOutputWhereStandardDescriptorsWereClosed)
{
    for (int i = 0; i < 8; ++i) {
        folder.write("in/whole" + QByteArray::number(i) + ".jpg", photo);
        folder.write("in/cut" + QByteArray::number(i) + ".jpg", photo.left(photo.size() / 2));
    }
    (void)test::Program(command({"--no-caption", "--jobs=8", "--output", out.path(), in.path()}), environment, [] {
        for (const int descriptor : {0, 1, 2})
            ::close(descriptor);
    }).wait();
    const QList<QByteArray> outputs = everythingBelow(out);
    EXPECT_EQ(outputs.size(), 8);
    for (const QByteArray& name : outputs)
        EXPECT_FALSE(test::readFile(out.appending(name)).contains("could not be")) << name.constData();
}

TEST_F(BatchCommandTest, saysWhenItsOutputWasLost)
{
    folder.write("in/a.jpg", photo);
    const auto toFullDisk = [] { ::dup2(::open("/dev/full", O_WRONLY), 1); };
    EXPECT_EQ(test::Program(command({"inspect", "--json", in.path()}), environment, toFullDisk).wait().status, 1);
}

TEST_F(BatchCommandTest, numbersInTheOrderThatIsAskedFor)
{
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        folder.write(QByteArray("in/") + name, photo);
    const FileUrl dates =
        folder.write("dates.jsonl", "{\"path\": \"" + in.appending("c.jpg").path() +
                                        "\", \"captureDate\": \"1987-06-21\"}\n{\"path\": \"" +
                                        in.appending("b.jpg").path() + "\", \"captureDate\": \"1990-01-01\"}\n");
    struct Row {
        const char* order;
        const char* names;
    };
    for (const Row& row : {Row{"name", "a1 b2 c3 "},
                           {"name-down", "a3 b2 c1 "},
                           {"date", "a3 b2 c1 "},
                           {"date-down", "a3 b1 c2 "},
                           {"added-down", "a3 b2 c1 "}})
        for (const bool isPlanned : {false, true}) {
            SCOPED_TRACE(std::string(row.order) + (isPlanned ? " planned" : ""));
            const FileUrl place = folder.file(QByteArray(row.order) + (isPlanned ? "-plan" : ""));
            const FileUrl plan = folder.file(QByteArray(row.order) + ".plan");
            Words words{"--no-caption",  "--border=10px", "--template={filename}{index}",
                        "--corrections", dates.path(),    "--sort",
                        row.order,       "--output",      place.path(),
                        in.path()};
            if (isPlanned)
                words.insert(words.begin(), {"--plan-to", plan.path()});
            EXPECT_EQ(run(words).status, 0);
            EXPECT_TRUE(!isPlanned || run({"run", plan.path()}).status == 0);
            std::string names;
            for (const QByteArray& name : everythingBelow(place))
                names += name.chopped(4).toStdString() + ' ';
            EXPECT_EQ(names, row.names);
        }
    EXPECT_EQ(run({"--sort", "size", "--output", out.path(), in.path()}).status, 2);
}

} // namespace ferrow
