// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/CaptionBuilder/ChipLayout.h"
#include "Features/CaptionBuilder/ChipMotion.h"
#include "Features/CaptionBuilder/ChipPainter.h"
#include "Session/CaptionEditing.h"

#include <QPoint>
#include <QRect>

#include <optional>
#include <vector>

namespace ferrow {

/// The chips as they are seen: how they look, where they belong and how they glide there. Logical pixels from the top
/// of all lines, also of those that are scrolled away.
class ChipRow {
public:
    using Gap = std::optional<ChipLayout::Gap>;

    /// `editing` must outlive it.
    explicit ChipRow(const CaptionEditing& editing) : editing_(editing) {}

    /// Shows the caption as it is now in a well of that width. `fieldWidth` is that of the field over the text in hand.
    void lay(int width, int fieldWidth, const Gap& gap, ChipMotion::Way way);
    /// The chips beside the gap give way, where a chip is carried to one.
    void giveWay(const Gap& gap, ChipMotion::Way way);

    [[nodiscard]] ChipMotion& motion() { return motion_; }
    /// Where the chips belong.
    [[nodiscard]] const std::vector<QRect>& rects() const { return rects_; }
    /// Where a chip is seen just now.
    [[nodiscard]] QRectF seen(int index) const { return motion_.rect(idOf(index)); }
    [[nodiscard]] const ChipLook& look(int index) const { return looks_[std::size_t(index)]; }
    /// -1 for none.
    [[nodiscard]] int chipAt(const QPoint& place) const;
    [[nodiscard]] ChipLayout::Gap gapAt(const QPoint& place) const;

    [[nodiscard]] int height() const;
    /// Of a well that shows at most so many lines.
    [[nodiscard]] int heightForWidth(int width, int mostLines) const;
    /// From one line to the next.
    [[nodiscard]] static int pitch();
    [[nodiscard]] static int inset();

private:
    [[nodiscard]] const QUuid& idOf(int index) const { return editing_.shown()[std::size_t(index)].id; }
    [[nodiscard]] std::vector<QRect> rectsIn(int width) const;

    const CaptionEditing& editing_;
    int width_ = 0;
    int fieldWidth_ = 0;
    std::vector<ChipLook> looks_;
    std::vector<QRect> rects_;
    ChipMotion motion_;
};

} // namespace ferrow
