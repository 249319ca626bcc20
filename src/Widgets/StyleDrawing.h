// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"

#include <QColor>
#include <QIcon>
#include <QRectF>
#include <QStyle>

#include <optional>

class QPainter;
class QStyleOptionMenuItem;
class QStyleOptionSlider;

/// What the style and the widgets of this room are drawn with. Not for views.
namespace ferrow::StyleDrawing {

/// A filled rounded rectangle with an edge inside of it; a transparent color draws nothing.
void paintBox(QPainter& painter, const QRectF& rect, double radius, const QColor& fill,
              const QColor& edge = Qt::transparent, double edgeWidth = 1);

struct ControlState {
    bool enabled = true;
    bool hovered = false;
    bool pressed = false;
    bool focused = false;
    bool checked = false;
    bool isMixed = false; ///< Neither ticked nor unticked.
    bool hasError = false;
    bool isOpen = false; ///< Its popover or menu is open.

    static ControlState of(const QStyleOption* option, const QWidget* widget);
};

struct ButtonLook {
    ButtonRole role = ButtonRole::standard;
    bool isSmall = false;
    bool hasMenu = false;
    QString text;
    QIcon icon;
    ControlState state;
};

/// The font that buttons of that role are lettered in.
[[nodiscard]] QFont buttonFont(const ButtonLook& look);
[[nodiscard]] QSize buttonSize(const ButtonLook& look);
/// `fill` is what buttonFill said, or a step on the way to it.
void paintButton(QPainter& painter, const QRect& rect, const ButtonLook& look, const QColor& fill);
[[nodiscard]] QColor buttonFill(const ButtonLook& look);

/// Ground and edge of a field, a combo box or a well.
void paintField(QPainter& painter, const QRectF& rect, const ControlState& state, double radius = Radius::control);
void paintCheckBox(QPainter& painter, const QRectF& rect, const ControlState& state);
void paintRadioButton(QPainter& painter, const QRectF& rect, const ControlState& state);
void paintSwitch(QPainter& painter, const QRectF& rect, const ControlState& state);
/// Filled up to the thumb from `neutral` on, an x that a tick marks; without one, from the start.
void paintSlider(QPainter& painter, const QRectF& groove, const QRectF& thumb, const ControlState& state,
                 std::optional<double> neutral = std::nullopt);
void paintMenuItem(QPainter& painter, const QStyleOptionMenuItem& option);
[[nodiscard]] QSize menuItemSize(const QStyleOptionMenuItem& option, const QSize& contents);

} // namespace ferrow::StyleDrawing
