// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/FocusRing.h"
#include "Widgets/Theme.h"

#include <QCheckBox>

namespace ferrow {

/// A switch of 34 x 20: `name` is for assistive technology. A text set on it stands before it and is pressed with it.
/// Space and Enter toggle it; `clicked` tells the user's hand, `toggled` any change.
class ToggleSwitch : public QCheckBox, public FocusShape {
    Q_OBJECT

public:
    explicit ToggleSwitch(const QString& name, QWidget* parent = nullptr);

    /// Of the text; `text` from the start. Labels of a form have `text2`.
    void setTextColor(ColorRole color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    QRectF focusRect() const override;
    double focusRadius() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool hitButton(const QPoint& point) const override;

private:
    ColorRole textColor_ = &ThemeColors::text;
};

} // namespace ferrow
