// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/CaptionBuilder/CaptionChips.h"

#include <QMenu>

#include <functional>
#include <optional>

namespace ferrow::ChipMenus {

using Chosen = std::function<void(const CaptionSegment::Content& content)>;

/// Fills a menu with all tokens, the present one ticked, each beside its value in the shown photo.
void addTokens(QMenu& menu, std::optional<MetadataToken> current, const std::optional<PhotoMetadata>& metadata,
               const Chosen& chosen);
void addSeparators(QMenu& menu, std::optional<CaptionSeparator> current, const Chosen& chosen);

/// What the context menu of a chip can ask for; what it adds comes after the chip.
struct ChipCommands {
    std::function<void()> edit;
    std::function<void()> moveBack;
    std::function<void()> moveOn;
    std::function<void()> remove;
    std::function<void()> addText;
    Chosen change;
    Chosen add;
};
void addCommands(QMenu& menu, const CaptionChips::Segments& segments, int index,
                 const std::optional<PhotoMetadata>& metadata, const ChipCommands& commands);

} // namespace ferrow::ChipMenus
