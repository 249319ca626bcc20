// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Worker/Messages.h"

#include <string>
#include <vector>

namespace ferrow::Worker {

/// Gives up, for good, what reading a photo does not need: opening files (but for reading `readablePlaces`, files and
/// folders), writing to any but those handed over, the network, other programs and processes, and memory, descriptors
/// and threads without end. Everything that is loaded late must be loaded before, and no second thread may run yet.
/// Answers what the kernel let it do; what it does not offer is left out.
[[nodiscard]] Hello confine(const std::vector<std::string>& readablePlaces);

} // namespace ferrow::Worker
