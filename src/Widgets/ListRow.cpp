// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/ListRow.h"

#include "Widgets/FocusRing.h"
#include "Widgets/StyleDrawing.h"
#include "Widgets/Theme.h"

#include <QPainter>
#include <QStyleOption>

namespace ferrow {

void paintListRow(QPainter& painter, const QRectF& row, const QStyleOption& option, bool isHovered)
{
    const bool isSelected = option.state & QStyle::State_Selected;
    if (isSelected || isHovered) {
        StyleDrawing::paintBox(painter, row, Radius::row,
                               themeColor(isSelected ? &ThemeColors::selection : &ThemeColors::fill));
    }
    if (option.state & QStyle::State_HasFocus && FocusRing::isKeyboardFocus()) {
        StyleDrawing::paintBox(painter, row, Radius::row, Qt::transparent, themeColor(&ThemeColors::accent),
                               Measure::focusWidth);
    }
}

} // namespace ferrow
