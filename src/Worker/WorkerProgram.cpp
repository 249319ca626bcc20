// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/WorkerProgram.h"

#include "Worker/Confinement.h"
#include "Worker/StartingConventions.h"

#include <malloc.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <system_error>

namespace ferrow::Worker {

namespace {

constexpr int startedWrongly = 2;
constexpr int cannotFork = 3;

/// Milliseconds; counted in looks, which take longer on a busy machine.
constexpr int longestWaitForThreads = 30'000;

/// Each thread's own pool would reserve tens of megabytes of the address space that a job may take.
constexpr int memoryPools = 2;

/// Below the window and other programs, without standing still beside them: some third of a plain process's share.
constexpr int niceness = 5;

/// The connection decides when this process ends, not who presses Ctrl-C in the terminal of the one that started it.
void ignoreSignals()
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ})
        std::signal(number, SIG_IGN);
}

/// A fork takes along the calling thread alone, and what others held stays locked for ever. Codecs end theirs with each
/// picture, a moment after it.
bool hasOneThread()
{
#ifdef __SANITIZE_THREAD__ // Which has one of its own, and provides for it.
    return true;
#endif
    for (int i = 0; i < longestWaitForThreads; ++i) {
        std::error_code error;
        const auto threads = std::filesystem::directory_iterator("/proc/self/task", error);
        if (error || std::distance(begin(threads), end(threads)) == 1)
            return true;
        ::usleep(1'000);
    }
    return false;
}

std::optional<Setup> awaitSetup(Channel& channel)
{
    Received received;
    if (channel.receive(received, {}) != Channel::Outcome::done)
        return std::nullopt;
    const auto request = parseRequest(received.bytes, {});
    const auto* setup = request ? std::get_if<Setup>(&request->content) : nullptr;
    return setup ? std::optional(*setup) : std::nullopt;
}

} // namespace

int runWorker(const Preparation& prepare, const std::function<void(Channel&)>& serveOne)
{
    ignoreSignals();
    ::mallopt(M_ARENA_MAX, memoryPools);
    // The window is to have its core when it needs it, however many photos are being read.
    ::setpriority(PRIO_PROCESS, 0, niceness);
    // Where the kernel forgets about this when the thread that started us ends, the closed connection remains.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    Channel channel(Descriptor(workerSocket), Channel::Descriptors::taken);
    const auto setup = awaitSetup(channel);
    if (!setup) {
        std::fputs("ferrow-worker is started by Ferrow and ferrow-batch, not by hand.\n", stderr);
        return startedWrongly;
    }
    const std::vector<std::string> readablePlaces = prepare(*setup);
    if (!hasOneThread())
        return cannotFork;
    ::malloc_trim(0); // Each fork takes a note of every page.
    Confinement walls(readablePlaces);
    forkOnRequest(channel, walls, serveOne);
    std::_Exit(0);
}

} // namespace ferrow::Worker
