// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipPainter.h"

#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr int handleInset = 4;
constexpr int handleGap = 5;
constexpr int endInset = 10;
constexpr int optionsGap = 6;
/// Room for options: a long text is known by its first words.
constexpr int widestOptions = 110;
constexpr int warningGap = 5;
constexpr int warningInset = 8;

/// The middle dot is a small sign, so it is set larger.
QFont chipFont(const ChipLook& look)
{
    const bool isDot =
        look.kind == CaptionChips::Kind::separator && look.label == chipLabel(CaptionSeparator::middleDot);
    return Theme::current().font(isDot ? TextRole::title : TextRole::strong);
}

int endWidth(bool isMissing)
{
    return isMissing ? warningGap + Measure::chipIcon + warningInset : endInset;
}

/// With the gap before them.
int optionsWidth(const ChipLook& look)
{
    if (look.options.isEmpty())
        return 0;
    const double text = QFontMetricsF(Theme::current().font(TextRole::body)).horizontalAdvance(look.options);
    return optionsGap + std::min(int(std::ceil(text)) + 1, Theme::current().scaled(widestOptions));
}

QColor groundOf(const ChipLook& look)
{
    if (look.state == ChipLook::State::lifted)
        return themeColor(&ThemeColors::raised);
    if (look.isMissing)
        return themeColor(&ThemeColors::warningGround);
    return themeColor(look.kind == CaptionChips::Kind::token ? &ThemeColors::selection : &ThemeColors::fill);
}

QColor edgeOf(const ChipLook& look)
{
    if (look.isMissing)
        return themeColor(&ThemeColors::warning);
    if (look.state == ChipLook::State::lifted)
        return themeColor(&ThemeColors::border);
    return themeColor(look.state == ChipLook::State::hovered ? &ThemeColors::hoverEdge : &ThemeColors::fillEdge);
}

void strokeInside(QPainter& painter, const QRectF& rect, double width, const QPen& pen)
{
    const double half = width / 2;
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(rect.adjusted(half, half, -half, -half), Radius::control - half, Radius::control - half);
}

} // namespace

int chipWidth(const ChipLook& look)
{
    const double text = QFontMetricsF(chipFont(look)).horizontalAdvance(look.label);
    return chipHandleWidth() + int(std::ceil(text)) + optionsWidth(look) + endWidth(look.isMissing);
}

int chipHeight()
{
    return Theme::current().scaled(Measure::smallControl);
}

int chipHandleWidth()
{
    return handleInset + Measure::chipIcon + handleGap;
}

void paintChip(QPainter& painter, const QRectF& rect, const ChipLook& look)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(groundOf(look));
    painter.drawRoundedRect(rect, Radius::control, Radius::control);
    if (const QColor edge = edgeOf(look); edge.alpha() > 0)
        strokeInside(painter, rect, 1, QPen(edge, 1));

    const QRectF handle(rect.left() + handleInset, rect.top(), Measure::chipIcon, rect.height());
    paintIcon(painter, IconName::dragHandle, handle, Measure::chipIcon,
              themeColor(look.isMissing ? &ThemeColors::warning : &ThemeColors::text2));

    const QColor ink = themeColor(look.isMissing ? &ThemeColors::warning : &ThemeColors::text);
    // A hair wider than measured, so that rounding never elides a label that fits.
    const QRectF text = rect.adjusted(chipHandleWidth(), 0, 1 - endWidth(look.isMissing), 0);
    const auto draw = [&](const QRectF& place, const QFont& font, const QColor& color, const QString& words) {
        painter.setFont(font);
        painter.setPen(color);
        painter.drawText(place, Qt::AlignVCenter | Qt::TextSingleLine | Qt::AlignLeft,
                         QFontMetricsF(font).elidedText(words, Qt::ElideRight, place.width()));
    };
    const QFont font = chipFont(look);
    draw(text, font, ink, look.label);
    if (!look.options.isEmpty()) {
        const double label = QFontMetricsF(font).horizontalAdvance(look.label) + optionsGap;
        draw(text.adjusted(label, 0, 0, 0), Theme::current().font(TextRole::body),
             look.isMissing ? ink : themeColor(&ThemeColors::text2), look.options);
    }
    if (look.isMissing) {
        const QRectF triangle(rect.right() - warningInset - Measure::chipIcon, rect.top(), Measure::chipIcon,
                              rect.height());
        paintIcon(painter, IconName::warning, triangle, Measure::chipIcon, ink);
    }
    painter.restore();
}

void paintChipSlot(QPainter& painter, const QRectF& rect)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPen pen(themeColor(&ThemeColors::border), 1);
    pen.setDashPattern({3, 2});
    strokeInside(painter, rect, 1, pen);
    painter.restore();
}

void paintChipFocus(QPainter& painter, const QRectF& rect)
{
    constexpr double away = Measure::focusGap + Measure::focusWidth / 2.0;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(themeColor(&ThemeColors::accent), Measure::focusWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(rect.adjusted(-away, -away, away, away), Radius::control + away, Radius::control + away);
    painter.restore();
}

} // namespace ferrow
