// SPDX-License-Identifier: GPL-3.0-or-later
#include "WorkerPool/WorkerAnswerer.h"

#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "WorkerPool/JobRun.h"

#include <algorithm>
#include <new>
#include <optional>
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
    if (auto* mismatch = std::get_if<Error::FullResolutionMismatch>(&error.value))
        mismatch->expected = expected;
    job.accept();
    throw error;
}

/// `steps` with everything that leaves a photo without an answer as the error that stands for it.
template <typename Steps>
auto forPhoto(const Steps& steps)
try {
    return steps();
} catch (const NoAnswer&) {
    throw ImagePipelineError(ImagePipelineError::decodingFailed);
} catch (const std::bad_alloc&) {
    throw ImagePipelineError(ImagePipelineError::decodingFailed);
}

} // namespace

WorkerAnswerer::WorkerAnswerer(std::shared_ptr<Pool> pool, std::int64_t memoryBudget)
    : pool_(std::move(pool)), budget_(memoryBudget)
{
}

Engine::InspectAnswer WorkerAnswerer::inspect(const Engine::InspectRequest& request, const std::stop_token& stop)
{
    throwIfCancelled(stop);
    return forPhoto([&] {
        const PixelSize largest{request.maximumDimension, request.maximumDimension};
        auto memory = memoryFor(largest);
        JobRun job(*pool_, budget_, WorkerKind::photos, stop);
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
}

void WorkerAnswerer::frame(const Engine::FrameRequest& request, const std::stop_token& stop)
{
    throwIfCancelled(stop);
    forPhoto([&] {
        Worker::Request question{0, request};
        const auto overlays = Worker::overlayMemoryFor(question);
        question.overlayMemory = descriptorOf(overlays);
        JobRun job(*pool_, budget_, WorkerKind::photos, stop);
        const Worker::Answer answer =
            job.ask(std::move(question), Allowance::encoding(request.composition.canvasSize, request.format));
        throwRefusal(job, answer, &request, request.expectedSize);
        static_cast<void>(expect<Worker::Framed>(answer));
        job.accept();
    });
}

Bitmap WorkerAnswerer::composeRegion(const Engine::RegionRequest& request, const std::stop_token& stop)
{
    throwIfCancelled(stop);
    return forPhoto([&] {
        auto memory = memoryFor(request.size);
        Worker::Request question{0, request, descriptorOf(memory)};
        const auto overlays = Worker::overlayMemoryFor(question);
        question.overlayMemory = descriptorOf(overlays);
        JobRun job(*pool_, budget_, WorkerKind::photos, stop);
        const Worker::Answer answer = job.ask(std::move(question));
        throwRefusal(job, answer, nullptr, request.expectedSize);
        const auto& region = expect<Worker::RegionComposed>(answer);
        Bitmap picture = takePicture(region.picture, memory, request.size);
        if (region.picture.format.alpha == Alpha::premultiplied)
            throw NoAnswer{};
        job.accept();
        return picture;
    });
}

Engine::LogoAnswer WorkerAnswerer::rasteriseLogo(const Engine::LogoRequest& request, const std::stop_token& stop)
{
    throwIfCancelled(stop);
    try {
        const PixelSize largest{request.maximumDimension, request.maximumDimension};
        auto memory = memoryFor(largest);
        JobRun job(*pool_, budget_, WorkerKind::logos, stop);
        const Worker::Answer answer = job.ask({0, request, descriptorOf(memory)});
        if (const auto* refused = std::get_if<Worker::LogoRefused>(&answer.content)) {
            job.accept();
            throw LogoAssetError{.value = refused->error};
        }
        const auto& logo = expect<Worker::LogoRasterised>(answer);
        Engine::LogoAnswer result{logo.fileExtension, takePicture(logo.picture, memory, largest)};
        if (result.picture.isNull() || logo.picture.format != rgba8Premultiplied)
            throw NoAnswer{};
        job.accept();
        return result;
    } catch (const NoAnswer&) {
        throw LogoAssetError{.value = LogoAssetError::Case::malformed};
    } catch (const std::bad_alloc&) {
        throw LogoAssetError{.value = LogoAssetError::Case::malformed};
    }
}

Worker::Hello WorkerAnswerer::confinement()
{
    JobRun job(*pool_, budget_, WorkerKind::photos, {});
    const Worker::Hello hello = job.greet();
    job.accept();
    return hello;
}

} // namespace ferrow::WorkerPool
