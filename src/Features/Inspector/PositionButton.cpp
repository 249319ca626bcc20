// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PositionButton.h"

#include "Features/Inspector/PositionGrid.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QPainter>
#include <QStyleOptionFrame>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr QSizeF pictureSize(44, 34);
constexpr double inset = 6;
constexpr double dot = 5;

/// The little picture's own border: wide enough for a dot.
constexpr double sideBorder = 6;
constexpr double upperBorder = 7;

} // namespace

PositionButton::PositionButton(const QString& name, QWidget* parent) : QPushButton(parent), name_(name)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setPosition(position_);
}

void PositionButton::setPosition(CaptionPosition position)
{
    position_ = position;
    setAccessibleName(
        QStringLiteral("%1: %2, %3").arg(name_, PositionGrid::title(position), PositionGrid::place(position)));
    update();
}

QSize PositionButton::sizeHint() const
{
    const Theme& theme = Theme::current();
    const int text = theme.lineHeight(TextRole::strong) + theme.lineHeight(TextRole::small);
    return {192, std::max(48, text + 14)};
}

QSize PositionButton::minimumSizeHint() const
{
    return {120, sizeHint().height()};
}

void PositionButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QStyleOptionFrame option;
    option.initFrom(this);
    option.lineWidth = 1;
    option.state.setFlag(QStyle::State_HasFocus, false); // The ring shows the focus, as on other buttons.
    option.state.setFlag(QStyle::State_Sunken, isDown());
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);

    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(disabledOpacity);
    const QRectF pictureRect(QPointF(inset, (height() - pictureSize.height()) / 2), pictureSize);
    paintPicture(painter, pictureRect);
    const QRectF chevron(width() - inset - Measure::fieldIcon, 0, Measure::fieldIcon, height());
    paintIcon(painter, IconName::chevronDown, chevron, Measure::fieldIcon, themeColor(&ThemeColors::text));

    const Theme& theme = Theme::current();
    const int strong = theme.lineHeight(TextRole::strong);
    const int small = theme.lineHeight(TextRole::small);
    const double left = pictureRect.right() + 8;
    const double top = std::round((height() - strong - small) / 2.0);
    const QRectF line(left, top, chevron.left() - 2 - left, strong);
    const auto paintText = [&](const QRectF& rect, TextRole role, ColorRole color, const QString& text) {
        painter.setFont(theme.font(role));
        painter.setPen(theme.color(color));
        const QString shown = painter.fontMetrics().elidedText(text, Qt::ElideRight, int(rect.width()));
        painter.drawText(rect, Qt::AlignVCenter | Qt::AlignLeft, shown);
    };
    paintText(line, TextRole::strong, &ThemeColors::text, PositionGrid::title(position_));
    paintText(QRectF(left, line.bottom(), line.width(), small), TextRole::small, &ThemeColors::text2,
              PositionGrid::place(position_));
}

void PositionButton::paintPicture(QPainter& painter, const QRectF& rect) const
{
    const double line = 1;
    painter.setPen(QPen(themeColor(&ThemeColors::border), line));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(rect.adjusted(line / 2, line / 2, -line / 2, -line / 2), 3, 3);
    const QRectF photo = rect.adjusted(sideBorder, upperBorder, -sideBorder, -upperBorder);
    painter.fillRect(photo, themeColor(&ThemeColors::pressed));

    const int index = PositionGrid::indexOf(position_);
    const double half = dot / 2 + 1;
    const double xs[] = {photo.left() + half, photo.center().x(), photo.right() - half};
    const double ys[] = {(rect.top() + photo.top() + 1) / 2, photo.top() + half, photo.center().y(),
                         photo.bottom() - half, (photo.bottom() + rect.bottom() - 1) / 2};
    painter.setPen(Qt::NoPen);
    painter.setBrush(themeColor(&ThemeColors::accent));
    painter.drawEllipse(QPointF(xs[index % PositionGrid::columns], ys[index / PositionGrid::columns]), dot / 2,
                        dot / 2);
}

} // namespace ferrow
