// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ContactSheet/ContactSheet.h"
#include "Features/ContactSheet/SheetGrid.h"
#include "Session/SessionTestSupport.h"
#include "Widgets/SegmentedControl.h"

#include <QAccessible>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QWheelEvent>

namespace ferrow {

namespace {

/// A sheet of 11 photos in columns of four, and no disk.
struct Sheet : testing::Test {
    test::DisklessSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    test::ListedPhotos listed{session, exportSession};
    const test::TemporaryFolder folder;
    Preferences preferences{folder.file("preferences")};
    ContactSheet sheet{listed.model, session, listed.warnings, history, exportSession, preferences};

    Sheet()
    {
        test::importInto(session, test::photoUrls({"a", "b", "c", "d", "e", "f", "g", "h", "i", "ja", "jb"}));
        sheet.resize(860, 600);
        sheet.show();
        sheet.grid()->setFocus();
    }

    void press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(sheet.grid(), Qt::Key(key), modifiers);
    }
    [[nodiscard]] std::string ticks() const
    {
        std::string all;
        for (const ImportedPhoto& photo : session.photos())
            all += session.isIncluded(photo.id()) ? photo.filename().toStdString() : "-";
        return all;
    }
    [[nodiscard]] std::string shown() const
    {
        std::string all;
        for (int row = 0; row < listed.model.rowCount(); ++row)
            all += listed.model.index(row).data().toString().toStdString();
        return all;
    }
    [[nodiscard]] QPoint middle(int row) const
    {
        return sheet.grid()->item(row).rect.translated(-sheet.grid()->viewport()->pos()).center();
    }
};

} // namespace

TEST(SheetLayout, fillsTheSheetWithWholeColumns)
{
    for (const int width : {300, 441, 840, 1'600, 3'840})
        for (const int wanted : {10, 120, 180, 277, 400, 999}) {
            SCOPED_TRACE(std::to_string(width) + " for " + std::to_string(wanted));
            const SheetLayout layout(width, wanted, 36, 200);
            const int columns = layout.columns();
            const QRect first = layout.cell(0);
            const QRect last = layout.cell(columns - 1);
            EXPECT_EQ(first.left(), 11);
            EXPECT_NEAR(last.right() + 1, width - 11, columns);
            EXPECT_EQ(layout.cell(columns).topLeft(), first.topLeft() + QPoint(0, layout.rowPitch()));
            EXPECT_GE(layout.tileSize().width(), std::min(std::clamp(wanted, 120, 400), width - 38));
            for (const int index : {0, columns, 199})
                EXPECT_EQ(layout.cellAt(layout.cell(index).center()), index);
            EXPECT_EQ(layout.cellAt(QPoint(5, 5)), -1);
            EXPECT_EQ(layout.cellAt(layout.cell(200).center()), -1) << "behind the last one";
            EXPECT_EQ(SheetLayout(width, layout.tileForColumns(1), 36, 200).columns(),
                      layout.tileForColumns(1) == 120 ? SheetLayout(width, 120, 36, 200).columns() : columns + 1);
            // A row that is seen by a pixel is seen.
            const auto [begin, end] =
                layout.cellsBetween(layout.cell(columns).bottom(), layout.cell(2 * columns).top() + 1);
            EXPECT_EQ(begin, columns);
            EXPECT_EQ(end, 3 * columns);
        }
}

TEST_F(Sheet, movesByCellRowAndPage)
{
    ASSERT_EQ(sheet.grid()->itemCount(), 11);
    struct Row {
        const char* from;
        Qt::Key key;
        const char* to;
    };
    for (const Row& row : {Row{"a", Qt::Key_Right, "b"},
                           {"d", Qt::Key_Right, "e"},
                           {"a", Qt::Key_Left, "a"},
                           {"e", Qt::Key_Left, "d"},
                           {"b", Qt::Key_Down, "f"},
                           {"h", Qt::Key_Down, "jb"},
                           {"i", Qt::Key_Down, "i"},
                           {"f", Qt::Key_Up, "b"},
                           {"c", Qt::Key_Up, "c"},
                           {"f", Qt::Key_Home, "a"},
                           {"b", Qt::Key_End, "jb"},
                           {"b", Qt::Key_PageDown, "ja"},
                           {"ja", Qt::Key_PageUp, "b"},
                           {"a", Qt::Key_G, "g"},
                           {"ja", Qt::Key_J, "jb"}}) {
        SCOPED_TRACE(std::string(row.from) + " to " + row.to);
        QTest::qWait(QApplication::keyboardInputInterval() * int(row.key >= Qt::Key_A && row.key <= Qt::Key_Z) + 1);
        session.setSelectedPhotoID(test::photoUrl(row.from));
        press(row.key);
        EXPECT_EQ(test::selectedName(session), row.to);
    }
}

