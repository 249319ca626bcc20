// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Worker/Messages.h"

#include <linux/filter.h>

#include <string>
#include <vector>

namespace ferrow::Worker {

/// The walls around the processes that read. Most are put up once, around the process that forks them, and inherited.
class Confinement {
public:
    /// Gives up, for good, what reading a photo does not need: opening files (but for reading `readablePlaces`, files
    /// and folders), the network, other programs, and memory, descriptors and threads without end. What the
    /// kernel does not offer is left out; where nothing holds files back, no place stays readable either. Everything
    /// that is loaded late must be loaded before, and no second thread may run yet.
    explicit Confinement(const std::vector<std::string>& readablePlaces);

    /// As fork(), but the child gives up the rest: other processes, and all system calls but a few. `hello` in it says
    /// what holds.
    [[nodiscard]] pid_t fork(const JobLimits& limits);

    [[nodiscard]] const Hello& hello() const { return hello_; }

private:
    Hello hello_;
    std::vector<sock_filter> filter_;
};

} // namespace ferrow::Worker
