// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestSupport.h"
#include "Widgets/AccessibleEvents.h"
#include "Widgets/AccessibleText.h"
#include "Widgets/BackdropDots.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/SheetList.h"
#include "Widgets/SliderField.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QStandardItemModel>
#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>

namespace ferrow {
namespace {

TEST(AccessibleText, cutsALineIntoPieces)
{
    struct Row {
        const char* name;
        const char* text;
        int offset;
        QAccessible::TextBoundaryType boundary;
        TextPiece piece;
        const char* expected; ///< Null for none.
    };
    const std::vector<Row> rows{
        {"sign before a word", "#F4F1EA", 0, QAccessible::WordBoundary, TextPiece::at, "#"},
        {"word behind a sign", "#F4F1EA", 1, QAccessible::WordBoundary, TextPiece::at, "F4F1EA"},
        {"end of the text", "#F4F1EA", 7, QAccessible::WordBoundary, TextPiece::at, "F4F1EA"},
        {"end in a sign", "{index}", 7, QAccessible::WordBoundary, TextPiece::at, "}"},
        {"nothing before the first", "#F4F1EA", 0, QAccessible::WordBoundary, TextPiece::before, nullptr},
        {"next word", "one two", 1, QAccessible::WordBoundary, TextPiece::after, " "},
        {"word before the end", "one two", 7, QAccessible::WordBoundary, TextPiece::before, " "},
        {"last sentence", "One. Two.", 9, QAccessible::SentenceBoundary, TextPiece::at, "Two."},
        {"sentence without an end", "-", 1, QAccessible::SentenceBoundary, TextPiece::at, "-"},
        {"letter of two code units", "a\U0001F600b", 1, QAccessible::CharBoundary, TextPiece::at, "\U0001F600"},
        {"no character at the end", "ab", 2, QAccessible::CharBoundary, TextPiece::at, nullptr},
        {"last character", "ab", 2, QAccessible::CharBoundary, TextPiece::before, "b"},
        {"all of a line", "one two", 4, QAccessible::LineBoundary, TextPiece::at, "one two"},
        {"nothing in nothing", "", 0, QAccessible::NoBoundary, TextPiece::at, nullptr},
        {"out of the text", "ab", 3, QAccessible::NoBoundary, TextPiece::at, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        int start = 0;
        int end = 0;
        const QString text = QString::fromUtf8(row.text);
        EXPECT_EQ(textPiece(text, row.offset, row.boundary, row.piece, &start, &end), QString::fromUtf8(row.expected));
        EXPECT_EQ(start >= 0, row.expected != nullptr);
        EXPECT_EQ(text.mid(start, end - start), start < 0 ? text.mid(start, 0) : QString::fromUtf8(row.expected));
    }
}

/// What would be heard: type, and the object as it is at that moment.
class AccessibleEvents : public testing::Test {
protected:
    AccessibleEvents()
    {
        setAccessibleReceiver([this](QAccessibleEvent& event) {
            const QAccessibleInterface* object = event.accessibleInterface();
            QString line = object->text(QAccessible::Name);
            switch (event.type()) {
            case QAccessible::Focus:
                line += object->state().checked || object->state().selected ? QStringLiteral(" focused, chosen")
                                                                            : QStringLiteral(" focused");
                break;
            case QAccessible::StateChanged:
                line += object->state().checked || object->state().selected ? QStringLiteral(" on")
                                                                            : QStringLiteral(" off");
                break;
            case QAccessible::ValueChanged:
                line +=
                    QStringLiteral(" = %1").arg(static_cast<QAccessibleValueChangeEvent&>(event).value().toDouble());
                break;
            default:
                return;
            }
            heard.append(line);
        });
        window.setLayout(new QVBoxLayout);
    }
    ~AccessibleEvents() override { setAccessibleReceiver({}); }

    template <typename Part>
    Part* add(Part* part)
    {
        window.layout()->addWidget(part);
        return part;
    }
    void focus(QWidget* part)
    {
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        part->setFocus(Qt::TabFocusReason);
        QCoreApplication::processEvents();
    }

    QWidget window;
    QStringList heard;
};

TEST_F(AccessibleEvents, tellTheChosenMemberOfAGroup)
{
    auto* before = add(new QLineEdit);
    auto* segments = add(new SegmentedControl(
        QStringLiteral("Unit"), {QStringLiteral("Pixels"), QStringLiteral("Percent"), QStringLiteral("Share")}));
    segments->setCurrentIndex(1);
    focus(before);
    heard.clear();
    focus(segments);
    EXPECT_EQ(heard, QStringList(QStringLiteral("Percent focused, chosen")));
    heard.clear();
    QTest::keyClick(segments, Qt::Key_Right);
    EXPECT_EQ(heard, QStringList({QStringLiteral("Percent off"), QStringLiteral("Share focused, chosen")}));
}

TEST_F(AccessibleEvents, tellTicksAndRowsOfAList)
{
    QStandardItemModel model;
    for (const char* name : {"one", "two", "three"}) {
        auto* row = new QStandardItem(QLatin1StringView(name));
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        row->setCheckState(Qt::Checked);
        model.appendRow(row);
    }
    auto* list = add(new SheetList(QStringLiteral("Photos")));
    list->setModel(&model);
    list->setCurrentIndex(model.index(1, 0));
    focus(list);
    EXPECT_EQ(heard, QStringList(QStringLiteral("two focused, chosen")));
    const QAccessibleInterface* row = QAccessible::queryAccessibleInterface(list)->child(1);
    EXPECT_EQ(row->role(), QAccessible::CheckBox);
    heard.clear();
    model.item(1)->setCheckState(Qt::Unchecked);
    model.item(1)->setCheckState(Qt::Checked);
    EXPECT_EQ(heard, QStringList({QStringLiteral("two off"), QStringLiteral("two on")}));
    heard.clear();
    model.removeRow(0); // What is second now is another object than before, so that nobody takes it for "two".
    QCoreApplication::processEvents();
    EXPECT_EQ(heard, QStringList(QStringLiteral("two focused, chosen")));
}

TEST_F(AccessibleEvents, tellValuesInTheUnitThatIsShown)
{
    auto* opacity = add(new SliderField(QStringLiteral("Opacity")));
    opacity->setFormat({.decimals = 0, .factor = 100, .unit = QStringLiteral("%"), .least = 0, .greatest = 1});
    opacity->setRange(0, 1);
    opacity->setValue(0.5);
    heard.clear();
    QTest::keyClick(opacity->slider(), Qt::Key_Right);
    EXPECT_EQ(heard, QStringList({QStringLiteral("Opacity = 51"), QStringLiteral("Opacity value = 51")}));
    for (QWidget* part : {opacity->slider(), static_cast<QWidget*>(opacity->field())}) {
        QAccessibleValueInterface* value = QAccessible::queryAccessibleInterface(part)->valueInterface();
        ASSERT_TRUE(value);
        EXPECT_EQ(value->currentValue().toDouble(), 51);
        EXPECT_EQ(value->maximumValue().toDouble(), 100);
        value->setCurrentValue(20);
        EXPECT_DOUBLE_EQ(opacity->value(), 0.2);
        opacity->setValue(0.51);
    }
    EXPECT_EQ(QAccessible::queryAccessibleInterface(opacity->field())->role(), QAccessible::SpinBox);
}

TEST_F(AccessibleEvents, tellWhatAComboBoxIsAndHas)
{
    auto* box = add(new QComboBox);
    box->setAccessibleName(QStringLiteral("Size"));
    box->addItems({QStringLiteral("Small"), QStringLiteral("Large")});
    const QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(box);
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("Size: Small"));
    auto* label = add(new QLabel(QStringLiteral("Size")));
    label->setBuddy(box);
    EXPECT_TRUE(interface->relations().isEmpty()) << "the label would be read out in place of the name";
    heard.clear();
    QTest::keyClick(box, Qt::Key_Down);
    EXPECT_EQ(heard, QStringList(QStringLiteral("Size: Large = 1")));
}

TEST_F(AccessibleEvents, showMessagesAsNotifications)
{
    auto* field = add(new QLineEdit);
    focus(field);
    announce(field, QStringLiteral("Report copied"));
    QAccessibleInterface* root = QAccessible::queryAccessibleInterface(&window);
    EXPECT_EQ(root->role(), QAccessible::Window);
    const QAccessibleInterface* lowest = root->child(0);
    EXPECT_EQ(lowest->role(), QAccessible::Notification);
    EXPECT_EQ(lowest->text(QAccessible::Name), QStringLiteral("Report copied"));
    EXPECT_FALSE(lowest->state().invisible);
}

} // namespace
} // namespace ferrow
