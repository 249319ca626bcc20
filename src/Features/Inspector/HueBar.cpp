// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/HueBar.h"

#include "Features/Inspector/ColorField.h"
#include "Widgets/InputRules.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr double trackHeight = 12;
constexpr int degrees = 360;
constexpr double keyStep = 0.01;

/// Red is at both ends: hue goes round in a circle.
QLinearGradient rainbow(const QRectF& track)
{
    QLinearGradient gradient(track.topLeft(), track.topRight());
    for (int sixth = 0; sixth <= 6; ++sixth)
        gradient.setColorAt(sixth / 6.0, QColor::fromHsv(sixth % 6 * 60, 255, 255));
    return gradient;
}

} // namespace

HueBar::HueBar(QWidget* parent) : QAbstractSlider(parent)
{
    setAccessibleName(QStringLiteral("Hue"));
    setOrientation(Qt::Horizontal);
    setRange(0, degrees); // As it is read out.
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    // Assistive technology sets the value; all else goes through `step`.
    connect(this, &QAbstractSlider::valueChanged, this, [this](int value) {
        if (std::lround(color_.hue * degrees) != value)
            step(double(value) / degrees - color_.hue);
    });
}

void HueBar::setColor(const PickedColor& color)
{
    color_ = color;
    const QSignalBlocker quiet(this);
    setValue(int(std::lround(color_.hue * degrees)));
    update();
    FocusRing::refresh(this);
}

void HueBar::step(double by)
{
    PickedColor color = color_;
    color.hue = std::clamp(color.hue + by, 0.0, 1.0);
    if (color == color_)
        return;
    setColor(color);
    emit edited(color);
}

QSize HueBar::sizeHint() const
{
    return {256 + 2 * overhang, int(trackHeight) + 2 * overhangUpright};
}

QRectF HueBar::track() const
{
    const double top = (height() - trackHeight) / 2;
    return {double(overhang), top, double(width() - 2 * overhang), trackHeight};
}

void HueBar::keyPressEvent(QKeyEvent* event)
{
    const double by = event->modifiers() & Qt::ShiftModifier ? 10 * keyStep : keyStep;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        return step(-by);
    case Qt::Key_Right:
    case Qt::Key_Up:
        return step(by);
    case Qt::Key_PageDown:
        return step(-10 * keyStep);
    case Qt::Key_PageUp:
        return step(10 * keyStep);
    case Qt::Key_Home:
        return step(-1);
    case Qt::Key_End:
        return step(1);
    default:
        // The slider's own keys would count in degrees.
        QWidget::keyPressEvent(event);
    }
}

void HueBar::wheelEvent(QWheelEvent* event)
{
    if (!wheelIsFor(*this, *event))
        return event->ignore();
    const int angle = event->angleDelta().y() != 0 ? event->angleDelta().y() : event->angleDelta().x();
    step(keyStep * angle / int(QWheelEvent::DefaultDeltasPerStep));
    event->accept();
}

void HueBar::follow(double x)
{
    const QRectF area = track();
    step(std::clamp((x - area.left()) / area.width(), 0.0, 1.0) - color_.hue);
}

void HueBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    emit dragStarted();
    follow(event->position().x());
}

void HueBar::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        follow(event->position().x());
}

void HueBar::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        emit dragEnded();
}

QRectF HueBar::focusRect() const
{
    const QRectF area = track();
    const QPointF center(area.left() + color_.hue * area.width(), area.center().y());
    return {center.x() - 8, center.y() - 8, 16, 16};
}

double HueBar::focusRadius() const
{
    return 8;
}

void HueBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = track();
    painter.setPen(Qt::NoPen);
    painter.setBrush(rainbow(area));
    painter.drawRoundedRect(area, trackHeight / 2, trackHeight / 2);
    paintColorThumb(painter, focusRect().center(), strongestOf(color_.hue));
}

} // namespace ferrow
