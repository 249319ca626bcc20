// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stop_token>

namespace ferrow {

/// Thrown out of work whose stop token was asked to stop. An outcome, not an error: it has no text and is never shown.
struct Canceled {};

/// Throws Canceled once a stop was requested. Long work asks between bands of rows and between items.
inline void throwIfCanceled(const std::stop_token& stop)
{
    if (stop.stop_requested())
        throw Canceled{};
}

} // namespace ferrow
