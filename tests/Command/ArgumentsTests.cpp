// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Arguments.h"

#include "Command/Output.h"
#include "Support/TestSupport.h"

namespace ferrow::Command {

namespace {

using Words = std::vector<QByteArray>;

/// The words of a line, apart by bars, with a photo behind them.
Words wordsOf(const QByteArray& line)
{
    const QList<QByteArray> words = line.split('|') << "photo.jpg";
    return {words.begin(), words.end()};
}

/// What the options make of the defaults.
Settings settingsOf(const Words& words)
{
    Settings settings;
    for (const auto& change : parseArguments(words).changes)
        change(settings);
    return settings;
}

QString messageFor(const Words& words)
{
    try {
        (void)parseArguments(words);
    } catch (const UsageError& error) {
        return error.message;
    }
    return {};
}

} // namespace

TEST(Arguments, namesTheOptionThatWasUsedWrongly)
{
    for (const char* line : {"--sharpen",
                             "-o|out",
                             "--Format|png",
                             "--json=yes",
                             "--quality=",
                             "run|--shard|0/3|plan",
                             "run|--shard|4/3|plan",
                             "run|--shard|1.5/3|plan",
                             "run|--shard|1/3/5|plan",
                             "run|--shard|3|plan",
                             "--shard|1/2|a.jpg",
                             "--resume|a.jpg",
                             "--quality|0,9",
                             "--quality|1.01",
                             "--quality|-0.1",
                             "--quality|nan",
                             "--quality|0.5x",
                             "--caption-opacity|inf",
                             "--caption-size|0",
                             "--caption-size|1e999",
                             "--caption-size|101%",
                             "--caption-size|0%",
                             "--caption-size|4em",
                             "--caption-padding|%",
                             "--caption-letter-spacing|21",
                             "--caption-font=",
                             "--caption-font|:Bold",
                             "--caption-fit=yes",
                             "--format|JPEG",
                             "--on-collision|",
                             "--jobs|0",
                             "--jobs|1.5",
                             "--jobs|9223372036854775808",
                             "--border|120",
                             "--border|-1px",
                             "--border|2,5%",
                             "--border|px",
                             "--border-sides|1px,2px,3px",
                             "--border-sides|1px,2px,3px,4",
                             "--border-sides|1px,2px,3px,4px,5px",
                             "--border-sides|1px,2px,3px,4%",
                             "--border-sides|1px,2px,3px,1e20px",
                             "--shape|4",
                             "--shape|4:5:6",
                             "--shape|0:5",
                             "--shape|4:inf",
                             "--shape|-4:-5",
                             "--shape-turns=yes",
                             "--balance|101",
                             "--background|blurred",
                             "--background|blur:",
                             "--background|blur:101",
                             "--background|blur:40,-1",
                             "--background|blur:40,25,1",
                             "--background|red",
                             "--line|6px",
                             "--line|6px,48px",
                             "--line|6,48px,#ffffff",
                             "--line|6px,48px,white",
                             "--line|6px,48px,#ffffff,1",
                             "--corners|24",
                             "--corners|-1px",
                             "--photo-shadow=yes",
                             "--border-color|#ffcc0",
                             "--border-color|#ffcc0g",
                             "--border-color|#ff -100",
                             "--border-color|#+f+f+f",
                             "--logo-padding|1,2,3",
                             "--logo-padding|,2",
                             "--logo-width|101",
                             "--logo-position|middle",
                             "--set|lens",
                             "--set|camera=x",
                             "--set|Lens=x",
                             "--set|captureDate=yesterday",
                             "--set|captureDate=1987-02-30",
                             "--long-side|0",
                             "--long-side|50001",
                             "--long-side|2048.5",
                             "--fit|2048",
                             "--fit|2048x",
                             "--fit|2048x1536x2",
                             "--fit|x1536",
                             "--megapixels|0",
                             "--megapixels|201",
                             "--output=",
                             "--beside=a/b",
                             "--beside=..",
                             "--beside="}) {
        const Words words = wordsOf(line);
        const QByteArray& first = words[words.front() == "run" ? 1 : 0];
        const QString option = QString::fromUtf8(first.split('=').front());
        EXPECT_TRUE(messageFor(words).startsWith(option + QLatin1Char(':'))) << line;
    }
    EXPECT_TRUE(messageFor({"x.jpg", "--quality"}).startsWith(QLatin1StringView("--quality:")));
    EXPECT_TRUE(messageFor({"inspect", "x.jpg", "--quality", "1"}).startsWith(QLatin1StringView("--quality:")));
    EXPECT_TRUE(messageFor(Words(7, "--caption=x")).startsWith(QLatin1StringView("--caption:")));
    EXPECT_TRUE(messageFor({"--caption-font", QByteArray(10'000, 'x')}).startsWith(u"--caption-font:"));
    for (const Words& words : {Words{}, {"--json"}, {"inspect"}, {"--output", "out", "--"}})
        EXPECT_TRUE(messageFor(words).startsWith(QLatin1StringView("PATH:"))) << words.size();
}

TEST(Arguments, setsWhatItsOptionsSay)
{
    const Settings set = settingsOf(
        wordsOf("--format=tiff|--quality|0.25|--profile=source|--border=2.5%|--border-color|#01020304|--no-caption|"
                "--caption=a=b {iso}|--caption-position=image-top-left|--caption-font|geometric|--caption-align|center|"
                "--caption-size=1e1|--caption-spacing|3|--caption-padding|4|--caption-vertical-padding|5|"
                "--caption-opacity|0.5|--caption-color|#FFcc00|--jobs|64|--on-collision|skip|--template|--x|"
                "--output|/a/../out"));
    EXPECT_EQ(set.exportSettings, (ExportSettings{ExportFormat::tiff, 0.25}));
    const Border border{BorderUnit::percent, 2.5, {1 / 255.0, 2 / 255.0, 3 / 255.0, 4 / 255.0}};
    const Caption caption{.segments = set.recipe.captions.front().segments, // Identifiers are fresh each time.
                          .position = CaptionPosition::imageTopLeft,
                          .font = CaptionFont::avenirNext,
                          .fontSize = {10},
                          .color = {1, 0.8, 0, 1},
                          .alignment = CaptionAlignment::center,
                          .lineSpacing = {3},
                          .padding = {4},
                          .verticalPadding = {5},
                          .opacity = 0.5};
    const RenderRecipe recipe{
        .border = border, .captions = {caption}, .outputColorProfile = OutputColorProfile::preserveSource};
    EXPECT_EQ(set.recipe, recipe);
    EXPECT_EQ(set.recipe.captions.front().captionTemplate(), QStringLiteral("a=b {iso}"));
    const BatchExportConfiguration configuration{.chosenFolder = FileUrl::fromPath(QByteArray("/out")),
                                                 .filenameTemplate = QStringLiteral("--x"),
                                                 .collisionRule = CollisionRule::skip,
                                                 .maximumConcurrentExports = 64};
    EXPECT_EQ(set.configuration, configuration);
    EXPECT_FALSE(settingsOf(wordsOf("--caption|x|--no-caption")).recipe.captions.front().isEnabled);
    const std::pair<const char*, OutputSize> sizes[] = {{"--long-side|2048", OutputSize::withLongSide(2048)},
                                                        {"--fit=2048x1536", OutputSize::within({2048, 1536})},
                                                        {"--megapixels|0.5", OutputSize::ofMegapixels(0.5)},
                                                        {"--fit|9x9|--long-side=8", OutputSize::withLongSide(8)},
                                                        {"--long-side=8|--full-size", {}}};
    for (const auto& [line, size] : sizes)
        EXPECT_EQ(settingsOf(wordsOf(line)).exportSettings.size, size) << line;
}

TEST(Arguments, framesAsItsOptionsSay)
{
    const auto border = [](const QByteArray& line) { return settingsOf(wordsOf(line)).recipe.border; };
    const BorderUnit percent = BorderUnit::percent;
    EXPECT_EQ(border("--border-sides|4%,5%,16%,6%"),
              (Border{.unit = percent, .width = 4, .sides = SideLengths{4, 5, 16, 6}}));
    EXPECT_EQ(border("--border-sides|4%,5%,16%,6%|--border|9px"), Border{.width = 9}) << "the last word counts";
    EXPECT_EQ(border("--shape|1.91:1"), (Border{.shape = FrameShape{1.91, 1}}));
    EXPECT_EQ(border("--shape|1:1|--shape|photo"), Border());
    EXPECT_TRUE(messageFor(wordsOf("--border-sides|1px,2px,3px,4%")).contains(QStringLiteral("all in percent")));
    EXPECT_EQ(border("--background|blur"), (Border{.blurredBackground = BlurredBackground{40, 25}}));
    EXPECT_EQ(border("--background|blur:7"), (Border{.blurredBackground = BlurredBackground{7, 25}}));
    EXPECT_EQ(border("--background=blur:0,100"), (Border{.blurredBackground = BlurredBackground{0, 100}}));
    EXPECT_EQ(border("--line|6px,1.5%,#ffcc0000"),
              (Border{.line = FrameLine{{6, BorderUnit::pixels}, {1.5, percent}, {1, 0.8, 0, 0}}}));
    EXPECT_EQ(border("--corners|2%|--photo-shadow"), (Border{.photoEdge = {{2, percent}, true}}));
    EXPECT_EQ(border("--background|blur|--background|color|--line|6px,0px,#ffffff|--line|none|--corners|1px|--corners|"
                     "0px|--photo-shadow|--no-photo-shadow"),
              Border());

    FrameShape shape{4, 5};
    for (const auto& change : parseArguments(wordsOf("--balance|-20|--shape-turns")).shapeChanges)
        change(shape);
    EXPECT_EQ(shape, (FrameShape{4, 5, true, -20}));
}

TEST(Arguments, correctValuesByTheirNames)
{
    const MetadataCorrections corrections =
        parseArguments(wordsOf("--set|lens=f=50|--set|iso=1|--set=iso=|--set|captureDate=1987-06-21")).corrections;
    const QDateTime date(QDate(1987, 6, 21), QTime(0, 0));
    EXPECT_EQ(corrections, (MetadataCorrections{{MetadataField::lens, QStringLiteral("f=50")},
                                                {MetadataField::iso, {}},
                                                {MetadataField::captureDate, date}}));
    EXPECT_TRUE(messageFor(wordsOf("--set|lenz=x")).contains(QStringLiteral("cameraMake, cameraModel, lens,")));
}

TEST(Arguments, giveEachCaptionTheOptionsBehindIt)
{
    const Settings set = settingsOf(
        wordsOf("--caption-size|4%|--caption|one|--caption-font|EB Garamond:Medium Italic|--caption-padding|12px|"
                "--caption|two|--caption-fit|--caption-position|image-center|--caption|three|--caption-font|serif|"
                "--caption-uppercase|--caption-letter-spacing|-2.5"));
    ASSERT_EQ(set.recipe.captions.size(), 3u);
    const Caption& first = set.recipe.captions[0];
    const Caption& second = set.recipe.captions[1];
    const Caption& third = set.recipe.captions[2];
    EXPECT_EQ(first.captionTemplate(), QStringLiteral("one"));
    EXPECT_EQ(first.fontSize, (Length{4, BorderUnit::percent}));
    EXPECT_EQ(first.padding, (Length{12, BorderUnit::pixels}));
    EXPECT_EQ(first.face, (FontFace{QStringLiteral("EB Garamond"), QStringLiteral("Medium Italic")}));
    EXPECT_FALSE(first.shrinksToFit || first.isUppercase);
    EXPECT_EQ(second.captionTemplate(), QStringLiteral("two"));
    EXPECT_EQ(std::tuple(second.fontSize, second.face), std::tuple(Caption().fontSize, std::nullopt));
    EXPECT_EQ(second.position, CaptionPosition::imageCenter);
    EXPECT_TRUE(second.shrinksToFit);
    EXPECT_EQ(std::tuple(third.face, third.font), std::tuple(std::nullopt, CaptionFont::serif));
    EXPECT_EQ(third.position, CaptionPosition::imageCenterLeft);
    EXPECT_TRUE(third.isUppercase && !third.shrinksToFit);
    EXPECT_EQ(third.letterSpacing, -2.5);
}

TEST(Arguments, takeOptionsOfTokensAndRefuseThoseThatAreNone)
{
    const QByteArray good = "{captureDate:d MMMM 'at' HH:mm|no date} {lens|by hand} {title: x}";
    EXPECT_EQ(settingsOf({"--caption", good, "x.jpg"}).recipe.captions.front().captionTemplate(),
              QString::fromUtf8(good));
    EXPECT_EQ(messageFor({"--caption", "{iso} {captureDate:d 'at}"}),
              QStringLiteral("--caption: The words behind an apostrophe need another one at their end."));
}

TEST(Arguments, tellsPathsFromOptionsAndNames)
{
    const test::TemporaryFolder folder;
    ASSERT_EQ(::chdir(folder.url().path().constData()), 0);
    folder.write("photo.jpg", "");
    ASSERT_EQ(::mkdir("Shoot", 0777), 0);
    const struct {
        Words words;
        Words roots;
        const char* besideName; ///< Null where photos don't go beside.
    } rows[] = {
        {{"caf\xe9.jpg", "-"}, {"caf\xe9.jpg", "-"}, nullptr},
        {{"--", "--json", "--"}, {"--json", "--"}, nullptr},
        {{"a.jpg", "inspect"}, {"a.jpg", "inspect"}, nullptr},
        {{"--beside", "Framed", "photo.jpg"}, {"photo.jpg"}, "Framed"},
        {{"--beside", "photo.jpg"}, {"photo.jpg"}, "Ferrow Export"}, // It exists.
        {{"--beside", "Shoot"}, {"Shoot"}, "Ferrow Export"},         // Nothing else could be framed.
        {{"--beside", "Shoot", "photo.jpg"}, {"photo.jpg"}, "Shoot"},
        {{"photo.jpg", "--beside", "Shoot"}, {"photo.jpg"}, "Shoot"},
        {{"--beside", "./none.jpg"}, {"none.jpg"}, "Ferrow Export"},
        {{"--beside", "--json", "x.jpg"}, {"x.jpg"}, "Ferrow Export"},
        {{"--beside=photo.jpg", "photo.jpg"}, {"photo.jpg"}, "photo.jpg"},
        {{"--beside", "--", "none.jpg"}, {"none.jpg"}, "Ferrow Export"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        Words roots;
        for (const FileUrl& root : parseArguments(row.words).roots)
            roots.push_back(root.standardized().lastPathComponentBytes());
        EXPECT_EQ(roots, row.roots);
        BatchExportConfiguration expected;
        if (row.besideName) {
            expected.destinationMode = ExportDestinationMode::sourceSubfolder;
            expected.sourceSubfolderName = QLatin1StringView(row.besideName);
        }
        EXPECT_EQ(settingsOf(row.words).configuration, expected);
    }
    ASSERT_EQ(::chdir("/"), 0);
    EXPECT_EQ(parseArguments({"inspect", "--json", "inspect"}).mode, Arguments::Mode::inspect);
}

TEST(Output, foretellsTheRestWhereThereIsEnoughToGoBy)
{
    using Seconds = std::chrono::duration<double>;
    EXPECT_EQ(remainingTime(Seconds(30), 0, 10), QString());
    EXPECT_EQ(remainingTime(Seconds(10), 10, 10), QString());
    EXPECT_EQ(remainingTime(Seconds(10), 5, 10), QStringLiteral("about 10 s left"));
    EXPECT_EQ(remainingTime(Seconds(60), 1, 4), QStringLiteral("about 3 min left"));
    EXPECT_EQ(remainingTime(Seconds(3600), 1, 3), QStringLiteral("about 2 h left"));
}

} // namespace ferrow::Command
