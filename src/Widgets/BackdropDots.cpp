// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/BackdropDots.h"

#include "Widgets/StyleDrawing.h"
#include "Widgets/Theme.h"

#include <QPainter>

namespace ferrow {

namespace {

constexpr int dot = 14;

} // namespace

BackdropDots::BackdropDots(const QString& name, const QStringList& names, QWidget* parent)
    : ChoiceStrip(name, names, parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize BackdropDots::sizeHint() const
{
    return QSize(itemRect(itemCount() - 1).right() + 1, Measure::hitArea);
}

QRect BackdropDots::itemRect(int index) const
{
    return QRect(index * (Measure::hitArea + Space::rowGap), 0, Measure::hitArea, Measure::hitArea);
}

void BackdropDots::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    for (int i = 0; i < itemCount(); ++i) {
        QRectF circle(0, 0, dot, dot);
        circle.moveCenter(QRectF(itemRect(i)).center());
        const QColor edge = themeColor(i == hovered() ? &ThemeColors::text : &ThemeColors::border);
        StyleDrawing::paintBox(painter, circle, dot / 2.0, Theme::backdrops().at(i), edge);
        if (i == currentIndex()) {
            StyleDrawing::paintBox(painter, circle.adjusted(-4, -4, 4, 4), dot, Qt::transparent,
                                   themeColor(&ThemeColors::accent), 2);
        }
    }
}

} // namespace ferrow
