// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

class QWidget;

/// Lets the fill of buttons change within 80 ms instead of at once. Not for views.
namespace ferrow::FillFade {

/// The fill to draw now on the way to `target`; asks the widget to draw itself again until it is reached. A widget's
/// first fill, and every fill while motion is reduced or the widget is hidden, is `target` itself.
[[nodiscard]] QColor step(const QWidget* widget, const QColor& target);

} // namespace ferrow::FillFade