TEST_F(Sheet, ticksRemovesAndOpensByKey)
{
    session.setSelectedPhotoID(test::photoUrl("b"));
    press(Qt::Key_Space);
    EXPECT_EQ(ticks(), "a-cdefghijajb");
    press(Qt::Key_Right);
    press(Qt::Key_Right, Qt::ShiftModifier);
    press(Qt::Key_Down, Qt::ShiftModifier);
    press(Qt::Key_Space, Qt::ShiftModifier);
    EXPECT_EQ(ticks(), "a-------ijajb");
    history.stack().undo();
    EXPECT_EQ(ticks(), "a-cdefghijajb");
    press(Qt::Key_Left);
    press(Qt::Key_Space);
    EXPECT_EQ(ticks(), "a-cdef-hijajb") << "the range has ended";
    press(Qt::Key_Left, Qt::ShiftModifier);
    press(Qt::Key_Delete);
    EXPECT_EQ(ticks(), "a-cdehijajb");
    EXPECT_EQ(test::selectedName(session), "h");
    const QSignalSpy opened(sheet.grid(), &SheetGrid::openRequested);
    press(Qt::Key_Return);
    EXPECT_EQ(opened.size(), 1);
}

TEST_F(Sheet, ticksAndOpensByMouse)
{
    QWidget* cells = sheet.grid()->viewport();
    const QSignalSpy opened(sheet.grid(), &SheetGrid::openRequested);
    QTest::mouseClick(cells, Qt::LeftButton, {}, middle(5));
    EXPECT_EQ(test::selectedName(session), "f");
    const auto box = [&](int row) {
        return CellPainter::checkTarget(sheet.grid()->item(row).rect.translated(-cells->pos())).center();
    };
    QTest::mouseClick(cells, Qt::LeftButton, {}, box(0));
    QTest::mouseClick(cells, Qt::LeftButton, Qt::ShiftModifier, box(3));
    EXPECT_EQ(ticks(), "-bc---ghijajb") << "from the current cell to the pressed one";
    EXPECT_EQ(test::selectedName(session), "f");
    QTest::mouseDClick(cells, Qt::LeftButton, {}, box(0));
    EXPECT_EQ(opened.size(), 0);
    QTest::mouseDClick(cells, Qt::LeftButton, {}, middle(0));
    EXPECT_EQ(opened.size(), 1);
}

