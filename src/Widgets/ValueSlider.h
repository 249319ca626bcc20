// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/FocusRing.h"
#include "Widgets/NumberField.h"

#include <QSlider>

namespace ferrow {

/// The slider inside a SliderField: its positions are ten-thousandths of the range, the value beside them is exact and
/// may lie outside. It asks for changes and shows what it is told.
class ValueSlider : public QSlider, public FocusShape {
    Q_OBJECT

public:
    explicit ValueSlider(QWidget* parent);

    void setValueRange(double least, double greatest);
    void showValue(double value, const NumberFormat& format);
    /// As SliderField's.
    void setNeutral(double value, double catches);

    [[nodiscard]] double shownValue() const { return value_; }
    [[nodiscard]] double leastValue() const { return least_; }
    [[nodiscard]] double greatestValue() const { return greatest_; }
    [[nodiscard]] const NumberFormat& format() const { return format_; }
    [[nodiscard]] QString valueText() const;
    /// By assistive technology.
    void request(double value) { emit asked(value); }

    QRectF focusRect() const override;
    double focusRadius() const override;

signals:
    void dragged(double value);
    void released();
    /// By assistive technology, Home or End.
    void asked(double value);
    void steps(double count);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void sliderChange(SliderChange change) override;
    void initStyleOption(QStyleOptionSlider* option) const override;

private:
    [[nodiscard]] double valueAt(double x) const;
    [[nodiscard]] int positionOf(double value) const;

    NumberFormat format_;
    double least_ = 0;
    double greatest_ = 100;
    double value_ = 0;
    std::optional<double> neutral_;
    double catches_ = 0;
    double grip_ = 0; ///< Where on the thumb the pointer holds it, from its middle.
    int wheelRest_ = 0;
};

} // namespace ferrow
