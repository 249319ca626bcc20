// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/FlowLayout.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace ferrow {

FlowLayout::FlowLayout(int gap, QWidget* parent) : QLayout(parent), gap_(gap)
{
    setContentsMargins(0, 0, 0, 0);
}

FlowLayout::~FlowLayout()
{
    for (QLayoutItem* item : items_)
        delete item;
}

void FlowLayout::addItem(QLayoutItem* item)
{
    items_.push_back(item);
}

int FlowLayout::count() const
{
    return int(items_.size());
}

QLayoutItem* FlowLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? items_[std::size_t(index)] : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index)
{
    QLayoutItem* item = itemAt(index);
    if (item)
        items_.erase(items_.begin() + index);
    return item;
}

Qt::Orientations FlowLayout::expandingDirections() const
{
    return {};
}

bool FlowLayout::hasHeightForWidth() const
{
    return true;
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem* item : items_)
        size = size.expandedTo(item->minimumSize());
    const QMargins margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

QSize FlowLayout::sizeHint() const
{
    return minimumSize();
}

void FlowLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

/// Returns the height that the items take at the width of `rect`, margins included.
int FlowLayout::arrange(const QRect& rect, bool apply) const
{
    const QRect inside = rect.marginsRemoved(contentsMargins());
    int x = inside.left();
    int y = inside.top();
    int lineHeight = 0;
    for (QLayoutItem* item : items_) {
        if (item->isEmpty())
            continue;
        // One that is wider than a line is cut to it.
        const int width = std::min(item->sizeHint().width(), inside.width());
        const int height = item->sizeHint().height();
        if (x > inside.left() && x + width > inside.right() + 1) {
            x = inside.left();
            y += lineHeight + gap_;
            lineHeight = 0;
        }
        if (apply)
            item->setGeometry(QRect(x, y, width, height));
        x += width + gap_;
        lineHeight = std::max(lineHeight, height);
    }
    return y + lineHeight - rect.top() + contentsMargins().bottom();
}

} // namespace ferrow
