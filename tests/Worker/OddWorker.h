// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ferrow::test {

/// How OddWorker behaves when asked for a picture of that length, in pixels.
enum Oddity { none = 50, dies, closes, garbage, twice, earlier, tooLarge, notThere, allocates, deaf, completes };

} // namespace ferrow::test
