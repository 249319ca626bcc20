// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace ferrow::Engine {

/// What is known of a job once its photo's header was read.
struct JobSize {
    std::int64_t pixels = 0; ///< Of the photo as stored; 0 for a drawing.
    bool isHeif = false;
    std::int64_t bytes = 0; ///< Of memory that the job will hold at once, beyond a few megabytes.
};

/// Looks on while a request is answered, for whoever has to allow it, stop it or wait for it. Called on the answering
/// thread; what it throws ends the job.
class JobObserver {
public:
    virtual ~JobObserver() = default;

    /// The header is within the limits, and nothing large was asked for yet. May wait.
    virtual void headerRead(const JobSize&) {}
    /// A band of rows comes next.
    virtual void beforeBand() {}
    /// While answering a FrameRequest: from here on the output is completed, also after a stop.
    virtual void lastRowComposed() {}
};

} // namespace ferrow::Engine
