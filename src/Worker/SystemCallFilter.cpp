// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/SystemCallFilter.h"

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <type_traits>

// A list of what is refused, not of what is allowed: codecs and the C library call different things on other machines
// and in later versions, and a photo must not fail for that. Files and network are closed by Landlock already, and no
// descriptor is there but those handed over; this is the second wall. Calls answer an error, as they would on a system
// that lacks them, since libraries ask for some without need.
namespace ferrow::Worker {

namespace {

using Filter = std::unique_ptr<std::remove_pointer_t<scmp_filter_ctx>, decltype(&seccomp_release)>;

constexpr const char* refusedCalls[] = {
    // Names in the file system.
    "creat",
    "openat2",
    "rename",
    "renameat",
    "renameat2",
    "link",
    "linkat",
    "symlink",
    "symlinkat",
    "unlink",
    "unlinkat",
    "mkdir",
    "mkdirat",
    "rmdir",
    "mknod",
    "mknodat",
    "truncate",
    "chmod",
    "fchmod",
    "fchmodat",
    "fchmodat2",
    "chown",
    "fchown",
    "lchown",
    "fchownat",
    "utime",
    "utimes",
    "utimensat",
    "futimesat",
    "setxattr",
    "lsetxattr",
    "fsetxattr",
    "removexattr",
    "lremovexattr",
    "fremovexattr",
    "setxattrat",
    "removexattrat",
    "chdir",
    "fchdir",
    "chroot",
    "pivot_root",
    "name_to_handle_at",
    "open_by_handle_at",
    "inotify_init",
    "inotify_init1",
    "fanotify_init",
    "fanotify_mark",
    "quotactl",
    "quotactl_fd",
    "acct",
    // Mounts and namespaces.
    "mount",
    "umount",
    "umount2",
    "mount_setattr",
    "move_mount",
    "open_tree",
    "fsopen",
    "fsconfig",
    "fsmount",
    "fspick",
    "unshare",
    "setns",
    "swapon",
    "swapoff",
    // The network and other ways to other processes.
    "socket",
    "socketpair",
    "socketcall",
    "connect",
    "bind",
    "listen",
    "accept",
    "accept4",
    "ipc",
    "shmget",
    "shmat",
    "shmctl",
    "msgget",
    "msgsnd",
    "msgrcv",
    "msgctl",
    "semget",
    "semop",
    "semtimedop",
    "semctl",
    "mq_open",
    "mq_unlink",
    "memfd_create",
    "memfd_secret",
    // Programs and processes.
    "execve",
    "execveat",
    "fork",
    "vfork",
    "ptrace",
    "process_vm_readv",
    "process_vm_writev",
    "process_madvise",
    "process_mrelease",
    "pidfd_open",
    "pidfd_getfd",
    "pidfd_send_signal",
    "rt_sigqueueinfo",
    "rt_tgsigqueueinfo",
    "tkill",
    "kcmp",
    "setpgid",
    "setsid",
    "setpriority",
    "ioprio_set",
    "setrlimit",
    "sched_setattr",
    "sched_setscheduler",
    "sched_setparam",
    "migrate_pages",
    "move_pages",
    // Who one is.
    "setuid",
    "setgid",
    "setreuid",
    "setregid",
    "setresuid",
    "setresgid",
    "setfsuid",
    "setfsgid",
    "setgroups",
    "capset",
    "personality",
    "keyctl",
    "add_key",
    "request_key",
    // The kernel itself.
    "io_uring_setup",
    "io_uring_enter",
    "io_uring_register",
    "io_setup",
    "io_submit",
    "bpf",
    "perf_event_open",
    "userfaultfd",
    "init_module",
    "finit_module",
    "delete_module",
    "create_module",
    "kexec_load",
    "kexec_file_load",
    "reboot",
    "syslog",
    "iopl",
    "ioperm",
    "modify_ldt",
    "vm86",
    "vm86old",
    "settimeofday",
    "clock_settime",
    "clock_adjtime",
    "adjtimex",
    "stime",
    "sethostname",
    "setdomainname",
    "vhangup",
    "nfsservctl",
    "lookup_dcookie",
    "uselib",
    "ustat",
    "sysfs",
    "_sysctl",
    "vmsplice",
    "landlock_create_ruleset",
};

/// The last call that the list above was made in the knowledge of (map_shadow_stack). Younger ones are said not to be
/// there, which all software is prepared for.
constexpr int lastKnownCall = 453;
constexpr int lastNumberedCall = 600;

bool refuse(const Filter& filter, const char* name, int error)
{
    const int call = ::seccomp_syscall_resolve_name(name);
    // Some are not there on every architecture, or younger than the library.
    return call == __NR_SCMP_ERROR || call < 0 ||
           ::seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(unsigned(error)), call, 0) == 0;
}

template <typename... Conditions>
bool refuseWhen(const Filter& filter, int call, int error, Conditions... conditions)
{
    const std::array<scmp_arg_cmp, sizeof...(conditions)> all{conditions...};
    return ::seccomp_rule_add_array(filter.get(), SCMP_ACT_ERRNO(unsigned(error)), call, all.size(), all.data()) == 0;
}

bool refuseOpening(const Filter& filter, FileOpening opening)
{
    if (opening == FileOpening::refused)
        return refuse(filter, "open", EACCES) && refuse(filter, "openat", EACCES);
    for (const int flag : {O_WRONLY, O_RDWR, O_CREAT, O_TRUNC, O_APPEND, O_TMPFILE & ~O_DIRECTORY})
        if (!refuseWhen(filter, SCMP_SYS(open), EACCES,
                        SCMP_A1_32(SCMP_CMP_MASKED_EQ, unsigned(flag), unsigned(flag))) ||
            !refuseWhen(filter, SCMP_SYS(openat), EACCES,
                        SCMP_A2_32(SCMP_CMP_MASKED_EQ, unsigned(flag), unsigned(flag))))
            return false;
    return true;
}

/// Threads, but no processes. What clone3 is asked for lies in memory, where a filter cannot look; the C library
/// turns to clone when it is not there.
bool refuseProcesses(const Filter& filter)
{
    return refuse(filter, "clone3", ENOSYS) &&
           refuseWhen(filter, SCMP_SYS(clone), EPERM, SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0));
}

