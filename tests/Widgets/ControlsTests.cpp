// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/BackdropDots.h"
#include "Widgets/ChoiceStrip.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Section.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/SliderField.h"
#include "Widgets/ToggleSwitch.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <gmock/gmock.h>

namespace ferrow {
namespace {

void turnWheel(QWidget* widget, int angle = 120, quint64 milliseconds = 0)
{
    QWheelEvent event(QPointF(4, 4), widget->mapToGlobal(QPointF(4, 4)), QPoint(), QPoint(0, angle), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    event.setTimestamp(milliseconds);
    // Only turns that come from the window system are passed on by Qt.
    for (QWidget* receiver = widget; receiver; receiver = event.isAccepted() ? nullptr : receiver->parentWidget()) {
        event.ignore();
        QApplication::sendEvent(receiver, &event);
    }
}

/// A slider of 0 to 500 pixels in a shown window of its own.
class SliderFieldTest : public testing::Test {
protected:
    SliderFieldTest()
    {
        NumberFormat format{0, 1, QStringLiteral("px")};
        format.least = 0;
        field.setFormat(format);
        field.setRange(0, 500);
        field.resize(300, 32);
        field.show();
        field.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&field));
        QObject::connect(&field, &SliderField::gestureStarted, [this] { log.append(QLatin1Char('(')); });
        QObject::connect(&field, &SliderField::valueEdited,
                         [this](double value) { log.append(QStringLiteral(" %1 ").arg(value)); });
        QObject::connect(&field, &SliderField::gestureEnded, [this] { log.append(QLatin1Char(')')); });
    }

    SliderField field{QStringLiteral("Width")};
    QString log;
};

TEST(NumberFormat, readsTheDigitsOfEveryScript)
{
    NumberFormat format{1, 1, QStringLiteral("px")};
    format.least = -100;
    const std::vector<std::pair<QString, double>> rows{
        {QStringLiteral("١٢٫٥"), 12.5},       {QStringLiteral("۱۲٫۵ px"), 12.5},  {QStringLiteral("१२.५"), 12.5},
        {QStringLiteral("𞥑𞥒,5"), 12.5}, {QStringLiteral("\u061c−١٢"), -12}, {QStringLiteral("１２"), 12},
    };
    for (const auto& [text, value] : rows)
        EXPECT_EQ(format.value(text), value) << text.toStdString();
    EXPECT_EQ(format.value(QStringLiteral("½")), std::nullopt);
    format = {.decimals = 2, .dropsZeros = true};
    for (const auto& [value, text] : {std::pair{7.0, "7"}, {2.35, "2.35"}, {2.5, "2.5"}, {0.999, "1"}, {-0.001, "0"}})
        EXPECT_EQ(format.text(value), QLatin1StringView(text));
}

TEST_F(SliderFieldTest, stepsByKey)
{
    struct Row {
        const char* name;
        bool onSlider;
        double from;
        Qt::Key key;
        Qt::KeyboardModifier modifier;
        double to;
    };
    const std::vector<Row> rows{
        {"one up", false, 240, Qt::Key_Up, Qt::NoModifier, 241},
        {"ten down", false, 240, Qt::Key_Down, Qt::ShiftModifier, 230},
        {"slider right", true, 240, Qt::Key_Right, Qt::NoModifier, 241},
        {"slider to the end", true, 240, Qt::Key_End, Qt::NoModifier, 500},
        {"slider stops at its end", true, 495, Qt::Key_Up, Qt::ShiftModifier, 500},
        {"field goes beyond it", false, 495, Qt::Key_Up, Qt::ShiftModifier, 505},
        {"field stops at its limit", false, 4, Qt::Key_Down, Qt::ShiftModifier, 0},
        {"slider leaves what is beyond alone", true, 5000.25, Qt::Key_Up, Qt::NoModifier, 5000.25},
        {"slider brings it nearer", true, 5000, Qt::Key_Down, Qt::NoModifier, 4999},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        field.setValue(row.from);
        QTest::keyClick(row.onSlider ? field.slider() : field.field(), row.key, row.modifier);
        EXPECT_EQ(field.value(), row.to);
    }
}

TEST_F(SliderFieldTest, keepsWhatItShowsRoundedOrOutsideItsRange)
{
    field.setValue(1234.567);
    field.field()->setFocus();
    QTest::keyClick(field.field(), Qt::Key_Return);
    field.slider()->setFocus();
    EXPECT_EQ(field.value(), 1234.567);
    EXPECT_EQ(field.field()->text(), QStringLiteral("1235"));
    EXPECT_EQ(log, QString());
}

TEST_F(SliderFieldTest, makesOneGestureOfADragAndOfARunOfSteps)
{
    field.setValue(0);
    QWidget* slider = field.slider();
    QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(8, slider->height() / 2));
    for (const int x : {40, 60, 80})
        QTest::mouseMove(slider, QPoint(x, slider->height() / 2));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(80, slider->height() / 2));
    EXPECT_TRUE(log.startsWith(QLatin1Char('('))) << log.toStdString();
    EXPECT_TRUE(log.endsWith(QLatin1Char(')'))) << log.toStdString();
    EXPECT_EQ(log.count(QLatin1Char('(')), 1);

    log.clear();
    field.setValue(10);
    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_Up);
    QTest::keyClick(slider, Qt::Key_Up);
    field.field()->setFocus();
    EXPECT_EQ(log, QStringLiteral("( 11  12 )"));
}

