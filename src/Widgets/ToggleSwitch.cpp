// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ToggleSwitch.h"

#include "Widgets/StyleDrawing.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionButton>

#include <algorithm>

namespace ferrow {

ToggleSwitch::ToggleSwitch(const QString& name, QWidget* parent) : QCheckBox(parent)
{
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ToggleSwitch::setTextColor(ColorRole color)
{
    textColor_ = color;
    update();
}

QSize ToggleSwitch::sizeHint() const
{
    if (text().isEmpty())
        return QSize(Measure::switchWidth, Measure::hitArea);
    const QFontMetrics metrics(Theme::current().font(TextRole::body));
    return QSize(metrics.horizontalAdvance(text()) + Space::row + Measure::switchWidth,
                 std::max(Measure::hitArea, Theme::current().lineHeight(TextRole::body)));
}

QSize ToggleSwitch::minimumSizeHint() const
{
    return sizeHint();
}

QRectF ToggleSwitch::focusRect() const
{
    return QRectF(width() - Measure::switchWidth, (height() - Measure::switchHeight) / 2, Measure::switchWidth,
                  Measure::switchHeight);
}

double ToggleSwitch::focusRadius() const
{
    return Measure::switchHeight / 2.0;
}

void ToggleSwitch::paintEvent(QPaintEvent*)
{
    QStyleOptionButton option;
    initStyleOption(&option);
    QPainter painter(this);
    StyleDrawing::paintSwitch(painter, focusRect(), StyleDrawing::ControlState::of(&option, this));
    painter.setFont(Theme::current().font(TextRole::body));
    painter.setPen(themeColor(isEnabled() ? textColor_ : &ThemeColors::disabled));
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter, text());
}

void ToggleSwitch::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QCheckBox::keyPressEvent(event);
}

bool ToggleSwitch::hitButton(const QPoint& point) const
{
    return rect().contains(point);
}

} // namespace ferrow
