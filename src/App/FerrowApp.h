// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

namespace ferrow {

class ContentView;

/// The whole program: its window until it is closed. `shown` is told of the window before events are handled, for
/// benchmarks. Answers the exit status.
int runFerrow(int argc, char** argv, const std::function<void(ContentView&)>& shown = {});

} // namespace ferrow
