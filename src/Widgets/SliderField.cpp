// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/SliderField.h"

#include "Widgets/Theme.h"
#include "Widgets/ValueSlider.h"

#include <QEvent>
#include <QHBoxLayout>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace ferrow {

namespace {

constexpr std::chrono::milliseconds runEnd{500};
constexpr int columnGap = 10;

} // namespace

double steppedWithin(double value, double delta, double least, double greatest)
{
    const double goal = value + delta;
    if (delta > 0)
        return std::max(value, std::min(goal, greatest));
    return std::min(value, std::max(goal, least));
}

SliderField::SliderField(const QString& name, QWidget* parent)
    : QWidget(parent), slider_(new ValueSlider(this)), field_(new NumberField(name + QStringLiteral(" value"), this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(columnGap);
    layout->addWidget(slider_, 1);
    layout->addWidget(field_);

    slider_->setAccessibleName(name);
    field_->setSteps(NumberField::Steps::areTold);
    slider_->installEventFilter(this);
    field_->installEventFilter(this);
    setFocusProxy(slider_);
    burst_.setSingleShot(true);
    burst_.setInterval(runEnd);
    connectParts();
    showValue();
}

void SliderField::connectParts()
{
    connect(slider_, &ValueSlider::dragged, this, [this](double value) { edit(rounded(value)); });
    connect(slider_, &ValueSlider::released, this, &SliderField::endGesture);
    connect(slider_, &ValueSlider::asked, this, [this](double value) { editInRun(value); });
    connect(slider_, &ValueSlider::steps, this, [this](double count) {
        const double delta = count * step_ / field_->format().factor;
        editInRun(steppedWithin(value_, delta, least_, greatest_));
    });
    connect(field_, &NumberField::stepped, this, [this](double delta) {
        const NumberFormat& format = field_->format();
        editInRun(steppedWithin(value_, delta, format.least, format.greatest));
    });
    connect(field_, &NumberField::valueEdited, this, &SliderField::editAlone);
    connect(field_, &NumberField::errorChanged, this, &SliderField::errorChanged);
    connect(&burst_, &QTimer::timeout, this, &SliderField::endGesture);
}

void SliderField::setRange(double least, double greatest)
{
    least_ = least;
    greatest_ = greatest;
    slider_->setValueRange(least, greatest);
}

void SliderField::setFormat(const NumberFormat& format)
{
    field_->setFormat(format);
    showValue();
}

void SliderField::setStep(double step)
{
    step_ = step;
    field_->setStep(step);
}

void SliderField::setNeutral(double value, double catches)
{
    slider_->setNeutral(value, catches);
}

void SliderField::setValue(double value)
{
    value_ = value;
    showValue();
}

QWidget* SliderField::slider() const
{
    return slider_;
}

bool SliderField::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusOut || event->type() == QEvent::EnabledChange || event->type() == QEvent::Hide)
        endGesture();
    return QWidget::eventFilter(watched, event);
}

void SliderField::edit(double value)
{
    if (value == value_)
        return;
    if (!std::exchange(inGesture_, true))
        emit gestureStarted();
    value_ = value;
    showValue();
    emit valueEdited(value);
}

void SliderField::editAlone(double value)
{
    endGesture();
    edit(value);
    endGesture();
}

void SliderField::editInRun(double value)
{
    if (value == value_)
        return;
    edit(rounded(value));
    if (inGesture_)
        burst_.start();
}

void SliderField::endGesture()
{
    burst_.stop();
    if (std::exchange(inGesture_, false))
        emit gestureEnded();
}

void SliderField::showValue()
{
    slider_->showValue(value_, field_->format());
    field_->setValue(value_);
}

/// To the digits that are shown, so that a drag gives 240 and not 240.1867.
double SliderField::rounded(double value) const
{
    const double scale = field_->format().factor * std::pow(10, field_->format().decimals);
    return std::round(value * scale) / scale;
}

} // namespace ferrow
