// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ExportSheets/ExportOptionsSheet.h"
#include "Features/ExportSheets/ExportTexts.h"
#include "Features/ExportSheets/ReportSheet.h"
#include "Features/PhotoSidebar/PhotoListView.h"
#include "Features/PhotoSidebar/PhotoSidebar.h"
#include "Features/PresetManager/PresetList.h"
#include "Features/PresetManager/PresetManagerView.h"
#include "Features/PresetManager/PresetSummary.h"
#include "Session/SessionTestSupport.h"
#include "Widgets/NumberField.h"
#include "Widgets/SegmentedControl.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

#include <algorithm>
#include <utility>

namespace ferrow::test {

namespace {

BatchExportFailure failureOf(const FileUrl& photo)
{
    return {QUuid::createUuid(), photo.lastPathComponent(), QStringLiteral("Broken.\n\nSorry."), photo};
}

template <typename Widget>
Widget* child(QWidget& parent, const char* name)
{
    return parent.findChild<Widget*>(QString::fromLatin1(name));
}

/// A window with two photos that can be read, and a folder for what comes of them.
struct Sheets : testing::Test {
    TemporaryFolder folder;
    QWidget window;
    Preferences preferences{folder.file("preferences")};
    PhotoSession session{SandboxAccessBroker(), withoutDisk()};
    ExportSession exportSession;

    Sheets()
    {
        window.show();
        importInto(session, {folder.write("a.jpg", "a"), folder.write("b.jpg", "b")});
    }

