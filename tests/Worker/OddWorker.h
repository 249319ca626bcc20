// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ferrow::test {

/// How OddWorker behaves when asked for a picture of that length, in pixels.
enum Oddity {
    none = 50,
    dies,
    closes,
    garbage,
    twice,
    earlier,
    tooLarge,
    notThere,
    allocates,
    deaf,
    completes,
    repeats,
    trickles,
    poisoned ///< Answers, and dies at the next question.
};

/// How it behaves when asked for an export of that quality.
inline constexpr double writesNothing = 0.25;
inline constexpr double writesSomething = 0.5; ///< What a JPEG begins with.

} // namespace ferrow::test
