// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/CaptionEditing.h"

#include <QPoint>

#include <functional>
#include <optional>

class QMenu;
class QWidget;

/// The menus of the well. Each goes when it closes.
namespace ferrow::ChipMenus {

using Chosen = std::function<void(const CaptionSegment::Content& content)>;

/// All tokens, each beside its value in the shown photo. The present one is ticked, and chosen again it stays as it is.
void addTokens(QMenu& menu, const std::optional<CaptionSegment::Content>& current,
               const std::optional<PhotoMetadata>& metadata, const Chosen& chosen);
/// Lists all tokens or all separators.
void openChoice(QWidget& well, CaptionChips::Kind kind, const std::optional<CaptionSegment::Content>& current,
                const std::optional<PhotoMetadata>& metadata, const QPoint& globalPlace, const Chosen& chosen);
/// Lists what can be done with a chip; what is added comes after it. `openOptions` is for those of a token.
void openCommands(QWidget& well, CaptionEditing& editing, int index, const QPoint& globalPlace,
                  const std::function<void(int index)>& openOptions);

} // namespace ferrow::ChipMenus
