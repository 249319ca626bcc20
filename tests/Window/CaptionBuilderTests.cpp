// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/CaptionBuilder.h"

#include "Features/CaptionBuilder/ChipLayout.h"
#include "Session/CaptionChips.h"
#include "Session/CaptionEditing.h"
#include "Support/TestSupport.h"
#include "Widgets/CommitField.h"
#include "Widgets/Popover.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/Theme.h"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>

#include <array>
#include <tuple>

namespace ferrow {
namespace {

using Segments = CaptionChips::Segments;

/// Letters, so that an order reads at a glance.
Segments letters(const QString& text)
{
    Segments segments;
    for (const QChar letter : text)
        segments.push_back({.content = QString(letter)});
    return segments;
}

TEST(CaptionChips, movesAChipToTheGapThatWasMeant)
{
    const Segments row = letters(QStringLiteral("abcd"));
    const std::tuple<int, int, const char*> rows[] = {{0, 0, "abcd"}, {0, 1, "abcd"}, {0, 2, "bacd"}, {0, 4, "bcda"},
                                                      {3, 0, "dabc"}, {3, 4, "abcd"}, {2, 1, "acbd"}, {1, 3, "acbd"}};
    for (const auto& [index, gap, order] : rows) {
        SCOPED_TRACE(testing::Message() << index << " to " << gap);
        const Segments moved = CaptionChips::moved(row, index, gap);
        EXPECT_EQ(CaptionSegment::templateOf(moved), QLatin1StringView(order));
        EXPECT_EQ(moved[std::size_t(CaptionChips::indexAfterMove(index, gap))], row[std::size_t(index)]);
    }
}

TEST(CaptionChips, tellsWhatIsMissingAndWhatIsRead)
{
    const PhotoMetadata photo{.filename = QStringLiteral("a.jpg"), .iso = QStringLiteral("400")};
    const std::array<const char*, 3> rows[] = {
        {"{iso}", "", "400"},
        {"{lens} | {iso}", "Lens is missing here and is left out.", "400"},
        {"{lens}{iso}{aperture}{lens}", "Lens and Aperture are missing here and are left out.", "400"},
        {"{lens|by hand}{lens} {iso}", "Lens is missing here and is left out.", "by hand 400"},
        {"{lens|by hand} {iso|none}", "", "by hand 400"},
        {"{lens}", "Lens is missing here and is left out.", "Nothing for this photo."},
        {"{iso}\n{filename}", "", "400\na.jpg"},
        {"", "", "Nothing yet."}};
    for (const auto& [captionTemplate, note, reading] : rows) {
        SCOPED_TRACE(captionTemplate);
        const Segments segments = CaptionSegment::parse(QString::fromLatin1(captionTemplate));
        EXPECT_EQ(CaptionChips::missingNote(CaptionChips::missingTokens(segments, photo)), QLatin1StringView(note));
        EXPECT_EQ(CaptionChips::reading(segments, photo).text, QLatin1StringView(reading));
    }
}

TEST(ChipLayout, findsTheGapUnderThePointer)
{
    // Two chips fit in a line of 100; the last is cut to it.
    const ChipLayout::Measures measures{.width = 100};
    const std::vector<QRect> rects = ChipLayout::chipRects({40, 40, 30, 500}, measures);
    ASSERT_THAT(rects, testing::ElementsAre(QRect(6, 6, 40, 28), QRect(52, 6, 40, 28), QRect(6, 40, 30, 28),
                                            QRect(6, 74, 88, 28)));
    const std::tuple<QPoint, int, int, int> rows[] = {
        {{0, 0}, 0, 2, 6},     {{30, 10}, 1, 48, 6}, {{95, 20}, 2, 94, 6},   {{8, 50}, 2, 2, 40},
        {{90, 50}, 3, 38, 40}, {{0, 300}, 3, 2, 74}, {{99, 300}, 4, 96, 74}, {{30, -20}, 1, 48, 6}};
    for (const auto& [point, gap, x, y] : rows) {
        SCOPED_TRACE(testing::Message() << point.x() << ", " << point.y());
        EXPECT_EQ(ChipLayout::gapAt(rects, measures, point), (ChipLayout::Gap{gap, QRect(x, y, 2, 28)}));
    }
}

/// A builder of three chips "abc" in a window, with what came of it.
class CaptionBuilderTest : public testing::Test {
protected:
    CaptionBuilderTest()
    {
        Theme::current().setReducedMotion(true);
        session.setBatchRecipe({.captions = {{.segments = letters(QStringLiteral("abc"))}}});
        builder.resize(300, 200);
        builder.show();
        well = builder.findChild<QWidget*>(QStringLiteral("captionChips"));
        QObject::connect(&history.stack(), &QUndoStack::indexChanged, &builder,
                         [this] { steps.append(history.stack().undoText() + u':' + caption()); });
        QObject::connect(&session, &PhotoSession::batchRecipeChanged, &builder, [this] { captions.append(caption()); });
        well->setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&builder));
    }

