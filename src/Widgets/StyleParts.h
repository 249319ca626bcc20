// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QStyle>

class QPainter;
class QStyleOptionComboBox;
class QStyleOptionProgressBar;
class QStyleOptionSlider;

/// The larger of Qt's own controls, as FerrowStyle draws and divides them. Not for views.
namespace ferrow::StyleDrawing {

inline constexpr int fieldPadding = 11;
inline constexpr int scrollBarInset = 2;

/// Popups get round corners where the desktop composes windows; elsewhere the corners would be black.
[[nodiscard]] bool desktopComposes();
void paintPopup(QPainter& painter, const QRect& rect, const QWidget* widget);
void drawComboBox(QPainter& painter, const QStyleOptionComboBox& option, const QWidget* widget);
void drawComboBoxLabel(QPainter& painter, const QStyleOptionComboBox& option, const QStyle& style,
                       const QWidget* widget);
void drawScrollBar(QPainter& painter, const QStyleOptionSlider& option, const QStyle& style, const QWidget* widget);
void drawSlider(QPainter& painter, const QStyleOptionSlider& option, const QStyle& style, const QWidget* widget);
void drawProgress(QPainter& painter, const QStyleOptionProgressBar& option);
/// Ground of a selected or hovered row of a list.
void drawRow(QPainter& painter, const QStyleOption& option);

[[nodiscard]] QRect sliderPart(const QStyleOptionSlider& option, QStyle::SubControl part);
[[nodiscard]] QRect scrollBarPart(const QStyleOptionSlider& option, QStyle::SubControl part);

} // namespace ferrow::StyleDrawing
