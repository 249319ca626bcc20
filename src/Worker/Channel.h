// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Files/Descriptor.h"
#include "Worker/Messages.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

struct msghdr;

namespace ferrow::Worker {

/// A message as it came in.
struct Received {
    std::vector<std::byte> bytes; ///< Header and body.
    std::vector<Descriptor> descriptors;
};

/// One end of the connection between a worker and the program that started it. Never waits longer than it is told to,
/// whatever the other side does. Use from one thread.
class Channel {
public:
    enum class Outcome {
        done,
        timedOut, ///< A message that was half read is read on next time; one that was half sent is lost.
        woken,    ///< As timedOut.
        closed,   ///< The other side is gone, or sent what is no message.
    };
    struct Patience {
        std::optional<std::chrono::milliseconds> timeout = std::nullopt; ///< None: for ever.
        int wakeDescriptor = -1;                                         ///< Ends the wait when it can be read from.
    };
    /// Whether descriptors that come along are kept, or closed unseen.
    enum class Descriptors { taken, refused };

    Channel(Descriptor socket, Descriptors descriptors);

    [[nodiscard]] Outcome send(const Message& message, const Patience& patience);
    [[nodiscard]] Outcome receive(Received& message, const Patience& patience);

    /// Something came in, or the other side is gone.
    [[nodiscard]] bool hasNews() const;
    /// The other side is gone, whatever it has left to be read.
    [[nodiscard]] bool isClosed() const;
    void close() { socket_.close(); }
    /// Ends the connection for the other side; this end stays open, since other threads may still ask it.
    void hangUp();
    void refuseDescriptors() { policy_ = Descriptors::refused; }

private:
    class Deadline;

    [[nodiscard]] Outcome wait(short events, const Deadline& deadline) const;
    /// As much of what is missing in `incoming_` as is there. Absent for none yet.
    [[nodiscard]] std::optional<Outcome> readSome();
    [[nodiscard]] bool keepDescriptors(::msghdr& message);

    Descriptor socket_;
    Descriptors policy_;
    Received incoming_;
    std::size_t arrived_ = 0;
};

} // namespace ferrow::Worker