TEST_F(SliderFieldTest, catchesOnItsNeutralValueAndReturnsToIt)
{
    field.setNeutral(250, 10);
    QWidget* slider = field.slider();
    const int middle = slider->width() / 2;
    const auto press = [&](int x) { QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(x, slider->height() / 2)); };
    press(middle + 2);
    EXPECT_EQ(field.value(), 250);
    press(middle + 30);
    EXPECT_GT(field.value(), 260);
    log.clear();
    QTest::mouseDClick(slider, Qt::LeftButton, {}, QPoint(middle + 30, slider->height() / 2));
    EXPECT_EQ(field.value(), 250);
    QTest::keyClick(slider, Qt::Key_Right);
    EXPECT_EQ(field.value(), 251) << "keys pass it one by one";
}

TEST_F(SliderFieldTest, turnsWithTheWheelOnlyWhenFocused)
{
    field.setValue(10);
    field.field()->setFocus();
    turnWheel(field.slider());
    EXPECT_EQ(field.value(), 10);
    turnWheel(field.field());
    EXPECT_EQ(field.value(), 11);
}

TEST_F(SliderFieldTest, refusesWhatIsNoNumberAndRestoresByEscape)
{
    field.setValue(240);
    NumberField* number = field.field();
    number->setFocus();
    for (const char* typed : {"many", "-3", "", "1e999"}) {
        SCOPED_TRACE(typed);
        const QSignalSpy errors(&field, &SliderField::errorChanged);
        number->selectAll();
        QTest::keyClick(number, Qt::Key_Delete);
        QTest::keyClicks(number, QLatin1StringView(typed));
        QTest::keyClick(number, Qt::Key_Return);
        EXPECT_EQ(errors.size(), 1);
        EXPECT_EQ(field.value(), 240);
        QTest::keyClick(number, Qt::Key_Escape);
        EXPECT_EQ(number->text(), QStringLiteral("240"));
    }
    number->selectAll();
    QTest::keyClicks(number, QStringLiteral("300 px"));
    QTest::keyClick(number, Qt::Key_Return);
    EXPECT_EQ(log, QStringLiteral("( 300 )"));
}

TEST(SegmentedControl, isOneTabStopWithArrowsInside)
{
    SegmentedControl control(QStringLiteral("Format"),
                             {QStringLiteral("JPEG"), QStringLiteral("PNG"), QStringLiteral("TIFF")});
    control.setSegmentEnabled(1, false);
    control.resize(300, 32);
    const QSignalSpy chosen(&control, &SegmentedControl::chosen);
    for (const auto& [key, index] :
         {std::pair{Qt::Key_Right, 2}, {Qt::Key_Right, 2}, {Qt::Key_Left, 0}, {Qt::Key_End, 2}}) {
        QTest::keyClick(&control, key);
        EXPECT_EQ(control.currentIndex(), index);
    }
    QTest::mouseClick(&control, Qt::LeftButton, {}, QPoint(150, 16));
    EXPECT_EQ(control.currentIndex(), 2);
    EXPECT_EQ(chosen.size(), 3);
}

