// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/FloatingChip.h"

#include "Widgets/Shadow.h"

#include <QPainter>

namespace ferrow {

namespace {

constexpr int shadowRoom = 24;
constexpr int awayFromPointer = 10;

} // namespace

FloatingChip::FloatingChip(QWidget* window, const ChipLook& look, const QSize& size, const QPoint& grab)
    : QWidget(window), look_(look), grab_(grab)
{
    look_.state = ChipLook::State::lifted;
    look_.isMissing = false;
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    resize(size + QSize(2 * shadowRoom, 2 * shadowRoom));
    raise();
    show();
}

void FloatingChip::follow(const QPoint& globalPointer)
{
    const QPoint pointer = parentWidget()->mapFromGlobal(globalPointer);
    move(pointer + QPoint(-grab_.x() - awayFromPointer, awayFromPointer) - QPoint(shadowRoom, shadowRoom));
}

QRect FloatingChip::chipRect() const
{
    const QRect chip = rect().adjusted(shadowRoom, shadowRoom, -shadowRoom, -shadowRoom);
    return QRect(mapToGlobal(chip.topLeft()), chip.size());
}

void FloatingChip::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRectF chip = QRectF(rect()).adjusted(shadowRoom, shadowRoom, -shadowRoom, -shadowRoom);
    paintShadow(painter, chip, ShadowKind::popover);
    paintChip(painter, chip, look_);
}

} // namespace ferrow
