// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/StyleParts.h"

#include "Widgets/Icons.h"
#include "Widgets/StyleDrawing.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSlider>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>
#include <optional>

namespace ferrow::StyleDrawing {

namespace {

constexpr int chevron = 16;

const ThemeColors& colors()
{
    return Theme::current().colors();
}

} // namespace

bool desktopComposes()
{
    static const bool composes = QGuiApplication::platformName().startsWith(QLatin1StringView("wayland")) ||
                                 qEnvironmentVariableIsSet("XDG_CURRENT_DESKTOP");
    return composes;
}

void paintPopup(QPainter& painter, const QRect& rect, const QWidget* widget)
{
    const bool isRound = widget && widget->testAttribute(Qt::WA_TranslucentBackground);
    paintBox(painter, rect, isRound ? Radius::row : 0, colors().raised, colors().popoverEdge);
    if (!isRound && colors().popoverEdge.alpha() < 255)
        paintBox(painter, rect, 0, colors().raised, colors().groove);
}

void drawComboBox(QPainter& painter, const QStyleOptionComboBox& option, const QWidget* widget)
{
    const ControlState state = ControlState::of(&option, widget);
    paintField(painter, option.rect, state);
    const QRect box(option.rect.right() - Space::group - chevron + 1, option.rect.top(), chevron, option.rect.height());
    paintIcon(painter, IconName::chevronDown, box, chevron, state.enabled ? colors().text : colors().disabled);
}

void drawComboBoxLabel(QPainter& painter, const QStyleOptionComboBox& option, const QStyle& style,
                       const QWidget* widget)
{
    if (option.editable)
        return;
    QRect rect = style.subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, widget);
    const bool enabled = option.state & QStyle::State_Enabled;
    if (!option.currentIcon.isNull()) {
        const QRect box(rect.left(), rect.top(), Measure::fieldIcon, rect.height());
        option.currentIcon.paint(&painter, box, Qt::AlignCenter, enabled ? QIcon::Normal : QIcon::Disabled);
        rect.setLeft(box.right() + Space::group);
    }
    painter.setPen(enabled ? colors().text : colors().disabled);
    const QString shown = option.fontMetrics.elidedText(option.currentText, Qt::ElideRight, rect.width());
    painter.drawText(rect, Qt::AlignVCenter | Qt::TextSingleLine | Qt::AlignLeft, shown);
}

void drawScrollBar(QPainter& painter, const QStyleOptionSlider& option, const QStyle& style, const QWidget* widget)
{
    if (option.maximum <= option.minimum)
        return;
    QRectF thumb = style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, widget);
    const bool isUpright = option.orientation == Qt::Vertical;
    thumb = isUpright ? thumb.adjusted(scrollBarInset, 2, -scrollBarInset, -2)
                      : thumb.adjusted(2, scrollBarInset, -2, -scrollBarInset);
    const bool isActive =
        option.state & QStyle::State_Sunken ||
        (option.state & QStyle::State_MouseOver && option.activeSubControls & QStyle::SC_ScrollBarSlider);
    paintBox(painter, thumb, Measure::scrollBar / 2.0, isActive ? colors().border : colors().groove);
}

void drawSlider(QPainter& painter, const QStyleOptionSlider& option, const QStyle& style, const QWidget* widget)
{
    QRectF groove = style.subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, widget);
    const QRectF thumb = style.subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, widget);
    ControlState state = ControlState::of(&option, widget);
    state.pressed =
        state.enabled && (option.state & QStyle::State_Sunken) && option.activeSubControls & QStyle::SC_SliderHandle;
    if (option.orientation == Qt::Horizontal) {
        groove = QRectF(groove.left(), groove.center().y() - Measure::groove / 2.0, groove.width(), Measure::groove);
        // Of its ticks there is one, where the interval says.
        std::optional<double> neutral;
        if (option.tickPosition != QSlider::NoTicks)
            neutral = groove.left() + Measure::thumb / 2.0 +
                      QStyle::sliderPositionFromValue(option.minimum, option.maximum, option.tickInterval,
                                                      int(groove.width()) - Measure::thumb, option.upsideDown);
        paintSlider(painter, groove, thumb, state, neutral);
    }
}

QRect sliderPart(const QStyleOptionSlider& option, QStyle::SubControl part)
{
    const QRect rect = option.rect;
    if (part == QStyle::SC_SliderGroove)
        return rect;
    const int span = rect.width() - Measure::thumb;
    const int at =
        QStyle::sliderPositionFromValue(option.minimum, option.maximum, option.sliderPosition, span, option.upsideDown);
    return QRect(rect.left() + at, rect.top() + (rect.height() - Measure::thumb) / 2, Measure::thumb, Measure::thumb);
}

QRect scrollBarPart(const QStyleOptionSlider& option, QStyle::SubControl part)
{
    const bool isUpright = option.orientation == Qt::Vertical;
    const int length = isUpright ? option.rect.height() : option.rect.width();
    const int range = option.maximum - option.minimum;
    const double share = option.pageStep / std::max(1.0, double(range) + option.pageStep);
    const int thumb = range > 0 ? std::clamp(int(length * share), std::min(length, 28), length) : length;
    const int start = QStyle::sliderPositionFromValue(option.minimum, option.maximum, option.sliderPosition,
                                                      length - thumb, option.upsideDown);
    const auto along = [&option, isUpright](int from, int size) {
        return isUpright ? QRect(option.rect.left(), option.rect.top() + from, option.rect.width(), size)
                         : QRect(option.rect.left() + from, option.rect.top(), size, option.rect.height());
    };
    switch (part) {
    case QStyle::SC_ScrollBarGroove:
        return option.rect;
    case QStyle::SC_ScrollBarSlider:
        return along(start, thumb);
    case QStyle::SC_ScrollBarSubPage:
        return along(0, start);
    case QStyle::SC_ScrollBarAddPage:
        return along(start + thumb, length - start - thumb);
    default:
        return {};
    }
}

void drawProgress(QPainter& painter, const QStyleOptionProgressBar& option)
{
    const QRectF bar(option.rect.left(), option.rect.center().y() + 1 - Measure::progress / 2.0, option.rect.width(),
                     Measure::progress);
    paintBox(painter, bar, Measure::progress / 2.0, colors().pressed);
    const double range = double(option.maximum) - option.minimum;
    if (range <= 0)
        return;
    QRectF done = bar;
    done.setWidth(bar.width() * (double(option.progress) - option.minimum) / range);
    paintBox(painter, done, Measure::progress / 2.0, colors().accent);
}

void drawRow(QPainter& painter, const QStyleOption& option)
{
    if (option.state & QStyle::State_Selected)
        paintBox(painter, option.rect, Radius::control, colors().selection);
    else if (option.state & QStyle::State_MouseOver)
        paintBox(painter, option.rect, Radius::control, colors().hover);
}

} // namespace ferrow::StyleDrawing
