// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// What a worker and the program that starts it have agreed on before they talk.
namespace ferrow::Worker {

/// Where a worker finds the connection.
inline constexpr int workerSocket = 3;

/// Makes a worker the kind that may read fonts, to draw the text of PDF logos; without it, it is one for photos.
inline constexpr const char* argumentForLogos = "logos";

/// Lies beside the worker for photos.
inline constexpr const char* logoWorkerName = "ferrow-logo-worker";

/// Makes a worker the kind that may write HEIC.
inline constexpr const char* argumentForHeicWriting = "heic-writing";

/// What a job may take, in bytes, besides what is there before the first: stacks of the codecs' threads, their
/// libraries' pools, and pictures too small to be asked for. Larger jobs are allowed more one by one, since a limit
/// that fits the largest photo would let the smallest file ask for as much.
inline constexpr std::int64_t addressSpaceForSmallJobs = 512 << 20;

} // namespace ferrow::Worker
