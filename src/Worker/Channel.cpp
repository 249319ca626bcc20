// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/Channel.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

namespace ferrow::Worker {

namespace {

/// Room for the descriptors of one message, aligned as the system wants it.
struct alignas(cmsghdr) ControlBuffer {
    std::array<char, CMSG_SPACE(maximumDescriptors * sizeof(int))> bytes{};
};

void attach(msghdr& message, ControlBuffer& control, const std::vector<int>& descriptors)
{
    if (descriptors.empty())
        return;
    const std::size_t length = descriptors.size() * sizeof(int);
    message.msg_control = control.bytes.data();
    message.msg_controllen = CMSG_SPACE(length);
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(length);
    std::memcpy(CMSG_DATA(header), descriptors.data(), length);
}

bool wouldBlock()
{
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

} // namespace

/// When patience ends, however often something small arrives before.
class Channel::Deadline {
public:
    explicit Deadline(const Patience& patience) : wakeDescriptor(patience.wakeDescriptor)
    {
        if (patience.timeout)
            at_ = Clock::now() + std::max(*patience.timeout, std::chrono::milliseconds(0));
    }

    [[nodiscard]] bool isOver() const { return at_ && Clock::now() >= *at_; }
    /// As poll() counts: rounded up, since it would else be asked again and again within the last millisecond.
    [[nodiscard]] int millisecondsLeft() const
    {
        if (!at_)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*at_ - Clock::now());
        return int(std::clamp<std::int64_t>(left.count(), 0, std::numeric_limits<int>::max()));
    }

    const int wakeDescriptor;

private:
    using Clock = std::chrono::steady_clock;

    std::optional<Clock::time_point> at_;
};

Channel::Channel(Descriptor socket, Descriptors descriptors) : socket_(std::move(socket)), policy_(descriptors) {}

Channel::Outcome Channel::wait(short events, const Deadline& deadline) const
{
    std::array<pollfd, 2> watched{pollfd{socket_.get(), events, 0}, pollfd{deadline.wakeDescriptor, POLLIN, 0}};
    // A negative descriptor is passed over.
    const int count = ::poll(watched.data(), watched.size(), deadline.millisecondsLeft());
    if (count < 0 && errno != EINTR)
        return Outcome::closed;
    if (watched[0].revents != 0 || count < 0)
        return Outcome::done;
    return count == 0 ? Outcome::timedOut : Outcome::woken;
}

Channel::Outcome Channel::send(const Message& message, const Patience& patience)
{
    const Deadline deadline(patience);
    std::size_t sent = 0;
    while (sent < message.bytes.size()) {
        iovec rest{const_cast<std::byte*>(message.bytes.data()) + sent, message.bytes.size() - sent};
        msghdr part{};
        part.msg_iov = &rest;
        part.msg_iovlen = 1;
        ControlBuffer control;
        if (sent == 0)
            attach(part, control, message.descriptors);
        const ssize_t count = ::sendmsg(socket_.get(), &part, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count > 0) {
            sent += std::size_t(count);
            continue;
        }
        if (errno == EINTR)
            continue;
        if (!wouldBlock())
            return Outcome::closed;
        if (const Outcome outcome = wait(POLLOUT, deadline); outcome != Outcome::done)
            return outcome;
    }
    return Outcome::done;
}

bool Channel::keepDescriptors(msghdr& message)
{
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header; header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS)
            continue;
        for (std::size_t offset = 0; offset + sizeof(int) <= header->cmsg_len - CMSG_LEN(0); offset += sizeof(int)) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(header) + offset, sizeof number);
            incoming_.descriptors.emplace_back(number);
        }
    }
    return incoming_.descriptors.size() <= maximumDescriptors;
}

std::optional<Channel::Outcome> Channel::readSome()
{
    if (incoming_.bytes.empty())
        incoming_.bytes.resize(headerLength);
    iovec rest{incoming_.bytes.data() + arrived_, incoming_.bytes.size() - arrived_};
    msghdr part{};
    part.msg_iov = &rest;
    part.msg_iovlen = 1;
    // Without room for them the system closes descriptors that were sent along.
    ControlBuffer control;
    if (policy_ == Descriptors::taken) {
        part.msg_control = control.bytes.data();
        part.msg_controllen = control.bytes.size();
    }
    const ssize_t count = ::recvmsg(socket_.get(), &part, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (count < 0 && (errno == EINTR || wouldBlock()))
        return std::nullopt;
    if (count <= 0 || !keepDescriptors(part))
        return Outcome::closed;
    arrived_ += std::size_t(count);
    if (arrived_ == headerLength) {
        const auto header = parseHeader(std::span(incoming_.bytes).first<headerLength>());
        if (!header)
            return Outcome::closed;
        incoming_.bytes.resize(headerLength + header->bodyLength);
    }
    return Outcome::done;
}

Channel::Outcome Channel::receive(Received& message, const Patience& patience)
{
    const Deadline deadline(patience);
    while (arrived_ < headerLength || arrived_ < incoming_.bytes.size()) {
        const auto progress = readSome();
        if (progress == Outcome::closed)
            return Outcome::closed;
        const Outcome outcome = progress ? Outcome::done : wait(POLLIN, deadline);
        if (outcome != Outcome::done)
            return outcome;
        if (deadline.isOver() && !(arrived_ >= headerLength && arrived_ == incoming_.bytes.size()))
            return Outcome::timedOut;
    }
    message = std::exchange(incoming_, {});
    arrived_ = 0;
    return Outcome::done;
}

bool Channel::hasNews() const
{
    return arrived_ > 0 || wait(POLLIN, Deadline({.timeout = std::chrono::milliseconds(0)})) != Outcome::timedOut;
}

bool Channel::isClosed() const
{
    pollfd watched{socket_.get(), POLLRDHUP, 0};
    return ::poll(&watched, 1, 0) != 0;
}

void Channel::hangUp()
{
    ::shutdown(socket_.get(), SHUT_RDWR);
}

} // namespace ferrow::Worker
