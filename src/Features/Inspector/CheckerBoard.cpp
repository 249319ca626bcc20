// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/CheckerBoard.h"

#include <QColor>
#include <QPainter>

namespace ferrow {

void paintCheckerBoard(QPainter& painter, const QRectF& rect)
{
    constexpr double side = 6;
    painter.save();
    painter.setClipRect(rect, Qt::IntersectClip);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(rect, QColor(0xFF, 0xFF, 0xFF));
    for (int row = 0; row * side < rect.height(); ++row)
        for (int column = row % 2; column * side < rect.width(); column += 2)
            painter.fillRect(QRectF(rect.left() + column * side, rect.top() + row * side, side, side),
                             QColor(0xDE, 0xDE, 0xDE));
    painter.restore();
}

} // namespace ferrow