    void choose(const FileUrl& exportFolder)
    {
        auto configuration = exportSession.configuration();
        configuration.chosenFolder = exportFolder;
        configuration.filenameTemplate = QStringLiteral("{filename}-{index}");
        exportSession.setConfiguration(configuration);
    }
};

} // namespace

TEST(ExportTexts, tellOfFailuresBeforeSkippedPhotosAndOfFoldersInTheHome)
{
    const auto b = photoUrl("b.jpg");
    const auto other = photoUrl("other/b.jpg");
    const BatchExportReport report{
        .exported = 8, .skipped = 1, .canceled = 2, .failures = {failureOf(b), failureOf(other), failureOf(b)}};
    EXPECT_EQ(ExportTexts::reportText(report, {photoUrl("s.jpg")}),
              QStringLiteral("Export stopped, with 3 failures\n8 exported, 1 skipped, 3 failed, 2 canceled\n\nFailed\n"
                             "b.jpg: Broken. Sorry.\nb.jpg: Broken. Sorry.\nb.jpg: Broken. Sorry.\n"
                             "\nSkipped\ns.jpg\n"));
    EXPECT_EQ(ExportTexts::failedPhotos(report), (std::vector{b, other}));
    EXPECT_EQ(ExportTexts::folder(other, photoUrl("")), QStringLiteral("other / b.jpg"));
    EXPECT_EQ(ExportTexts::folder(other, photoUrl("oth")), QStringLiteral("/photos/other/b.jpg"));
}

TEST_F(Sheets, tellWhatWillBeExportedAndUnderWhichName)
{
    choose(folder.url());
    const auto first = session.photos()[0].id();
    session.setSelectedPhotoID(session.photos()[1].id());
    EXPECT_EQ(ExportTexts::exampleName(session, exportSession), QStringLiteral("b-2.jpg"));
    session.setIncluded({first}, false);
    session.setSelectedPhotoID(first);
    EXPECT_EQ(ExportTexts::exampleName(session, exportSession), QStringLiteral("b-1.jpg"));

    RenderRecipe wide;
    wide.outputColorProfile = OutputColorProfile::displayP3;
    session.setPhotoRecipe(first, wide);
    session.setRecipeScope(RecipeScope::selected);
    EXPECT_EQ(ExportTexts::subtitle(session, {}), QStringLiteral("1 photo · JPEG, quality 90 · sRGB"));
    session.setIncluded({first}, true);
    EXPECT_EQ(ExportTexts::subtitle(session, {ExportFormat::png}), QStringLiteral("2 photos · PNG · several profiles"));
}

TEST_F(Sheets, tellTheSizeThatIsWritten)
{
    choose(folder.url());
    const ImportedPhoto& photo = session.photos()[0];
    session.setSelectedPhotoID(photo.id());
    const PixelSize framed{photo.pixelSize.width + 240, photo.pixelSize.height + 240};
    ExportOptionsSheet sheet(session, exportSession, preferences, &window);
    sheet.open();
    const auto example = [&] { return child<QLabel>(sheet, "sizeExample")->text(); };
    EXPECT_EQ(example(), framed.formatted() + QStringLiteral(", as large as photo and frame"));
    const int height = child<QWidget>(sheet, "collisionCombo")->mapTo(&window, QPoint()).y();

    auto* limit = child<SegmentedControl>(sheet, "sizeControl");
    limit->pressItem(int(SizeLimit::longSide));
    auto* longSide = child<NumberField>(sheet, "longSideField");
    EXPECT_TRUE(longSide->isVisible());
    EXPECT_EQ(exportSession.settings().size, OutputSize::withLongSide(2048));
    longSide->enter(100);
    EXPECT_EQ(exportSession.settings().size, OutputSize::withLongSide(100));
    const double scale = 100.0 / double(framed.longestSide());
    const PixelSize written{scaledSide(framed.width, scale), scaledSide(framed.height, scale)};
    EXPECT_EQ(example(), framed.formatted() + QStringLiteral(" → ") + written.formatted());
    longSide->enter(double(framed.longestSide()));
    EXPECT_EQ(example(), framed.formatted() + QStringLiteral(", never enlarged"));
    EXPECT_TRUE(ExportTexts::subtitle(session, {.size = OutputSize::withLongSide(2048)})
                    .contains(QStringLiteral(" · long side 2,048 px · ")));

    limit->pressItem(int(SizeLimit::box));
    child<NumberField>(sheet, "boxHeightField")->enter(90);
    EXPECT_EQ(exportSession.settings().size, OutputSize::within({3840, 90}));
    EXPECT_FALSE(longSide->isVisible());
    limit->pressItem(int(SizeLimit::megapixels));
    EXPECT_EQ(exportSession.settings().size, OutputSize::ofMegapixels(12));
    QApplication::processEvents();
    EXPECT_EQ(child<QWidget>(sheet, "collisionCombo")->mapTo(&window, QPoint()).y(), height) << "nothing moves";
    limit->pressItem(int(SizeLimit::none));
    EXPECT_EQ(exportSession.settings().size, OutputSize());
}

TEST_F(Sheets, keepThePhotosDataAtFullSizeAndTellOfTheBorder)
{
    choose(folder.url());
    ExportOptionsSheet sheet(session, exportSession, preferences, &window);
    sheet.open();
    auto* keeps = child<SegmentedControl>(sheet, "keepsDataControl");
    auto* limit = child<SegmentedControl>(sheet, "sizeControl");
    limit->pressItem(int(SizeLimit::longSide));
    keeps->pressItem(1);
    EXPECT_TRUE(exportSession.settings().keepsPhotoData);
    EXPECT_EQ(exportSession.settings().size, OutputSize());
    EXPECT_FALSE(limit->item(int(SizeLimit::longSide)).isEnabled);
    EXPECT_FALSE(limit->toolTip().isEmpty());
    EXPECT_TRUE(ExportTexts::subtitle(session, exportSession.settings()).contains(QStringLiteral("photo’s data kept")));
    keeps->pressItem(0);
    EXPECT_EQ(exportSession.settings().size, OutputSize::withLongSide(2048)) << "as it was before";
    EXPECT_TRUE(limit->item(int(SizeLimit::longSide)).isEnabled);

    keeps->pressItem(1);
    exportSession.setSettings({.format = ExportFormat::png, .keepsPhotoData = true});
    EXPECT_FALSE(keeps->isEnabled());
    EXPECT_EQ(keeps->currentIndex(), 0);
    EXPECT_TRUE(limit->item(int(SizeLimit::longSide)).isEnabled);
}

TEST_F(Sheets, exportOnlyWhatTheCheckAllows)
{
    ExportOptionsSheet sheet(session, exportSession, preferences, &window);
    QSignalSpy started(&sheet, &ExportOptionsSheet::startRequested);
    auto* start = child<QPushButton>(sheet, "startExportButton");
    sheet.open();
    EXPECT_TRUE(waitUntil([&] { return !start->isEnabled(); })) << "no folder is chosen";
    choose(folder.url());
    EXPECT_TRUE(waitUntil([&] { return start->isEnabled(); }));
    // Pressed while a change has yet to be checked: it starts, or not, once the check has spoken.
    choose(folder.file("gone"));
    start->click();
    EXPECT_TRUE(waitUntil([&] { return !start->isEnabled(); }));
    EXPECT_EQ(started.count(), 0);
    choose(folder.url());
    EXPECT_TRUE(waitUntil([&] { return start->isEnabled(); }));
    auto* nameTemplate = child<QLineEdit>(sheet, "templateField");
    nameTemplate->setFocus();
    nameTemplate->setSelection(0, 10);
    QTest::mouseClick(child<QPushButton>(sheet, "insertIndexButton"), Qt::LeftButton);
    QTest::keyClicks(nameTemplate, QStringLiteral("!"));
    EXPECT_EQ(exportSession.configuration().filenameTemplate, QStringLiteral("{index}!-{index}"));
    start->click();
    EXPECT_TRUE(waitUntil([&] { return started.count() == 1; }));
    session.setIncluded({session.photos()[0].id(), session.photos()[1].id()}, false);
    EXPECT_FALSE(start->isEnabled());
}

TEST_F(Sheets, keepTheirRowsWhenTheFormatChanges)
{
    choose(folder.url());
    window.resize(1'000, 900);
    ExportOptionsSheet sheet(session, exportSession, preferences, &window);
    sheet.open();
    const auto isFound = [&] {
        const auto labels = child<QWidget>(sheet, "checkList")->findChildren<QLabel*>();
        return std::ranges::any_of(labels, [](auto* label) { return label->text().endsWith(u"can be written"); });
    };
    EXPECT_TRUE(waitUntil(isFound));
    auto* rule = child<QWidget>(sheet, "collisionCombo");
    auto* quality = child<QWidget>(sheet, "qualityField");
    QApplication::processEvents();
    const QPoint before = rule->mapTo(&window, QPoint());
    exportSession.setSettings({ExportFormat::png});
    QApplication::processEvents();
    EXPECT_EQ(rule->mapTo(&window, QPoint()), before);
    EXPECT_FALSE(quality->isVisible());
    exportSession.setSettings({ExportFormat::jpeg});
    EXPECT_TRUE(quality->isVisible());
}

TEST_F(Sheets, askForTheDepthInPlaceOfTheQualityWhereNothingIsLost)
{
    choose(folder.url());
    ExportOptionsSheet sheet(session, exportSession, preferences, &window);
    sheet.open();
    auto* format = child<SegmentedControl>(sheet, "formatControl");
    auto* depth = child<SegmentedControl>(sheet, "depthControl");
    EXPECT_FALSE(depth->isVisible());
    format->pressItem(int(ExportFormat::tiff));
    EXPECT_TRUE(depth->isVisible());
    EXPECT_EQ(depth->accessibleName(), QStringLiteral("Bit depth"));
    depth->pressItem(1);
    EXPECT_EQ(exportSession.settings().depth, BitDepth::sixteen);
    EXPECT_TRUE(ExportTexts::subtitle(session, exportSession.settings()).contains(QStringLiteral("TIFF, 16 bit")));
    format->pressItem(int(ExportFormat::heic));
    EXPECT_FALSE(depth->isVisible());
    EXPECT_EQ(exportSession.settings().writtenDepth(), BitDepth::eight);
    format->pressItem(int(ExportFormat::png));
    EXPECT_EQ(depth->currentIndex(), 1) << "as it was chosen";
}

TEST_F(Sheets, goOnToTheExportOnceTheFolderIsKnown)
{
    ExportOptionsSheet sheet(session, exportSession, preferences, &window);
    auto* start = child<QPushButton>(sheet, "startExportButton");
    const auto openWithoutFolder = [&] {
        sheet.open();
        return waitUntil([&] { return !start->isEnabled(); });
    };
    ASSERT_TRUE(openWithoutFolder());
    EXPECT_EQ(window.focusWidget(), child<QPushButton>(sheet, "chooseFolderButton"));
    choose(folder.file("gone"));
    sheet.goOnToStart();
    EXPECT_EQ(window.focusWidget(), start) << "before the check has spoken";
    EXPECT_TRUE(waitUntil([&] { return !start->isEnabled(); }));
    EXPECT_EQ(window.focusWidget(), child<QPushButton>(sheet, "chooseFolderButton")) << "to choose another one";
    sheet.dismiss();

    auto configuration = exportSession.configuration();
    configuration.chosenFolder.reset();
    exportSession.setConfiguration(configuration);
    ASSERT_TRUE(openWithoutFolder());
    ASSERT_TRUE(waitUntil([&] { return child<QPushButton>(sheet, "remedyButton") != nullptr; }));
    EXPECT_EQ(child<QPushButton>(sheet, "remedyButton")->text(), QStringLiteral("Beside Each Source"));
    child<QPushButton>(sheet, "remedyButton")->click();
    EXPECT_EQ(exportSession.configuration().destinationMode, ExportDestinationMode::sourceSubfolder);
    EXPECT_EQ(window.focusWidget(), start);
    EXPECT_TRUE(waitUntil([&] { return !child<QPushButton>(sheet, "remedyButton"); }));
    EXPECT_TRUE(start->isEnabled());
}

TEST_F(Sheets, tellHowManyAreExportedAndNotHowManyAreSettled)
{
    EditHistory history(session, exportSession);
    ListedPhotos listed(session, exportSession);
    PhotoSidebar sidebar(listed.model, session, history, exportSession, &window);
    choose(folder.url());
    auto configuration = exportSession.configuration();
    configuration.collisionRule = CollisionRule::skip;
    exportSession.setConfiguration(configuration);
    static_cast<void>(folder.write("a-1.jpg", "taken"));
    QStringList told;
    QObject::connect(&exportSession, &ExportSession::progressChanged, &sidebar,
                     [&] { told << child<QLabel>(sidebar, "includedCount")->text(); });
    exportSession.planAndStart(exportSession.requestFor(session));
    ASSERT_TRUE(waitUntil([&] { return exportSession.report().has_value(); }));
    ASSERT_FALSE(told.isEmpty());
    EXPECT_EQ(told.front(), QStringLiteral("0 of 2 exported"));
}

TEST_F(Sheets, reportAsksToTryAgainBeforeItCloses)
{
    ReportSheet sheet({.failures = {failureOf(photoUrl("b.jpg"))}}, session, preferences, &window);
    sheet.open();
    bool wasOpen = false;
    QObject::connect(&sheet, &ReportSheet::tryAgainRequested, [&] { wasOpen = sheet.isOpen(); });
    child<QPushButton>(sheet, "tryAgainButton")->click();
    EXPECT_TRUE(wasOpen && !sheet.isOpen());
}

TEST_F(Sheets, listIsLockedFromTheStartOfPlanning)
{
    EditHistory history(session, exportSession);
    ListedPhotos listed(session, exportSession);
    PhotoSidebar sidebar(listed.model, session, history, exportSession, &window);
    const auto tryAll = [&] {
        child<QPushButton>(sidebar, "clearAllButton")->click();
        child<QAbstractButton>(sidebar, "includeAllBox")->click();
        QTest::keyClick(sidebar.list(), Qt::Key_Space);
        QTest::keyClick(sidebar.list(), Qt::Key_Delete);
    };
    const QSignalSpy cleared(&sidebar, &PhotoSidebar::clearAllRequested);
    exportSession.planAndStart(exportSession.requestFor(session));
    ASSERT_TRUE(exportSession.isPlanning());
    tryAll();
    EXPECT_EQ(history.stack().count() + cleared.count(), 0);
    exportSession.cancel();
    tryAll();
    EXPECT_EQ(history.stack().count() + cleared.count(), 4);
}

TEST(PresetSummary, saysWhatAPresetHolds)
{
    const auto summary = [](const RenderRecipe& recipe) { return payloadSummary(PresetPayload::make(recipe, {}, {})); };
    EXPECT_EQ(summary({.border = {.width = 40}, .captions = {{.isEnabled = false}, {}}}),
              QStringLiteral("40 px · caption · no logo · JPEG"));
    RenderRecipe recipe{.border = {.unit = BorderUnit::percent, .width = 2.5},
                        .captions = {{.isEnabled = false}},
                        .logo = LogoConfiguration::placeholder()};
    recipe.logo->isEnabled = false;
    EXPECT_EQ(summary(recipe), QStringLiteral("2.5 % · no caption · logo · JPEG"));
    EXPECT_EQ(summary({.border = {.width = 40, .shape = {{1, 1}}, .line = FrameLine()}}),
              QStringLiteral("40 px · 1:1 · line · caption · no logo · JPEG"));
}

TEST(PresetSummary, drawsTheFrameThatAPresetHolds)
{
    struct Row {
        const char* name;
        Border border;
        QRectF canvas;
        QRectF photo;
    };
    const QRectF box(1, 1, 44, 34);
    const Row rows[] = {
        {"none", {.width = 0}, box, box},
        {"even", {.width = 120}, box, {5, 5, 36, 26}},
        {"percent", {.unit = BorderUnit::percent, .width = 4}, box, {5, 5, 36, 26}},
        {"deep foot", {.sides = {{120, 0, 600, 0}}}, box, {1, 5, 44, 18}},
        {"absurd", {.width = 1e20}, box, {13, 13, 20, 10}},
        {"square", {.width = 0, .shape = {{1, 1}}}, {6, 1, 34, 34}, {6, 7, 34, 23}},
        {"square, at its top", {.width = 0, .shape = {{1, 1, false, -100}}}, {6, 1, 34, 34}, {6, 1, 34, 23}},
        {"no shape at all", {.width = 0, .shape = {{0, 1}}}, box, {1, 3, 44, 29}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const DrawnFrame drawn = drawnFrame(row.border, box);
        EXPECT_EQ(drawn.canvas, row.canvas);
        EXPECT_EQ(drawn.photo, row.photo);
    }
}

TEST_F(Sheets, presetsAreAppliedRenamedAndRemovedByKeys)
{
    PresetLibrary library(folder.file("presets.json"));
    const auto b = library.save(QStringLiteral("B"), {}).id;
    std::vector<QUuid> applied;
    std::vector<QUuid> removed;
    PresetManagerView sheet(library,
                            {[] {},
                             [] {},
                             [&](const QUuid& id) { applied.push_back(id); },
                             [&](const QUuid& id, const QString& name) { library.rename(id, name); },
                             {},
                             {},
                             [&](const QUuid& id) { removed.push_back(id); }},
                            &window);
    sheet.open();
    auto* list = child<PresetList>(sheet, "presetList");
    const auto press = [&](std::initializer_list<Qt::Key> keys) {
        for (const auto key : keys)
            QTest::keyClick(list, key);
    };
    press({Qt::Key_Return});
    EXPECT_EQ(std::exchange(applied, {}), std::vector{b}) << "the first is selected";
    list->clearSelection();
    press({Qt::Key_Return, Qt::Key_Delete});
    EXPECT_TRUE(applied.empty() && removed.empty()) << "nothing is selected";

    const auto a = library.save(QStringLiteral("A"), {}).id;
    press({Qt::Key_Return, Qt::Key_Down, Qt::Key_Return, Qt::Key_Delete});
    EXPECT_EQ(applied, (std::vector{a, b})) << "what has just been saved is selected";
    EXPECT_EQ(removed, std::vector{b});

    const auto renameBy = [&](const QString& typed, Qt::Key end) {
        press({Qt::Key_F2});
        auto* editor = child<QLineEdit>(sheet, "presetNameEditor");
        QTest::keyClicks(editor, typed);
        QTest::keyClick(editor, end);
        EXPECT_TRUE(waitUntil([&] { return !child<QLineEdit>(sheet, "presetNameEditor"); }));
    };
    renameBy(QStringLiteral("x"), Qt::Key_Escape);
    renameBy(QStringLiteral("  "), Qt::Key_Return);
    EXPECT_EQ(library.presets()[1].name, QStringLiteral("B"));
    renameBy(QStringLiteral("0"), Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return library.presets()[0].name == QStringLiteral("0"); }));
    EXPECT_TRUE(sheet.isOpen() && applied.size() == 2) << "Enter ended the typing and no more";
    child<QPushButton>(sheet, "applyPresetButton")->click();
    EXPECT_EQ(applied.back(), b) << "the selection goes with the preset";
    library.remove(b);
    press({Qt::Key_Return});
    EXPECT_EQ(applied.back(), a) << "and to the neighbor of one that has gone";
}

TEST_F(Sheets, presetsThatAreTheFirstGetTheFocusOfTheButtonThatAddedThem)
{
    PresetLibrary library(folder.file("presets.json"));
    PresetManagerView sheet(library,
                            {.saveCurrent = [] {},
                             .addStarters =
                                 [&] {
                                     library.saveAll({{QStringLiteral("B"), {}}, {QStringLiteral("A"), {}}});
                                 },
                             .apply = [](const QUuid&) {}},
                            &window);
    sheet.open();
    auto* add = child<QPushButton>(sheet, "addStartersButton");
    add->setFocus();
    QTest::keyClick(add, Qt::Key_Space);
    EXPECT_FALSE(add->isVisible());
    EXPECT_EQ(QApplication::focusWidget(), child<PresetList>(sheet, "presetList"));
    EXPECT_EQ(child<PresetList>(sheet, "presetList")->selectedPreset(), library.presets().front().id);
    EXPECT_EQ(PresetLibrary(library.fileURL()).presets().size(), 2U);
}

} // namespace ferrow::test
