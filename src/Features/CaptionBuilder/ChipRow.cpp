// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipRow.h"

#include "Metadata/MetadataTemplateExpander.h"

#include <algorithm>

namespace ferrow {

namespace {

/// How far the chips beside the caret give way, each.
constexpr int wayGiven = 3;

ChipLayout::Measures measures(int width)
{
    return {.width = width, .height = chipHeight()};
}

std::vector<ChipLook> looksOf(const CaptionEditing& editing)
{
    const CaptionChips::Segments& chips = editing.shown();
    std::vector<ChipLook> looks;
    for (const CaptionSegment& segment : chips) {
        const auto* token = std::get_if<CaptionToken>(&segment.content);
        looks.push_back({.kind = CaptionChips::kindOf(segment.content),
                         .label = CaptionChips::label(segment),
                         .options = CaptionChips::optionsLabel(segment),
                         .isMissing = token && editing.metadata() &&
                                      MetadataTemplateExpander::isLeftOut(*token, *editing.metadata())});
    }
    return looks;
}

} // namespace

void ChipRow::lay(int width, int fieldWidth, const Gap& gap, ChipMotion::Way way)
{
    width_ = width;
    fieldWidth_ = fieldWidth;
    looks_ = looksOf(editing_);
    rects_ = rectsIn(width);
    giveWay(gap, way);
}

void ChipRow::giveWay(const Gap& gap, ChipMotion::Way way)
{
    QHash<QUuid, QRectF> targets;
    for (int i = 0; i < int(rects_.size()); ++i) {
        QRectF rect(rects_[std::size_t(i)]);
        if (gap && gap->caret.y() == rect.y())
            rect.translate(i < gap->index ? -wayGiven : wayGiven, 0);
        targets.insert(idOf(i), rect);
    }
    motion_.setTargets(targets, way);
}

std::vector<QRect> ChipRow::rectsIn(int width) const
{
    const auto& text = editing_.textInHand();
    std::vector<int> widths;
    for (int i = 0; i < int(looks_.size()); ++i)
        widths.push_back(text && text->index == i ? fieldWidth_ : chipWidth(look(i)));
    return ChipLayout::chipRects(widths, measures(width));
}

int ChipRow::chipAt(const QPoint& place) const
{
    const auto hit = std::ranges::find_if(rects_, [&](const QRect& rect) { return rect.contains(place); });
    return hit == rects_.end() ? -1 : int(hit - rects_.begin());
}

ChipLayout::Gap ChipRow::gapAt(const QPoint& place) const
{
    return ChipLayout::gapAt(rects_, measures(width_), place);
}

int ChipRow::height() const
{
    return ChipLayout::wellHeight(ChipLayout::lineCount(rects_), measures(width_));
}

int ChipRow::heightForWidth(int width, int mostLines) const
{
    return ChipLayout::wellHeight(std::min(ChipLayout::lineCount(rectsIn(width)), mostLines), measures(width));
}

int ChipRow::pitch()
{
    return chipHeight() + measures(0).gap;
}

int ChipRow::inset()
{
    return measures(0).inset;
}

} // namespace ferrow
