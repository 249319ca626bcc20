// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/CaptionWell.h"

#include "Features/CaptionBuilder/ChipTextField.h"
#include "Features/CaptionBuilder/FloatingChip.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTimerEvent>

#include <utility>

namespace ferrow {

namespace {

/// A press becomes a drag after this way.
constexpr int dragDistance = 6;
/// A drop this far outside still counts as inside.
constexpr int dropTolerance = 12;
/// Near the upper and lower edge of a well that scrolls, a drag scrolls it.
constexpr int scrollZone = 14;
constexpr int scrollStep = 6;
constexpr int scrollInterval = 30;

QRect dropArea(const QRect& well)
{
    return well.adjusted(-dropTolerance, -dropTolerance, dropTolerance, dropTolerance);
}

bool startsText(const QKeyEvent& event)
{
    const bool isPlain = !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    return isPlain && !event.text().isEmpty() && event.text().front().isPrint() && !event.text().front().isSpace();
}

bool isOurs(const QKeyEvent& event)
{
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        return event.modifiers() == Qt::NoModifier || event.modifiers() == Qt::AltModifier;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F2:
    case Qt::Key_Space:
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        return event.modifiers() == Qt::NoModifier || event.modifiers() == Qt::KeypadModifier;
    default:
        return startsText(event);
    }
}

} // namespace

bool CaptionWell::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (isOurs(key) || (drag_ && key.key() == Qt::Key_Escape))
            event->accept();
    }
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        showToolTip(chipAt(help->pos()), help->globalPos());
        return true;
    }
    return QWidget::event(event);
}

void CaptionWell::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    if (event->reason() == Qt::MouseFocusReason)
        showsFocus_ = false;
    else if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        showsFocus_ = true;
    update();
    if (!shown_.empty())
        revealCurrent();
}

void CaptionWell::focusOutEvent(QFocusEvent* event)
{
    QWidget::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason)
        giveUpDrag();
    update();
}

void CaptionWell::keyPressEvent(QKeyEvent* event)
{
    showsFocus_ = true;
    update();
    if (!handleKey(*event))
        QWidget::keyPressEvent(event);
}

bool CaptionWell::handleKey(const QKeyEvent& event)
{
    if (drag_) {
        if (event.key() == Qt::Key_Escape)
            giveUpDrag();
        return true;
    }
    if (!isOurs(event))
        return false;
    if (shown_.empty()) {
        if (startsText(event))
            startText(0, event.text());
        return startsText(event);
    }

    const bool isMove = event.modifiers() & Qt::AltModifier;
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const int step = event.key() == Qt::Key_Right ? 1 : -1;
        const int next = current_ + step;
        if (!isMove)
            setCurrent(next);
        else if (next >= 0 && next < endGap())
            moveChip(current_, step > 0 ? current_ + 2 : next);
        return true;
    }
    case Qt::Key_Up:
    case Qt::Key_Down:
        setCurrent(ChipLayout::chipAcross(rects_, current_, event.key() == Qt::Key_Down ? 1 : -1));
        return true;
    case Qt::Key_Home:
        setCurrent(0);
        return true;
    case Qt::Key_End:
        setCurrent(endGap() - 1);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F2:
    case Qt::Key_Space:
        activate(current_);
        return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        removeChip(current_);
        return true;
    default:
        startText(current_ + 1, event.text());
        return true;
    }
}

void CaptionWell::inputMethodEvent(QInputMethodEvent* event)
{
    const QString text = event->commitString();
    if (!text.trimmed().isEmpty())
        startText(shown_.empty() ? 0 : current_ + 1, text);
}

QVariant CaptionWell::inputMethodQuery(Qt::InputMethodQuery query) const
{
    if (query == Qt::ImEnabled)
        return true;
    return QWidget::inputMethodQuery(query);
}

void CaptionWell::mousePressEvent(QMouseEvent* event)
{
    showsFocus_ = false;
    const int index = chipAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || index < 0)
        return;
    press_ = Press{.index = index, .place = event->position().toPoint()};
    setCurrent(index);
}

void CaptionWell::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint place = event->position().toPoint();
    if (drag_) {
        dragTo(event->globalPosition().toPoint());
        return;
    }
    if (press_ && (place - press_->place).manhattanLength() >= dragDistance) {
        beginDrag(event->globalPosition().toPoint());
        return;
    }
    const int hovered = chipAt(place);
    if (std::exchange(hovered_, hovered) != hovered)
        update();
    const QRect chip = hovered < 0 ? QRect() : rects_[std::size_t(hovered)];
    const bool isOnHandle = hovered >= 0 && toContent(place).x() < chip.x() + chipHandleWidth();
    setCursor(isOnHandle ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

void CaptionWell::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const std::optional<Press> press = std::exchange(press_, std::nullopt);
    if (drag_)
        drop();
    else if (press && chipAt(event->position().toPoint()) == press->index)
        activate(press->index);
    else if (!press && shown_.empty() && rect().contains(event->position().toPoint()))
        startText(0);
}

