// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Accessibility.h"

#include "Widgets/AccessibleEvents.h"
#include "Widgets/AccessibleItems.h"
#include "Widgets/AccessibleText.h"
#include "Widgets/Fold.h"
#include "Widgets/HairLine.h"
#include "Widgets/Overlay.h"
#include "Widgets/ValueSlider.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QLineEdit>

namespace ferrow {

namespace {

class OverlayInterface : public QAccessibleWidget {
public:
    explicit OverlayInterface(Overlay* overlay) : QAccessibleWidget(overlay, QAccessible::Dialog) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = true;
        return state;
    }
};

/// Says that a button opens and closes something, and which it has done.
class ExpanderInterface : public QAccessibleWidget {
public:
    explicit ExpanderInterface(ExpanderButton* button) : QAccessibleWidget(button, QAccessible::Button) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = button()->isOpen();
        state.collapsed = !button()->isOpen();
        return state;
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Description && !button()->isOpen() && !button()->summary().isEmpty())
            return button()->summary();
        return QAccessibleWidget::text(kind);
    }

    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }

    void doAction(const QString& action) override
    {
        action == pressAction() ? button()->click() : QAccessibleWidget::doAction(action);
    }

private:
    [[nodiscard]] ExpanderButton* button() const { return static_cast<ExpanderButton*>(widget()); }
};

/// Qt's own interface of a slider tells positions; this one tells the value.
class SliderInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit SliderInterface(ValueSlider* slider) : QAccessibleWidget(slider, QAccessible::Slider) {}

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text kind) const override
    {
        switch (kind) {
        case QAccessible::Value:
            return slider()->valueText();
        case QAccessible::Description:
            return slider()->format().unit;
        default:
            return QAccessibleWidget::text(kind);
        }
    }

    QVariant currentValue() const override { return slider()->format().shown(slider()->shownValue()); }
    QVariant maximumValue() const override { return slider()->format().shown(slider()->greatestValue()); }
    QVariant minimumValue() const override { return slider()->format().shown(slider()->leastValue()); }
    QVariant minimumStepSize() const override { return 1; }
    void setCurrentValue(const QVariant& value) override
    {
        slider()->request(value.toDouble() / slider()->format().factor);
    }

private:
    [[nodiscard]] ValueSlider* slider() const { return static_cast<ValueSlider*>(widget()); }
};

/// Qt calls a combo box by its choice alone, and no event of it is spoken while it is closed. This one has both in its
/// name, "Profile: sRGB", and its index as a value, whose changes are spoken.
class ComboBoxInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit ComboBoxInterface(QComboBox* box) : QAccessibleWidget(box, QAccessible::ComboBox)
    {
        QObject::connect(box, &QComboBox::currentIndexChanged, box, [box](int index) {
            QAccessibleEvent renamed(box, QAccessible::NameChanged);
            sendAccessible(renamed);
            QAccessibleValueChangeEvent event(box, index);
            sendAccessible(event);
        });
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text kind) const override
    {
        const QString text = QAccessibleWidget::text(kind);
        if (kind == QAccessible::Value)
            return box()->currentText();
        return kind == QAccessible::Name && !text.isEmpty() ? QStringLiteral("%1: %2").arg(text, box()->currentText())
                                                            : text;
    }

    /// None to the label beside it, which would be read out in place of the name.
    QList<QPair<QAccessibleInterface*, QAccessible::Relation>> relations(QAccessible::Relation) const override
    {
        return {};
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = true;
        return state;
    }

    // The list, as in Qt's own.
    int childCount() const override { return 1; }
    QAccessibleInterface* child(int index) const override
    {
        return index == 0 ? QAccessible::queryAccessibleInterface(box()->view()) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        return child && child->object() == box()->view() ? 0 : -1;
    }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }

    QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }
    void doAction(const QString& action) override
    {
        if (action == showMenuAction() || action == pressAction())
            box()->showPopup();
    }

    QVariant currentValue() const override { return box()->currentIndex(); }
    QVariant maximumValue() const override { return box()->count() - 1; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }
    void setCurrentValue(const QVariant& value) override
    {
        const int index = value.toInt();
        if (index < 0 || index >= box()->count() || !box()->isEnabled())
            return;
        box()->setCurrentIndex(index);
        emit box()->activated(index);
    }

private:
    [[nodiscard]] QComboBox* box() const { return static_cast<QComboBox*>(widget()); }
};

/// A widget without anything of its own is a window, or a part of one. Which of the two may change.
class PlainInterface : public QAccessibleWidget {
public:
    explicit PlainInterface(QWidget* widget) : QAccessibleWidget(widget) {}

    QAccessible::Role role() const override
    {
        return widget()->windowType() == Qt::Window ? QAccessible::Window : QAccessible::Client;
    }
};

/// Asked for each class of an object, from its own up to QObject.
QAccessibleInterface* interfaceFor(const QString& className, QObject* object)
{
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget)
        return nullptr;
    if (auto* items = dynamic_cast<AccessibleItems*>(widget))
        return makeItemsInterface(widget, items);
    if (auto* overlay = qobject_cast<Overlay*>(widget))
        return new OverlayInterface(overlay);
    if (auto* button = qobject_cast<ExpanderButton*>(widget))
        return new ExpanderInterface(button);
    if (auto* slider = qobject_cast<ValueSlider*>(widget))
        return new SliderInterface(slider);
    if (auto* field = qobject_cast<QLineEdit*>(widget))
        return makeLineEditInterface(field);
    if (auto* box = qobject_cast<QComboBox*>(widget); box && !box->isEditable())
        return new ComboBoxInterface(box);
    if (auto* line = qobject_cast<HairLine*>(widget))
        return new QAccessibleWidget(line, QAccessible::Separator);
    if (QAccessibleInterface* notification = makeNotificationInterface(widget))
        return notification;
    return className == QLatin1StringView("QWidget") ? new PlainInterface(widget) : nullptr;
}

} // namespace

void installAccessibility()
{
    QAccessible::installFactory(interfaceFor);
    followFocusOfItems();
}

} // namespace ferrow
