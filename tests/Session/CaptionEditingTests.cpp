// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/CaptionEditing.h"

#include "SessionTestSupport.h"

#include <QSignalSpy>

namespace ferrow {

namespace {

using End = CaptionEditing::End;

/// The caption "abc", each letter a chip of its own, of two photos.
class CaptionEditingTest : public testing::Test {
protected:
    CaptionEditingTest()
    {
        test::importInto(session, test::photoUrls({"a", "b"}));
        session.setSelectedPhotoID(test::photoUrl("a"));
        RenderRecipe recipe;
        recipe.captions.front().segments.clear();
        for (const char* letter : {"a", "b", "c"})
            recipe.captions.front().segments.push_back({.content = QString::fromLatin1(letter)});
        session.setBatchRecipe(recipe);
    }

    /// What the photo's caption says now.
    [[nodiscard]] std::string text() const
    {
        return session.activeRecipe().captions.front().captionTemplate().toStdString();
    }
    [[nodiscard]] std::string lastStep() const { return history.stack().undoText().toStdString(); }

    test::DisklessSession session;
    ExportSession exportSession;
    mutable EditHistory history{session, exportSession};
    CaptionEditing editing{session, history};
    QUndoStack& stack = history.stack();
};

} // namespace

TEST_F(CaptionEditingTest, goesFromCaptionToCaptionAndFollowsUndoThere)
{
    const auto texts = [this] {
        std::string all;
        for (const Caption& caption : session.activeRecipe().captions)
            all += caption.captionTemplate().toStdString() + '|';
        return all + std::to_string(editing.chosen());
    };
    editing.moveCaption(1);
    editing.removeCaption();
    EXPECT_EQ(stack.count(), 0) << "the only caption stays where it is";
    editing.addCaption();
    EXPECT_EQ(texts(), "abc||1");
    editing.startText(0);
    editing.setText(QStringLiteral("new"));
    editing.choose(0);
    EXPECT_EQ(texts(), "abc|new|0") << "a text in hand is kept";
    EXPECT_EQ(editing.segments().size(), 3u);
    editing.moveCaption(9);
    EXPECT_EQ(texts() + lastStep(), "new|abc|1Move Caption");
    editing.remove(0);
    EXPECT_EQ(texts(), "new|bc|1");
    editing.choose(0);
    stack.undo();
    EXPECT_EQ(texts(), "new|abc|1") << "undo shows where it happens";
    editing.removeCaption();
    EXPECT_EQ(texts() + lastStep(), "new|0Remove Caption");
    stack.undo();
    EXPECT_EQ(texts(), "new|abc|1");
    editing.choose(7);
    EXPECT_EQ(editing.chosen(), 1);
    for (int i = 0; i < 9; ++i)
        editing.addCaption();
    EXPECT_EQ(session.activeRecipe().captions.size(), RenderRecipe::mostCaptions);
    // Another photo's own framing has fewer.
    session.setPhotoRecipe(test::photoUrl("a"), RenderRecipe());
    session.setRecipeScope(RecipeScope::selected);
    EXPECT_EQ(editing.chosen(), 0);
}

TEST_F(CaptionEditingTest, makesAStepOfEachVerbAndGoesAlong)
{
    const QUuid b = editing.segments()[1].id;
    editing.move(1, 0);
    EXPECT_EQ(text() + lastStep(), "bacMove Text");
    EXPECT_EQ(editing.current(), 0);
    editing.change(b, CaptionSeparator::verticalBar);
    EXPECT_EQ(text() + lastStep(), " | acChange Text");
    editing.add(MetadataToken::iso, 99);
    EXPECT_EQ(text() + lastStep(), " | ac{iso}Add ISO");
    EXPECT_EQ(editing.current(), 3);
    editing.remove(3);
    EXPECT_EQ(text() + lastStep(), " | acRemove ISO");
    EXPECT_EQ(editing.current(), 2);
    editing.move(1, 2);
    editing.change(QUuid::createUuid(), MetadataToken::iso);
    EXPECT_EQ(stack.count(), 4) << "nothing has changed";
    history.correct(QStringLiteral("ISO"), {test::photoUrl("a")},
                    [](auto& values) { values[MetadataField::iso] = QStringLiteral("400"); });
    EXPECT_EQ(editing.metadata()->iso, QStringLiteral("400")) << "what it reads as";
    editing.setCurrent(0);
    for (int i = 0; i < 5; ++i)
        stack.undo();
    EXPECT_EQ(text(), "abc");
    EXPECT_EQ(editing.current(), 1) << "it is with its chip";
}

TEST_F(CaptionEditingTest, readsAsItIsDrawn)
{
    QSignalSpy changes(&editing, &CaptionEditing::changed);
    history.editRecipe(QStringLiteral("Uppercase"),
                       [](RenderRecipe& recipe) { recipe.captions.front().isUppercase = true; });
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(editing.reading(editing.metadata()).text, QStringLiteral("ABC"));
    EXPECT_FALSE(editing.reading(std::nullopt).text.isUpper()) << "a hint is no caption";
    EXPECT_EQ(text(), "abc");
    stack.undo();
    EXPECT_EQ(editing.reading(editing.metadata()).text, QStringLiteral("abc"));
}

TEST_F(CaptionEditingTest, findsPhotosThatLackAValue)
{
    const auto survey = [this](MetadataToken token) {
        const CaptionEditing::Survey found = editing.survey(token);
        const auto name = [](const auto& photo) { return photo ? photo->filename.toStdString() : "none"; };
        return std::to_string(found.lacking) + " of " + std::to_string(found.photos) + ", " + name(found.firstWith) +
               ", " + name(found.firstWithout);
    };
    const std::string first = editing.metadata()->filename.toStdString();
    EXPECT_EQ(survey(MetadataToken::filename), "0 of 2, " + first + ", none");
    EXPECT_EQ(survey(MetadataToken::lens), "2 of 2, none, " + first);
}

TEST_F(CaptionEditingTest, showsATextInHandAndMakesOneStepOfIt)
{
    const RenderRecipe before = session.batchRecipe();
    QSignalSpy changes(&session, &PhotoSession::batchRecipeChanged);
    editing.startText(3);
    EXPECT_EQ(editing.shown().size(), 4u);
    editing.setText(QStringLiteral("x"));
    editing.setText(QStringLiteral("xy"));
    EXPECT_EQ(text(), "abcxy");
    EXPECT_EQ(CaptionSegment::templateOf(editing.segments()), QStringLiteral("abc"));
    EXPECT_EQ(stack.count(), 0);
    editing.endText(End::keep);
    EXPECT_EQ(changes.count(), 2) << "nobody saw it go and come back";
    EXPECT_EQ(text() + lastStep(), "abcxyAdd Text");
    stack.undo();
    EXPECT_EQ(session.batchRecipe(), before);
    EXPECT_FALSE(stack.canUndo());

    editing.editText(0);
    editing.setText(QString());
    EXPECT_EQ(text(), "bc");
    editing.endText(End::giveUp);
    EXPECT_EQ(session.batchRecipe(), before);
    EXPECT_TRUE(stack.canRedo()) << "what was given up is no edit";
    editing.editText(0);
    editing.setText(QString());
    editing.startText(1, QStringLiteral("z"));
    EXPECT_EQ(text() + lastStep(), "bzcRemove Text");
}

TEST_F(CaptionEditingTest, showsAChipThatIsCarriedAndMakesOneStepOfIt)
{
    editing.carry(0);
    editing.carryTo(3);
    EXPECT_EQ(text(), "bca");
    editing.carryTo(std::nullopt);
    EXPECT_EQ(text(), "abc");
    editing.carryTo(2);
    editing.putBack();
    EXPECT_EQ(text(), "abc");
    EXPECT_EQ(stack.count(), 0);
    editing.carry(0);
    editing.carryTo(2);
    editing.letGo();
    EXPECT_EQ(text() + lastStep(), "bacMove Text");
    EXPECT_EQ(stack.count(), 1);
}

TEST_F(CaptionEditingTest, leavesNoFramingOfItsOwnToAPhotoThatWasOnlyTried)
{
    session.setRecipeScope(RecipeScope::selected);
    editing.startText(0, QStringLiteral("x"));
    EXPECT_TRUE(session.hasOwnRecipe(test::photoUrl("a")));
    editing.setText(QString());
    EXPECT_FALSE(session.hasOwnRecipe(test::photoUrl("a")));
    editing.setText(QStringLiteral("y"));
    // Another photo is looked at: what is in hand comes to nothing, where it was.
    QSignalSpy replaced(&editing, &CaptionEditing::replaced);
    session.setSelectedPhotoID(test::photoUrl("b"));
    EXPECT_EQ(replaced.count(), 1);
    EXPECT_FALSE(editing.textInHand());
    EXPECT_TRUE(session.photoRecipes().empty());
    EXPECT_EQ(text(), "abc");
}

TEST_F(CaptionEditingTest, livesWithOtherEditsInBetween)
{
    const auto setBorder = [&](double width) {
        history.editRecipe(QStringLiteral("Border Width"), [&](RenderRecipe& recipe) { recipe.border.width = width; });
    };
    setBorder(7);
    editing.startText(3, QStringLiteral("x"));
    setBorder(8);
    EXPECT_EQ(stack.count(), 3);
    EXPECT_EQ(stack.text(1), QStringLiteral("Add Text"));
    editing.setText(QStringLiteral("xy"));
    editing.endText(End::giveUp);
    EXPECT_EQ(text(), "abcx");
    EXPECT_EQ(editing.segments().size(), 4u);
    EXPECT_EQ(session.batchRecipe().border.width, 8);

    // An undo that replaces the whole recipe takes what is in hand along; what is typed on is shown over its result.
    editing.startText(4, QStringLiteral("z"));
    stack.undo();
    EXPECT_EQ(text(), "abcx");
    editing.setText(QStringLiteral("zz"));
    EXPECT_EQ(text(), "abcxzz");
    EXPECT_EQ(session.batchRecipe().border.width, 7);
    editing.endText(End::keep);
    stack.undo();
    EXPECT_EQ(text(), "abcx");
    EXPECT_EQ(session.batchRecipe().border.width, 7);
}

} // namespace ferrow
