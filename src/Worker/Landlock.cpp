// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/Landlock.h"

#include "Platform/Files/Descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cstddef>
#include <cstdint>

namespace ferrow::Worker {

namespace {

// The system's header describes the version that it was made with. Kernels older and newer are met, so the calls are
// described here: https://docs.kernel.org/userspace-api/landlock.html.
constexpr long createRuleset = 444;
constexpr long addRule = 445;
constexpr long restrictSelf = 446;
constexpr unsigned queryVersion = 1;
constexpr int belowPath = 1;

struct Ruleset {
    std::uint64_t files = 0;
    std::uint64_t network = 0;
    std::uint64_t scopes = 0;
};

struct [[gnu::packed]] PathRule {
    std::uint64_t allowed;
    std::int32_t place;
};

constexpr std::uint64_t readFile = 1 << 2;
constexpr std::uint64_t readFolder = 1 << 3;

constexpr std::uint64_t firstBits(int count)
{
    return (std::uint64_t(1) << count) - 1;
}

/// Every right that there is in a version: what is not named there stays allowed.
constexpr Ruleset everythingIn(int version)
{
    Ruleset all;
    all.files = firstBits(version >= 5 ? 16 : version >= 3 ? 15 : version == 2 ? 14 : 13);
    all.network = version >= 4 ? firstBits(2) : 0;
    all.scopes = version >= 6 ? firstBits(2) : 0;
    return all;
}

/// Older kernels refuse a longer description than they know.
constexpr std::size_t lengthIn(int version)
{
    return version >= 6 ? sizeof(Ruleset) : version >= 4 ? offsetof(Ruleset, scopes) : offsetof(Ruleset, network);
}

} // namespace

int restrictFileAccess(const std::vector<std::string>& readablePlaces)
{
    const long version = ::syscall(createRuleset, nullptr, 0, queryVersion);
    if (version < 1)
        return 0;
    const Ruleset denied = everythingIn(int(version));
    const Descriptor rules(int(::syscall(createRuleset, &denied, lengthIn(int(version)), 0)));
    if (!rules.isOpen())
        return 0;
    for (const std::string& path : readablePlaces) {
        const Descriptor place(::open(path.c_str(), O_PATH | O_CLOEXEC));
        struct stat status {};
        if (!place.isOpen() || ::fstat(place.get(), &status) != 0)
            continue; // What is not there holds no fonts.
        const PathRule rule{S_ISDIR(status.st_mode) ? readFile | readFolder : readFile, place.get()};
        static_cast<void>(::syscall(addRule, rules.get(), belowPath, &rule, 0));
    }
    return ::syscall(restrictSelf, rules.get(), 0) == 0 ? int(version) : 0;
}

} // namespace ferrow::Worker
