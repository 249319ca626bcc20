// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/SystemCallFilter.h"

#include "Platform/Files/MemoryFile.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <type_traits>

// What is allowed was seen in traces of Debian 12 and 13 while photos of all formats were read and written, and what
// the same libraries call elsewhere and later was added. The rest is said not to be there, which libraries are prepared
// for: they ask for some calls without need, and a photo must not fail for that, nor a process end.
namespace ferrow::Worker {

namespace {

using Filter = std::unique_ptr<std::remove_pointer_t<scmp_filter_ctx>, decltype(&seccomp_release)>;

constexpr const char* allowedCalls[] = {
    // The descriptors that were handed over, and talking to who handed them over.
    "read",
    "readv",
    "pread64",
    "preadv",
    "write",
    "writev",
    "pwrite64",
    "pwritev",
    "lseek",
    "_llseek",
    "fstat",
    "fstat64",
    "close",
    "recvmsg",
    "sendmsg",
    "poll",
    "ppoll",
    "ppoll_time64",
    // Memory, as far as it can't be run.
    "munmap",
    "mremap",
    "madvise",
    "brk",
    "get_mempolicy",
    "set_mempolicy",
    "membarrier",
    // Threads, and waiting for them.
    "futex",
    "futex_time64",
    "futex_waitv",
    "set_robust_list",
    "rseq",
    "sched_yield",
    "sched_getaffinity",
    "sched_getparam",
    "sched_getscheduler",
    "getpriority",
    "getcpu",
    "gettid",
    "getpid",
    "exit",
    "exit_group",
    // Signals to itself, from the kernel.
    "rt_sigaction",
    "rt_sigprocmask",
    "rt_sigreturn",
    "sigreturn",
    "sigaltstack",
    "restart_syscall",
    // The time, chance and the machine.
    "clock_gettime",
    "clock_gettime64",
    "clock_getres",
    "clock_getres_time64",
    "gettimeofday",
    "time",
    "clock_nanosleep",
    "clock_nanosleep_time64",
    "nanosleep",
    "getrandom",
    "sysinfo",
    "uname",
    "getrlimit",
    "ugetrlimit",
    "getrusage",
    "times",
#ifdef __SANITIZE_ADDRESS__ // Which asks through a pipe whether memory may be read, and names itself in reports.
    "pipe",
    "pipe2",
    "readlink",
    "readlinkat",
#endif
};

/// For fonts: what is beside them, what they are, and reading them.
constexpr const char* allowedForFonts[] = {"newfstatat", "fstatat64", "stat",      "stat64",    "lstat",
                                           "lstat64",    "statx",     "access",    "faccessat", "faccessat2",
                                           "getdents64", "fstatfs",   "fstatfs64", "fadvise64"};

/// Exactly what the C library starts threads with; anything less could be a process, anything more a namespace.
constexpr unsigned threadFlags = CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SYSVSEM | CLONE_SIGHAND | CLONE_THREAD |
                                 CLONE_SETTLS | CLONE_PARENT_SETTID | CLONE_CHILD_CLEARTID;

/// MAP_TYPE of the kernel, which the C library's headers leave out in some standards.
constexpr unsigned mappingType = 0x0f;

/// Younger than some headers: names memory for whoever looks at the process.
constexpr unsigned nameMemory = 0x53564d41;

constexpr unsigned openedForMore = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC | O_APPEND | (O_TMPFILE & ~O_DIRECTORY);

/// Some are not there on every architecture, or younger than the library.
template <typename... Conditions>
bool answer(const Filter& filter, std::uint32_t action, const char* name, Conditions... conditions)
{
    const int call = ::seccomp_syscall_resolve_name(name);
    return call == __NR_SCMP_ERROR || call < 0 ||
           ::seccomp_rule_add(filter.get(), action, call, sizeof...(conditions), conditions...) == 0;
}

template <typename... Conditions>
bool allow(const Filter& filter, const char* name, Conditions... conditions)
{
    return answer(filter, SCMP_ACT_ALLOW, name, conditions...);
}

/// The kernel takes the lower half of a register for what is an int: the upper one must not decide.
scmp_arg_cmp equals(unsigned argument, unsigned value, unsigned mask = 0xffffffff)
{
    return SCMP_CMP(argument, SCMP_CMP_MASKED_EQ, mask, value);
}

bool allowOpening(const Filter& filter, FileOpening opening)
{
    if (opening == FileOpening::refused)
        return answer(filter, SCMP_ACT_ERRNO(EACCES), "open") && answer(filter, SCMP_ACT_ERRNO(EACCES), "openat");
    for (const char* name : allowedForFonts)
        if (!allow(filter, name))
            return false;
    return allow(filter, "open", equals(1, 0, openedForMore)) && allow(filter, "openat", equals(2, 0, openedForMore));
}

bool allowMemory(const Filter& filter)
{
    for (const char* name : {"mmap", "mmap2"})
        if (!allow(filter, name, equals(2, 0, PROT_EXEC), equals(3, MAP_PRIVATE, mappingType)))
            return false;
    return allow(filter, "mprotect", equals(2, 0, PROT_EXEC));
}

bool allowSome(const Filter& filter)
{
    for (const int command : {F_GETFD, F_SETFD, F_GETFL})
        for (const char* name : {"fcntl", "fcntl64"})
            if (!allow(filter, name, equals(1, unsigned(command))))
                return false;
    // Limits may be asked for: where new ones would lie is a pointer, and compared as a whole.
    return allow(filter, "prlimit64", SCMP_A2(SCMP_CMP_EQ, 0)) && allow(filter, "prctl", equals(0, PR_SET_NAME)) &&
           allow(filter, "prctl", equals(0, nameMemory)) && allow(filter, "sched_setaffinity", equals(0, 0)) &&
           allow(filter, "clone", equals(0, threadFlags)) && answer(filter, SCMP_ACT_ERRNO(ENOTTY), "ioctl");
}

std::vector<sock_filter> exported(const Filter& filter)
{
    const Descriptor file = openMemoryFile("ferrow-filter");
    struct stat status {};
    if (::seccomp_export_bpf(filter.get(), file.get()) != 0 || ::fstat(file.get(), &status) != 0)
        return {};
    std::vector<sock_filter> program(std::size_t(status.st_size) / sizeof(sock_filter));
    const auto length = program.size() * sizeof(sock_filter);
    return ::pread(file.get(), program.data(), length, 0) == ssize_t(length) ? program : std::vector<sock_filter>();
}

bool kernelHasFilters()
{
    const unsigned action = SECCOMP_RET_ERRNO;
    return ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

} // namespace

std::vector<sock_filter> systemCallFilter(FileOpening opening)
{
    const Filter filter(::seccomp_init(SCMP_ACT_ERRNO(ENOSYS)), ::seccomp_release);
    if (!filter || !kernelHasFilters())
        return {};
    // Calls are compared as a tree, not one after the other.
    ::seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2);
    for (const char* name : allowedCalls)
        if (!allow(filter, name))
            return {};
    const bool isWhole = allowOpening(filter, opening) && allowMemory(filter) && allowSome(filter);
    return isWhole ? exported(filter) : std::vector<sock_filter>();
}

bool enforce(std::vector<sock_filter> filter)
{
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return !filter.empty() && ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) == 0;
}

} // namespace ferrow::Worker
