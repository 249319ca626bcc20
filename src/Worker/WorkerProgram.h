// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Worker/Messages.h"
#include "Worker/Server.h"

#include <functional>
#include <string>
#include <vector>

namespace ferrow::Worker {

/// Loads what will be needed, while files can still be opened; answers the files and folders that stay readable.
using Preparation = std::function<std::vector<std::string>(const Setup& setup)>;

/// What the worker programs have in common: waits for the setup, gets ready, and forks processes that serve behind the
/// walls. Returns an exit status, where it returns.
[[nodiscard]] int runWorker(const Preparation& prepare, const std::function<void(Channel&)>& serveOne);

} // namespace ferrow::Worker
