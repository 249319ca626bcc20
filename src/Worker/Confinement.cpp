// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/Confinement.h"

#include "Worker/Landlock.h"
#include "Worker/StartingConventions.h"
#include "Worker/SystemCallFilter.h"

#include <sys/prctl.h>
#include <sys/resource.h>
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

/// Beyond the largest output and the largest picture in memory, in bytes: what is written without end stops there.
constexpr rlim_t largestFile = rlim_t(4) << 30;

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

bool limitResources(std::int64_t addressSpace)
{
    const rlim_t threads = threadsOfTheSystem() + moreThreads;
    const auto small = rlim_t(addressSpace + addressSpaceForSmallJobs);
    bool all = limit(RLIMIT_CORE, 0, 0) && limit(RLIMIT_NOFILE, mostDescriptors, mostDescriptors) &&
               limit(RLIMIT_NPROC, threads, threads) && limit(RLIMIT_FSIZE, largestFile, largestFile);
    if (limitsAddressSpace)
        all = limit(RLIMIT_AS, small, RLIM_INFINITY) && all;
    return all;
}

} // namespace

Hello confine(const std::vector<std::string>& readablePlaces)
{
    Hello hello;
    hello.addressSpace = addressSpaceInUse();
    hello.limitsResources = limitResources(hello.addressSpace);
    // Other programs of the same user cannot look into this one, and no program it started could gain rights.
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    hello.landlockVersion = restrictFileAccess(readablePlaces);
    hello.filtersSystemCalls = filterSystemCalls(readablePlaces.empty() ? FileOpening::refused : FileOpening::readOnly);
    return hello;
}

} // namespace ferrow::Worker