TEST(ScrollPane, turnsNoValueThatItsScrollingPasses)
{
    ScrollPane pane;
    auto* page = new QWidget;
    auto* rows = new QVBoxLayout(page);
    auto* combo = new QComboBox;
    combo->addItems({QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Three")});
    combo->setCurrentIndex(1);
    auto* number = new NumberField(QStringLiteral("Width"));
    number->setValue(10);
    rows->addWidget(combo);
    rows->addWidget(number);
    rows->addSpacing(4000);
    pane.setPage(page);
    pane.resize(300, 200);
    pane.show();
    pane.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&pane));
    struct Row {
        const char* name;
        QWidget* focused;
        QWidget* under;
        quint64 milliseconds;
        bool scrolls;
    };
    for (const Row& row : {Row{"a list without the focus", number, combo, 10'000, true},
                           Row{"a list with the focus", combo, combo, 20'000, true},
                           Row{"the field, a moment later", number, number, 20'300, true},
                           Row{"still the same scrolling", number, number, 20'600, true},
                           Row{"the field alone", number, number, 30'000, false}}) {
        SCOPED_TRACE(row.name);
        row.focused->setFocus();
        pane.verticalScrollBar()->setValue(0);
        turnWheel(row.under, -120, row.milliseconds);
        EXPECT_EQ(pane.verticalScrollBar()->value() > 0, row.scrolls);
        EXPECT_EQ(combo->currentIndex(), 1);
        EXPECT_EQ(number->value(), row.scrolls ? 10 : 9);
    }
}

TEST(ToggleSwitch, isPressedByItsText)
{
    ToggleSwitch toggle(QStringLiteral("Open folders"));
    toggle.setText(QStringLiteral("Open folders"));
    toggle.resize(toggle.sizeHint());
    QTest::mouseClick(&toggle, Qt::LeftButton, {}, QPoint(4, toggle.height() / 2));
    EXPECT_TRUE(toggle.isChecked());
}

TEST(BackdropDots, areOneTabStopAndChooseByArrow)
{
    BackdropDots dots(QStringLiteral("Backdrop"), {QStringLiteral("Black"), QStringLiteral("Gray")});
    dots.setCurrentIndex(1);
    const QSignalSpy chosen(&dots, &ChoiceStrip::indexChosen);
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Left, Qt::Key_Left, Qt::Key_End})
        QTest::keyClick(&dots, key);
    EXPECT_EQ(chosen.size(), 2);
    EXPECT_EQ(dots.currentIndex(), 1);
    QTest::mouseClick(&dots, Qt::LeftButton, {}, QPoint(4, 12));
    EXPECT_EQ(dots.currentIndex(), 0);
}

TEST(Section, comesIntoSightWhenItOpens)
{
    struct Row {
        const char* name;
        int height;
        int seen; ///< Of the rows, from their first pixel on.
    };
    for (const Row& row : {Row{"whole", 200, 200}, Row{"taller than the pane, its beginning", 500, 250}}) {
        SCOPED_TRACE(row.name);
        auto* page = new QWidget;
        auto* sections = new QVBoxLayout(page);
        auto* last = new Section(QStringLiteral("Output"));
        auto* rows = new QWidget;
        rows->setFixedHeight(row.height);
        last->body()->addWidget(rows);
        last->setExpanded(false);
        sections->addWidget(new Section(QStringLiteral("Border")));
        sections->addSpacing(200);
        sections->addWidget(last);
        ScrollPane pane;
        pane.setPage(page);
        pane.resize(300, 320);
        pane.show();
        QTest::mouseClick(last->header(), Qt::LeftButton);
        const auto isSeen = [](const QWidget* part, int height) {
            const QRect seen = part->visibleRegion().boundingRect();
            return seen.top() == 0 && seen.height() >= height;
        };
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return isSeen(last->header(), last->header()->height()) && isSeen(rows, row.seen); }));
    }
}

TEST(Section, saysWhetherItIsOpen)
{
    Section section(QStringLiteral("Border"));
    section.setSummary(QStringLiteral("240 px"));
    QAccessibleInterface* header = QAccessible::queryAccessibleInterface(section.header());
    for (const bool isOpen : {true, false, true}) {
        EXPECT_TRUE(header->state().expandable);
        EXPECT_EQ(header->state().expanded, isOpen);
        EXPECT_EQ(header->state().collapsed, !isOpen);
        EXPECT_EQ(header->text(QAccessible::Description), isOpen ? QString() : QStringLiteral("240 px"));
        section.header()->click();
    }
}

} // namespace
} // namespace ferrow
