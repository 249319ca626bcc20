// SPDX-License-Identifier: GPL-3.0-or-later
// What a worker says, as its caller takes it: the one surface that a decoder which was taken over has.
#include "FuzzSupport.h"

#include "Worker/Messages.h"

#include <cstring>
#include <vector>

using namespace ferrow;

namespace {

void expectSound(const Worker::AnsweredPicture& picture)
{
    const std::int64_t bytes = std::int64_t(picture.pixels.stride()) * picture.pixels.size().height;
    fuzz::require(picture.pixels.isNull() || picture.pixels.size() == picture.size, "pixels of the stated size");
    fuzz::require(bytes <= std::int64_t(4 * Worker::maximumBodyLength), "no picture beyond its message");
}

void parse(std::span<const std::byte> message)
{
    const auto answer = Worker::parseAnswer(message);
    if (!answer)
        return;
    if (const auto* inspected = std::get_if<Worker::Inspected>(&answer->content))
        expectSound(inspected->picture);
    if (const auto* region = std::get_if<Worker::RegionComposed>(&answer->content))
        expectSound(region->picture);
    if (const auto* logo = std::get_if<Worker::LogoRasterized>(&answer->content))
        expectSound(logo->picture);
    const auto written = Worker::encode(*answer).bytes;
    const auto again = Worker::parseAnswer(written);
    fuzz::require(again && Worker::encode(*again).bytes == written, "what is believed can be said again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    parse(std::as_bytes(std::span(data, size)));
    // And as the body of a message whose header is right, so that the input gets beyond it.
    if (size < 1)
        return 0;
    std::vector<std::byte> message(Worker::headerLength + size - 1);
    const std::uint32_t header[]{64U + data[0] % 12U, 7, std::uint32_t(size - 1), 0};
    std::memcpy(message.data(), header, sizeof header);
    std::memcpy(message.data() + sizeof header, data + 1, size - 1);
    parse(message);
    return 0;
}
