// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ConfirmSheet.h"
#include "Widgets/Popover.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace ferrow {
namespace {

class OverlayTest : public testing::Test {
protected:
    OverlayTest()
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(opener);
        layout->addWidget(other);
        window.resize(1000, 700);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        opener->setFocus();
    }

    static void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    static void hold(Qt::Key key)
    {
        QKeyEvent repeated(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(QApplication::focusWidget(), &repeated);
    }

    QWidget window;
    QPushButton* opener = new QPushButton(QStringLiteral("Opener"));
    QPushButton* other = new QPushButton(QStringLiteral("Other"));
};

TEST_F(OverlayTest, aPopoverKeepsTheFocusAndGivesItBack)
{
    Popover popover(opener, QStringLiteral("Color"));
    auto* first = new QPushButton(QStringLiteral("First"));
    auto* second = new QPushButton(QStringLiteral("Second"));
    popover.body()->addWidget(first);
    popover.body()->addWidget(second);
    popover.open();
    EXPECT_EQ(QApplication::focusWidget(), first);
    press(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), second);
    press(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), first);
    press(Qt::Key_Backtab);
    EXPECT_EQ(QApplication::focusWidget(), second);
    other->setFocus();
    EXPECT_EQ(QApplication::focusWidget(), second);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&popover)->role(), QAccessible::Dialog);

    press(Qt::Key_Escape);
    EXPECT_FALSE(popover.isOpen());
    EXPECT_EQ(QApplication::focusWidget(), opener);

    popover.open(second);
    QTest::mouseClick(&popover, Qt::LeftButton, {}, QPoint(990, 690));
    EXPECT_FALSE(popover.isOpen());
    EXPECT_FALSE(popover.isVisible());
}

TEST(Popover, staysInsideTheWindow)
{
    const QSize window(1000, 700);
    const QSize size(296, 300);
    const QRect pane(680, 50, 320, 650);
    struct Row {
        const char* name;
        QRect opener;
        QPoint corner;
    };
    for (const Row& row : {Row{"below", {780, 100, 32, 32}, {692, 138}},
                           Row{"above where it does not fit", {780, 500, 32, 32}, {692, 194}},
                           Row{"clamped where neither does", {780, 200, 32, 290}, {692, 392}}}) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(popoverRect(row.opener, size, pane, window).topLeft(), row.corner);
    }
    EXPECT_EQ(popoverRect(QRect(900, 100, 80, 32), size, QRect(), window).left(), 696);
}

