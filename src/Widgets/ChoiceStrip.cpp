// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ChoiceStrip.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace ferrow {

ChoiceStrip::ChoiceStrip(const QString& name, const QStringList& items, QWidget* parent)
    : QWidget(parent), items_(items)
{
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
}

void ChoiceStrip::setCurrentIndex(int index)
{
    if (std::exchange(current_, index) != index) {
        update();
        notifyItemsChanged(this);
    }
}

AccessibleItem ChoiceStrip::item(int index) const
{
    AccessibleItem item;
    item.name = items_[index];
    item.rect = itemRect(index);
    item.isChosen = index == current_;
    return item;
}

void ChoiceStrip::pressItem(int index)
{
    if (index == current_)
        return;
    setCurrentIndex(index);
    notifyItemFocused(this);
    emit indexChosen(index);
}

bool ChoiceStrip::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const int index = indexAt(help->pos());
        QToolTip::showText(help->globalPos(), index < 0 ? QString() : items_[index], this);
        return true;
    }
    return QWidget::event(event);
}

void ChoiceStrip::keyPressEvent(QKeyEvent* event)
{
    const int last = itemCount() - 1;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        return pressItem(std::max(current_ - 1, 0));
    case Qt::Key_Right:
    case Qt::Key_Down:
        return pressItem(std::min(current_ + 1, last));
    case Qt::Key_Home:
        return pressItem(0);
    case Qt::Key_End:
        return pressItem(last);
    case Qt::Key_Space:
        return pressItem(std::max(current_, 0));
    default:
        QWidget::keyPressEvent(event);
    }
}

void ChoiceStrip::mousePressEvent(QMouseEvent* event)
{
    const int index = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && index >= 0)
        pressItem(index);
}

void ChoiceStrip::mouseMoveEvent(QMouseEvent* event)
{
    setHovered(indexAt(event->position().toPoint()));
}

void ChoiceStrip::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    setHovered(-1);
}

int ChoiceStrip::indexAt(QPoint point) const
{
    for (int i = 0; i < itemCount(); ++i)
        if (itemRect(i).contains(point))
            return i;
    return -1;
}

void ChoiceStrip::setHovered(int index)
{
    if (std::exchange(hovered_, index) != index)
        update();
}

} // namespace ferrow
