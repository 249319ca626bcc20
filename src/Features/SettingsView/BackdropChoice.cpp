// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/SettingsView/BackdropChoice.h"

#include "Widgets/Theme.h"

#include <QPainter>

namespace ferrow {

namespace {

constexpr int gap = 6;
constexpr int swatchHeight = 40;
/// The chosen one wears its ring inside its place, so that all places line up with the other rows.
constexpr int ringWidth = Measure::focusGap + Measure::focusWidth;

QStringList names()
{
    QStringList names;
    for (const auto& entry : CodedCases<PreviewBackdrop>::table)
        names << rawValue(entry.value);
    return names;
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

BackdropChoice::BackdropChoice(const QString& name, QWidget* parent) : ChoiceStrip(name, names(), parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCurrentIndex(int(PreviewBackdrop::white));
    connect(this, &ChoiceStrip::indexChosen, this, [this] { emit chosen(backdrop()); });
    connect(&Theme::current(), &Theme::changed, this, [this] { updateGeometry(); });
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
    const int left = inner * index / itemCount();
    const int right = inner * (index + 1) / itemCount() - gap;
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
    for (int i = 0; i < itemCount(); ++i) {
        const bool isChosen = i == currentIndex();
        paintSwatch(painter, swatchRect(i), Theme::backdrops().at(i), isChosen);
        painter.setFont(Theme::current().font(TextRole::small));
        painter.setPen(themeColor(isChosen ? &ThemeColors::text : &ThemeColors::text2));
        QRect label = itemRect(i);
        label.setTop(swatchRect(i).bottom() + 1 + Space::iconEdge);
        // Names are narrower than their column in every font that was tried; wider ones reach over the gaps.
        painter.drawText(label.adjusted(-gap, 0, gap, 0), Qt::AlignHCenter | Qt::AlignTop, items()[i]);
    }
}

} // namespace ferrow
