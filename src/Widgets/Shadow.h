// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>

class QPainter;

namespace ferrow {

enum class ShadowKind { popover, sheet };
/// Paints the shadow of a card with rounded corners; the card itself comes after it. Drawn from a picture that is made
/// once for each scale.
void paintShadow(QPainter& painter, const QRectF& card, ShadowKind kind);

} // namespace ferrow