TEST_F(OverlayTest, aSheetLeavesByEscapeAndActsByEnter)
{
    Sheet sheet(&window, QStringLiteral("Export"));
    auto* field = new QLineEdit;
    sheet.body()->addWidget(field);
    QPushButton* leave = sheet.setLeaveButton(QStringLiteral("Cancel"));
    QPushButton* main = sheet.setMainButton(QStringLiteral("Start"));
    const QSignalSpy started(&sheet, &Sheet::mainRequested);
    const QSignalSpy closed(&sheet, &Overlay::closed);
    QShortcut shortcut(QKeySequence(Qt::CTRL | Qt::Key_E), &window);
    const QSignalSpy exported(&shortcut, &QShortcut::activated);
    QTest::keyClick(&window, Qt::Key_E, Qt::ControlModifier);

    sheet.open(field);
    press(Qt::Key_Return);
    EXPECT_EQ(started.size(), 1);
    main->setEnabled(false);
    press(Qt::Key_Return);
    EXPECT_EQ(started.size(), 1);
    QTest::keyClick(&window, Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(exported.size(), 1) << "the window's shortcuts rest";
    QTest::mouseClick(&sheet, Qt::LeftButton, {}, QPoint(4, 4));
    EXPECT_TRUE(sheet.isOpen());
    press(Qt::Key_Escape);
    EXPECT_EQ(closed.size(), 1);
    EXPECT_EQ(QApplication::focusWidget(), opener);

    main->setEnabled(true);
    sheet.open(leave);
    press(Qt::Key_Return);
    EXPECT_FALSE(sheet.isOpen());
    EXPECT_EQ(started.size(), 1);
}

TEST_F(OverlayTest, aSheetThatMovedUpStaysThere)
{
    Sheet sheet(&window, QStringLiteral("Export"));
    auto* rows = new QWidget;
    rows->setFixedHeight(100);
    sheet.body()->addWidget(rows);
    const QWidget* card = sheet.findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    sheet.open(sheet.setLeaveButton(QStringLiteral("Cancel")));
    const int around = card->height() - 100;
    const auto topWith = [&](int height) {
        rows->setFixedHeight(height);
        EXPECT_TRUE(QTest::qWaitFor([&] { return card->height() == around + height; })) << card->height();
        return card->y();
    };
    const int first = topWith(100);
    EXPECT_EQ(topWith(200), first) << "there is room below";
    const int moved = topWith(450);
    EXPECT_LT(moved, first);
    EXPECT_EQ(topWith(100), moved);
    sheet.dismiss();
    sheet.open();
    EXPECT_EQ(topWith(100), first) << "opened anew";
}

TEST_F(OverlayTest, aSheetTakesTheKeysWhateverItBeginsWith)
{
    const QSignalSpy pressed(opener, &QPushButton::clicked);
    Sheet sheet(&window, QStringLiteral("Export"));
    QPushButton* main = sheet.setMainButton(QStringLiteral("Start"));
    main->setEnabled(false);
    sheet.open(main);
    EXPECT_EQ(QApplication::focusWidget(), &sheet) << "nothing in it can take the focus";
    press(Qt::Key_Escape);
    EXPECT_FALSE(sheet.isOpen());

    QPushButton* leave = sheet.setLeaveButton(QStringLiteral("Cancel"));
    sheet.open(main);
    EXPECT_EQ(QApplication::focusWidget(), leave);
    main->setEnabled(true);
    main->setFocus();
    leave->setEnabled(false);
    main->setEnabled(false);
    EXPECT_EQ(QApplication::focusWidget(), &sheet) << "the last one that could take it has been disabled";

    QTest::keyClick(opener, Qt::Key_Space);
    EXPECT_TRUE(pressed.isEmpty()) << "a key that was on its way to what lies behind";
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(sheet.isOpen());
    QTest::keyClick(opener, Qt::Key_Space);
    EXPECT_EQ(pressed.size(), 1);
}

TEST_F(OverlayTest, aQuestionAnswersOnceAboveASheet)
{
    Sheet sheet(&window, QStringLiteral("Presets"));
    QPushButton* leave = sheet.setLeaveButton(QStringLiteral("Done"));
    sheet.open(leave);
    std::vector<Answer> answers;
    Question question;
    question.title = QStringLiteral("Save Preset");
    question.accept = QStringLiteral("Save");
    question.leave = QStringLiteral("Cancel");
    question.field = Question::Field{QStringLiteral("Name"), QStringLiteral("Preset name"), QString()};
    const auto note = [&answers](const Answer& answer) { answers.push_back(answer); };

    ConfirmSheet* asked = ConfirmSheet::ask(&window, question, nullptr, note);
    press(Qt::Key_Return);
    EXPECT_TRUE(answers.empty()) << "without a name";
    QTest::keyClicks(asked->field(), QStringLiteral("Gallery"));
    press(Qt::Key_Return);
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_TRUE(answers[0].accepted);
    EXPECT_EQ(answers[0].text, QStringLiteral("Gallery"));
    EXPECT_TRUE(sheet.isOpen());
    EXPECT_EQ(QApplication::focusWidget(), leave);

    question.field.reset();
    question.kind = Question::Kind::destructive;
    ConfirmSheet::ask(&window, question, nullptr, note);
    press(Qt::Key_Return);
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_FALSE(answers[1].accepted) << "what can't be taken back starts on leaving";
}

TEST_F(OverlayTest, anAlertGivesItsButtonAllItsHeight)
{
    const QStringList texts{QString(), QStringLiteral("One line."), QStringLiteral("Line.\n").repeated(200)};
    for (const QString& text : texts) {
        SCOPED_TRACE(text.size());
        ConfirmSheet* alert = ConfirmSheet::alert(&window, QStringLiteral("Title"), text);
        QApplication::processEvents();
        EXPECT_EQ(alert->mainButton()->height(), alert->mainButton()->sizeHint().height());
        alert->dismiss();
    }
}

TEST_F(OverlayTest, anAlertTellsOfEachThingByItself)
{
    ConfirmSheet* alert =
        ConfirmSheet::alert(&window, QStringLiteral("Some Files"), QStringLiteral("…and 3 more."), nullptr, {},
                            {{QStringLiteral("a.jpg"), QStringLiteral("Broken."), QStringLiteral("Mend it.")},
                             {QStringLiteral("b.jpg"), QStringLiteral("Gone."), QString()}});
    QStringList shown;
    for (const QLabel* label : alert->body()->parentWidget()->findChildren<QLabel*>())
        shown << label->text();
    EXPECT_EQ(shown, QStringLiteral("a.jpg|Broken.|Mend it.|b.jpg|Gone.|…and 3 more.").split(u'|'));
    EXPECT_EQ(alert->accessibleDescription(), QStringLiteral("a.jpg: Broken. Mend it.\nb.jpg: Gone.\n…and 3 more."));
}

TEST_F(OverlayTest, aHeldKeyPressesNothingInTheNextDialog)
{
    Sheet sheet(&window, QStringLiteral("Export"));
    QPushButton* leave = sheet.setLeaveButton(QStringLiteral("Cancel"));
    auto* field = new QLineEdit;
    sheet.body()->addWidget(field);
    sheet.setMainButton(QStringLiteral("Start"));
    const QSignalSpy started(&sheet, &Sheet::mainRequested);
    for (QWidget* focused : {static_cast<QWidget*>(leave), static_cast<QWidget*>(field)}) {
        sheet.open(focused);
        hold(Qt::Key_Return);
        hold(Qt::Key_Enter);
        EXPECT_TRUE(sheet.isOpen());
        EXPECT_TRUE(started.isEmpty());
        sheet.dismiss();
    }
}

TEST_F(OverlayTest, aSheetTakesThePlaceOfAPopover)
{
    Popover popover(opener, QStringLiteral("Color"));
    auto* inside = new QPushButton(QStringLiteral("Inside"));
    popover.body()->addWidget(inside);
    popover.open(inside);
    Sheet sheet(&window, QStringLiteral("Export"));
    sheet.setLeaveButton(QStringLiteral("Cancel"));
    sheet.open();
    EXPECT_FALSE(popover.isOpen());
    press(Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget(), opener);

    popover.open(popover.body()->parentWidget());
    press(Qt::Key_Return);
    EXPECT_FALSE(popover.isOpen());
}

TEST_F(OverlayTest, aSheetShowsWhatHasTheFocusOfTheKeyboard)
{
    Sheet sheet(&window, QStringLiteral("Export"));
    QPushButton* leave = sheet.setLeaveButton(QStringLiteral("Cancel"));
    auto* first = new QLineEdit;
    auto* last = new QLineEdit;
    sheet.body()->addWidget(first);
    sheet.body()->addSpacing(2000);
    sheet.body()->addWidget(last);
    sheet.open(leave);
    const auto isSeen = [](const QWidget* widget) { return !widget->visibleRegion().isEmpty(); };
    press(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), first);
    EXPECT_TRUE(isSeen(first));
    press(Qt::Key_Tab);
    EXPECT_TRUE(isSeen(last));
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_TRUE(isSeen(first)) << "round by the foot";
    leave->setFocus();
    press(Qt::Key_PageDown);
    EXPECT_FALSE(isSeen(first));
}

/// Which keys it could keep from the window is the desktop's matter.
class AskedField : public QLineEdit {
public:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::ShortcutOverride)
            askedFor.push_back(static_cast<QKeyEvent*>(event)->key());
        return QLineEdit::event(event);
    }

    std::vector<int> askedFor; ///< Modifiers among them.
};

TEST(KeyRules, leaveTheWindowsCommandsToTheWindow)
{
    for (const auto& [key, isTheFields] : {std::pair{Qt::Key_E, false}, {Qt::Key_C, true}, {Qt::Key_Z, true}}) {
        AskedField field;
        QTest::keyClick(&field, key, Qt::ControlModifier);
        EXPECT_EQ(std::ranges::count(field.askedFor, key), isTheFields ? 1 : 0) << key;
    }
}

} // namespace
} // namespace ferrow
