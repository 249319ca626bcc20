// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/EditHistory.h"

#include "SessionTestSupport.h"

#include <QSignalSpy>

namespace ferrow {

using testing::ElementsAre;

namespace {

class EditHistoryTest : public testing::Test {
protected:
    EditHistoryTest()
    {
        test::importInto(session, test::photoUrls({"a", "b", "c"}));
        session.setSelectedPhotoID(a);
    }

    void setBorder(double width)
    {
        history.editRecipe(QStringLiteral("Border Width"),
                           [width](RenderRecipe& recipe) { recipe.border.width = width; });
    }
    [[nodiscard]] double shown(const FileUrl& photo) const { return session.resolvedRecipe(photo).border.width; }

    const FileUrl a = test::photoUrl("a");
    const FileUrl b = test::photoUrl("b");
    test::DisklessSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    QUndoStack& stack = history.stack();
};

} // namespace

TEST_F(EditHistoryTest, showsAnEditInHandAndRecordsItOnce)
{
    const auto preview = [&](double width) {
        history.preview(QStringLiteral("Border Width"), [&](RenderRecipe& recipe) { recipe.border.width = width; });
    };
    preview(10);
    preview(120);
    history.keepPreview();
    EXPECT_EQ(stack.count(), 0) << "it is back where it began";
    preview(10);
    preview(20);
    EXPECT_EQ(session.batchRecipe().border.width, 20);
    EXPECT_EQ(stack.count(), 0);
    history.keepPreview();
    history.dropPreview();
    preview(30);
    stack.undo();
    history.dropPreview();
    EXPECT_EQ(session.batchRecipe().border.width, 120) << "the undo counts, not what was in hand";
    EXPECT_FALSE(stack.canUndo());
}

TEST_F(EditHistoryTest, makesOneStepOfAGestureAndNoneOfNothing)
{
    setBorder(120);
    EXPECT_EQ(stack.count(), 0);
    setBorder(10);
    history.beginGesture();
    for (const double width : {20, 30, 40})
        setBorder(width);
    history.endGesture();
    history.beginGesture();
    setBorder(50);
    setBorder(40);
    history.endGesture();
    EXPECT_EQ(stack.count(), 2) << "a drag that ends where it began leaves no step";
    EXPECT_EQ(stack.undoText(), QStringLiteral("Border Width"));
    stack.undo();
    EXPECT_EQ(session.batchRecipe().border.width, 10);
    stack.undo();
    EXPECT_EQ(session.batchRecipe(), RenderRecipe());
    stack.redo();
    stack.redo();
    EXPECT_EQ(session.batchRecipe().border.width, 40);
}

TEST_F(EditHistoryTest, undoesWhereTheEditWasMade)
{
    setBorder(10);
    session.setRecipeScope(RecipeScope::selected);
    setBorder(20);
    session.setSelectedPhotoID(b);
    setBorder(30);
    stack.undo();
    EXPECT_FALSE(session.hasOwnRecipe(b));
    session.setRecipeScope(RecipeScope::batch);
    EXPECT_EQ(stack.undoText(), QStringLiteral("Border Width"));
    stack.undo();
    EXPECT_EQ(session.recipeScope(), RecipeScope::selected);
    EXPECT_EQ(session.selectedPhotoID(), a);
    EXPECT_EQ(shown(a), 10);
    EXPECT_FALSE(session.hasOwnRecipe(a));
    session.setSelectedPhotoID(b);
    stack.redo();
    EXPECT_EQ(session.selectedPhotoID(), a);
    EXPECT_EQ(shown(a), 20);
    stack.undo();
    stack.undo();
    EXPECT_EQ(shown(a), 120);
    EXPECT_EQ(session.recipeScope(), RecipeScope::batch);
}

TEST_F(EditHistoryTest, correctsValuesInOneStepAsLongAsTheListHasThePhoto)
{
    const auto set = [](const char* lens) {
        return [lens](MetadataCorrections& values) { values[MetadataField::lens] = QString::fromLatin1(lens); };
    };
    const auto lens = [this](const FileUrl& photo) {
        return session.photo(photo)->captionMetadata().lens.value_or(QStringLiteral("none")).toStdString();
    };
    const QSignalSpy changes(&session, &PhotoSession::correctionsChanged);
    history.correct(QStringLiteral("Lens"), {a}, set("old"));
    history.correct(QStringLiteral("Lens"), {a}, set("old"));
    history.correct(QStringLiteral("Lens"), {b}, [](auto& values) { values[MetadataField::lens] = MetadataValue(); });
    EXPECT_EQ(stack.count(), 1) << "twice the same, and empty as in the file";
    history.correct(QStringLiteral("Lens"), {a, b, test::photoUrl("gone")}, set("new"));
    EXPECT_EQ(changes.size(), 2);
    EXPECT_EQ(lens(a) + lens(b), "newnew");
    EXPECT_EQ(session.photo(a)->metadata.lens, std::nullopt) << "what was read stays";

    session.setSelectedPhotoID(test::photoUrl("c"));
    stack.undo();
    EXPECT_EQ(lens(a) + lens(b), "oldnone");
    EXPECT_EQ(test::selectedName(session), "a");
    // Removed and added again it is as the file says, until the removal is undone.
    history.remove({a});
    test::importInto(session, {a});
    EXPECT_EQ(lens(a), "none");
    stack.undo();
    EXPECT_EQ(lens(a), "old");
    stack.undo();
    EXPECT_TRUE(session.photo(a)->corrections.empty());
}

TEST_F(EditHistoryTest, bringsRemovedPhotosBackAsTheyWere)
{
    session.setRecipeScope(RecipeScope::selected);
    setBorder(20);
    history.toggleIncluded(a);
    history.remove({a, test::photoUrl("c"), test::photoUrl("unknown")});
    EXPECT_EQ(stack.undoText(), QStringLiteral("Remove Photos"));
    EXPECT_THAT(test::names(session.photos()), ElementsAre("b"));
    session.setSelectedPhotoID(b);
    stack.undo();
    EXPECT_THAT(test::names(session.photos()), ElementsAre("a", "b", "c"));
    EXPECT_EQ(test::selectedName(session), "a");
    EXPECT_FALSE(session.isIncluded(a));
    EXPECT_EQ(shown(a), 20);
    stack.undo();
    EXPECT_TRUE(session.isIncluded(a));
    stack.redo();
    stack.redo();
    EXPECT_THAT(test::names(session.photos()), ElementsAre("b"));
    // Imported anew before the removal is undone, it is there once, with what it had.
    test::importInto(session, {a});
    stack.undo();
    EXPECT_THAT(test::names(session.photos()), ElementsAre("a", "b", "c"));
    EXPECT_FALSE(session.isIncluded(a));
}

TEST_F(EditHistoryTest, bringsBackAListThatWasCleared)
{
    session.setRecipeScope(RecipeScope::selected);
    setBorder(20);
    history.toggleIncluded(b);
    const std::vector<FileUrl> roots = session.accessBroker().accessedRoots();
    history.clearAll();
    EXPECT_EQ(stack.undoText(), QStringLiteral("Clear All"));
    EXPECT_TRUE(session.photos().empty() && session.photoRecipes().empty() && !session.selectedPhotoID());
    EXPECT_TRUE(session.accessBroker().accessedRoots().empty());
    history.clearAll(); // Nothing is left to clear.
    stack.undo();
    EXPECT_THAT(test::names(session.photos()), ElementsAre("a", "b", "c"));
    EXPECT_EQ(test::selectedName(session), "a");
    EXPECT_EQ(shown(a), 20);
    EXPECT_FALSE(session.isIncluded(b));
    EXPECT_EQ(session.accessBroker().accessedRoots(), roots);
    stack.redo();
    test::importInto(session, test::photoUrls({"b", "bb"}));
    stack.undo();
    EXPECT_THAT(test::names(session.photos()), ElementsAre("a", "b", "bb", "c"));
    stack.undo();
    stack.undo();
    EXPECT_TRUE(session.isIncluded(b) && !session.hasOwnRecipe(a)) << "the history before it is gone";
}

TEST_F(EditHistoryTest, marksNoPhotoThatWasOnlyLookedAt)
{
    session.setRecipeScope(RecipeScope::selected);
    EXPECT_FALSE(session.hasOwnRecipe(a));
    history.beginGesture();
    setBorder(20);
    EXPECT_TRUE(session.hasOwnRecipe(a));
    setBorder(session.batchRecipe().border.width);
    history.endGesture();
    EXPECT_FALSE(session.hasOwnRecipe(a)) << "a drag that ends where the batch is";
    EXPECT_EQ(stack.count(), 0);
    setBorder(20);
    EXPECT_EQ(session.unusedOwnFramings(), 0u);
    session.setRecipeScope(RecipeScope::batch);
    EXPECT_EQ(session.unusedOwnFramings(), 1u);
    session.setSelectedPhotoID(std::nullopt);
    session.useOwnFramings();
    EXPECT_EQ(session.recipeScope(), RecipeScope::selected);
    EXPECT_EQ(session.selectedPhotoID(), a);
}

TEST_F(EditHistoryTest, appliesAPresetInOneStep)
{
    session.setRecipeScope(RecipeScope::selected);
    setBorder(20);
    PhotoPreset preset;
    preset.payload =
        PresetPayload::make(test::border(77), {ExportFormat::png, 0.5}, {.filenameTemplate = QStringLiteral("x")});
    const RenderRecipe before = session.batchRecipe();
    history.applyPreset(preset);
    EXPECT_EQ(shown(a), 77);
    EXPECT_EQ(exportSession.settings().format, ExportFormat::png);
    BatchExportConfiguration configuration = exportSession.configuration();
    configuration.chosenFolder = test::photoUrl("out");
    exportSession.setConfiguration(configuration);
    const int steps = stack.count();
    history.applyPreset(preset);
    EXPECT_EQ(stack.count(), steps);
    stack.undo();
    EXPECT_EQ(session.batchRecipe(), before);
    EXPECT_EQ(session.recipeScope(), RecipeScope::selected);
    EXPECT_EQ(exportSession.settings(), ExportSettings());
    EXPECT_EQ(exportSession.configuration().filenameTemplate, BatchExportConfiguration().filenameTemplate);
    EXPECT_EQ(exportSession.configuration().chosenFolder, test::photoUrl("out"));
    EXPECT_EQ(shown(a), 20);
}

TEST_F(EditHistoryTest, undoesAPresetButNotTheExportSettingsChosenSince)
{
    PhotoPreset preset;
    preset.payload = PresetPayload::make({}, {ExportFormat::png, 0.5}, {.filenameTemplate = QStringLiteral("x")});
    history.applyPreset(preset);
    const auto choose = [this](ExportFormat format) {
        exportSession.setSettings({format, exportSession.settings().quality});
    };
    const ExportSettings& settings = exportSession.settings();
    choose(ExportFormat::tiff);
    stack.undo();
    EXPECT_EQ(settings, (ExportSettings{ExportFormat::tiff, ExportSettings().quality}));
    EXPECT_EQ(exportSession.configuration(), BatchExportConfiguration());
    stack.redo();
    EXPECT_EQ(settings, (ExportSettings{ExportFormat::tiff, 0.5}));
    EXPECT_EQ(exportSession.configuration().filenameTemplate, QStringLiteral("x"));
    choose(ExportSettings().format);
    stack.undo();
    stack.redo();
    EXPECT_EQ(settings, (ExportSettings{ExportSettings().format, 0.5})) << "chosen by hand, though it was so before";
    stack.undo();
    choose(ExportFormat::heic);
    stack.redo();
    EXPECT_EQ(settings, (ExportSettings{ExportFormat::heic, 0.5}));
    const ExportSettings chosen{.format = ExportFormat::jpeg,
                                .quality = 0.7,
                                .size = OutputSize::withLongSide(500),
                                .keepsPhotoData = true,
                                .depth = BitDepth::sixteen};
    exportSession.setSettings(chosen);
    stack.undo();
    EXPECT_EQ(settings, chosen);
}

TEST_F(EditHistoryTest, pastesAndGivesUpFramings)
{
    history.pasteFraming({b});
    EXPECT_EQ(stack.count(), 0);
    setBorder(10);
    history.copyFraming(a);
    setBorder(15);
    history.pasteFraming({b, test::photoUrl("unknown")});
    EXPECT_EQ(shown(b), 10);
    EXPECT_EQ(shown(a), 15);
    history.useBatch(b);
    EXPECT_EQ(shown(b), 15);
    history.useBatch(b);
    EXPECT_EQ(stack.count(), 4);
    stack.undo();
    EXPECT_EQ(shown(b), 10);
    stack.undo();
    EXPECT_TRUE(session.photoRecipes().empty());
    EXPECT_EQ(session.recipeScope(), RecipeScope::batch);
}

TEST_F(EditHistoryTest, cullsInStepsThatUndoShows)
{
    history.setIncludedAndGoOn(a, false, b);
    EXPECT_FALSE(session.isIncluded(a));
    EXPECT_EQ(session.selectedPhotoID(), b);
    history.setIncludedAndGoOn(b, true, test::photoUrl("c"));
    EXPECT_EQ(test::selectedName(session), "c") << "it was included already";
    history.setIncludedAndGoOn(test::photoUrl("c"), false, std::nullopt);
    EXPECT_EQ(test::selectedName(session), "c");
    EXPECT_EQ(stack.count(), 2);
    history.invertIncluded();
    EXPECT_EQ(session.includedCount(), 2U);
    EXPECT_FALSE(session.isIncluded(b));
    for (int step = 0; step < 3; ++step)
        stack.undo();
    EXPECT_EQ(session.includedCount(), 3U);
    EXPECT_EQ(session.selectedPhotoID(), a);
    stack.redo();
    EXPECT_EQ(session.selectedPhotoID(), b);
}

} // namespace ferrow
