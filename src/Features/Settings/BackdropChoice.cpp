// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Settings/BackdropChoice.h"

#include "Shared/Widgets/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <array>

namespace ferrow {

namespace {

constexpr int count = 5;
constexpr int gap = 6;
constexpr int swatchHeight = 40;
/// The chosen one wears its ring inside its place, so that all places line up with the other rows.
constexpr int ringWidth = Measure::focusGap + Measure::focusWidth;

QColor colorAt(int index)
{
    const BackdropColors& colors = Theme::backdrops();
    return std::array{colors.black, colors.charcoal, colors.gray, colors.lightGray, colors.white}.at(
        std::size_t(index));
}

QString nameAt(int index)
{
    return rawValue(static_cast<PreviewBackdrop>(index));
}

void paintSwatch(QPainter& painter, QRectF place, const QColor& color, bool isChosen)
{
    if (isChosen) {
        constexpr double half = Measure::focusWidth / 2.0;
        painter.setPen(QPen(themeColor(&ThemeColors::accent), Measure::focusWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(place.adjusted(half, half, -half, -half), Radius::row - half, Radius::row - half);
        place.adjust(ringWidth, ringWidth, -ringWidth, -ringWidth);
    }
    const double radius = (isChosen ? Radius::row - ringWidth : Radius::control) - 0.5;
    painter.setPen(QPen(themeColor(&ThemeColors::border), 1));
    painter.setBrush(color);
    painter.drawRoundedRect(place.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

} // namespace

BackdropChoice::BackdropChoice(const QString& name, QWidget* parent) : QWidget(parent)
{
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::current(), &Theme::changed, this, [this] { updateGeometry(); });
}

void BackdropChoice::setBackdrop(PreviewBackdrop backdrop)
{
    if (backdrop == backdrop_)
        return;
    backdrop_ = backdrop;
    update();
    notifyItemsChanged(this);
}

QSize BackdropChoice::sizeHint() const
{
    const int height = swatchHeight + Space::iconEdge + Theme::current().lineHeight(TextRole::small);
    return {Theme::current().scaled(364), height};
}

QSize BackdropChoice::minimumSizeHint() const
{
    return {Theme::current().scaled(300), sizeHint().height()};
}

QRect BackdropChoice::itemRect(int index) const
{
    const int inner = width() + gap;
    const int place = layoutDirection() == Qt::RightToLeft ? count - 1 - index : index;
    const int left = inner * place / count;
    const int right = inner * (place + 1) / count - gap;
    return {left, 0, right - left, height()};
}

QRect BackdropChoice::swatchRect(int index) const
{
    QRect swatch = itemRect(index);
    swatch.setHeight(swatchHeight);
    return swatch;
}

void BackdropChoice::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < count; ++i) {
        const bool isChosen = i == static_cast<int>(backdrop_);
        paintSwatch(painter, swatchRect(i), colorAt(i), isChosen);
        painter.setFont(Theme::current().font(TextRole::small));
        painter.setPen(themeColor(isChosen ? &ThemeColors::text : &ThemeColors::text2));
        QRect label = itemRect(i);
        label.setTop(swatchRect(i).bottom() + 1 + Space::iconEdge);
        // Names are narrower than their column in every font that was tried; wider ones reach over the gaps.
        painter.drawText(label.adjusted(-gap, 0, gap, 0), Qt::AlignHCenter | Qt::AlignTop, nameAt(i));
    }
}

void BackdropChoice::keyPressEvent(QKeyEvent* event)
{
    const int now = static_cast<int>(backdrop_);
    const int forth = layoutDirection() == Qt::RightToLeft ? -1 : 1;
    int next = now;
    switch (event->key()) {
    case Qt::Key_Left:
        next = now - forth;
        break;
    case Qt::Key_Right:
        next = now + forth;
        break;
    case Qt::Key_Up:
        next = now - 1;
        break;
    case Qt::Key_Down:
        next = now + 1;
        break;
    case Qt::Key_Home:
        next = 0;
        break;
    case Qt::Key_End:
        next = count - 1;
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    pressItem(std::clamp(next, 0, count - 1));
}

void BackdropChoice::mousePressEvent(QMouseEvent* event)
{
    for (int i = 0; i < count && event->button() == Qt::LeftButton; ++i) {
        if (itemRect(i).contains(event->position().toPoint()))
            pressItem(i);
    }
}

int BackdropChoice::itemCount() const
{
    return count;
}

AccessibleItem BackdropChoice::item(int index) const
{
    const bool isChosen = index == static_cast<int>(backdrop_);
    return {
        .name = nameAt(index), .description = {}, .rect = itemRect(index), .isChosen = isChosen, .isFocused = isChosen};
}

void BackdropChoice::pressItem(int index)
{
    const auto backdrop = static_cast<PreviewBackdrop>(index);
    if (backdrop == backdrop_)
        return;
    setBackdrop(backdrop);
    notifyItemFocused(this, index);
    emit chosen(backdrop);
}

} // namespace ferrow
