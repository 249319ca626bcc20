// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <functional>

namespace ferrow {

class ContentView;

/// The whole program: its window until it is closed. Answers the exit status. For tests and benchmarks `shown` is told
/// of the window before events are handled, and `workerProgram` stands in for the installed one.
int runFerrow(int argc, char** argv, const std::function<void(ContentView&)>& shown = {},
              const QByteArray& workerProgram = {});

} // namespace ferrow
