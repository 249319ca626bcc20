// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QPainter;
class QRectF;

namespace ferrow {

/// The pattern that means transparent, in squares of 6, the same in light and dark: it stands for what lies under a
/// picture, not for a part of the window.
void paintCheckerBoard(QPainter& painter, const QRectF& rect);

} // namespace ferrow
