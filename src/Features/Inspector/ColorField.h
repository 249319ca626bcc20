// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/PickedColor.h"
#include "Widgets/AccessibleItems.h"
#include "Widgets/FocusRing.h"

#include <QWidget>

namespace ferrow {

/// Saturation across, brightness upwards, of one hue. Arrows move by 1 %, with Shift by 10 %.
class ColorField : public QWidget, public AccessibleItems, public FocusShape {
    Q_OBJECT

public:
    /// Drawn beyond the field on every side: half a thumb.
    static constexpr int overhang = 8;
    static constexpr int fieldHeight = 140;

    explicit ColorField(QWidget* parent = nullptr);
    /// Emits nothing.
    void setColor(const PickedColor& color);

    QSize sizeHint() const override;
    /// Two: saturation and brightness.
    int itemCount() const override { return 2; }
    AccessibleItem item(int index) const override;
    int focusedItem() const override { return lastItem_; }
    void pressItem(int index) override;
    void setItemValue(int index, double value) override;
    QRectF focusRect() const override;
    double focusRadius() const override;

signals:
    void dragStarted();
    void edited(const ferrow::PickedColor& color);
    void dragEnded();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    [[nodiscard]] QRectF field() const;
    [[nodiscard]] QPointF thumb() const;
    void follow(QPointF point);
    void edit(const PickedColor& color, int item);

    PickedColor color_;
    int lastItem_ = 0; ///< Saturation or brightness: what the last key changed.
};

/// The fullest and brightest color of a hue.
[[nodiscard]] QColor strongestOf(double hue);

/// The thumb of field and hue bar: a ring that shows on any color, filled with the picked one.
void paintColorThumb(QPainter& painter, QPointF center, const QColor& color);

} // namespace ferrow
