// SPDX-License-Identifier: GPL-3.0-or-later
#include "Shared/Widgets/Gallery.h"
#include "Shared/Widgets/SegmentedControl.h"
#include "Shared/Widgets/SliderField.h"

#include <QAccessible>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <gmock/gmock.h>

#include <set>

namespace ferrow {
namespace {

void turnWheel(QWidget* widget)
{
    QWheelEvent event(QPointF(4, 4), widget->mapToGlobal(QPointF(4, 4)), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
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
        QApplication::setActiveWindow(&field);
        QObject::connect(&field, &SliderField::gestureStarted, [this] { log.append(QLatin1Char('(')); });
        QObject::connect(&field, &SliderField::valueEdited,
                         [this](double value) { log.append(QStringLiteral(" %1 ").arg(value)); });
        QObject::connect(&field, &SliderField::gestureEnded, [this] { log.append(QLatin1Char(')')); });
    }

    SliderField field{QStringLiteral("Width")};
    QString log;
};

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
    for (const int x : {40, 60, 80}) {
        QTest::mouseMove(slider, QPoint(x, slider->height() / 2));
    }
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

void collect(QAccessibleInterface* item, std::vector<QAccessibleInterface*>& found)
{
    found.push_back(item);
    for (int i = 0; i < item->childCount(); ++i) {
        if (QAccessibleInterface* child = item->child(i)) {
            collect(child, found);
        }
    }
}

TEST(Gallery, namesEveryControlAndItsKind)
{
    const std::unique_ptr<QWidget> window(makeGallery());
    window->show();
    std::vector<QAccessibleInterface*> all;
    collect(QAccessible::queryAccessibleInterface(window.get()), all);
    std::set<QAccessible::Role> roles;
    for (QAccessibleInterface* item : all) {
        if (!item->state().focusable || item->state().invisible || item->object() == window.get()) {
            continue;
        }
        const QString name = item->text(QAccessible::Name);
        SCOPED_TRACE(item->object() ? item->object()->metaObject()->className() : "item");
        EXPECT_FALSE(name.isEmpty());
        EXPECT_FALSE(item->role() == QAccessible::Client || item->role() == QAccessible::NoRole) << name.toStdString();
        roles.insert(item->role());
    }
    using R = QAccessible;
    EXPECT_THAT(roles, testing::IsSupersetOf({R::Button, R::CheckBox, R::RadioButton, R::Slider, R::EditableText,
                                              R::ComboBox, R::Grouping}));
}

} // namespace
} // namespace ferrow
