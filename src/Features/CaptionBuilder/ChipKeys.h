// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/CaptionEditing.h"

#include <QRect>

#include <vector>

class QKeyEvent;

/// What keys do on a row of chips: arrows move about, with Alt they move the chip; Delete removes it, letters begin a
/// text after it.
namespace ferrow::ChipKeys {

/// Whether the row has a use for the key: no shortcut may take it then.
[[nodiscard]] bool isOurs(const QKeyEvent& event);

enum class Answer { passedOn, done, open }; ///< `open`: the current chip's text or list is asked for.
/// `rects`: where the chips lie.
Answer press(const QKeyEvent& event, CaptionEditing& editing, const std::vector<QRect>& rects);

} // namespace ferrow::ChipKeys
