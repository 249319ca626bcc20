// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Command/Arguments.h"

#include <stop_token>

namespace ferrow::Command {

/// Exit statuses.
enum ExitStatus { allDone = 0, somePhotoFailed = 1, wrongUsage = 2, interrupted = 130 };

/// Frames the photos that `arguments` name and answers the exit status. Throws UsageError.
[[nodiscard]] int runBatch(const Arguments& arguments, const std::stop_token& stop);

/// Frames standard input to standard output and answers the exit status. Throws UsageError, and what framing throws.
[[nodiscard]] int runFilter(const Arguments& arguments, const std::stop_token& stop);

/// Frames a part of a plan and answers the exit status. Throws UsageError.
[[nodiscard]] int runPlan(const Arguments& arguments, const std::stop_token& stop);

/// Adds up what several runs printed, and answers the exit status that one run would have had. Throws UsageError.
[[nodiscard]] int runReport(const Arguments& arguments);

/// Prints what is read of each photo and answers the exit status.
[[nodiscard]] int runInspect(const Arguments& arguments, const std::stop_token& stop);

} // namespace ferrow::Command
