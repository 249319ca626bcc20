// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/PickedColor.h"
#include "Widgets/FocusRing.h"

#include <QAbstractSlider>

namespace ferrow {

/// The circle of hues as a bar of 12. Arrows move by 1 %, with Shift by 10 %.
class HueBar : public QAbstractSlider, public FocusShape {
    Q_OBJECT

public:
    /// Drawn beyond the bar: what of the thumb is larger.
    static constexpr int overhang = 8;
    static constexpr int overhangUpright = 3;

    explicit HueBar(QWidget* parent = nullptr);
    /// Emits nothing.
    void setColor(const PickedColor& color);

    QSize sizeHint() const override;
    QRectF focusRect() const override;
    double focusRadius() const override;

signals:
    void dragStarted();
    void edited(const ferrow::PickedColor& color);
    void dragEnded();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    [[nodiscard]] QRectF track() const;
    void follow(double x);
    void step(double by);

    PickedColor color_;
};

} // namespace ferrow
