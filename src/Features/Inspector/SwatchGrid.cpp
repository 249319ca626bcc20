// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/SwatchGrid.h"

#include "Widgets/ColorWell.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr int perRow = 7;
constexpr double side = 20;
constexpr double rowPitch = 32;

} // namespace

SwatchGrid::SwatchGrid(QWidget* parent) : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Named colors"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SwatchGrid::setColor(const RGBAColor& color)
{
    const std::optional<std::size_t> chosen = namedColorIndex(color);
    if (chosen == chosen_)
        return;
    chosen_ = chosen;
    if (chosen_)
        current_ = int(*chosen_);
    notifyItemsChanged(this);
    update();
}

QSize SwatchGrid::sizeHint() const
{
    return {256 + 2 * overhang, int(rowPitch + side) + 2 * overhang};
}

QRectF SwatchGrid::swatch(int index) const
{
    const double pitch = (width() - 2 * overhang - side) / (perRow - 1);
    // On whole pixels, so that all edges are equally sharp.
    const double x = std::round(overhang + pitch * (index % perRow));
    return {x, overhang + rowPitch * (index / perRow), side, side};
}

int SwatchGrid::indexAt(QPointF point) const
{
    for (int i = 0; i < itemCount(); ++i)
        if (swatch(i).adjusted(-4, -4, 4, 4).contains(point))
            return i;
    return -1;
}

AccessibleItem SwatchGrid::item(int index) const
{
    AccessibleItem item;
    item.name = namedColors[std::size_t(index)].displayName();
    item.description = namedColors[std::size_t(index)].color().accessibilityDescription();
    item.rect = swatch(index).toRect();
    item.isChosen = chosen_ == std::size_t(index);
    return item;
}

void SwatchGrid::pressItem(int index)
{
    moveTo(index);
}

void SwatchGrid::moveTo(int index)
{
    current_ = std::clamp(index, 0, itemCount() - 1);
    notifyItemFocused(this);
    emit chosen(namedColors[std::size_t(current_)]);
    update();
}

void SwatchGrid::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        return moveTo(current_ - 1);
    case Qt::Key_Right:
        return moveTo(current_ + 1);
    case Qt::Key_Up:
        return moveTo(current_ < perRow ? current_ : current_ - perRow);
    case Qt::Key_Down:
        return moveTo(current_ < perRow ? current_ + perRow : current_);
    case Qt::Key_Home:
        return moveTo(0);
    case Qt::Key_End:
        return moveTo(itemCount() - 1);
    case Qt::Key_Space:
        return moveTo(current_);
    default:
        QWidget::keyPressEvent(event);
    }
}

void SwatchGrid::mousePressEvent(QMouseEvent* event)
{
    const int index = indexAt(event->position());
    if (event->button() == Qt::LeftButton && index >= 0)
        moveTo(index);
}

void SwatchGrid::mouseMoveEvent(QMouseEvent* event)
{
    const int index = indexAt(event->position());
    setToolTip(index < 0 ? QString() : namedColors[std::size_t(index)].displayName());
}

void SwatchGrid::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double line = 1 / devicePixelRatioF();
    for (int i = 0; i < itemCount(); ++i) {
        const QRectF rect = swatch(i);
        painter.setPen(QPen(themeColor(&ThemeColors::border), line));
        painter.setBrush(ColorText::toQColor(namedColors[std::size_t(i)].color()));
        painter.drawRoundedRect(rect.adjusted(line / 2, line / 2, -line / 2, -line / 2), Radius::box, Radius::box);
        if (chosen_ != std::size_t(i))
            continue;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(themeColor(&ThemeColors::accent), 2));
        painter.drawRoundedRect(rect.adjusted(-3, -3, 3, 3), Radius::control, Radius::control);
    }
}

} // namespace ferrow
