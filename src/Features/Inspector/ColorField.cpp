// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/ColorField.h"

#include "Widgets/ColorWell.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ferrow {

namespace {

constexpr double keyStep = 0.01;
constexpr int saturationItem = 0;
constexpr int brightnessItem = 1;

QLinearGradient between(QPointF start, QPointF end, const QColor& first, const QColor& last)
{
    QLinearGradient gradient(start, end);
    gradient.setColorAt(0, first);
    gradient.setColorAt(1, last);
    return gradient;
}

} // namespace

QColor strongestOf(double hue)
{
    // A whole turn is no hue to Qt.
    return QColor::fromHsvF(float(std::min(hue, 0.9999)), 1, 1);
}

void paintColorThumb(QPainter& painter, QPointF center, const QColor& color)
{
    painter.setPen(QPen(QColor(0, 0, 0, 170), 1));
    painter.setBrush(color);
    painter.drawEllipse(center, 7.5, 7.5);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, 2));
    painter.drawEllipse(center, 6, 6);
    painter.setPen(QPen(QColor(0, 0, 0, 110), 1));
    painter.drawEllipse(center, 4.5, 4.5);
}

ColorField::ColorField(QWidget* parent) : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Saturation and brightness"));
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ColorField::setColor(const PickedColor& color)
{
    if (color == color_)
        return;
    color_ = color;
    notifyItemsChanged(this);
    update();
    FocusRing::refresh(this);
}

QSize ColorField::sizeHint() const
{
    return {256 + 2 * overhang, fieldHeight + 2 * overhang};
}

QRectF ColorField::field() const
{
    return QRectF(rect()).adjusted(overhang, overhang, -overhang, -overhang);
}

QPointF ColorField::thumb() const
{
    const QRectF area = field();
    return {area.left() + color_.saturation * area.width(), area.bottom() - color_.brightness * area.height()};
}

AccessibleItem ColorField::item(int index) const
{
    AccessibleItem item;
    item.role = QAccessible::Slider;
    item.name = index == saturationItem ? QStringLiteral("Saturation") : QStringLiteral("Brightness");
    item.description = QStringLiteral("%");
    item.rect = field().toRect();
    item.value.emplace().now = std::round((index == saturationItem ? color_.saturation : color_.brightness) * 100);
    return item;
}

void ColorField::pressItem(int index)
{
    lastItem_ = index;
    setFocus(Qt::OtherFocusReason);
    notifyItemFocused(this);
}

void ColorField::setItemValue(int index, double value)
{
    PickedColor color = color_;
    (index == saturationItem ? color.saturation : color.brightness) = value / 100;
    edit(color, index);
}

void ColorField::edit(const PickedColor& color, int item)
{
    if (std::exchange(lastItem_, item) != item)
        notifyItemFocused(this);
    if (color == color_)
        return;
    setColor(color);
    emit edited(color);
}

void ColorField::keyPressEvent(QKeyEvent* event)
{
    const double step = event->modifiers() & Qt::ShiftModifier ? 10 * keyStep : keyStep;
    switch (event->key()) {
    case Qt::Key_Left:
        edit(color_.moved(-step, 0), saturationItem);
        break;
    case Qt::Key_Right:
        edit(color_.moved(step, 0), saturationItem);
        break;
    case Qt::Key_Up:
        edit(color_.moved(0, step), brightnessItem);
        break;
    case Qt::Key_Down:
        edit(color_.moved(0, -step), brightnessItem);
        break;
    default:
        return QWidget::keyPressEvent(event);
    }
}

void ColorField::follow(QPointF point)
{
    const QRectF area = field();
    PickedColor color = color_;
    color.saturation = std::clamp((point.x() - area.left()) / area.width(), 0.0, 1.0);
    color.brightness = std::clamp((area.bottom() - point.y()) / area.height(), 0.0, 1.0);
    edit(color, lastItem_);
}

void ColorField::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    emit dragStarted();
    follow(event->position());
}

void ColorField::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        follow(event->position());
}

void ColorField::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        emit dragEnded();
}

QRectF ColorField::focusRect() const
{
    const QPointF center = thumb();
    return {center.x() - 8, center.y() - 8, 16, 16};
}

double ColorField::focusRadius() const
{
    return 8;
}

void ColorField::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = field();
    painter.setPen(Qt::NoPen);
    painter.setBrush(between(area.topLeft(), area.topRight(), Qt::white, strongestOf(color_.hue)));
    painter.drawRoundedRect(area, Radius::control, Radius::control);
    painter.setBrush(between(area.topLeft(), area.bottomLeft(), QColor(0, 0, 0, 0), Qt::black));
    painter.drawRoundedRect(area, Radius::control, Radius::control);

    const double line = 1 / devicePixelRatioF();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(themeColor(&ThemeColors::border), line));
    painter.drawRoundedRect(area.adjusted(line / 2, line / 2, -line / 2, -line / 2), Radius::control, Radius::control);

    RGBAColor opaque = color_.color();
    opaque.alpha = 1;
    paintColorThumb(painter, thumb(), ColorText::toQColor(opaque));
}

} // namespace ferrow
