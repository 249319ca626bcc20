// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/Namespaces.h"

#include "Platform/Files/Descriptor.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace ferrow::Worker {

namespace {

/// Covered for as long as the new root is built: a folder that every system has, and no fonts are in.
constexpr const char* newRoot = "/proc";

/// For folders and names alone: what they lead to lies elsewhere.
constexpr const char* newRootOptions = "size=1m,nr_inodes=8k,mode=0755";

bool writeFile(const char* path, const std::string& text)
{
    const Descriptor file(::open(path, O_WRONLY | O_CLOEXEC));
    return ::write(file.get(), text.data(), text.size()) == ssize_t(text.size());
}

/// Files can be made in the new root only by users that its namespace knows.
bool keepUser(uid_t user, gid_t group)
{
    const auto same = [](unsigned id) { return std::to_string(id) + ' ' + std::to_string(id) + " 1"; };
    return writeFile("/proc/self/setgroups", "deny") && writeFile("/proc/self/uid_map", same(user)) &&
           writeFile("/proc/self/gid_map", same(group));
}

bool liesBelowOneOf(const std::vector<std::string>& folders, const std::string& path)
{
    return std::ranges::any_of(folders, [&](const std::string& folder) { return path.starts_with(folder + '/'); });
}

/// What is not there, or can't be shown, holds no fonts.
void show(const std::vector<std::string>& places)
{
    std::vector<std::string> shown;
    for (const std::string& place : places) {
        std::error_code error;
        const bool isFolder = std::filesystem::is_directory(place, error);
        if (error || !place.starts_with('/') || liesBelowOneOf(shown, place))
            continue;
        const std::string target = newRoot + place;
        std::filesystem::create_directories(isFolder ? target : target.substr(0, target.rfind('/')), error);
        if (!isFolder)
            static_cast<void>(Descriptor(::open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0444)));
        if (::mount(place.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0)
            shown.push_back(place);
    }
}

bool makeReadOnly()
{
    mount_attr attributes{};
    attributes.attr_set = MOUNT_ATTR_RDONLY | MOUNT_ATTR_NOSUID | MOUNT_ATTR_NODEV | MOUNT_ATTR_NOEXEC;
    return ::mount_setattr(AT_FDCWD, newRoot, AT_RECURSIVE, &attributes, sizeof attributes) == 0;
}

bool enter(const std::vector<std::string>& readablePlaces)
{
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWIPC | CLONE_NEWUTS) == 0 &&
           keepUser(user, group) && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("ferrow", newRoot, "tmpfs", MS_NOSUID | MS_NODEV | MS_NOEXEC, newRootOptions) == 0 &&
           (show(readablePlaces), makeReadOnly()) && ::chdir(newRoot) == 0 &&
           ::syscall(SYS_pivot_root, ".", ".") == 0 && ::umount2(".", MNT_DETACH) == 0 && ::chdir("/") == 0;
}

/// Without the C library, which knows no such flag. Its note of the thread's number is then the parent's: that matters
/// to nothing but the ownership of locks, of which none is held across.
pid_t forkIntoOwnProcesses()
{
    return pid_t(::syscall(SYS_clone, CLONE_NEWPID | SIGCHLD, nullptr, nullptr, nullptr, nullptr));
}

/// What was half done can't be taken back, so that it is tried by another process first. No setting is asked: there is
/// one a system, and none tells of them all.
bool canEnter(const std::vector<std::string>& readablePlaces)
{
    const pid_t probe = ::fork();
    if (probe == 0) {
        if (!enter(readablePlaces))
            ::_exit(1);
        const pid_t inner = forkIntoOwnProcesses();
        if (inner == 0)
            ::_exit(0);
        int status = 0;
        ::_exit(inner > 0 && ::waitpid(inner, &status, 0) == inner && status == 0 ? 0 : 1);
    }
    int status = 0;
    while (probe > 0 && ::waitpid(probe, &status, 0) < 0 && errno == EINTR)
        continue;
    return probe > 0 && status == 0;
}

void dropCapabilities()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3]{};
    ::syscall(SYS_capset, &header, none);
}

} // namespace

bool enterOwnNamespaces(const std::vector<std::string>& readablePlaces)
{
    return canEnter(readablePlaces) && enter(readablePlaces);
}

pid_t forkConfined(bool hasOwnNamespaces)
{
    pid_t child = hasOwnNamespaces ? forkIntoOwnProcesses() : ::fork();
    if (child < 0 && hasOwnNamespaces) // There may be a limit on how many.
        child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
        dropCapabilities();
    }
    return child;
}

} // namespace ferrow::Worker
