// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/Server.h"

#include "Platform/Base/Cancellation.h"
#include "Worker/MessageParts.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <type_traits>

namespace ferrow::Worker {

namespace {

/// Below these a job is not worth a message of its own: it is over in some tens of milliseconds.
constexpr std::int64_t unannouncedPixels = 2'000'000;
constexpr std::int64_t unannouncedBytes = 16 << 20;

/// The other side is gone, and with it whoever wanted an answer.
struct ConnectionLost {};

AnsweredPicture answeredPicture(const Bitmap& picture, int memory)
{
    AnsweredPicture answered{picture.size(), picture.format(), picture.profile().wellKnown(), {}};
    if (picture.isNull())
        return {};
    if (byteCount(picture.size(), picture.format()) <= inlinePictureBytes)
        answered.pixels = picture;
    else if (!writePicture(memory, picture, 0))
        throw std::bad_alloc();
    return answered;
}

class Server : private Engine::JobObserver {
public:
    Server(Channel& channel, Engine::InProcessAnswerer::LogoRasterizer logos) : channel_(channel), engine_(*this, logos)
    {
    }

    void run();

private:
    void headerRead(const Engine::JobSize& size) override;
    void beforeBand() override;
    void lastRowComposed() override;

    [[nodiscard]] std::optional<Request> next(const Channel::Patience& patience);
    void answer(const Request& request);
    void send(decltype(Answer::content) content);
    void giveBackMemory();

    [[nodiscard]] decltype(Answer::content) work(const Engine::InspectRequest& request, int memory);
    [[nodiscard]] decltype(Answer::content) work(const Engine::FrameRequest& request, int memory);
    [[nodiscard]] decltype(Answer::content) work(const Engine::ReadBackRequest& request, int memory);
    [[nodiscard]] decltype(Answer::content) work(const Engine::RegionRequest& request, int memory);
    [[nodiscard]] decltype(Answer::content) work(const Engine::LogoRequest& request, int memory);

