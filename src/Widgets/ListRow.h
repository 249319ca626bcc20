// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>

class QPainter;
class QStyleOption;

namespace ferrow {

/// Ground and focus ring of a row of a list.
void paintListRow(QPainter& painter, const QRectF& row, const QStyleOption& option, bool isHovered);

} // namespace ferrow
