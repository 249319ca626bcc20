// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/StyleDrawing.h"

#include "Widgets/FocusRing.h"
#include "Widgets/Icons.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace ferrow::StyleDrawing {

namespace {

constexpr int textPadding = 12;
constexpr int mainPadding = 14;
constexpr int iconPadding = 8;
constexpr int iconGap = 6;
constexpr int chevron = 16;

const ThemeColors& colors()
{
    return Theme::current().colors();
}

int iconSide(const ButtonLook& look)
{
    return look.isSmall ? Measure::fieldIcon : Measure::icon;
}

int controlHeight(bool isSmall)
{
    return Theme::current().scaled(isSmall ? Measure::smallControl : Measure::control);
}

int textPaddingOf(const ButtonLook& look)
{
    return look.role == ButtonRole::main && !look.isSmall ? mainPadding : textPadding;
}

/// Width of icon, text and chevron with what lies between them.
int contentWidth(const ButtonLook& look)
{
    int width = look.text.isEmpty() ? 0 : QFontMetrics(buttonFont(look)).horizontalAdvance(look.text);
    if (!look.icon.isNull())
        width += iconSide(look) + (look.text.isEmpty() ? 0 : iconGap);
    if (look.hasMenu)
        width += chevron + iconGap;
    return width;
}

QColor buttonTextColor(const ButtonLook& look)
{
    if (!look.state.enabled)
        return colors().disabled;
    switch (look.role) {
    case ButtonRole::main:
        return colors().onInk;
    case ButtonRole::destructive:
        return colors().error;
    case ButtonRole::link:
        return colors().accent;
    case ButtonRole::standard:
    case ButtonRole::raised:
    case ButtonRole::flat:
        return colors().text;
    }
    Q_UNREACHABLE();
}

QColor grayFill(const ControlState& state, const QColor& rest)
{
    if (!state.enabled)
        return rest;
    return state.pressed || state.checked ? colors().pressed : state.hovered || state.isOpen ? colors().hover : rest;
}

QColor mainFill(const ControlState& state)
{
    if (!state.enabled)
        return colors().fill;
    return state.pressed ? colors().inkPressed : state.hovered ? colors().inkHover : colors().ink;
}

void paintButtonIcon(QPainter& painter, const QRect& rect, const ButtonLook& look)
{
    const bool isOnInk = look.role == ButtonRole::main && look.state.enabled;
    const double scale = painter.device()->devicePixelRatioF();
    QPixmap pixmap = look.icon.pixmap(rect.size(), scale, look.state.enabled ? QIcon::Normal : QIcon::Disabled);
    if (isOnInk) {
        QPainter tint(&pixmap);
        tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
        tint.fillRect(QRect(QPoint(), rect.size()), colors().onInk);
    }
    painter.drawPixmap(rect, pixmap);
}

double bounded(const QRectF& rect, double radius)
{
    return std::min(radius, std::min(rect.width(), rect.height()) / 2);
}

QColor onColor(const ControlState& state)
{
    return state.hovered || state.pressed ? colors().text : colors().on;
}

QColor offFill(const ControlState& state)
{
    return state.pressed ? colors().pressed : colors().surface;
}

QColor controlEdge(const ControlState& state)
{
    return state.hovered || state.pressed ? colors().text : colors().border;
}

/// Draws with the opacity of what cannot be used.
class Dimmed {
public:
    Dimmed(QPainter& painter, bool enabled) : painter_(painter), before_(painter.opacity())
    {
        painter_.setOpacity(enabled ? before_ : before_ * disabledOpacity);
    }
    ~Dimmed() { painter_.setOpacity(before_); }
    Dimmed(const Dimmed&) = delete;
    Dimmed& operator=(const Dimmed&) = delete;

private:
    QPainter& painter_;
    double before_;
};

} // namespace

