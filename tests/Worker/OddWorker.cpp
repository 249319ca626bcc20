// SPDX-License-Identifier: GPL-3.0-or-later
// A worker that misbehaves as the question tells it to.
#include "OddWorker.h"

#include "Worker/Channel.h"
#include "Worker/Confinement.h"
#include "Worker/StartingConventions.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>

namespace {

using namespace ferrow;
using namespace ferrow::Worker;

bool diesNext = false;

void behave(Channel& channel, std::uint32_t job, std::int64_t oddity)
{
    if (diesNext)
        std::abort();
    Inspected good;
    good.answer.storedSize = good.answer.uprightSize = {3, 2};
    good.picture = {{3, 2}, rgb8, WellKnown::sRGB, Bitmap({3, 2}, rgb8, ColorProfile::sRGB())};
    const auto say = [&](const Message& message) { static_cast<void>(channel.send(message, {})); };
    switch (oddity) {
    case test::dies:
        std::abort();
    case test::closes:
        channel.close();
        std::raise(SIGSTOP);
        break;
    case test::garbage:
        return say({std::vector<std::byte>(100, std::byte(0xff)), {}});
    case test::twice:
        say(encode(Answer{job, good}));
        break;
    case test::earlier:
        --job;
        break;
    case test::tooLarge:
        good.picture = {{200, 200}, rgb8, WellKnown::sRGB, Bitmap({200, 200}, rgb8)};
        break;
    case test::notThere: // "In memory", of which none was given.
        good.picture.pixels = {};
        break;
    case test::allocates:
        while (void* memory = std::malloc(16 << 20))
            std::memset(memory, 1, 16 << 20);
        std::abort();
    case test::deaf:
        std::raise(SIGSTOP);
        break;
    case test::repeats:
        say(encode(Answer{job, LastRowComposed{}}));
        say(encode(Answer{job, LastRowComposed{}}));
        break;
    case test::trickles:
        for (const std::byte& byte : encode(Answer{job, good}).bytes) {
            say({{byte}, {}});
            ::usleep(200'000);
        }
        break;
    case test::poisoned:
        diesNext = true;
        break;
    case test::completes:
        say(encode(Answer{job, LastRowComposed{}}));
        std::raise(SIGSTOP);
        break;
    }
    say(encode(Answer{job, good}));
}

void pretendToFrame(Channel& channel, std::uint32_t job, double quality, const Descriptor& output)
{
    constexpr char start[] = "\xff\xd8\xff\xe0 and so on";
    if (quality == test::writesSomething && ::write(output.get(), start, sizeof start) < 0)
        std::abort();
    static_cast<void>(channel.send(encode(Answer{job, Framed{}}), {}));
}

} // namespace

int main()
{
    Channel channel(Descriptor(workerSocket), Channel::Descriptors::taken);
    static_cast<void>(channel.send(encode(Answer{0, confine({})}), {}));
    Received received;
    while (channel.receive(received, {}) == Channel::Outcome::done) {
        const std::vector<int> descriptors(received.descriptors.size());
        const auto request = parseRequest(received.bytes, descriptors);
        if (const auto* inspect = request ? std::get_if<Engine::InspectRequest>(&request->content) : nullptr)
            behave(channel, request->job, inspect->maximumDimension);
        else if (const auto* frame = request ? std::get_if<Engine::FrameRequest>(&request->content) : nullptr)
            pretendToFrame(channel, request->job, frame->quality, received.descriptors.back());
    }
    return 0;
}
