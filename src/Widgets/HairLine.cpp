// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/HairLine.h"

#include "Widgets/Theme.h"

#include <QPainter>

namespace ferrow {

HairLine::HairLine(Qt::Orientation orientation, QWidget* parent) : QWidget(parent), orientation_(orientation)
{
    const bool isLevel = orientation == Qt::Horizontal;
    setSizePolicy(isLevel ? QSizePolicy::Expanding : QSizePolicy::Fixed,
                  isLevel ? QSizePolicy::Fixed : QSizePolicy::Expanding);
}

QSize HairLine::sizeHint() const
{
    return QSize(1, 1);
}

void HairLine::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), themeColor(&ThemeColors::line));
}

} // namespace ferrow
