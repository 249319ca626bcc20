// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/Confinement.h"

#include "Worker/Landlock.h"
#include "Worker/Namespaces.h"
#include "Worker/StartingConventions.h"
#include "Worker/SystemCallFilter.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>

namespace ferrow::Worker {

namespace {

/// Of the connection, a job's and a font's.
constexpr rlim_t mostDescriptors = 32;

/// Threads that may be added to those of the whole system at the start. The limit counts all of a user's, who may
/// start other programs while this one lives: a codec that is refused a thread may wait for it for ever. It is there
/// against tens of thousands, and void for root.
constexpr rlim_t moreThreads = 16'384;

/// In a namespace of its own no others are counted, but all processes forked here are: a dozen with the threads of two
/// codecs on a machine of 64 cores.
constexpr rlim_t ownThreads = 2'048;

/// Address space is what sanitizers spend by the terabyte.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool limitsAddressSpace = false;
#else
constexpr bool limitsAddressSpace = true;
#endif

std::int64_t addressSpaceInUse()
{
    std::int64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * ::sysconf(_SC_PAGESIZE);
}

rlim_t threadsOfTheSystem()
{
    std::string average;
    rlim_t running = 0;
    rlim_t all = 0;
    char slash = 0;
    std::ifstream("/proc/loadavg") >> average >> average >> average >> running >> slash >> all;
    return all;
}

/// Never above what this process was given.
bool limit(int resource, rlim_t soft, rlim_t hard)
{
    rlimit given{};
    if (::getrlimit(__rlimit_resource(resource), &given) != 0)
        return false;
    const rlimit wanted{std::min(soft, given.rlim_max), std::min(hard, given.rlim_max)};
    return ::setrlimit(__rlimit_resource(resource), &wanted) == 0;
}

bool limitResources(std::int64_t addressSpace, rlim_t threads)
{
    const auto small = rlim_t(addressSpace + addressSpaceForSmallJobs);
    bool all = limit(RLIMIT_CORE, 0, 0) && limit(RLIMIT_NOFILE, mostDescriptors, mostDescriptors) &&
               limit(RLIMIT_NPROC, threads, threads);
    if (limitsAddressSpace)
        all = limit(RLIMIT_AS, small, RLIM_INFINITY) && all;
    return all;
}

} // namespace

Confinement::Confinement(const std::vector<std::string>& readablePlaces)
{
    // Asked while there is a /proc.
    hello_.addressSpace = addressSpaceInUse();
    const rlim_t threadsOfAll = threadsOfTheSystem() + moreThreads;
    hello_.hasNamespaces = enterOwnNamespaces(readablePlaces);
    hello_.limitsResources = limitResources(hello_.addressSpace, hello_.hasNamespaces ? ownThreads : threadsOfAll);
    // Other programs of the same user cannot look into this one, and no program it started could gain rights.
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    // Mounting comes first: Landlock refuses it from here on.
    hello_.landlockVersion = restrictFileAccess(readablePlaces);
    const bool holdsFilesBack = hello_.hasNamespaces || hello_.landlockVersion > 0;
    filter_ =
        systemCallFilter(!readablePlaces.empty() && holdsFilesBack ? FileOpening::readOnly : FileOpening::refused);
}

pid_t Confinement::fork(const JobLimits& limits)
{
    const pid_t child = forkConfined(hello_.hasNamespaces);
    if (child != 0)
        return child;
    const auto bytes = rlim_t(limits.fileBytes);
    const auto seconds = rlim_t(limits.processorSeconds);
    // The hard limit kills; a process that is alone in its namespace would not heed the signal of the soft one.
    hello_.limitsResources =
        limit(RLIMIT_FSIZE, bytes, bytes) && limit(RLIMIT_CPU, seconds, seconds) && hello_.limitsResources;
    hello_.process = int(::syscall(SYS_pidfd_open, ::getpid(), 0));
    hello_.filtersSystemCalls = enforce(filter_);
    return child;
}

} // namespace ferrow::Worker