    void press(std::initializer_list<Qt::Key> keys)
    {
        for (const Qt::Key key : keys)
            QTest::keyClick(QApplication::focusWidget(), key);
    }
    [[nodiscard]] QAccessibleInterface* chip(int index) const
    {
        return QAccessible::queryAccessibleInterface(well)->child(index);
    }
    [[nodiscard]] QPoint center(int index) const { return well->mapFromGlobal(chip(index)->rect().center()); }
    static void type(const QString& text) { QTest::keyClicks(QApplication::focusWidget(), text); }
    void dragFirstTo(const QPoint& place)
    {
        QTest::mousePress(well, Qt::LeftButton, {}, center(0));
        QTest::mouseMove(well, center(0) + QPoint(10, 0));
        QTest::mouseMove(well, place);
    }

    [[nodiscard]] QString caption() const { return session.batchRecipe().captions.front().captionTemplate(); }
    [[nodiscard]] QString finished() const { return CaptionSegment::templateOf(editing.segments()); }

    PhotoSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    CaptionEditing editing{session, history};
    CaptionBuilder builder{editing};
    QWidget* well = nullptr;
    QStringList steps;
    QStringList captions; ///< What the recipe's said, one after the other.
};

TEST_F(CaptionBuilderTest, isWorkedByKeys)
{
    QTest::keyClick(well, Qt::Key_Right, Qt::AltModifier);
    press({Qt::Key_End, Qt::Key_Delete, Qt::Key_Backspace});
    EXPECT_EQ(steps.join(u' '), QStringLiteral("Move Text:bac Remove Text:ba Remove Text:b"));
    EXPECT_EQ(chip(0)->text(QAccessible::Name), QStringLiteral("b, text, 1 of 1"));
    EXPECT_TRUE(chip(0)->state().focused);

    type(QStringLiteral("x"));
    type(QStringLiteral("y"));
    EXPECT_EQ(captions.last(), QStringLiteral("bxy"));
    EXPECT_EQ(finished(), QStringLiteral("b"));
    press({Qt::Key_Return});
    EXPECT_EQ(steps.last(), QStringLiteral("Add Text:bxy"));
    EXPECT_TRUE(chip(1)->state().focused);
}

TEST_F(CaptionBuilderTest, restoresAndRemovesTextsThatAreTyped)
{
    press({Qt::Key_Return});
    type(QStringLiteral("zz"));
    EXPECT_EQ(captions.last(), QStringLiteral("zzbc"));
    press({Qt::Key_Escape});
    EXPECT_EQ(captions.last(), QStringLiteral("abc"));
    EXPECT_TRUE(steps.isEmpty());
    press({Qt::Key_F2, Qt::Key_Backspace});
    EXPECT_EQ(captions.last(), QStringLiteral("bc"));
    press({Qt::Key_Return});
    EXPECT_EQ(steps, QStringList{QStringLiteral("Remove Text:bc")});
}

TEST_F(CaptionBuilderTest, reordersByMouseAndPutsBack)
{
    dragFirstTo(center(2) + QPoint(10, 0));
    EXPECT_EQ(captions, QStringList{QStringLiteral("bca")});
    EXPECT_EQ(finished(), QStringLiteral("abc"));
    QTest::keyClick(well, Qt::Key_Escape);
    QTest::mouseRelease(well, Qt::LeftButton, {}, center(2));
    EXPECT_EQ(captions.last(), QStringLiteral("abc"));

    dragFirstTo(QPoint(100, 180));
    QTest::mouseRelease(well, Qt::LeftButton, {}, QPoint(100, 180));
    EXPECT_TRUE(steps.isEmpty());

    dragFirstTo(center(1) + QPoint(10, 0));
    QTest::mouseRelease(well, Qt::LeftButton, {}, center(1) + QPoint(10, 0));
    EXPECT_EQ(steps, QStringList{QStringLiteral("Move Text:bac")});
}

/// The builder with one date chip, whose options are open.
class TokenOptionsTest : public CaptionBuilderTest {
protected:
    TokenOptionsTest()
    {
        builder.resize(320, 700);
        session.setBatchRecipe({.captions = {{.segments = {{.content = MetadataToken::captureDate}}}}});
        press({Qt::Key_Return});
        popover = builder.findChild<Popover*>(QStringLiteral("tokenPopover"));
    }

    template <typename Widget>
    [[nodiscard]] Widget* part(const char* name) const
    {
        return popover->findChild<Widget*>(QLatin1StringView(name));
    }
    void enter(CommitField* field, const QString& text) const
    {
        field->setFocus(Qt::TabFocusReason);
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }

    QPointer<Popover> popover;
};

