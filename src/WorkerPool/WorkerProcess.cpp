// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/WorkerProcess.h"

#include "Worker/StartingConventions.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>

namespace ferrow::WorkerPool {

namespace {

using Worker::Descriptor;

/// Room for a thumbnail on its way, so that neither side waits for the other with half of it.
constexpr int socketBuffer = 1 << 20;

/// Beyond those that are replaced in the new process.
constexpr int lowestOwnDescriptor = 16;

/// The largest need that is believed, in bytes: an encoder's and a decoder's for the largest pictures.
constexpr std::int64_t largestNeed = std::int64_t(16) << 30;

struct SocketPair {
    Descriptor ours;
    Descriptor theirs;
};

std::optional<SocketPair> connectedSockets()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return std::nullopt;
    SocketPair pair{Descriptor(ends[0]), Descriptor(ends[1])};
    pair.theirs = Descriptor(::fcntl(pair.theirs.get(), F_DUPFD_CLOEXEC, lowestOwnDescriptor));
    if (!pair.theirs.isOpen())
        return std::nullopt;
    for (const Descriptor* end : {&pair.ours, &pair.theirs})
        ::setsockopt(end->get(), SOL_SOCKET, SO_SNDBUF, &socketBuffer, sizeof socketBuffer);
    return pair;
}

/// What a new process starts with: nothing of ours but the connection.
class Spawning {
public:
    explicit Spawning(int socket)
    {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawnattr_init(&attributes_);
        for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::posix_spawn_file_actions_addopen(&actions_, number, "/dev/null", O_RDWR, 0);
        ::posix_spawn_file_actions_adddup2(&actions_, socket, Worker::workerSocket);
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, Worker::workerSocket + 1);
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        // A group of its own: what is typed into the terminal to stop us must not stop a worker in the middle.
        ::posix_spawnattr_setpgroup(&attributes_, 0);
        ::posix_spawnattr_setflags(&attributes_,
                                   POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    Spawning(const Spawning&) = delete;
    Spawning& operator=(const Spawning&) = delete;
    ~Spawning()
    {
        ::posix_spawnattr_destroy(&attributes_);
        ::posix_spawn_file_actions_destroy(&actions_);
    }

    /// 0 when the program could not be started.
    [[nodiscard]] pid_t start(const QByteArray& program, const char* argument)
    {
        std::array<char*, 3> words{const_cast<char*>(program.constData()), const_cast<char*>(argument), nullptr};
        char* emptyEnvironment[] = {nullptr};
        pid_t process = 0;
        const int error =
            ::posix_spawn(&process, program.constData(), &actions_, &attributes_, words.data(), emptyEnvironment);
        return error == 0 ? process : 0;
    }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

/// By which fonts, their caches and their configuration are found.
Worker::Setup setupFor(WorkerKind kind)
{
    Worker::Setup setup;
    if (kind == WorkerKind::photos)
        return setup;
    for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_DIRS",
                             "FONTCONFIG_FILE", "FONTCONFIG_PATH", "FONTCONFIG_SYSROOT"})
        if (const char* value = std::getenv(name))
            setup.environment.push_back(std::string(name) + '=' + value);
    return setup;
}

} // namespace

WorkerProcess::WorkerProcess(pid_t process, WorkerKind kind, Descriptor socket)
    : process_(process), kind_(kind), channel_(std::move(socket), Worker::Channel::Descriptors::refused)
{
}

std::unique_ptr<WorkerProcess> WorkerProcess::start(const QByteArray& program, WorkerKind kind)
{
    auto sockets = connectedSockets();
    if (!sockets)
        return nullptr;
    const char* argument = kind == WorkerKind::logos ? Worker::argumentForLogos : nullptr;
    const pid_t process = Spawning(sockets->theirs.get()).start(program, argument);
    if (process == 0)
        return nullptr;
    std::unique_ptr<WorkerProcess> worker(new WorkerProcess(process, kind, std::move(sockets->ours)));
    // The buffer takes it at once, so that there is nothing to wait for; a worker that is gone already is found out by
    // its first job.
    static_cast<void>(worker->channel_.send(Worker::encode(Worker::Request{0, setupFor(kind)}),
                                            {.timeout = std::chrono::milliseconds(0)}));
    return worker;
}

WorkerProcess::~WorkerProcess()
{
    static_cast<void>(hasEnded());
}

void WorkerProcess::kill()
{
    if (process_ != 0)
        ::kill(process_, SIGKILL);
}

bool WorkerProcess::hasEnded()
{
    kill();
    if (process_ != 0 && ::waitpid(process_, nullptr, WNOHANG) != 0)
        process_ = 0;
    return process_ == 0;
}

bool WorkerProcess::hasEndedWithin(std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds pause{2};
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!hasEnded()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(pause);
    }
    return true;
}

void WorkerProcess::allowMemory(std::int64_t bytes)
{
    if (bytes == allowed_ || !hello_ || process_ == 0)
        return;
    allowed_ = bytes;
    rlimit limit{};
    if (::prlimit(process_, RLIMIT_AS, nullptr, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return; // It did not limit itself.
    const auto taken = rlim_t(hello_->addressSpace + Worker::addressSpaceForSmallJobs);
    limit.rlim_cur = std::min(taken + rlim_t(std::clamp<std::int64_t>(bytes, 0, largestNeed)), limit.rlim_max);
    ::prlimit(process_, RLIMIT_AS, &limit, nullptr);
}

} // namespace ferrow::WorkerPool
