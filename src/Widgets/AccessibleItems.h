// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QRect>
#include <QString>

#include <optional>

class QWidget;

namespace ferrow {

/// Of a part that is a slider, in the unit that users see.
struct AccessibleValue {
    double now = 0;
    double least = 0;
    double greatest = 100;
    double step = 1;

    bool operator==(const AccessibleValue&) const = default;
};

/// One part of a widget that assistive technology shall find as a child of its own.
struct AccessibleItem {
    QString name; ///< With its position where that matters: "Aperture, 2 of 5".
    QString description;
    QRect rect; ///< In the widget's coordinates.
    QAccessible::Role role = QAccessible::RadioButton;
    bool isChosen = false; ///< Reported as checked for radio buttons and check boxes, as selected for all else.
    bool isEnabled = true;
    std::optional<AccessibleValue> value;
};

/// Implemented by widgets that draw several parts as one tab stop (segments, chips, spots, rows). The accessible
/// interface comes with it: the widget is a group (or `itemsRole`) with a child for each item. When the widget gets the
/// focus, the item that keys act on is told by itself; tell later changes by the functions below.
class AccessibleItems {
public:
    virtual ~AccessibleItems() = default;
    [[nodiscard]] virtual int itemCount() const = 0;
    [[nodiscard]] virtual AccessibleItem item(int index) const = 0;
    /// What keys act on: it counts as focused while the widget has the focus. -1 for none.
    [[nodiscard]] virtual int focusedItem() const = 0;
    /// What the mouse does on it.
    virtual void pressItem(int index) = 0;
    /// By assistive technology; within the item's limits.
    virtual void setItemValue(int /*index*/, double /*value*/) {}
    [[nodiscard]] virtual QAccessible::Role itemsRole() const { return QAccessible::Grouping; }
    /// The item at a point of the widget; -1 for none.
    [[nodiscard]] virtual int itemAt(const QPoint& point) const;
    /// A child widget with controls that lie among the items; null for none.
    [[nodiscard]] virtual QWidget* controlsAmongItems() const { return nullptr; }
};

/// The items' names, values or states changed, or their number. What differs from what was told last is told.
void notifyItemsChanged(QWidget* widget);
/// Items at other places than before: nothing that was told of them holds any more.
void notifyItemsReplaced(QWidget* widget);
/// Keys act on another item now: it is told, if the widget has the focus.
void notifyItemFocused(QWidget* widget);

/// Follows the application's focus, to tell the items. Does nothing the second time.
void followFocusOfItems();
/// For a widget with items.
[[nodiscard]] QAccessibleInterface* makeItemsInterface(QWidget* widget, AccessibleItems* items);

} // namespace ferrow
