// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QRect>
#include <QString>

class QWidget;

namespace ferrow {

/// One part of a widget that assistive technology shall find as a child of its own.
struct AccessibleItem {
    QString name; ///< With its position where that matters: "Aperture, 2 of 5".
    QString description;
    QRect rect; ///< In the widget's coordinates.
    QAccessible::Role role = QAccessible::RadioButton;
    bool isChosen = false;  ///< Reported as checked for radio buttons and check boxes, as selected for all else.
    bool isFocused = false; ///< The item that keys act on; it counts as focused while the widget has the focus.
    bool isEnabled = true;
};

/// Implemented by widgets that draw several parts as one tab stop (segments, chips, spots). The accessible interface
/// comes with it: the widget is a group (or `itemsRole`) with a child for each item. Tell changes by
/// `notifyItemsChanged` and `notifyItemFocused`.
class AccessibleItems {
public:
    virtual ~AccessibleItems() = default;
    [[nodiscard]] virtual int itemCount() const = 0;
    [[nodiscard]] virtual AccessibleItem item(int index) const = 0;
    /// What the mouse does on it.
    virtual void pressItem(int index) = 0;
    [[nodiscard]] virtual QAccessible::Role itemsRole() const { return QAccessible::Grouping; }
};

/// The items' names, states or number changed.
void notifyItemsChanged(QWidget* widget);
/// Keys act on another item now: it is announced.
void notifyItemFocused(QWidget* widget, int index);
/// Says something that happened and that focus does not tell: "Exporting, 30 percent".
void announce(QWidget* widget, const QString& text);

/// Registers the interfaces of this room with Qt. FerrowStyle::install does it.
void installAccessibility();

} // namespace ferrow
