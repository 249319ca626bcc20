// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ferrow::Command {

// What shells read to complete the command line of `ferrow-batch`, made of the options' table.

[[nodiscard]] QString bashCompletion();
[[nodiscard]] QString zshCompletion();
[[nodiscard]] QString fishCompletion();

} // namespace ferrow::Command
