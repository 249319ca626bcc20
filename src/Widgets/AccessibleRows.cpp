// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/AccessibleRows.h"

#include <algorithm>

namespace ferrow {

int AccessibleRows::itemCount() const
{
    return view_.model() ? view_.model()->rowCount() : 0;
}

AccessibleItem AccessibleRows::item(int index) const
{
    const QModelIndex row = view_.model()->index(index, 0);
    const bool isHeading = !row.flags().testFlag(Qt::ItemIsEnabled);
    const bool isTickable = row.flags().testFlag(Qt::ItemIsUserCheckable);
    const QString spoken = row.data(Qt::AccessibleTextRole).toString();
    AccessibleItem item;
    item.name = spoken.isEmpty() ? row.data(Qt::DisplayRole).toString() : spoken;
    item.description = row.data(Qt::AccessibleDescriptionRole).toString();
    item.rect = view_.visualRect(row).translated(view_.viewport()->pos());
    item.role = isHeading ? QAccessible::Heading : isTickable ? QAccessible::CheckBox : QAccessible::ListItem;
    item.isChosen =
        isTickable ? row.data(Qt::CheckStateRole).toInt() == Qt::Checked : view_.selectionModel()->isSelected(row);
    return item;
}

int AccessibleRows::focusedItem() const
{
    return view_.currentIndex().row();
}

void AccessibleRows::pressItem(int index)
{
    view_.setCurrentIndex(view_.model()->index(index, 0));
}

int AccessibleRows::itemAt(const QPoint& point) const
{
    return view_.indexAt(point - view_.viewport()->pos()).row();
}

QWidget* AccessibleRows::controlsAmongItems() const
{
    const QList<QWidget*> inside = view_.viewport()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    const bool isAnyShown =
        std::any_of(inside.begin(), inside.end(), [](const QWidget* each) { return !each->isHidden(); });
    return isAnyShown ? view_.viewport() : nullptr;
}

void AccessibleRows::followModel()
{
    const QAbstractItemModel* model = view_.model();
    const auto replaced = [this] { notifyItemsReplaced(&view_); };
    const auto changed = [this] { notifyItemsChanged(&view_); };
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        QObject::connect(model, signal, &view_, replaced);
    QObject::connect(model, &QAbstractItemModel::modelReset, &view_, replaced);
    QObject::connect(model, &QAbstractItemModel::dataChanged, &view_, changed);
    QObject::connect(view_.selectionModel(), &QItemSelectionModel::selectionChanged, &view_, changed);
}

} // namespace ferrow