ControlState ControlState::of(const QStyleOption* option, const QWidget* widget)
{
    ControlState state;
    state.enabled = option->state & QStyle::State_Enabled;
    state.hovered = state.enabled && (option->state & QStyle::State_MouseOver);
    state.pressed = state.enabled && (option->state & QStyle::State_Sunken);
    state.focused = state.enabled && (option->state & QStyle::State_HasFocus);
    state.checked = option->state & QStyle::State_On;
    state.isMixed = option->state & QStyle::State_NoChange;
    state.hasError = widget && widget->property("ferrowError").toBool();
    state.isOpen = widget && widget->property("ferrowOpen").toBool();
    return state;
}

void paintBox(QPainter& painter, const QRectF& rect, double radius, const QColor& fill, const QColor& edge,
              double edgeWidth)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const bool hasEdge = edge.alpha() > 0;
    if (fill.alpha() > 0) {
        // Under an edge the fill stays inside of its middle, or its color would shine through the corners.
        const double inset = hasEdge ? edgeWidth / 2 : 0;
        const QRectF inner = rect.adjusted(inset, inset, -inset, -inset);
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(inner, bounded(inner, radius - inset), bounded(inner, radius - inset));
    }
    if (hasEdge) {
        const double inset = edgeWidth / 2;
        const QRectF inner = rect.adjusted(inset, inset, -inset, -inset);
        painter.setPen(QPen(edge, edgeWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(inner, bounded(inner, radius - inset), bounded(inner, radius - inset));
    }
    painter.restore();
}

QFont buttonFont(const ButtonLook& look)
{
    const bool isSmall = look.isSmall || look.role == ButtonRole::link;
    QFont font = Theme::current().font(isSmall ? TextRole::small : TextRole::strong);
    font.setWeight(look.role == ButtonRole::main ? QFont::DemiBold : QFont::Medium);
    return font;
}

QSize buttonSize(const ButtonLook& look)
{
    const int height = controlHeight(look.isSmall);
    if (look.role == ButtonRole::link)
        return QSize(contentWidth(look) + Space::iconEdge, Measure::hitArea);
    if (look.text.isEmpty() && !look.hasMenu)
        return QSize(height, height);
    const int after = look.hasMenu ? iconPadding : textPaddingOf(look);
    const int before = look.icon.isNull() ? textPaddingOf(look) : iconPadding;
    return QSize(before + contentWidth(look) + after, height);
}

QColor buttonFill(const ButtonLook& look)
{
    switch (look.role) {
    case ButtonRole::main:
        return mainFill(look.state);
    case ButtonRole::flat: {
        QColor none = colors().fill;
        none.setAlpha(0);
        return grayFill(look.state, none);
    }
    case ButtonRole::link:
        return Qt::transparent;
    case ButtonRole::raised:
        return grayFill(look.state, colors().raised);
    case ButtonRole::standard:
    case ButtonRole::destructive:
        return grayFill(look.state, colors().fill);
    }
    Q_UNREACHABLE();
}

void paintButton(QPainter& painter, const QRect& rect, const ButtonLook& look, const QColor& fill)
{
    const bool isBare = look.role == ButtonRole::link || (look.role == ButtonRole::flat && fill.alpha() == 0);
    const QColor edge = look.state.isOpen ? colors().accent : isBare ? QColor(Qt::transparent) : colors().fillEdge;
    paintBox(painter, rect, Radius::control, fill, edge, look.state.isOpen ? Measure::focusWidth : 1);

    painter.save();
    QFont font = buttonFont(look);
    font.setUnderline(look.role == ButtonRole::link && look.state.hovered);
    painter.setFont(font);
    painter.setPen(buttonTextColor(look));
    const int free = rect.width() - contentWidth(look);
    const int padding = look.hasMenu || !look.icon.isNull() ? iconPadding : textPaddingOf(look);
    // Icon and text side lean a little apart from each other, as the icon's box has air of its own.
    const int lean =
        !look.icon.isNull() && !look.text.isEmpty() && !look.hasMenu ? (textPaddingOf(look) - iconPadding) / 2 : 0;
    int x = rect.left() + std::max(std::min(padding, free), free / 2 - lean);
    const int right = rect.right() + 1;
    if (!look.icon.isNull()) {
        const int side = iconSide(look);
        paintButtonIcon(painter, QRect(x, rect.center().y() + 1 - side / 2, side, side), look);
        x += side + iconGap;
    }
    if (!look.text.isEmpty()) {
        const int width = right - x - (look.hasMenu ? chevron + iconGap : 0);
        const QString shown = painter.fontMetrics().elidedText(look.text, Qt::ElideRight, std::max(0, width));
        painter.drawText(QRect(x, rect.top(), width, rect.height()), Qt::AlignVCenter | Qt::TextSingleLine, shown);
    }
    if (look.hasMenu) {
        const QRect box(right - iconPadding - chevron, rect.top(), chevron, rect.height());
        paintIcon(painter, IconName::chevronDown, box, chevron, painter.pen().color());
    }
    painter.restore();
}

void paintField(QPainter& painter, const QRectF& rect, const ControlState& state, double radius)
{
    if (!state.enabled) {
        paintBox(painter, rect, radius, Qt::transparent, colors().line);
        return;
    }
    const bool isAccented = state.focused || state.isOpen;
    const QColor edge = state.hasError  ? colors().error
                        : isAccented    ? colors().accent
                        : state.hovered ? colors().hoverEdge
                                        : colors().border;
    paintBox(painter, rect, radius, colors().surface, edge, isAccented || state.hasError ? Measure::focusWidth : 1);
}

void paintCheckBox(QPainter& painter, const QRectF& rect, const ControlState& state)
{
    const Dimmed dimmed(painter, state.enabled);
    if (!state.checked && !state.isMixed) {
        paintBox(painter, rect, Radius::box, offFill(state), controlEdge(state));
        return;
    }
    paintBox(painter, rect, Radius::box, onColor(state));
    painter.save();
    painter.setOpacity(1);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors().onMark, 1.75, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF corner = rect.topLeft();
    if (state.isMixed)
        painter.drawLine(corner + QPointF(4.5, 8), corner + QPointF(11.5, 8));
    else
        painter.drawPolyline(QPolygonF{corner + QPointF(4, 8.4), corner + QPointF(6.9, 11.3), corner + QPointF(12, 5)});
    painter.restore();
}

void paintRadioButton(QPainter& painter, const QRectF& rect, const ControlState& state)
{
    const Dimmed dimmed(painter, state.enabled);
    if (!state.checked) {
        paintBox(painter, rect, rect.width() / 2, offFill(state), controlEdge(state));
        return;
    }
    paintBox(painter, rect, rect.width() / 2, onColor(state));
    const double inset = rect.width() * 0.32;
    paintBox(painter, rect.adjusted(inset, inset, -inset, -inset), rect.width(), colors().onMark);
}

void paintSwitch(QPainter& painter, const QRectF& rect, const ControlState& state)
{
    const Dimmed dimmed(painter, state.enabled);
    constexpr double knob = 12;
    const double inset = (rect.height() - knob) / 2;
    const QRectF knobRect(state.checked ? rect.right() - inset - knob : rect.left() + inset, rect.top() + inset, knob,
                          knob);
    if (state.checked) {
        paintBox(painter, rect, rect.height() / 2, onColor(state));
        paintBox(painter, knobRect, knob / 2, colors().onMark);
    } else {
        paintBox(painter, rect, rect.height() / 2, offFill(state), controlEdge(state));
        paintBox(painter, knobRect, knob / 2, colors().border);
    }
}

void paintSlider(QPainter& painter, const QRectF& groove, const QRectF& thumb, const ControlState& state,
                 std::optional<double> neutral)
{
    const Dimmed dimmed(painter, state.enabled);
    const double at = thumb.center().x();
    const double from = neutral.value_or(groove.left());
    const QRectF filled(std::min(from, at), groove.top(), std::abs(at - from), groove.height());
    paintBox(painter, groove, groove.height() / 2, colors().groove);
    paintBox(painter, filled, neutral ? 0 : groove.height() / 2, colors().on);
    if (neutral) {
        constexpr double tickHeight = 12;
        paintBox(painter, QRectF(from - 0.5, groove.center().y() - tickHeight / 2, 1, tickHeight), 0, colors().border);
    }
    // The thumb covers the groove also while it is dimmed.
    painter.save();
    painter.setOpacity(1);
    const bool isActive = state.hovered || state.pressed;
    const QColor fill = state.pressed ? colors().fill : state.enabled ? colors().thumb : colors().window;
    paintBox(painter, thumb, thumb.width() / 2, fill);
    painter.restore();
    const bool needsEdge = isActive || !state.enabled || colors().thumb == colors().surface ||
                           Theme::current().contrast() == Contrast::more;
    paintBox(painter, thumb, thumb.width() / 2, Qt::transparent,
             needsEdge ? (isActive ? colors().text : colors().border) : QColor(Qt::transparent));
}

namespace {

constexpr int menuPadding = 10;
constexpr int menuColumn = 28;

bool hasLeadingColumn(const QStyleOptionMenuItem& option)
{
    return option.menuHasCheckableItems || option.maxIconWidth > 0;
}

} // namespace

QSize menuItemSize(const QStyleOptionMenuItem& option, const QSize& contents)
{
    if (option.menuItemType == QStyleOptionMenuItem::Separator)
        return QSize(contents.width(), 2 * Space::iconEdge + 1);
    const int shortcutGap = option.text.contains(QLatin1Char('\t')) ? Space::sheet : 0;
    const int width = contents.width() + shortcutGap + 2 * menuPadding + Space::group +
                      (hasLeadingColumn(option) ? menuColumn : 0) +
                      (option.menuItemType == QStyleOptionMenuItem::SubMenu ? chevron : 0);
    return QSize(width, controlHeight(true) + 2);
}

void paintMenuItem(QPainter& painter, const QStyleOptionMenuItem& option)
{
    const QRect rect = option.rect;
    if (option.menuItemType == QStyleOptionMenuItem::Separator) {
        painter.fillRect(QRect(rect.left(), rect.center().y(), rect.width(), 1), colors().line);
        return;
    }
    const bool enabled = option.state & QStyle::State_Enabled;
    if (enabled && (option.state & QStyle::State_Selected))
        paintBox(painter, rect, Radius::control, colors().hover, colors().fillEdge);
    painter.save();
    painter.setFont(option.font);
    painter.setPen(enabled ? colors().text : colors().disabled);
    QRect inner = rect.adjusted(menuPadding, 0, -menuPadding, 0);
    if (hasLeadingColumn(option)) {
        const QRect column(inner.left(), inner.top(), Measure::icon, inner.height());
        if (!option.icon.isNull())
            option.icon.paint(&painter, column, Qt::AlignCenter, enabled ? QIcon::Normal : QIcon::Disabled);
        // In the icons' column, or where there is one, at the end.
        if (option.checked && !option.icon.isNull()) {
            const QRect end(inner.right() + 1 - Measure::fieldIcon, inner.top(), Measure::fieldIcon, inner.height());
            paintIcon(painter, IconName::check, end, Measure::fieldIcon, painter.pen().color());
            inner.setRight(end.left() - Space::group);
        } else if (option.checked) {
            paintIcon(painter, IconName::check, column, Measure::fieldIcon, painter.pen().color());
        }
        inner.setLeft(inner.left() + menuColumn);
    }
    const QStringList texts = option.text.split(QLatin1Char('\t'));
    constexpr int flags = Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic;
    painter.drawText(inner, flags | Qt::AlignLeft, texts.value(0));
    if (option.menuItemType == QStyleOptionMenuItem::SubMenu) {
        const QRect box(inner.right() - chevron + 1, inner.top(), chevron, inner.height());
        paintIcon(painter, IconName::chevronRight, box, chevron, painter.pen().color());
    } else if (texts.size() > 1) {
        painter.setPen(enabled ? colors().text2 : colors().disabled);
        painter.drawText(inner, flags | Qt::AlignRight, texts.value(1));
    }
    painter.restore();
}

} // namespace ferrow::StyleDrawing