/// A process may end itself, as abort() does.
bool refuseSignals(const Filter& filter)
{
    const auto self = scmp_datum_t(::getpid());
    return refuseWhen(filter, SCMP_SYS(kill), EPERM, SCMP_A0(SCMP_CMP_NE, self)) &&
           refuseWhen(filter, SCMP_SYS(tgkill), EPERM, SCMP_A0(SCMP_CMP_NE, self));
}

bool refuseRest(const Filter& filter)
{
    // The limits may be asked for, the names of threads set, and nothing here is a terminal.
    return refuseWhen(filter, SCMP_SYS(prlimit64), EPERM, SCMP_A2(SCMP_CMP_NE, 0)) &&
           refuseWhen(filter, SCMP_SYS(prctl), EPERM, SCMP_A0(SCMP_CMP_NE, PR_SET_NAME)) &&
           refuseWhen(filter, SCMP_SYS(sched_setaffinity), EPERM, SCMP_A0(SCMP_CMP_NE, 0)) &&
           refuse(filter, "ioctl", ENOTTY);
}

/// A descriptor can be made to send signals, to whichever process it is told. The kernel takes the lower half of the
/// register for the command, so that what stands in the upper one must not hide it.
bool refuseNotices(const Filter& filter)
{
    for (const int command : {F_SETOWN, F_SETOWN_EX, F_SETSIG, F_NOTIFY, F_SETLEASE})
        if (!refuseWhen(filter, SCMP_SYS(fcntl), EPERM, SCMP_A1(SCMP_CMP_MASKED_EQ, 0xffffffffu, unsigned(command))))
            return false;
    return true;
}

bool refuseYoungerCalls(const Filter& filter)
{
    for (int call = lastKnownCall + 1; call <= lastNumberedCall; ++call)
        if (!refuseWhen(filter, call, ENOSYS))
            return false;
    return true;
}

} // namespace

bool filterSystemCalls(FileOpening opening)
{
    const Filter filter(::seccomp_init(SCMP_ACT_ALLOW), ::seccomp_release);
    if (!filter)
        return false;
    // Hundreds of calls are compared as a tree, not one after the other.
    ::seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2);
    for (const char* name : refusedCalls)
        if (!refuse(filter, name, EPERM))
            return false;
    return refuseOpening(filter, opening) && refuseProcesses(filter) && refuseSignals(filter) &&
           refuseNotices(filter) && refuseRest(filter) && refuseYoungerCalls(filter) &&
           ::seccomp_load(filter.get()) == 0;
}

} // namespace ferrow::Worker
