// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ferrow {

/// Registers this room's accessible interfaces with Qt, and follows the focus for those with items.
/// FerrowStyle::install does it.
void installAccessibility();

} // namespace ferrow