    Channel& channel_;
    Engine::InProcessAnswerer engine_;
    Received received_;
    std::uint32_t job_ = 0;
    std::int64_t bytesHeld_ = 0;
};

/// Absent when none came in time.
std::optional<Request> Server::next(const Channel::Patience& patience)
{
    Received received;
    switch (channel_.receive(received, patience)) {
    case Channel::Outcome::done:
        break;
    case Channel::Outcome::timedOut:
    case Channel::Outcome::woken:
        return std::nullopt;
    case Channel::Outcome::closed:
        throw ConnectionLost{};
    }
    std::vector<int> descriptors;
    for (const Descriptor& descriptor : received.descriptors)
        descriptors.push_back(descriptor.get());
    auto request = parseRequest(received.bytes, descriptors);
    if (!request)
        throw ConnectionLost{};
    if (!received.descriptors.empty())
        received_ = std::move(received); // They stay open as long as the job takes.
    return request;
}

void Server::send(decltype(Answer::content) content)
{
    if (channel_.send(encode(Answer{job_, std::move(content)}), {}) != Channel::Outcome::done)
        throw ConnectionLost{};
}

void Server::headerRead(const Engine::JobSize& size)
{
    bytesHeld_ = size.bytes;
    const bool waits = size.bytes > unannouncedBytes;
    if (!waits && size.pixels <= unannouncedPixels)
        return;
    send(HeaderRead{size.pixels, size.isHeif, size.bytes, waits});
    while (waits) {
        const auto request = next({});
        if (request->job != job_)
            continue; // A stop that came too late for the job before.
        if (std::holds_alternative<Proceed>(request->content))
            return;
        throw Canceled{};
    }
}

void Server::beforeBand()
{
    const auto request = next({.timeout = std::chrono::milliseconds(0)});
    if (request && request->job == job_ && std::holds_alternative<Stop>(request->content))
        throw Canceled{};
}

void Server::lastRowComposed()
{
    send(LastRowComposed{});
}

decltype(Answer::content) Server::work(const Engine::InspectRequest& request, int memory)
{
    Inspected inspected{engine_.inspect(request, {}), {}};
    inspected.picture = answeredPicture(inspected.answer.picture, memory);
    return inspected;
}

decltype(Answer::content) Server::work(const Engine::FrameRequest& request, int)
{
    try {
        return Framed{engine_.frame(request, {})};
    } catch (const CannotKeep&) {
        return KeepingRefused{};
    }
}

decltype(Answer::content) Server::work(const Engine::ReadBackRequest& request, int)
{
    return SummaryRead{engine_.readBack(request, {})};
}

decltype(Answer::content) Server::work(const Engine::RegionRequest& request, int memory)
{
    return RegionComposed{answeredPicture(engine_.composeRegion(request, {}), memory)};
}

decltype(Answer::content) Server::work(const Engine::LogoRequest& request, int memory)
{
    const Engine::LogoAnswer logo = engine_.rasterizeLogo(request, {});
    return LogoRasterized{logo.fileExtension, answeredPicture(logo.picture, memory)};
}

void Server::answer(const Request& request)
{
    job_ = request.job;
    bytesHeld_ = 0;
    decltype(Answer::content) content = WasCanceled{};
    try {
        std::visit(
            [&]<typename Wanted>(const Wanted& wanted) {
                if constexpr (!std::is_empty_v<Wanted> && !std::is_same_v<Wanted, Setup> &&
                              !std::is_same_v<Wanted, Fork>)
                    content = work(wanted, request.pictureMemory);
            },
            request.content);
    } catch (const Canceled&) {
    } catch (const ImagePipelineError& error) {
        content = PhotoRefused{error};
    } catch (const LogoAssetError& error) {
        content = LogoRefused{error.value};
    } catch (const std::bad_alloc&) {
        content = PhotoRefused{ImagePipelineError::renderingFailed};
    }
    send(std::move(content));
}

/// What a large photo needed would otherwise stay with this process for as long as it lives.
void Server::giveBackMemory()
{
    received_ = {};
    if (bytesHeld_ > unannouncedBytes)
        ::malloc_trim(0);
}

void Server::run()
{
    while (true) {
        const auto request = next({});
        // A stop may cross the answer that it no longer concerns.
        if (std::holds_alternative<Stop>(request->content) || std::holds_alternative<Proceed>(request->content))
            continue;
        answer(*request);
        if (std::holds_alternative<Engine::FrameRequest>(request->content))
            return;
        giveBackMemory();
    }
}

/// What they took of the processor then counts as this process's, for whoever measures.
void collectEnded()
{
    const int before = errno;
    while (::waitpid(-1, nullptr, WNOHANG) > 0)
        continue;
    errno = before;
}

/// In the new process: `socket` is its connection.
[[noreturn]] void serveAlone(Descriptor socket, const Hello& hello, const std::function<void(Channel&)>& serveOne)
{
    Channel channel(std::move(socket), Channel::Descriptors::taken);
    const auto outcome = channel.send(encode(Answer{0, hello}), {});
    ::close(hello.process);
    if (outcome == Channel::Outcome::done)
        serveOne(channel);
    // Nothing is left to be written, and much memory needs no tidying.
    std::_Exit(0);
}

} // namespace

void forkOnRequest(Channel& channel, Confinement& walls, const std::function<void(Channel&)>& serveOne)
{
    std::signal(SIGCHLD, [](int) { collectEnded(); });
    Received received;
    while (channel.receive(received, {}) == Channel::Outcome::done) {
        if (received.descriptors.size() != 1)
            break;
        const auto request = parseRequest(received.bytes, std::array{received.descriptors.front().get()});
        const auto* fork = request ? std::get_if<Fork>(&request->content) : nullptr;
        if (!fork)
            break;
        // Where none can be had the connection closes, which says as much.
        if (walls.fork(fork->limits) == 0) {
            channel.close();
            serveAlone(std::move(received.descriptors.front()), walls.hello(), serveOne);
        }
        received = {};
    }
    // They end with their connections, or with this process when that has been waited for long enough.
    while (::waitpid(-1, nullptr, 0) > 0 || errno == EINTR)
        continue;
}

void serve(Channel& channel, Engine::InProcessAnswerer::LogoRasterizer logos)
try {
    Server(channel, logos).run();
} catch (const ConnectionLost&) {
}

} // namespace ferrow::Worker
