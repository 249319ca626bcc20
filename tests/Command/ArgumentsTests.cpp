// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Arguments.h"

#include "Command/Output.h"
#include "Support/TestSupport.h"

#include <gmock/gmock.h>

#include <clocale>

namespace ferrow::Command {

namespace {

using Words = std::vector<QByteArray>;

/// What the options in `words` make of the defaults; a photo is named where `words` names none.
Settings settingsOf(Words words)
{
    words.emplace_back("photo.jpg");
    Settings settings;
    for (const auto& change : parseArguments(words).changes)
        change(settings);
    return settings;
}

} // namespace

TEST(Arguments, namesTheOptionThatWasUsedWrongly)
{
    const std::pair<const char*, Words> rows[] = {
        {"PATH", {}},
        {"PATH", {"--json"}},
        {"PATH", {"inspect"}},
        {"PATH", {"--output", "out", "--"}},
        {"--sharpen", {"--sharpen", "x.jpg"}},
        {"-o", {"-o", "out", "x.jpg"}},
        {"--Format", {"--Format", "png", "x.jpg"}},
        {"--json", {"--json=yes", "x.jpg"}},
        {"--quality", {"x.jpg", "--quality"}},
        {"--quality", {"x.jpg", "--quality="}},
        {"--quality", {"x.jpg", "--quality", "0,9"}},
        {"--quality", {"x.jpg", "--quality", "1.01"}},
        {"--quality", {"x.jpg", "--quality", "-0.1"}},
        {"--quality", {"x.jpg", "--quality", "nan"}},
        {"--quality", {"x.jpg", "--quality", "0.5x"}},
        {"--caption-opacity", {"x.jpg", "--caption-opacity", "inf"}},
        {"--caption-size", {"x.jpg", "--caption-size", "0"}},
        {"--caption-size", {"x.jpg", "--caption-size", "1e999"}},
        {"--format", {"x.jpg", "--format", "JPEG"}},
        {"--format", {"x.jpg", "--format", "gif"}},
        {"--on-collision", {"x.jpg", "--on-collision", ""}},
        {"--jobs", {"x.jpg", "--jobs", "0"}},
        {"--jobs", {"x.jpg", "--jobs", "1.5"}},
        {"--jobs", {"x.jpg", "--jobs", "9223372036854775808"}},
        {"--border", {"x.jpg", "--border", "120"}},
        {"--border", {"x.jpg", "--border", "-1px"}},
        {"--border", {"x.jpg", "--border", "2,5%"}},
        {"--border", {"x.jpg", "--border", "px"}},
        {"--border-color", {"x.jpg", "--border-color", "#ffcc0"}},
        {"--border-color", {"x.jpg", "--border-color", "#ffcc0g"}},
        {"--border-color", {"x.jpg", "--border-color", "#ff -100"}},
        {"--border-color", {"x.jpg", "--border-color", "#+f+f+f"}},
        {"--border-color", {"x.jpg", "--border-color", "white"}},
        {"--logo-padding", {"x.jpg", "--logo-padding", "1,2,3"}},
        {"--logo-padding", {"x.jpg", "--logo-padding", ",2"}},
        {"--logo-width", {"x.jpg", "--logo-width", "101"}},
        {"--logo-position", {"x.jpg", "--logo-position", "middle"}},
        {"--output", {"x.jpg", "--output="}},
        {"--beside", {"x.jpg", "--beside=a/b"}},
        {"--beside", {"x.jpg", "--beside=.."}},
        {"--beside", {"x.jpg", "--beside="}},
        {"--quality", {"inspect", "x.jpg", "--quality", "1"}},
        {"--version", {"inspect", "--version"}},
    };
    for (const auto& [option, words] : rows) {
        SCOPED_TRACE(words.empty() ? "nothing" : words.back().constData());
        try {
            (void)parseArguments(words);
            ADD_FAILURE() << option << " accepted";
        } catch (const UsageError& error) {
            EXPECT_TRUE(error.message.startsWith(QLatin1StringView(option) + QLatin1Char(':')))
                << error.message.toStdString();
        }
    }
}

TEST(Arguments, setsWhatItsOptionsSay)
{
    const Settings set = settingsOf({"--format=tiff",
                                     "--quality",
                                     "0.25",
                                     "--profile=source",
                                     "--border=2.5%",
                                     "--border-color",
                                     "#01020304",
                                     "--caption=a=b {iso}",
                                     "--caption-position=image-top-left",
                                     "--caption-font",
                                     "avenir-next",
                                     "--caption-align",
                                     "center",
                                     "--caption-size=1e1",
                                     "--caption-spacing",
                                     "3",
                                     "--caption-padding",
                                     "4",
                                     "--caption-vertical-padding",
                                     "5",
                                     "--caption-opacity",
                                     "0.5",
                                     "--caption-color",
                                     "#FFcc00",
                                     "--jobs",
                                     "64",
                                     "--on-collision",
                                     "skip",
                                     "--template",
                                     "--x",
                                     "--output",
                                     "/a/../out"});
    EXPECT_EQ(set.exportSettings, (ExportSettings{ExportFormat::tiff, 0.25}));
    RenderRecipe recipe;
    recipe.borderUnit = BorderUnit::percent;
    recipe.borderWidth = 2.5;
    recipe.borderColor = {1 / 255.0, 2 / 255.0, 3 / 255.0, 4 / 255.0};
    recipe.captionSegments = set.recipe.captionSegments; // Identifiers are fresh each time.
    recipe.captionPosition = CaptionPosition::imageTopLeft;
    recipe.captionFont = CaptionFont::avenirNext;
    recipe.captionAlignment = CaptionAlignment::center;
    recipe.captionFontSize = 10;
    recipe.captionLineSpacing = 3;
    recipe.captionPadding = 4;
    recipe.captionVerticalPadding = 5;
    recipe.captionOpacity = 0.5;
    recipe.captionColor = {1, 0.8, 0, 1};
    recipe.outputColorProfile = OutputColorProfile::preserveSource;
    EXPECT_EQ(set.recipe, recipe);
    EXPECT_EQ(set.recipe.captionTemplate(), QStringLiteral("a=b {iso}"));
    BatchExportConfiguration configuration;
    configuration.chosenFolder = FileUrl::fromPath(QByteArray("/out"));
    configuration.filenameTemplate = QStringLiteral("--x");
    configuration.collisionRule = CollisionRule::skip;
    configuration.maximumConcurrentExports = 64;
    EXPECT_EQ(set.configuration, configuration);

    EXPECT_FALSE(settingsOf({"--caption", "x", "--no-caption"}).recipe.captionEnabled);
    EXPECT_TRUE(settingsOf({"--no-caption", "--caption", "x"}).recipe.captionEnabled);
}

TEST(Arguments, tellsPathsFromOptionsAndNames)
{
    const test::TemporaryFolder folder;
    ASSERT_EQ(::chdir(folder.url().path().constData()), 0);
    folder.write("photo.jpg", "");
    const struct {
        const char* name;
        Words words;
        Words roots;
        const char* besideName; ///< Null where photos don't go beside.
    } rows[] = {
        {"bytes stay bytes", {"caf\xe9.jpg", "-"}, {"caf\xe9.jpg", "-"}, nullptr},
        {"all behind --", {"--", "--json", "--"}, {"--json", "--"}, nullptr},
        {"inspect elsewhere is a path", {"a.jpg", "inspect"}, {"a.jpg", "inspect"}, nullptr},
        {"beside takes a name", {"--beside", "Framed", "photo.jpg"}, {"photo.jpg"}, "Framed"},
        {"beside leaves what exists", {"--beside", "photo.jpg"}, {"photo.jpg"}, "Ferrow Export"},
        {"beside leaves paths", {"--beside", "./none.jpg"}, {"none.jpg"}, "Ferrow Export"},
        {"beside leaves options", {"--beside", "--json", "x.jpg"}, {"x.jpg"}, "Ferrow Export"},
        {"beside by equals", {"--beside=photo.jpg", "photo.jpg"}, {"photo.jpg"}, "photo.jpg"},
        {"beside before --", {"--beside", "--", "none.jpg"}, {"none.jpg"}, "Ferrow Export"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Arguments arguments = parseArguments(row.words);
        Words roots;
        for (const FileUrl& root : arguments.roots)
            roots.push_back(root.standardized().lastPathComponentBytes());
        EXPECT_EQ(roots, row.roots);
        Settings settings;
        for (const auto& change : arguments.changes)
            change(settings);
        EXPECT_EQ(settings.configuration.destinationMode == ExportDestinationMode::sourceSubfolder,
                  row.besideName != nullptr);
        if (row.besideName) {
            EXPECT_EQ(settings.configuration.sourceSubfolderName, QLatin1StringView(row.besideName));
        }
    }
    ASSERT_EQ(::chdir("/"), 0);
    EXPECT_EQ(parseArguments({"inspect", "--json", "inspect"}).mode, Arguments::Mode::inspect);
    EXPECT_EQ(parseArguments({"--help"}).mode, Arguments::Mode::help);
}

TEST(Arguments, everyOptionIsInTheHelp)
{
    for (const char* option : {"--output", "--beside", "--template", "--on-collision", "--jobs", "--format",
                               "--quality", "--profile", "--preset", "--preset-file", "--border", "--border-color",
                               "--caption-vertical-padding", "--logo-padding", "--dry-run", "--json", "--quiet"})
        EXPECT_TRUE(helpText().contains(QLatin1StringView(option) + QLatin1Char(' '))) << option;
    for (const QString& line : helpText().split(QLatin1Char('\n')))
        EXPECT_LE(line.size(), 80) << line.toStdString();
}

TEST(Output, foretellsTheRestWhereThereIsEnoughToGoBy)
{
    using Seconds = std::chrono::duration<double>;
    EXPECT_EQ(remainingTime(Seconds(30), 0, 10), QString());
    EXPECT_EQ(remainingTime(Seconds(0.5), 5, 10), QString());
    EXPECT_EQ(remainingTime(Seconds(10), 10, 10), QString());
    EXPECT_EQ(remainingTime(Seconds(10), 5, 10), QStringLiteral("about 10 s left"));
    EXPECT_EQ(remainingTime(Seconds(60), 1, 4), QStringLiteral("about 3 min left"));
    EXPECT_EQ(remainingTime(Seconds(3600), 1, 3), QStringLiteral("about 2 h left"));
}

} // namespace ferrow::Command
