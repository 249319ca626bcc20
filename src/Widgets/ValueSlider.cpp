// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ValueSlider.h"

#include "Widgets/AccessibleEvents.h"
#include "Widgets/InputRules.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionSlider>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ferrow {

namespace {

constexpr int positions = 10'000;

} // namespace

ValueSlider::ValueSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent)
{
    setRange(0, positions);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumWidth(Measure::thumb * 3);
}

void ValueSlider::setValueRange(double least, double greatest)
{
    least_ = least;
    greatest_ = greatest;
    showValue(value_, format_);
}

void ValueSlider::showValue(double value, const NumberFormat& format)
{
    const bool isNew = std::exchange(value_, value) != value;
    format_ = format;
    setSliderPosition(positionOf(value));
    if (isNew) {
        QAccessibleValueChangeEvent event(this, format.shown(value));
        sendAccessible(event);
    }
}

void ValueSlider::setNeutral(double value, double catches)
{
    neutral_ = value;
    catches_ = catches;
    update();
}

QString ValueSlider::valueText() const
{
    const QString number = format_.text(value_);
    return format_.unit.isEmpty() ? number : number + QLatin1Char(' ') + format_.unit;
}

QRectF ValueSlider::focusRect() const
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    return style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
}

double ValueSlider::focusRadius() const
{
    return Measure::thumb / 2.0;
}

double ValueSlider::valueAt(double x) const
{
    const double span = std::max(1, width() - Measure::thumb);
    const double share = std::clamp((x - Measure::thumb / 2.0) / span, 0.0, 1.0);
    const double value = least_ + share * (greatest_ - least_);
    return neutral_ && std::abs(value - *neutral_) <= catches_ ? *neutral_ : value;
}

int ValueSlider::positionOf(double value) const
{
    const double range = greatest_ - least_;
    const double share = range > 0 ? std::clamp((value - least_) / range, 0.0, 1.0) : 0;
    return int(std::lround(share * positions));
}

void ValueSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    event->accept();
    const QRectF thumb = focusRect();
    const bool isOnThumb = thumb.contains(event->position());
    grip_ = isOnThumb ? event->position().x() - thumb.center().x() : 0;
    setSliderDown(true);
    if (!isOnThumb)
        emit dragged(valueAt(event->position().x()));
    update();
}

void ValueSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (!isSliderDown()) {
        event->ignore();
        return;
    }
    event->accept();
    emit dragged(valueAt(event->position().x() - grip_));
}

void ValueSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !isSliderDown()) {
        event->ignore();
        return;
    }
    event->accept();
    setSliderDown(false);
    update();
    emit released();
}

void ValueSlider::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!neutral_ || event->button() != Qt::LeftButton) {
        mousePressEvent(event);
        return;
    }
    event->accept();
    emit asked(*neutral_);
}

void ValueSlider::keyPressEvent(QKeyEvent* event)
{
    const double count = event->modifiers() & Qt::ShiftModifier ? 10 : 1;
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Right:
        emit steps(count);
        return;
    case Qt::Key_Down:
    case Qt::Key_Left:
        emit steps(-count);
        return;
    case Qt::Key_PageUp:
        emit steps(10);
        return;
    case Qt::Key_PageDown:
        emit steps(-10);
        return;
    case Qt::Key_Home:
        emit asked(least_);
        return;
    case Qt::Key_End:
        emit asked(greatest_);
        return;
    default:
        event->ignore();
    }
}

void ValueSlider::wheelEvent(QWheelEvent* event)
{
    if (!wheelIsFor(*this, *event)) {
        event->ignore();
        return;
    }
    event->accept();
    if (const int notches = wheelNotches(*event, wheelRest_))
        emit steps(event->modifiers() & Qt::ShiftModifier ? notches * 10 : notches);
}

void ValueSlider::initStyleOption(QStyleOptionSlider* option) const
{
    QSlider::initStyleOption(option);
    if (neutral_) {
        option->tickPosition = QSlider::TicksBothSides;
        option->tickInterval = positionOf(*neutral_);
    }
    if (isSliderDown()) {
        option->state |= QStyle::State_Sunken;
        option->activeSubControls = QStyle::SC_SliderHandle;
    }
}

void ValueSlider::sliderChange(SliderChange change)
{
    QSlider::sliderChange(change);
    FocusRing::refresh(this);
}

} // namespace ferrow