TEST_F(TokenOptionsTest, writeADateByStyleOrByAPatternThatIsOne)
{
    auto* pattern = part<CommitField>("datePatternField");
    EXPECT_FALSE(pattern->isEnabled());
    press({Qt::Key_Down, Qt::Key_Down});
    EXPECT_EQ(steps.last(), QStringLiteral("Change Capture Date:{captureDate:iso}"));
    EXPECT_EQ(chip(0)->text(QAccessible::Description), QStringLiteral("Style: ISO."));
    press({Qt::Key_End});
    EXPECT_EQ(caption(), QStringLiteral("{captureDate:d MMMM, HH:mm}"));
    EXPECT_TRUE(pattern->isEnabled());
    enter(pattern, QStringLiteral("d 'of"));
    EXPECT_TRUE(pattern->hasError());
    EXPECT_EQ(caption(), QStringLiteral("{captureDate:d MMMM, HH:mm}"));
    QTest::keyClick(pattern, Qt::Key_Escape);
    EXPECT_EQ(pattern->text(), QStringLiteral("d MMMM, HH:mm"));
    enter(pattern, QStringLiteral("yy|{M}"));
    EXPECT_EQ(steps.last(), QStringLiteral("Change Capture Date:{captureDate:yy\\|\\(M\\)}"));
    history.stack().undo();
    EXPECT_EQ(pattern->text(), QStringLiteral("d MMMM, HH:mm"));
    EXPECT_TRUE(popover->isOpen());
}

TEST_F(TokenOptionsTest, haveATextForWhatIsMissing)
{
    auto* missing = part<SegmentedControl>("ifMissingControl");
    auto* field = part<CommitField>("ifMissingField");
    EXPECT_FALSE(field->isVisible());
    QTest::keyClick(missing, Qt::Key_Right);
    EXPECT_TRUE(field->isVisible());
    EXPECT_TRUE(steps.isEmpty()) << "there is no text yet";
    enter(field, QStringLiteral("no date"));
    EXPECT_EQ(caption(), QStringLiteral("{captureDate|no date}"));
    EXPECT_EQ(chip(0)->text(QAccessible::Description), QStringLiteral("If missing: no date."));
    QTest::keyClick(missing, Qt::Key_Left);
    EXPECT_EQ(caption(), QStringLiteral("{captureDate}"));
    QTest::keyClick(missing, Qt::Key_Right);
    EXPECT_EQ(caption(), QStringLiteral("{captureDate|no date}")) << "what was typed is still there";
    EXPECT_EQ(steps.size(), 3);
}

TEST_F(TokenOptionsTest, goWithTheirChip)
{
    auto* field = part<CommitField>("ifMissingField");
    QTest::keyClick(part<SegmentedControl>("ifMissingControl"), Qt::Key_Right);
    field->setFocus(Qt::TabFocusReason);
    QTest::keyClicks(field, QStringLiteral("typed"));
    session.setBatchRecipe({.captions = {{.segments = letters(QStringLiteral("x"))}}});
    EXPECT_FALSE(popover->isOpen());
    EXPECT_EQ(caption(), QStringLiteral("x"));
    EXPECT_TRUE(well->hasFocus());
}

TEST_F(TokenOptionsTest, changeToAnotherToken)
{
    QTest::keyClick(part<QWidget>("dateStyles"), Qt::Key_Home);
    auto* menu = part<QPushButton>("changeTokenButton")->menu();
    emit menu->aboutToShow();
    menu->findChild<QAction*>(QStringLiteral("captureDate"))->trigger();
    EXPECT_EQ(caption(), QStringLiteral("{captureDate:short}"));
    EXPECT_TRUE(popover->isOpen());
    menu->findChild<QAction*>(QStringLiteral("lens"))->trigger();
    EXPECT_EQ(caption(), QStringLiteral("{lens}"));
    EXPECT_FALSE(popover->isOpen());
}

TEST_F(CaptionBuilderTest, doesWhatIsChosenForAChipAsLongAsItIsThere)
{
    const auto choose = [&](const QString& command, const auto& meanwhile) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, center(0), well->mapToGlobal(center(0)));
        QApplication::sendEvent(well, &event);
        const QPointer<QMenu> menu = well->findChild<QMenu*>(QStringLiteral("chipMenu"));
        meanwhile();
        for (QAction* action : menu->actions())
            if (action->text().startsWith(command))
                action->trigger();
        menu->close();
        EXPECT_TRUE(QTest::qWaitFor([&] { return menu.isNull(); }));
    };
    choose(QStringLiteral("Move Right"), [] {});
    // The list is on the screen while an import ends, and another photo is shown with another caption.
    const auto show = [&](const QString& text) { session.setBatchRecipe({.captions = {{.segments = letters(text)}}}); };
    choose(QStringLiteral("Remove"), [&] { show(QString()); });
    EXPECT_EQ(steps, QStringList{QStringLiteral("Move Text:bac")});
}

} // namespace
} // namespace ferrow
