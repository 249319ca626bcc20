// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace ferrow::Worker {

/// Takes every right to files and the network that this kernel's Landlock knows from the calling thread, but for
/// reading `readablePlaces`: single files, and folders with all that is below. Answers Landlock's version, 0 where
/// there is none or it refuses. Needs PR_SET_NO_NEW_PRIVS.
[[nodiscard]] int restrictFileAccess(const std::vector<std::string>& readablePlaces);

} // namespace ferrow::Worker
