// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/AccessibleItems.h"

#include "Widgets/Fold.h"
#include "Widgets/HairLine.h"
#include "Widgets/Overlay.h"
#include "Widgets/SliderField.h"
#include "Widgets/ValueSlider.h"

#include <QAccessibleWidget>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

#include <map>
#include <memory>

namespace ferrow {

namespace {

/// A child that no widget stands for. Lives as long as its group's interface.
class ItemInterface : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ItemInterface(QWidget* widget, AccessibleItems* items, int index) : widget_(widget), items_(items), index_(index) {}

    bool isValid() const override { return index_ < items_->itemCount(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return widget_->window()->windowHandle(); }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(widget_); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return isValid() ? item().role : QAccessible::NoRole; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override
    {
        if (!isValid()) {
            return {};
        }
        return kind == QAccessible::Name          ? item().name
               : kind == QAccessible::Description ? item().description
                                                  : QString();
    }

    QRect rect() const override
    {
        const QRect inside = isValid() ? item().rect : QRect();
        return QRect(widget_->mapToGlobal(inside.topLeft()), inside.size());
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        const AccessibleItem now = item();
        const bool isCheckable = now.role == QAccessible::RadioButton || now.role == QAccessible::CheckBox;
        state.checkable = isCheckable;
        state.checked = isCheckable && now.isChosen;
        state.selectable = !isCheckable;
        state.selected = !isCheckable && now.isChosen;
        state.focusable = true;
        state.focused = now.isFocused && widget_->hasFocus();
        state.disabled = !now.isEnabled || !widget_->isEnabled();
        state.invisible = !widget_->isVisible();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }

    QStringList actionNames() const override { return {pressAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    void doAction(const QString& action) override
    {
        if (action == pressAction() && isValid() && item().isEnabled && widget_->isEnabled()) {
            items_->pressItem(index_);
        }
    }

private:
    [[nodiscard]] AccessibleItem item() const { return items_->item(index_); }

    QWidget* widget_;
    AccessibleItems* items_;
    int index_;
};

class ItemsInterface : public QAccessibleWidget {
public:
    ItemsInterface(QWidget* widget, AccessibleItems* items)
        : QAccessibleWidget(widget, items->itemsRole()), items_(items)
    {
    }

    ~ItemsInterface() override
    {
        for (const auto& [index, id] : ids_) {
            QAccessible::deleteAccessibleInterface(id);
        }
    }

    int childCount() const override { return items_->itemCount(); }

    QAccessibleInterface* child(int index) const override
    {
        if (index < 0 || index >= childCount()) {
            return nullptr;
        }
        const auto known = ids_.find(index);
        if (known != ids_.end()) {
            return QAccessible::accessibleInterface(known->second);
        }
        auto* made = new ItemInterface(widget(), items_, index);
        ids_[index] = QAccessible::registerAccessibleInterface(made);
        return made;
    }

    int indexOfChild(const QAccessibleInterface* child) const override
    {
        for (const auto& [index, id] : ids_) {
            if (QAccessible::accessibleInterface(id) == child) {
                return index;
            }
        }
        return -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override
    {
        const QPoint point = widget()->mapFromGlobal(QPoint(x, y));
        for (int i = 0; i < childCount(); ++i) {
            if (items_->item(i).rect.contains(point)) {
                return child(i);
            }
        }
        return nullptr;
    }

    QAccessibleInterface* focusChild() const override
    {
        for (int i = 0; i < childCount() && widget()->hasFocus(); ++i) {
            if (items_->item(i).isFocused) {
                return child(i);
            }
        }
        return nullptr;
    }

private:
    AccessibleItems* items_;
    mutable std::map<int, QAccessible::Id> ids_;
};

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
class FoldInterface : public QAccessibleWidget {
public:
    explicit FoldInterface(FoldButton* button) : QAccessibleWidget(button, QAccessible::Button) {}

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
        if (kind == QAccessible::Description && !button()->isOpen()) {
            return button()->summary();
        }
        return QAccessibleWidget::text(kind);
    }

    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }

    void doAction(const QString& action) override
    {
        action == pressAction() ? button()->click() : QAccessibleWidget::doAction(action);
    }

private:
    [[nodiscard]] FoldButton* button() const { return static_cast<FoldButton*>(widget()); }
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
        return kind == QAccessible::Value ? slider()->valueText() : QAccessibleWidget::text(kind);
    }

    QVariant currentValue() const override { return slider()->shownValue(); }
    void setCurrentValue(const QVariant& value) override { slider()->request(value.toDouble()); }
    QVariant maximumValue() const override { return slider()->greatestValue(); }
    QVariant minimumValue() const override { return slider()->leastValue(); }
    QVariant minimumStepSize() const override { return slider()->stepValue(); }

private:
    [[nodiscard]] ValueSlider* slider() const { return static_cast<ValueSlider*>(widget()); }
};

QAccessibleInterface* interfaceFor(const QString&, QObject* object)
{
    if (auto* items = dynamic_cast<AccessibleItems*>(object)) {
        return new ItemsInterface(static_cast<QWidget*>(object), items);
    }
    if (auto* overlay = qobject_cast<Overlay*>(object)) {
        return new OverlayInterface(overlay);
    }
    if (auto* button = qobject_cast<FoldButton*>(object)) {
        return new FoldInterface(button);
    }
    if (auto* slider = qobject_cast<ValueSlider*>(object)) {
        return new SliderInterface(slider);
    }
    if (auto* line = qobject_cast<HairLine*>(object)) {
        return new QAccessibleWidget(line, QAccessible::Separator);
    }
    return nullptr;
}

} // namespace

void notifyItemsChanged(QWidget* widget)
{
    QAccessible::State changed;
    changed.checked = true;
    changed.selected = true;
    QAccessibleInterface* group = QAccessible::isActive() ? QAccessible::queryAccessibleInterface(widget) : nullptr;
    for (int i = 0; group && i < group->childCount(); ++i) {
        QAccessibleStateChangeEvent event(group->child(i), changed);
        QAccessible::updateAccessibility(&event);
        QAccessibleEvent renamed(group->child(i), QAccessible::NameChanged);
        QAccessible::updateAccessibility(&renamed);
    }
}

void notifyItemFocused(QWidget* widget, int index)
{
    if (!QAccessible::isActive()) {
        return;
    }
    QAccessibleInterface* group = QAccessible::queryAccessibleInterface(widget);
    if (QAccessibleInterface* child = group ? group->child(index) : nullptr) {
        QAccessibleEvent event(child, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
}

void announce(QWidget* widget, const QString& text)
{
    QAccessibleInterface* speaker = QAccessible::isActive() ? QAccessible::queryAccessibleInterface(widget) : nullptr;
    if (!speaker || text.isEmpty()) {
        return;
    }
    // Qt before 6.8 has no announcements; what it would send goes over its own connection to assistive technology.
    const QString object = QStringLiteral("/org/a11y/atspi/accessible/%1").arg(QAccessible::uniqueId(speaker));
    const QDBusConnection bus(QStringLiteral("a11y"));
    QDBusMessage announcement = QDBusMessage::createSignal(object, QStringLiteral("org.a11y.atspi.Event.Object"),
                                                           QStringLiteral("Announcement"));
    constexpr int polite = 1; // After what is being said.
    announcement << QString() << polite << 0 << QVariant::fromValue(QDBusVariant(text)) << QVariantMap();
    bus.send(announcement);
}

void installAccessibility()
{
    QAccessible::installFactory(interfaceFor);
}

} // namespace ferrow
