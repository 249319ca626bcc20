// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipDrag.h"

#include "Features/CaptionBuilder/FloatingChip.h"

#include <QScrollBar>
#include <QTimerEvent>
#include <QWidget>

#include <utility>

namespace ferrow {

namespace {

/// A drop this far outside still counts as inside.
constexpr int dropTolerance = 12;
/// Near the upper and lower edge of a well that scrolls, a drag scrolls it.
constexpr int scrollZone = 14;
constexpr int scrollStep = 6;
constexpr int scrollInterval = 30;

} // namespace

ChipDrag::ChipDrag(CaptionEditing& editing, ChipRow& row, QScrollBar& bar, QWidget& well)
    : editing_(editing), row_(row), bar_(bar), well_(well)
{
}

ChipDrag::~ChipDrag()
{
    delete floating_;
}

void ChipDrag::begin(int index, const QPoint& press, const QPoint& pointer)
{
    const QRect chip = row_.rects()[std::size_t(index)].translated(0, -bar_.value());
    editing_.carry(index);
    lift({.kind = row_.look(index).kind, .source = index}, row_.look(index), chip.size(), press - chip.topLeft());
    moveTo(pointer);
}

void ChipDrag::begin(CaptionChips::Kind kind, const QString& label, const QPoint& pointer)
{
    const ChipLook look{.kind = kind, .label = label};
    const QSize size(chipWidth(look), chipHeight());
    lift({.kind = kind}, look, size, QPoint(size.width() / 2, 0));
    moveTo(pointer);
}

void ChipDrag::lift(const Carried& carried, const ChipLook& look, const QSize& size, const QPoint& grab)
{
    carried_ = carried;
    well_.setCursor(Qt::ClosedHandCursor);
    floating_ = new FloatingChip(well_.window(), look, size, grab);
    scrollTimer_.start(scrollInterval, this);
}

bool ChipDrag::isOverWell(const QPoint& place) const
{
    return well_.rect().adjusted(-dropTolerance, -dropTolerance, dropTolerance, dropTolerance).contains(place);
}

void ChipDrag::moveTo(const QPoint& pointer)
{
    if (!carried_)
        return;
    carried_->pointer = pointer;
    floating_->follow(pointer);
    const QPoint place = well_.mapFromGlobal(pointer);
    if (!isOverWell(place)) {
        setGap(std::nullopt);
        return;
    }
    const ChipLayout::Gap gap = row_.gapAt(place + QPoint(0, bar_.value()));
    const std::optional<int>& source = carried_->source;
    const bool isOwnPlace = source && (gap.index == *source || gap.index == *source + 1);
    setGap(isOwnPlace ? std::nullopt : std::optional(gap));
}

void ChipDrag::setGap(const ChipRow::Gap& gap)
{
    if (carried_->gap == gap)
        return;
    carried_->gap = gap;
    row_.giveWay(gap, ChipMotion::Way::glide);
    emit gapChanged();
    if (carried_->source)
        editing_.carryTo(gap ? std::optional(gap->index) : std::nullopt);
}

void ChipDrag::drop()
{
    if (!carried_)
        return;
    const QRect letGo = floating_ ? floating_->chipRect() : QRect();
    const Carried carried = *carried_;
    end();
    if (carried.source && carried.gap && letGo.isValid()) {
        const QRect inWell(well_.mapFromGlobal(letGo.topLeft()), letGo.size());
        row_.motion().place(editing_.segments()[std::size_t(*carried.source)].id, inWell.translated(0, bar_.value()));
    } else {
        row_.giveWay(std::nullopt, ChipMotion::Way::glide);
    }
    if (carried.source)
        editing_.letGo();
    else if (carried.gap)
        emit newChipDropped(carried.kind, carried.gap->index, carried.pointer);
}

void ChipDrag::giveUp()
{
    if (!carried_)
        return;
    const bool isOfTheRow = carried_->source.has_value();
    end();
    row_.giveWay(std::nullopt, ChipMotion::Way::glide);
    if (isOfTheRow)
        editing_.putBack();
}

void ChipDrag::end()
{
    if (!std::exchange(carried_, std::nullopt))
        return;
    delete floating_;
    scrollTimer_.stop();
    well_.unsetCursor();
    emit ended();
}

void ChipDrag::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == scrollTimer_.timerId())
        scroll();
    else
        QObject::timerEvent(event);
}

void ChipDrag::scroll()
{
    const QPoint place = well_.mapFromGlobal(carried_->pointer);
    if (!isOverWell(place))
        return;
    const int before = bar_.value();
    if (place.y() < scrollZone)
        bar_.setValue(before - scrollStep);
    else if (place.y() > well_.height() - scrollZone)
        bar_.setValue(before + scrollStep);
    if (bar_.value() != before)
        moveTo(carried_->pointer);
}

} // namespace ferrow