void CaptionWell::leaveEvent(QEvent*)
{
    hovered_ = -1;
    update();
}

void CaptionWell::contextMenuEvent(QContextMenuEvent* event)
{
    if (shown_.empty() || drag_)
        return;
    const bool byMouse = event->reason() == QContextMenuEvent::Mouse;
    const int index = byMouse ? chipAt(event->pos()) : current_;
    if (index < 0)
        return;
    const QRect chip = toView(rects_[std::size_t(index)]);
    openContextMenu(index, byMouse ? event->globalPos() : mapToGlobal(QPoint(chip.left(), chip.bottom() + 1)));
}

void CaptionWell::beginDrag(const QPoint& pointer)
{
    const int index = press_->index;
    const QRect chip = toView(rects_[std::size_t(index)]);
    drag_ = Drag{.kind = CaptionChips::kindOf(segments_[std::size_t(index)].content), .source = index};
    lift(lookOf(segments_[std::size_t(index)]), chip.size(), press_->place - chip.topLeft());
    dragTo(pointer);
}

void CaptionWell::beginPaletteDrag(Kind kind, const QString& label, const QPoint& globalPointer)
{
    endTextEdit(true);
    const ChipLook look{.kind = kind, .label = label};
    const QSize size(chipWidth(look), chipHeight());
    drag_ = Drag{.kind = kind};
    lift(look, size, QPoint(size.width() / 2, 0));
    dragTo(globalPointer);
}

void CaptionWell::lift(const ChipLook& look, const QSize& size, const QPoint& grab)
{
    hovered_ = -1;
    setCursor(Qt::ClosedHandCursor);
    floating_ = new FloatingChip(window(), look, size, grab);
    scrollTimer_.start(scrollInterval, this);
}

void CaptionWell::dragTo(const QPoint& globalPointer)
{
    if (!drag_)
        return;
    drag_->pointer = globalPointer;
    floating_->follow(globalPointer);
    const QPoint place = mapFromGlobal(globalPointer);
    if (!dropArea(rect()).contains(place)) {
        setGap(std::nullopt);
        return;
    }
    const ChipLayout::Gap gap = ChipLayout::gapAt(rects_, measures(width()), toContent(place));
    const bool isOwnPlace = drag_->source && (gap.index == *drag_->source || gap.index == *drag_->source + 1);
    setGap(isOwnPlace ? std::nullopt : std::optional(gap));
}

void CaptionWell::setGap(const std::optional<ChipLayout::Gap>& gap)
{
    if (drag_->gap == gap)
        return;
    drag_->gap = gap;
    setTargets(ChipMotion::Way::glide);
    update();
    if (drag_->source)
        preview(gap ? CaptionChips::moved(segments_, *drag_->source, gap->index) : segments_);
}

void CaptionWell::drop()
{
    if (!drag_)
        return;
    const QRect letGo = floating_ ? floating_->chipRect() : QRect();
    const Drag drag = endDrag();
    if (!drag.gap) {
        setTargets(ChipMotion::Way::glide);
        preview(segments_);
        return;
    }
    if (!drag.source) {
        if (drag.kind == Kind::text)
            startText(drag.gap->index);
        else
            startChoice(drag.kind, drag.gap->index, drag.pointer);
        setTargets(ChipMotion::Way::glide);
        return;
    }
    if (letGo.isValid()) {
        const QRect view(mapFromGlobal(letGo.topLeft()), letGo.size());
        motion_.place(segments_[std::size_t(*drag.source)].id, view.translated(0, bar_->value()));
    }
    moveChip(*drag.source, drag.gap->index);
}

void CaptionWell::giveUpDrag()
{
    if (!drag_)
        return;
    endDrag();
    setTargets(ChipMotion::Way::glide);
    preview(segments_);
}

CaptionWell::Drag CaptionWell::endDrag()
{
    const Drag drag = std::exchange(drag_, std::nullopt).value_or(Drag());
    press_.reset();
    delete floating_;
    scrollTimer_.stop();
    unsetCursor();
    update();
    return drag;
}

void CaptionWell::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != scrollTimer_.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    scrollWhileDragging();
}

void CaptionWell::scrollWhileDragging()
{
    const QPoint place = mapFromGlobal(drag_->pointer);
    if (!dropArea(rect()).contains(place))
        return;
    const int y = place.y();
    const int before = bar_->value();
    if (y < scrollZone)
        bar_->setValue(before - scrollStep);
    else if (y > height() - scrollZone)
        bar_->setValue(before + scrollStep);
    if (bar_->value() != before)
        dragTo(drag_->pointer);
}

} // namespace ferrow
