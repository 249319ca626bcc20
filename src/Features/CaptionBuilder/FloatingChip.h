// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/CaptionBuilder/ChipPainter.h"

#include <QWidget>

namespace ferrow {

/// The chip that follows the pointer while it is dragged: over everything in the window, unseen by the mouse.
class FloatingChip : public QWidget {
    Q_OBJECT

public:
    /// `grab`: where on the chip it was taken, from its top left corner.
    FloatingChip(QWidget* window, const ChipLook& look, const QSize& size, const QPoint& grab);

    /// Below and left of the pointer, so that the caret beside the pointer stays in sight.
    void follow(const QPoint& globalPointer);
    /// The chip itself, without the room for its shadow, in global coordinates.
    [[nodiscard]] QRect chipRect() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ChipLook look_;
    QPoint grab_;
};

} // namespace ferrow
