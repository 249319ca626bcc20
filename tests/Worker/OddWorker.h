// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ferrow::test {

/// How OddWorker behaves when asked for a picture of that length, in pixels. It says that a photo is three pixels wide,
/// and as high as the number of its jobs.
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

/// How it behaves when asked for an export of that quality. All but the first write what a JPEG begins with, if it is
/// their first job.
inline constexpr double writesNothing = 0.25;
inline constexpr double writesSomething = 0.5;
inline constexpr double lingers = 0.6; ///< Goes on moving the photo's file position after its answer.
inline constexpr double leavesHole = 0.7;
inline constexpr double reserves = 0.8; ///< Room for far more than it writes.
inline constexpr double swells = 0.9;   ///< Beyond what any frame of a small canvas can be.

/// Where the photo's file position stands once `deaf` and `completes` have said all that they say by themselves; and
/// where it is put for `completes` to go on.
inline constexpr int waits = 1;
inline constexpr int goesOn = 2;

} // namespace ferrow::test
