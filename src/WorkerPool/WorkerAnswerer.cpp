// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/WorkerAnswerer.h"

#include "Engine/MemoryNeed.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/Descriptor.h"
#include "WorkerPool/JobRun.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

namespace ferrow::WorkerPool {

namespace {

using Worker::SharedMemory;

constexpr std::size_t bytesPerPixel = 4;

/// For an answer's picture of at most that size; none where its message has room for it.
std::optional<SharedMemory> memoryFor(PixelSize largest)
{
    const auto bytes =
        std::min(std::size_t(largest.width) * std::size_t(largest.height), std::size_t(Engine::maximumSourcePixels)) *
        bytesPerPixel;
    return bytes > Worker::inlinePictureBytes ? std::optional<SharedMemory>(bytes) : std::nullopt;
}

int descriptorOf(const std::optional<SharedMemory>& memory)
{
    return memory ? memory->descriptor() : -1;
}

/// The answer's picture, null where it brings none. What a worker fills in after it answered must not show, so memory
/// is sealed before it is read.
Bitmap takePicture(const Worker::AnsweredPicture& answered, std::optional<SharedMemory>& memory, PixelSize largest)
{
    if (answered.size == PixelSize{})
        return {};
    if (answered.size.width > largest.width || answered.size.height > largest.height)
        throw NoAnswer{};
    if (!answered.pixels.isNull())
        return answered.pixels;
    Bitmap picture(answered.size, answered.format, ColorProfile::of(answered.space));
    if (!memory || !memory->seal() || !Worker::readPicture(memory->descriptor(), picture, 0))
        throw NoAnswer{};
    return picture;
}

template <typename Wanted>
const Wanted& expect(const Worker::Answer& answer)
{
    if (const auto* wanted = std::get_if<Wanted>(&answer.content))
        return *wanted;
    throw NoAnswer{};
}

/// Passes on what a worker refuses a photo with; what it repeats of the request is taken from the request.
void throwRefusal(JobRun& job, const Worker::Answer& answer, const Engine::FrameRequest* frame, PixelSize expected)
{
    using Error = ImagePipelineError;
    const auto* refused = std::get_if<Worker::PhotoRefused>(&answer.content);
    if (!refused)
        return;
    Error error = refused->error;
    if (auto* encoding = std::get_if<Error::EncodingFailed>(&error.value)) {
        if (!frame)
            throw NoAnswer{};
        encoding->format = rawValue(frame->format);
    }
    if (auto* writing = std::get_if<Error::OutputWriteFailed>(&error.value)) {
        if (!frame)
            throw NoAnswer{};
        writing->format = rawValue(frame->format);
    }
    if (auto* mismatch = std::get_if<Error::FullResolutionMismatch>(&error.value))
        mismatch->expected = expected;
    job.accept();
    throw error;
}

/// More than any format makes of a canvas: JPEG codes a coefficient of noise in up to 27 bits. Profile, metadata and
/// what formats need besides come on top.
std::int64_t mostOutputBytes(PixelSize canvas)
{
    constexpr std::int64_t ofPixel = 12;
    constexpr std::int64_t besides = 32 << 20;
    return canvas.width * canvas.height * ofPixel + besides;
}

/// Processor time of all threads: many times what encoders take (see Allowance), however many threads share the work.
std::int64_t processorSeconds(Allowance::Duration allowed)
{
    return 4 * std::chrono::ceil<std::chrono::seconds>(allowed).count();
}

/// For some photos of any size.
Assignment reading(WorkerKind kind)
{
    constexpr std::int64_t pictureBytes = Engine::maximumSourcePixels * std::int64_t(bytesPerPixel);
    const auto longest = Allowance::base + Allowance::decoding(Engine::maximumSourcePixels, true);
    return {.kind = kind, .limits = {pictureBytes, processorSeconds(longest)}};
}

Assignment framing(const Engine::FrameRequest& request)
{
    const PixelSize canvas = request.composition.canvasSize;
    const std::int64_t pixels = request.expectedSize.width * request.expectedSize.height;
    const auto longest =
        Allowance::base + Allowance::decoding(pixels, true) + Allowance::encoding(canvas, request.format);
    return {.kind = request.format == ExportFormat::heic ? WorkerKind::heicWriting : WorkerKind::photos,
            .purpose = Purpose::framing,
            .limits = {mostOutputBytes(canvas), processorSeconds(longest)},
            .photoPixels = pixels,
            .ownBytes = Engine::MemoryNeed::ofEncoder(request.format, canvas,
                                                      rgbFormat(Engine::componentBits(request.depth), true))};
}

/// It writes nothing.
Assignment checking()
{
    const auto longest = Allowance::base + Allowance::decoding(Engine::maximumSourcePixels, true);
    return {.kind = WorkerKind::photos, .purpose = Purpose::checking, .limits = {0, processorSeconds(longest)}};
}

/// Whether the file takes the room of its bytes. One with holes, or with room reserved behind its end, was not written
/// by an encoder: the one shows a size that is not there, the other fills the disk unseen. File systems round up, copy
/// and reserve some themselves, in proportion to what is written.
bool takesItsRoom(int outputDescriptor, std::int64_t mostBytes)
{
    constexpr std::int64_t copies = 4;
    constexpr std::int64_t blocks = 4 << 20;
    struct stat status {};
    if (::fstat(outputDescriptor, &status) != 0 || status.st_size > mostBytes ||
        std::int64_t(status.st_blocks) * S_BLKSIZE > status.st_size * copies + blocks)
        return false;
    // Not from the count of blocks, which is smaller wherever a file system compresses.
    const off_t hole = ::lseek(outputDescriptor, 0, SEEK_HOLE);
    return hole < 0 || hole >= status.st_size;
}

/// An answer alone is no proof that there is a picture.
bool beginsAs(ExportFormat format, int outputDescriptor)
{
    std::array<char, 12> start{};
    if (::pread(outputDescriptor, start.data(), start.size(), 0) != ssize_t(start.size()))
        return false;
    const std::string_view bytes(start.data(), start.size());
    switch (format) {
    case ExportFormat::jpeg:
        return bytes.starts_with("\xff\xd8\xff");
    case ExportFormat::png:
        return bytes.starts_with("\x89PNG\r\n\x1a\n");
    case ExportFormat::tiff:
        return bytes.starts_with("II") || bytes.starts_with("MM");
    case ExportFormat::heic:
        return bytes.substr(4).starts_with("ftyp");
    }
    return false;
}

/// `steps` with everything that leaves a photo without an answer as the error that stands for it.
template <typename Steps>
auto forPhoto(const Steps& steps)
try {
    return steps();
} catch (const NoAnswer& outcome) {
    throw ImagePipelineError(outcome.hadNoWorker ? ImagePipelineError::workerUnavailable
                                                 : ImagePipelineError::decodingFailed);
} catch (const std::bad_alloc&) {
    throw ImagePipelineError(ImagePipelineError::decodingFailed);
}

} // namespace

WorkerAnswerer::WorkerAnswerer(std::shared_ptr<Pool> pool, std::int64_t memoryBudget)
    : pool_(std::move(pool)), budget_(memoryBudget)
{
}

template <typename Steps>
auto WorkerAnswerer::onWorker(const Assignment& assignment, const std::stop_token& stop, const Steps& steps)
{
    throwIfCanceled(stop);
    for (bool isSecond = false;; isSecond = true) {
        JobRun job(*pool_, budget_, assignment, stop);
        try {
            return steps(job);
        } catch (const NoAnswer& outcome) {
            if (isSecond || !job.mayBeAskedAgain(outcome))
                throw;
        }
    }
}

Engine::InspectAnswer WorkerAnswerer::inspect(const Engine::InspectRequest& request, const std::stop_token& stop)
{
    // A worker would say the same.
    if (request.source.size == 0)
        throw ImagePipelineError(ImagePipelineError::malformedImage);
    return forPhoto([&] {
        return onWorker(reading(WorkerKind::photos), stop, [&](JobRun& job) {
            const PixelSize largest{request.maximumDimension, request.maximumDimension};
            auto memory = memoryFor(largest);
            const Worker::Answer answer = job.ask({0, request, descriptorOf(memory)});
            throwRefusal(job, answer, nullptr, {});
            const auto& inspected = expect<Worker::Inspected>(answer);
            Engine::InspectAnswer result = inspected.answer;
            result.picture = takePicture(inspected.picture, memory, largest);
            if (result.picture.isNull() != (request.maximumDimension == 0) ||
                inspected.picture.format.alpha == Alpha::premultiplied)
                throw NoAnswer{};
            job.accept();
            return result;
        });
    });
}

std::optional<Engine::PictureSummary> WorkerAnswerer::frame(const Engine::FrameRequest& request,
                                                            const std::stop_token& stop)
{
    const Assignment assignment = framing(request);
    return forPhoto([&] {
        return onWorker(assignment, stop, [&](JobRun& job) {
            // What an earlier worker may have written is not part of the output.
            if (emptied(request.outputDescriptor) != 0)
                throw NoAnswer{};
            Worker::Request question{0, request};
            const auto overlays = Worker::overlayMemoryFor(question);
            question.overlayMemory = descriptorOf(overlays);
            const Worker::Answer answer =
                job.ask(std::move(question), Allowance::encoding(request.composition.canvasSize, request.format));
            throwRefusal(job, answer, &request, request.expectedSize);
            if (request.keepsPhotoData && std::holds_alternative<Worker::KeepingRefused>(answer.content)) {
                job.awaitEnd();
                throw CannotKeep{};
            }
            const auto& framed = expect<Worker::Framed>(answer);
            const bool hasPixels = !framed.summary || framed.summary->pixels != PictureSums();
            if (!(hasPixels || request.keepsPhotoData) || framed.summary.has_value() != request.summarizes)
                throw NoAnswer{};
            // Nobody may hold a descriptor of what is going to be checked and placed.
            job.awaitEnd();
            if (!beginsAs(request.format, request.outputDescriptor) ||
                !takesItsRoom(request.outputDescriptor, assignment.limits.fileBytes))
                throw NoAnswer{};
            return framed.summary;
        });
    });
}

Engine::PictureSummary WorkerAnswerer::readBack(const Engine::ReadBackRequest& request, const std::stop_token& stop)
{
    return forPhoto([&] {
        return onWorker(checking(), stop, [&](JobRun& job) {
            const Worker::Answer answer = job.ask({0, request});
            throwRefusal(job, answer, nullptr, {});
            return expect<Worker::SummaryRead>(answer).summary;
        });
    });
}

Bitmap WorkerAnswerer::composeRegion(const Engine::RegionRequest& request, const std::stop_token& stop)
{
    return forPhoto([&] {
        Assignment assignment = reading(WorkerKind::photos);
        assignment.photoPixels = request.expectedSize.width * request.expectedSize.height;
        return onWorker(assignment, stop, [&](JobRun& job) {
            auto memory = memoryFor(request.size);
            Worker::Request question{0, request, descriptorOf(memory)};
            const auto overlays = Worker::overlayMemoryFor(question);
            question.overlayMemory = descriptorOf(overlays);
            const Worker::Answer answer = job.ask(std::move(question));
            throwRefusal(job, answer, nullptr, request.expectedSize);
            const auto& region = expect<Worker::RegionComposed>(answer);
            Bitmap picture = takePicture(region.picture, memory, request.size);
            if (region.picture.format.alpha == Alpha::premultiplied)
                throw NoAnswer{};
            job.accept();
            return picture;
        });
    });
}

Engine::LogoAnswer WorkerAnswerer::rasterizeLogo(const Engine::LogoRequest& request, const std::stop_token& stop)
{
    try {
        Assignment assignment = reading(WorkerKind::logos);
        assignment.ownBytes = Engine::MemoryNeed::ofPage(request.maximumDimension);
        return onWorker(assignment, stop, [&](JobRun& job) {
            const PixelSize largest{request.maximumDimension, request.maximumDimension};
            auto memory = memoryFor(largest);
            const Worker::Answer answer = job.ask({0, request, descriptorOf(memory)});
            if (const auto* refused = std::get_if<Worker::LogoRefused>(&answer.content)) {
                job.accept();
                throw LogoAssetError{.value = refused->error};
            }
            const auto& logo = expect<Worker::LogoRasterized>(answer);
            Engine::LogoAnswer result{logo.fileExtension, takePicture(logo.picture, memory, largest)};
            if (result.picture.isNull() || logo.picture.format != rgba8Premultiplied)
                throw NoAnswer{};
            job.accept();
            return result;
        });
    } catch (const NoAnswer& outcome) {
        throw LogoAssetError{.value = outcome.hadNoWorker ? LogoAssetError::Case::workerUnavailable
                                                          : LogoAssetError::Case::malformed};
    } catch (const std::bad_alloc&) {
        throw LogoAssetError{.value = LogoAssetError::Case::malformed};
    }
}

Worker::Hello WorkerAnswerer::confinement()
{
    JobRun job(*pool_, budget_, reading(WorkerKind::photos), {});
    const Worker::Hello hello = job.greet();
    job.accept();
    return hello;
}

} // namespace ferrow::WorkerPool
