// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/AccessibleItems.h"

#include "Widgets/AccessibleEvents.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QWidget>

#include <algorithm>
#include <map>
#include <utility>

namespace ferrow {

namespace {

/// A child that no widget stands for. Lives as long as its group's interface.
class ItemInterface : public QAccessibleInterface, public QAccessibleActionInterface, public QAccessibleValueInterface {
public:
    ItemInterface(QWidget* widget, AccessibleItems* items, int index)
        : widget_(widget), items_(items), index_(index), told_(items->item(index))
    {
    }

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
        if (!isValid())
            return {};
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
        const bool isChecked = isCheckable(now);
        state.checkable = isChecked;
        state.checked = isChecked && now.isChosen;
        state.selectable = !isChecked;
        state.selected = !isChecked && now.isChosen;
        state.focusable = true;
        state.focused = index_ == items_->focusedItem() && widget_->hasFocus();
        state.disabled = !now.isEnabled || !widget_->isEnabled();
        state.invisible = !widget_->isVisible();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        switch (type) {
        case QAccessible::ActionInterface:
            return static_cast<QAccessibleActionInterface*>(this);
        case QAccessible::ValueInterface:
            return isValid() && item().value ? static_cast<QAccessibleValueInterface*>(this) : nullptr;
        default:
            return nullptr;
        }
    }

    QStringList actionNames() const override { return {pressAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    void doAction(const QString& action) override
    {
        if (action == pressAction() && isUsable())
            items_->pressItem(index_);
    }

    QVariant currentValue() const override { return value().now; }
    QVariant maximumValue() const override { return value().greatest; }
    QVariant minimumValue() const override { return value().least; }
    QVariant minimumStepSize() const override { return value().step; }
    void setCurrentValue(const QVariant& wanted) override
    {
        if (isUsable())
            items_->setItemValue(index_, std::clamp(wanted.toDouble(), value().least, value().greatest));
    }

    [[nodiscard]] int index() const { return index_; }
    [[nodiscard]] const QWidget* widget() const { return widget_; }

    void tellChanges()
    {
        if (!isValid())
            return;
        const AccessibleItem before = std::exchange(told_, item());
        if (told_.name != before.name) {
            QAccessibleEvent event(this, QAccessible::NameChanged);
            sendAccessible(event);
        }
        if (told_.isChosen != before.isChosen) {
            QAccessible::State changed;
            changed.checked = isCheckable(told_);
            changed.selected = !changed.checked;
            QAccessibleStateChangeEvent event(this, changed);
            sendAccessible(event);
        }
        if (told_.value && told_.value != before.value) {
            QAccessibleValueChangeEvent event(this, told_.value->now);
            sendAccessible(event);
        }
    }

private:
    [[nodiscard]] AccessibleItem item() const { return items_->item(index_); }
    [[nodiscard]] AccessibleValue value() const { return item().value.value_or(AccessibleValue()); }
    [[nodiscard]] bool isUsable() const { return isValid() && item().isEnabled && widget_->isEnabled(); }
    static bool isCheckable(const AccessibleItem& item)
    {
        return item.role == QAccessible::RadioButton || item.role == QAccessible::CheckBox;
    }

    QWidget* widget_;
    AccessibleItems* items_;
    int index_;
    AccessibleItem told_; ///< Assistive technology keeps what it has been told.
};

class ItemsInterface : public QAccessibleWidget {
public:
    ItemsInterface(QWidget* widget, AccessibleItems* items) : QAccessibleWidget(widget), items_(items) {}
    ~ItemsInterface() override { forgetItems(); }

    // Asked each time: this object may have been made while the widget was still being constructed.
    QAccessible::Role role() const override { return items_->itemsRole(); }

    int childCount() const override { return items_->itemCount() + (items_->controlsAmongItems() ? 1 : 0); }

    QAccessibleInterface* child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        if (index == items_->itemCount())
            return QAccessible::queryAccessibleInterface(items_->controlsAmongItems());
        const auto known = ids_.find(index);
        if (known != ids_.end())
            return QAccessible::accessibleInterface(known->second);
        auto* made = new ItemInterface(widget(), items_, index);
        ids_[index] = QAccessible::registerAccessibleInterface(made);
        return made;
    }

    int indexOfChild(const QAccessibleInterface* child) const override
    {
        const auto* item = dynamic_cast<const ItemInterface*>(child);
        if (item)
            return item->widget() == widget() ? item->index() : -1;
        const QWidget* controls = items_->controlsAmongItems();
        return controls && child && child->object() == controls ? items_->itemCount() : -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override
    {
        return child(items_->itemAt(widget()->mapFromGlobal(QPoint(x, y))));
    }

    QAccessibleInterface* focusChild() const override
    {
        return widget()->hasFocus() ? child(items_->focusedItem()) : QAccessibleWidget::focusChild();
    }

    void tellChanges()
    {
        for (const auto& [index, id] : ids_)
            static_cast<ItemInterface*>(QAccessible::accessibleInterface(id))->tellChanges();
    }

    void forgetItems()
    {
        for (const auto& [index, id] : ids_)
            QAccessible::deleteAccessibleInterface(id);
        ids_.clear();
    }

private:
    AccessibleItems* items_;
    mutable std::map<int, QAccessible::Id> ids_; ///< Of the items that were asked for.
};

void tellFocusLater(QWidget* widget)
{
    QMetaObject::invokeMethod(
        widget, [widget] { notifyItemFocused(widget); }, Qt::QueuedConnection);
}

ItemsInterface* itemsInterface(QWidget* widget)
{
    return isHeard() ? dynamic_cast<ItemsInterface*>(QAccessible::queryAccessibleInterface(widget)) : nullptr;
}

} // namespace

int AccessibleItems::itemAt(const QPoint& point) const
{
    for (int i = 0; i < itemCount(); ++i)
        if (item(i).rect.contains(point))
            return i;
    return -1;
}

void notifyItemsChanged(QWidget* widget)
{
    if (ItemsInterface* group = itemsInterface(widget))
        group->tellChanges();
}

void notifyItemsReplaced(QWidget* widget)
{
    if (ItemsInterface* group = itemsInterface(widget)) {
        group->forgetItems();
        tellFocusLater(widget);
    }
}

void notifyItemFocused(QWidget* widget)
{
    ItemsInterface* group = widget->hasFocus() ? itemsInterface(widget) : nullptr;
    if (QAccessibleInterface* child = group ? group->focusChild() : nullptr) {
        QAccessibleEvent event(child, QAccessible::Focus);
        sendAccessible(event);
    }
}

void followFocusOfItems()
{
    static const auto connection =
        QObject::connect(qApp, &QApplication::focusChanged, qApp, [](QWidget*, QWidget* now) {
            if (!dynamic_cast<AccessibleItems*>(now))
                return;
            tellFocusLater(now); // Qt tells the focus of the widget after this; what comes last is what is read out.
        });
    Q_UNUSED(connection)
}

QAccessibleInterface* makeItemsInterface(QWidget* widget, AccessibleItems* items)
{
    return new ItemsInterface(widget, items);
}

} // namespace ferrow
