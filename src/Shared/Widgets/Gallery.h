// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

namespace ferrow {

/// A window with every control of this room in every state, for looking at and for tests. Part of no program that is
/// installed.
[[nodiscard]] QWidget* makeGallery();

} // namespace ferrow
