// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipKeys.h"

#include "Features/CaptionBuilder/ChipLayout.h"

#include <QKeyEvent>

namespace ferrow::ChipKeys {

namespace {

bool startsText(const QKeyEvent& event)
{
    const bool isPlain = !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    return isPlain && !event.text().isEmpty() && event.text().front().isPrint() && !event.text().front().isSpace();
}

void step(CaptionEditing& editing, int by, bool movesChip)
{
    const int current = editing.current();
    const int next = current + by;
    if (!movesChip)
        editing.setCurrent(next);
    else if (next >= 0 && next < editing.endGap())
        editing.move(current, by > 0 ? current + 2 : next);
}

} // namespace

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

Answer press(const QKeyEvent& event, CaptionEditing& editing, const std::vector<QRect>& rects)
{
    if (!isOurs(event))
        return Answer::passedOn;
    if (editing.shown().empty()) {
        if (!startsText(event))
            return Answer::passedOn;
        editing.startText(0, event.text());
        return Answer::done;
    }
    const int current = editing.current();
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        step(editing, event.key() == Qt::Key_Right ? 1 : -1, event.modifiers().testFlag(Qt::AltModifier));
        return Answer::done;
    case Qt::Key_Up:
    case Qt::Key_Down:
        editing.setCurrent(ChipLayout::chipAcross(rects, current, event.key() == Qt::Key_Down ? 1 : -1));
        return Answer::done;
    case Qt::Key_Home:
        editing.setCurrent(0);
        return Answer::done;
    case Qt::Key_End:
        editing.setCurrent(editing.endGap() - 1);
        return Answer::done;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F2:
    case Qt::Key_Space:
        return Answer::open;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        editing.remove(current);
        return Answer::done;
    default:
        editing.startText(current + 1, event.text());
        return Answer::done;
    }
}

} // namespace ferrow::ChipKeys
