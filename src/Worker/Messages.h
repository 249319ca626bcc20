// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/Requests.h"
#include "Models/ErrorTexts.h"
#include "Worker/SharedMemory.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

/// What a worker and the program that started it say to each other. A message is a header of fixed length and a body;
/// descriptors travel beside it, to the worker, and from it with its first word alone.
namespace ferrow::Worker {

enum class MessageKind : std::uint32_t {
    // To a worker:
    setup = 1,
    fork,
    inspect,
    frame,
    composeRegion,
    rasterizeLogo,
    readBack,
    proceed, ///< The memory asked for in `headerRead` is granted.
    stop,
    // From a worker:
    hello = 64,
    headerRead,
    lastRowComposed,
    inspected,
    framed,
    regionComposed,
    summaryRead,
    logoRasterized,
    photoRefused,
    logoRefused,
    canceled,
    keepingRefused,
};

struct MessageHeader {
    MessageKind kind{};
    std::uint32_t job = 0; ///< Counted by the caller; answers and stops carry their request's.
    std::uint32_t bodyLength = 0;
    std::uint32_t descriptorCount = 0;
};
inline constexpr std::size_t headerLength = 16;

/// Longest body, in bytes: twice what metadata at its limits and a small picture take.
inline constexpr std::size_t maximumBodyLength = 8 << 20;
/// A picture of at most this many bytes travels inside its message; a larger one in memory that the caller gave.
inline constexpr std::size_t inlinePictureBytes = 512 << 10;
inline constexpr std::size_t maximumDescriptors = 4;

/// Absent when the bytes are no header, or promise a longer body or more descriptors than any message has.
[[nodiscard]] std::optional<MessageHeader> parseHeader(std::span<const std::byte, headerLength> bytes);

/// A message on its way out: header and body in one. The descriptors are borrowed until it is sent.
struct Message {
    std::vector<std::byte> bytes;
    std::vector<int> descriptors;
};

/// What a worker needs to know before it confines itself.
struct Setup {
    /// Variables by which fonts are found, "HOME=/home/…"; for the kind of worker that draws text.
    std::vector<std::string> environment;
};

/// What a process that reads may use up, all its jobs together.
struct JobLimits {
    std::int64_t fileBytes = 0; ///< Length of any file or picture that it writes.
    std::int64_t processorSeconds = 0;
};

/// To the process that forks those that read: fork one more.
struct Fork {
    int socket = -1; ///< The new one's end of its connection; goes along.
    JobLimits limits;
};

/// How a worker is confined.
struct Hello {
    std::int32_t landlockVersion = 0; ///< 0 where the kernel offers none.
    bool hasNamespaces = false;       ///< Files, processes and network of its own.
    bool filtersSystemCalls = false;
    bool limitsResources = false;
    std::int64_t addressSpace = 0; ///< Bytes that it takes before its first job.
    int process = -1;              ///< By which its end is awaited; goes along, borrowed.
};

/// The header is within the limits. A worker that `waits` goes on when it is told to proceed.
struct HeaderRead {
    std::int64_t pixels = 0; ///< Of the photo as stored; 0 for a drawing.
    bool isHeif = false;
    std::int64_t bytes = 0; ///< Of memory that the job will hold, roughly.
    bool waits = false;
};

struct LastRowComposed {};
struct WasCanceled {};
/// The photo's data can't be kept: it has to be coded.
struct KeepingRefused {};

/// A picture as it comes back: its pixels, or where they are.
struct AnsweredPicture {
    PixelSize size; ///< 0 × 0 for none.
    PixelFormat format;
    WellKnown space = WellKnown::none;
    Bitmap pixels; ///< Null when they lie in the memory that went with the request, row behind row.
};

struct Framed {
    std::optional<Engine::PictureSummary> summary;
};
struct SummaryRead {
    Engine::PictureSummary summary;
};
struct Inspected {
    Engine::InspectAnswer answer; ///< Its picture is the one below.
    AnsweredPicture picture;
};
struct RegionComposed {
    AnsweredPicture picture;
};
struct LogoRasterized {
    QByteArray fileExtension;
    AnsweredPicture picture;
};
struct PhotoRefused {
    ImagePipelineError error;
};
struct LogoRefused {
    LogoAssetError::Case error{};
};

struct Answer {
    std::uint32_t job = 0;
    std::variant<Hello, HeaderRead, LastRowComposed, Inspected, Framed, SummaryRead, RegionComposed, LogoRasterized,
                 PhotoRefused, LogoRefused, WasCanceled, KeepingRefused>
        content;
};

/// One whole message from a worker, header and body. A worker may have been taken over by what it read, so nothing is
/// believed: absent for everything that is not exactly a message of one of these kinds with every size, count, length
/// and text within its range. Whether it answers the question that was asked is for the caller to see.
[[nodiscard]] std::optional<Answer> parseAnswer(std::span<const std::byte> message);

[[nodiscard]] Message encode(const Answer& answer);

struct Proceed {};
struct Stop {};

struct Request {
    std::uint32_t job = 0;
    std::variant<Setup, Fork, Engine::InspectRequest, Engine::FrameRequest, Engine::ReadBackRequest,
                 Engine::RegionRequest, Engine::LogoRequest, Proceed, Stop>
        content;
    /// Where a picture goes that is too large for a message; -1 for nowhere.
    int pictureMemory = -1;
    /// Where the overlays' pixels lie when they are too many for a message.
    int overlayMemory = -1;
};

/// The overlays' pixels of a request that are too many for its message, sealed. Throws std::bad_alloc.
[[nodiscard]] std::optional<SharedMemory> overlayMemoryFor(const Request& request);

[[nodiscard]] Message encode(const Request& request);

/// One whole message to a worker; the descriptors that came with it stay the receiver's. Overlays are read.
[[nodiscard]] std::optional<Request> parseRequest(std::span<const std::byte> message, std::span<const int> descriptors);

} // namespace ferrow::Worker
