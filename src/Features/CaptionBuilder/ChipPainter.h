// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/CaptionChips.h"

#include <QRectF>
#include <QString>

class QPainter;

namespace ferrow {

/// One chip as it looks now.
struct ChipLook {
    enum class State { rest, hovered, lifted };

    CaptionChips::Kind kind = CaptionChips::Kind::text;
    QString label;
    QString options;        ///< Behind the label, in a paler ink.
    bool isMissing = false; ///< Its token has no value in the shown photo.
    State state = State::rest;
};

/// Width in logical pixels that shows the whole label.
[[nodiscard]] int chipWidth(const ChipLook& look);
/// Height of every chip, grown with the system font.
[[nodiscard]] int chipHeight();
/// The part that shows the handle, at the leading edge.
[[nodiscard]] int chipHandleWidth();

/// Draws a chip; a label too long for it is elided at its end. Mirrored when the painter's layout runs right to left.
void paintChip(QPainter& painter, const QRectF& rect, const ChipLook& look);
/// What stays at the place of a chip while it is dragged.
void paintChipSlot(QPainter& painter, const QRectF& rect);
/// The accent ring round a chip that keys act on.
void paintChipFocus(QPainter& painter, const QRectF& rect);

} // namespace ferrow
