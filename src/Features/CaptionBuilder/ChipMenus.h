// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/CaptionEditing.h"

#include <QPoint>

#include <functional>
#include <optional>

class QWidget;

/// The menus of the well. Each goes when it closes.
namespace ferrow::ChipMenus {

using Chosen = std::function<void(const CaptionSegment::Content& content)>;

/// Lists all tokens, each beside its value in the shown photo, or all separators. The present one is ticked.
void openChoice(QWidget& well, CaptionChips::Kind kind, const std::optional<CaptionSegment::Content>& current,
                const std::optional<PhotoMetadata>& metadata, const QPoint& globalPlace, const Chosen& chosen);
/// Lists what can be done with a chip; what is added comes after it.
void openCommands(QWidget& well, CaptionEditing& editing, int index, const QPoint& globalPlace);

} // namespace ferrow::ChipMenus