TEST_F(Sheet, changesItsSizeByWheelAndKeepsTheCurrentCellInSight)
{
    session.setSelectedPhotoID(test::photoUrl("jb"));
    const auto turn = [&](int notches) {
        QWheelEvent event(QPointF(50, 50), sheet.grid()->viewport()->mapToGlobal(QPointF(50, 50)), {},
                          {0, 120 * notches}, Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(sheet.grid()->viewport(), &event);
    };
    const int before = sheet.grid()->tileWidth();
    turn(1);
    EXPECT_GT(sheet.grid()->tileWidth(), before);
    EXPECT_TRUE(sheet.grid()->viewport()->rect().contains(middle(10)));
    for (int i = 0; i < 9; ++i)
        turn(1);
    EXPECT_EQ(sheet.grid()->tileWidth(), 400);
    EXPECT_GT(sheet.grid()->verticalScrollBar()->maximum(), 0);
    for (int i = 0; i < 9; ++i)
        turn(-1);
    EXPECT_EQ(sheet.grid()->tileWidth(), 120);
}

TEST_F(Sheet, isHeardAsANamedListWithStatesAndPositions)
{
    session.setSelectedPhotoID(test::photoUrl("b"));
    session.setIncluded(test::photoUrls({"c"}), false);
    QAccessibleInterface* grid = QAccessible::queryAccessibleInterface(sheet.grid());
    EXPECT_EQ(grid->text(QAccessible::Name), QStringLiteral("Contact Sheet"));
    EXPECT_EQ(grid->role(), QAccessible::List);
    ASSERT_GE(grid->childCount(), 11);
    EXPECT_EQ(grid->child(5)->text(QAccessible::Name), QStringLiteral("f, 600 × 400, 6 of 11"));
    EXPECT_EQ(grid->child(5)->text(QAccessible::Description), QStringLiteral("Row 2, column 2"));
    EXPECT_TRUE(grid->child(1)->state().checked);
    EXPECT_FALSE(grid->child(2)->state().checked);
    EXPECT_EQ(sheet.grid()->focusedItem(), 1);
    grid->child(2)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(session.isIncluded(test::photoUrl("c")));
}

TEST_F(Sheet, showsTheIncludedOrThoseWithWarningsInOneListForAll)
{
    auto* filter = sheet.findChild<SegmentedControl*>(QStringLiteral("sheetFilter"));
    const auto text = [&](int segment) { return filter->item(segment).name; };
    // None of these files is there.
    ASSERT_TRUE(test::waitUntil([&] { return listed.warnings.count() == 11; }));
    history.setIncluded(test::photoUrls({"a", "c"}), false);
    EXPECT_EQ(text(0), QStringLiteral("All  11"));
    EXPECT_EQ(text(1), QStringLiteral("Included  9"));
    EXPECT_EQ(text(2), QStringLiteral("With Warnings  9"));
    filter->pressItem(1);
    EXPECT_EQ(shown(), "bdefghijajb");
    EXPECT_EQ(listed.model.rowOf(test::photoUrl("d")), 1);
    EXPECT_EQ(listed.model.rowOf(test::photoUrl("c")), -1);
    session.setSelectedPhotoID(test::photoUrl("d"));
    press(Qt::Key_Space);
    EXPECT_EQ(shown(), "befghijajb");
    filter->pressItem(2);
    EXPECT_EQ(shown(), "befghijajb");
    filter->pressItem(0);
    EXPECT_EQ(shown(), "abcdefghijajb");
}

TEST_F(Sheet, findsNamesAndSaysWhenThereAreNone)
{
    listed.model.setFilter({.search = QStringLiteral("J")});
    EXPECT_EQ(shown(), "jajb");
    EXPECT_EQ(sheet.grid()->itemCount(), 2);
    listed.model.setFilter({.search = QStringLiteral("b")});
    EXPECT_EQ(shown(), "bjb") << "anywhere in the name";
    listed.model.setFilter({.search = QStringLiteral("nobody")});
    auto* all = sheet.findChild<QPushButton*>(QStringLiteral("showAllPhotosButton"));
    EXPECT_TRUE(all->isVisible());
    EXPECT_FALSE(sheet.grid()->isVisible());
    all->click();
    EXPECT_EQ(sheet.grid()->itemCount(), 11);
    EXPECT_TRUE(sheet.grid()->isVisible());
}

TEST_F(Sheet, asksToCullByOneKeyButNotInTheMiddleOfAName)
{
    session.setSelectedPhotoID(test::photoUrl("b"));
    QSignalSpy culled(sheet.grid(), &SheetGrid::cullRequested);
    press(Qt::Key_Minus);
    press(Qt::Key_Plus, Qt::ShiftModifier);
    ASSERT_EQ(culled.size(), 2);
    EXPECT_FALSE(culled[0][0].toBool());
    EXPECT_TRUE(culled[1][0].toBool());
    QTest::keyClicks(sheet.grid(), QStringLiteral("j-"));
    EXPECT_EQ(culled.size(), 2);
    EXPECT_EQ(test::selectedName(session), "ja");
}

TEST_F(Sheet, leavesOutAllWithAWarningInOneStep)
{
    ASSERT_TRUE(test::waitUntil([&] { return listed.warnings.count() == 11; }));
    history.setIncluded(test::photoUrls({"a"}), false);
    auto* menu = sheet.findChild<QWidget*>(QStringLiteral("leaveOutMenu"))->findChild<QMenu*>();
    emit menu->aboutToShow();
    QStringList texts;
    for (const QAction* action : menu->actions())
        texts << action->text();
    EXPECT_TRUE(texts.contains(QStringLiteral("Leave Out All With “Can’t be read” (10)")))
        << texts.join(u'|').toStdString();
    sheet.leaveOutAllWith(QStringLiteral("Can’t be read"));
    EXPECT_EQ(session.includedCount(), 0U);
    EXPECT_EQ(listed.warnings.count(), 0U);
    history.stack().undo();
    EXPECT_EQ(ticks(), "-bcdefghijajb");
}

} // namespace ferrow
