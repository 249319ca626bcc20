// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/RadioList.h"

#include "Widgets/StyleDrawing.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextDocument>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

constexpr int rowHeight = 30;
constexpr int inset = Space::group;

int headingHeight()
{
    return Theme::current().lineHeight(TextRole::small) + 2 * Space::iconEdge;
}

} // namespace

RadioList::RadioList(const QString& name, const QStringList& items, QWidget* parent) : ChoiceStrip(name, items, parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::current(), &Theme::changed, this, &QWidget::updateGeometry);
}

void RadioList::setHeading(int index, const QString& text)
{
    headings_[index] = text;
    updateGeometry();
}

void RadioList::setExamples(const QStringList& examples)
{
    if (std::exchange(examples_, examples) != examples) {
        update();
        notifyItemsChanged(this);
    }
}

AccessibleItem RadioList::item(int index) const
{
    AccessibleItem item = ChoiceStrip::item(index);
    item.description = examples_.value(index);
    return item;
}

QSize RadioList::sizeHint() const
{
    return {Theme::current().scaled(240), itemRect(itemCount() - 1).bottom() + 1};
}

QSize RadioList::minimumSizeHint() const
{
    return {Theme::current().scaled(160), sizeHint().height()};
}

QRect RadioList::itemRect(int index) const
{
    const int height = Theme::current().scaled(rowHeight);
    const auto above = std::ranges::count_if(headings_, [&](const auto& heading) { return heading.first <= index; });
    return {0, index * height + int(above) * headingHeight(), width(), height};
}

QRect RadioList::textRect(int index) const
{
    return itemRect(index).adjusted(textInset, 0, -inset, 0);
}

bool RadioList::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return ChoiceStrip::event(event);
    // An example may have no room beside its name.
    const auto* help = static_cast<QHelpEvent*>(event);
    const int index = itemAt(help->pos());
    QToolTip::showText(help->globalPos(), index < 0 ? QString() : Qt::convertFromPlainText(examples_.value(index)),
                       this);
    return true;
}

void RadioList::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    for (int i = 0; i < itemCount(); ++i)
        paintItem(painter, i);
    painter.setFont(Theme::current().font(TextRole::small));
    painter.setPen(themeColor(&ThemeColors::text2));
    for (const auto& [index, text] : headings_)
        painter.drawText(itemRect(index).adjusted(inset, Space::iconEdge - headingHeight(), -inset, 0),
                         Qt::AlignLeft | Qt::AlignTop, text);
}

void RadioList::paintItem(QPainter& painter, int index) const
{
    const QRect row = itemRect(index);
    const bool isChosen = index == currentIndex();
    const bool isHovered = isEnabled() && index == hovered();
    if (isChosen || isHovered)
        StyleDrawing::paintBox(painter, row, Radius::control,
                               themeColor(isChosen ? &ThemeColors::selection : &ThemeColors::hover));
    const QRectF mark(row.left() + inset, row.center().y() + 0.5 - Measure::checkBox / 2.0, Measure::checkBox,
                      Measure::checkBox);
    StyleDrawing::paintRadioButton(painter, mark, {.hovered = isHovered, .checked = isChosen});

    const QRect text = textRect(index);
    painter.setFont(Theme::current().font(TextRole::body));
    painter.setPen(themeColor(&ThemeColors::text));
    painter.drawText(text, Qt::AlignVCenter | Qt::AlignLeft, items()[index]);
    const QFontMetrics metrics = painter.fontMetrics();
    const int room = text.width() - metrics.horizontalAdvance(items()[index]) - Space::row;
    painter.setPen(themeColor(&ThemeColors::text2));
    painter.drawText(text, Qt::AlignVCenter | Qt::AlignRight,
                     metrics.elidedText(examples_.value(index), Qt::ElideRight, room));
}

} // namespace ferrow
