// SPDX-License-Identifier: GPL-3.0-or-later
// A worker that misbehaves as the question tells it to.
#include "OddWorker.h"

#include "Worker/Server.h"
#include "Worker/StartingConventions.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

using namespace ferrow;
using namespace ferrow::Worker;

bool diesNext = false;
int jobs = 0;

[[noreturn]] void fallSilent()
{
    while (true)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

void behave(Channel& channel, std::uint32_t job, std::int64_t oddity, const Descriptor& photo)
{
    if (diesNext)
        std::abort();
    Inspected good;
    good.answer.storedSize = good.answer.uprightSize = {3, jobs};
    good.picture = {{3, 2}, rgb8, WellKnown::sRGB, Bitmap({3, 2}, rgb8, ColorProfile::sRGB())};
    const auto say = [&](const Message& message) { static_cast<void>(channel.send(message, {})); };
    switch (oddity) {
    case test::dies:
        std::abort();
    case test::closes:
        channel.close();
        fallSilent();
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
        ::lseek(photo.get(), test::waits, SEEK_SET);
        fallSilent();
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
        if (::lseek(photo.get(), 0, SEEK_CUR) != test::goesOn)
            ::lseek(photo.get(), test::waits, SEEK_SET);
        while (::lseek(photo.get(), 0, SEEK_CUR) != test::goesOn)
            ::usleep(1'000);
        break;
    }
    say(encode(Answer{job, good}));
}

void pretendToFrame(Channel& channel, std::uint32_t job, double quality, const Descriptor& photo,
                    const Descriptor& output)
{
    constexpr char start[] = "\xff\xd8\xff\xe0 and so on";
    if (quality != test::writesNothing && jobs == 1 && ::pwrite(output.get(), start, sizeof start, 0) < 0)
        std::abort();
    if (quality == test::leavesHole)
        static_cast<void>(::pwrite(output.get(), start, sizeof start, 1 << 20) < 0);
    if (quality == test::reserves)
        ::fallocate(output.get(), FALLOC_FL_KEEP_SIZE, 0, 64 << 20);
    if (quality == test::swells)
        for (int i = 0; i < 64 && ::write(output.get(), std::vector<char>(1 << 20, 'x').data(), 1 << 20) > 0; ++i)
            continue;
    static_cast<void>(channel.send(encode(Answer{job, Framed{}}), {}));
    while (quality == test::lingers)
        ::lseek(photo.get(), 1, SEEK_CUR);
}

void serveOddly(Channel& channel)
{
    Received received;
    while (channel.receive(received, {}) == Channel::Outcome::done) {
        const std::vector<int> descriptors(received.descriptors.size());
        const auto request = parseRequest(received.bytes, descriptors);
        ++jobs;
        if (const auto* inspect = request ? std::get_if<Engine::InspectRequest>(&request->content) : nullptr)
            behave(channel, request->job, inspect->maximumDimension, received.descriptors.front());
        else if (const auto* frame = request ? std::get_if<Engine::FrameRequest>(&request->content) : nullptr)
            pretendToFrame(channel, request->job, frame->quality, received.descriptors.front(),
                           received.descriptors.back());
    }
}

} // namespace

/// "mute": what is forked from it ends before its first word.
int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "mute") == 0)
        ::pthread_atfork(nullptr, nullptr,
                         [] { ::_exit(1); }); // The walls' own trial, too: they do without namespaces.
    std::signal(SIGXFSZ, SIG_IGN);
    Channel channel(Descriptor(workerSocket), Channel::Descriptors::taken);
    Received setup;
    if (channel.receive(setup, {}) != Channel::Outcome::done)
        return 1;
    Confinement walls({});
    forkOnRequest(channel, walls, serveOddly);
    return 0;
}
