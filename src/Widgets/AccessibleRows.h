// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/AccessibleItems.h"

#include <QListView>

namespace ferrow {

/// The rows of a list as items: rows with a tick are check boxes, rows that can't be chosen are headings, and controls
/// that lie on rows are found. Qt's own interface of lists knows no such controls and tells no tick.
///
/// A list inherits this beside QListView and calls `followModel` once it has its model.
class AccessibleRows : public AccessibleItems {
public:
    int itemCount() const override;
    /// Name and description are the model's accessible texts.
    AccessibleItem item(int index) const override;
    int focusedItem() const override;
    void pressItem(int index) override;
    QAccessible::Role itemsRole() const override { return QAccessible::List; }
    int itemAt(const QPoint& point) const override;
    QWidget* controlsAmongItems() const override;

protected:
    explicit AccessibleRows(QListView& view) : view_(view) {}
    void followModel();

private:
    QListView& view_;
};

} // namespace ferrow
