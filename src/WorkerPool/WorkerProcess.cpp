// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/WorkerProcess.h"

#include "Worker/StartingConventions.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <thread>
#include <utility>

namespace ferrow::WorkerPool {

namespace {

/// Room for a thumbnail on its way, so that neither side waits for the other with half of it.
constexpr int socketBuffer = 1 << 20;

/// Beyond those that are replaced in the new process.
constexpr int lowestOwnDescriptor = 16;

/// The largest need that is believed, in bytes: an encoder's and a decoder's for the largest pictures, as far as this
/// machine has that much.
std::int64_t largestNeed()
{
    constexpr std::int64_t ofPictures = std::int64_t(16) << 30;
    struct sysinfo machine {};
    if (::sysinfo(&machine) != 0)
        return ofPictures;
    return std::min(ofPictures, std::int64_t(machine.totalram + machine.totalswap) * machine.mem_unit);
}

constexpr Worker::Channel::Patience atOnce{.timeout = std::chrono::milliseconds(0)};

/// Most are gone within some milliseconds: of themselves, once their workers are, or killed.
constexpr std::chrono::milliseconds graceForStem{100};
constexpr std::chrono::milliseconds patienceForStem{500};

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
        // Nothing of ours. Symbols that were bound when first called would be so again in each worker.
        char bindNow[] = "LD_BIND_NOW=1";
        char* environment[] = {bindNow, nullptr};
        pid_t process = 0;
        const int error =
            ::posix_spawn(&process, program.constData(), &actions_, &attributes_, words.data(), environment);
        return error == 0 ? process : 0;
    }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

const char* argumentFor(WorkerKind kind)
{
    switch (kind) {
    case WorkerKind::photos:
        return nullptr;
    case WorkerKind::heicWriting:
        return Worker::argumentForHeicWriting;
    case WorkerKind::logos:
        break;
    }
    return Worker::argumentForLogos;
}

/// By which fonts, their caches and their configuration are found.
Worker::Setup setupFor(WorkerKind kind)
{
    Worker::Setup setup;
    if (kind != WorkerKind::logos)
        return setup;
    for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_DIRS",
                             "FONTCONFIG_FILE", "FONTCONFIG_PATH", "FONTCONFIG_SYSROOT"})
        if (const char* value = std::getenv(name))
            setup.environment.push_back(std::string(name) + '=' + value);
    return setup;
}

} // namespace

WorkerStem::WorkerStem(pid_t process, WorkerKind kind, Descriptor socket)
    : process_(process), kind_(kind), channel_(std::move(socket), Worker::Channel::Descriptors::refused)
{
}

std::shared_ptr<WorkerStem> WorkerStem::start(const QByteArray& program, WorkerKind kind)
{
    auto sockets = connectedSockets();
    if (!sockets)
        return nullptr;
    const pid_t process = Spawning(sockets->theirs.get()).start(program, argumentFor(kind));
    if (process == 0)
        return nullptr;
    std::shared_ptr<WorkerStem> stem(new WorkerStem(process, kind, std::move(sockets->ours)));
    // The buffer takes it at once, so that there is nothing to wait for; one that is gone already is found out by the
    // first job.
    static_cast<void>(stem->channel_.send(Worker::encode(Worker::Request{0, setupFor(kind)}), atOnce));
    return stem;
}

WorkerStem::~WorkerStem()
{
    endsWithin(patienceForStem);
}

bool WorkerStem::endsWithin(std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds pause{2};
    const auto start = std::chrono::steady_clock::now();
    channel_.hangUp();
    while (process_ != 0 && ::waitpid(process_, nullptr, WNOHANG) == 0) {
        const auto waited = std::chrono::steady_clock::now() - start;
        if (waited >= patience)
            return false;
        if (waited >= graceForStem)
            ::kill(process_, SIGKILL);
        std::this_thread::sleep_for(pause);
    }
    process_ = 0;
    return true;
}

std::unique_ptr<WorkerProcess> WorkerStem::fork(const Worker::JobLimits& limits)
{
    auto sockets = connectedSockets();
    if (!sockets)
        return nullptr;
    const Worker::Request request{0, Worker::Fork{sockets->theirs.get(), limits}};
    // Of one that does not take it, the new one's first word is waited for in vain.
    static_cast<void>(channel_.send(Worker::encode(request), atOnce));
    return std::make_unique<WorkerProcess>(shared_from_this(), std::move(sockets->ours));
}

WorkerProcess::WorkerProcess(std::shared_ptr<WorkerStem> stem, Descriptor socket)
    : stem_(std::move(stem)), channel_(std::move(socket), Worker::Channel::Descriptors::taken)
{
}

WorkerProcess::~WorkerProcess()
{
    kill();
}

void WorkerProcess::setHello(const Worker::Hello& hello, Descriptor process)
{
    stem_->noteWord();
    hello_ = hello;
    process_ = std::move(process);
    channel_.refuseDescriptors();
}

void WorkerProcess::kill()
{
    // Before its first word it holds nothing, and ends when it finds nobody to say it to.
    if (process_.isOpen())
        ::syscall(SYS_pidfd_send_signal, process_.get(), SIGKILL, nullptr, 0);
    else
        channel_.close();
}

bool WorkerProcess::endsWithin(std::chrono::milliseconds patience)
{
    kill();
    if (!process_.isOpen())
        return jobs_ == 0;
    const auto end = std::chrono::steady_clock::now() + patience;
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd watched{process_.get(), POLLIN, 0};
        const int count = ::poll(&watched, 1, int(std::max<std::int64_t>(left.count(), 0)));
        if (count >= 0 || errno != EINTR)
            return count > 0;
    }
}

/// Its number among the processes that this one sees, or 0. The one that forked it does not wait for it, so that the
/// number is only good for as long as it lives.
pid_t WorkerProcess::number() const
{
    std::ifstream file("/proc/self/fdinfo/" + std::to_string(process_.get()));
    for (std::string label; file >> label; file.ignore(std::numeric_limits<std::streamsize>::max(), '\n')) {
        pid_t number = 0;
        if (label == "Pid:" && file >> number)
            return std::max(number, 0);
    }
    return 0;
}

void WorkerProcess::allowMemory(std::int64_t bytes)
{
    if (bytes == allowed_ || !hello_)
        return;
    allowed_ = bytes;
    const pid_t process = number();
    rlimit limit{};
    if (process == 0 || ::prlimit(process, RLIMIT_AS, nullptr, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return; // It did not limit itself.
    const auto taken = rlim_t(hello_->addressSpace + Worker::addressSpaceForSmallJobs);
    limit.rlim_cur = std::min(taken + rlim_t(std::clamp<std::int64_t>(bytes, 0, largestNeed())), limit.rlim_max);
    ::prlimit(process, RLIMIT_AS, &limit, nullptr);
}

} // namespace ferrow::WorkerPool
