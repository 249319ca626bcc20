// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/SpaceEstimate.h"

#include "Export/ImageExporter.h"
#include "Imaging/ExportLayout.h"
#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Platform/Files/MemoryFile.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace ferrow {

namespace {

/// Pixels of a job's framed copy; absent where it can't be laid out.
std::optional<std::int64_t> pixelsOf(const BatchExportJob& job)
try {
    const PixelSize canvas = exportLayout(job.photo.pixelSize, job.recipe, job.settings.size).layout.canvasSize;
    return canvas.width * canvas.height;
} catch (const ImagePipelineError&) {
    return std::nullopt;
}

} // namespace

bool SpaceSample::operator==(const SpaceSample& other) const
{
    return job.photo.url == other.job.photo.url && job.photo.corrections == other.job.photo.corrections &&
           job.recipe == other.job.recipe && job.settings == other.job.settings &&
           stoodForPixels == other.stoodForPixels;
}

std::vector<SpaceSample> spaceSamples(const std::vector<BatchExportJob>& jobs)
{
    std::vector<std::pair<std::int64_t, std::size_t>> bySize; // Pixels and index.
    for (std::size_t i = 0; i < jobs.size(); ++i)
        if (const auto pixels = pixelsOf(jobs[i]))
            bySize.emplace_back(*pixels, i);
    if (bySize.empty())
        return {};
    std::ranges::sort(bySize);
    const auto tooLarge =
        std::ranges::upper_bound(bySize, largestSamplePixels, {}, &decltype(bySize)::value_type::first);
    const auto fitting = std::max<std::size_t>(1, std::size_t(tooLarge - bySize.begin()));
    std::vector<SpaceSample> samples;
    for (const std::size_t place : std::set<std::size_t>{0, fitting / 2, fitting - 1})
        samples.push_back({jobs[bySize[place].second], bySize[place].first, 0});
    for (const auto& [pixels, index] : bySize)
        std::ranges::min_element(samples, {}, [&](const SpaceSample& sample) {
            return std::abs(sample.pixels - pixels);
        })->stoodForPixels += pixels;
    return samples;
}

std::int64_t encodedSize(const BatchExportJob& job, const std::stop_token& stop)
{
    const OpenedFile source = ImageLoader::openSource(job.photo.url);
    Descriptor memory = openMemoryFile("ferrow-measured");
    if (!memory.isOpen())
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    ImageExporter::writePhoto(source, job.photo, job.recipe, job.settings, memory.get(), stop);
    return OpenedFile::adopt(std::move(memory)).size();
}

std::optional<SpaceEstimate> estimatedSpace(const std::vector<SpaceSample>& samples, const EncodedSize& encodedSize,
                                            const std::stop_token& stop)
try {
    double bytes = 0;
    for (const SpaceSample& sample : samples)
        bytes += double(encodedSize(sample.job, stop)) * double(sample.stoodForPixels) / double(sample.pixels);
    return samples.empty() ? std::nullopt : std::optional(SpaceEstimate{std::llround(bytes), samples.size()});
} catch (const ImagePipelineError&) {
    return std::nullopt;
} catch (const LogoAssetError&) {
    return std::nullopt;
} catch (const SystemError&) {
    return std::nullopt;
}

} // namespace ferrow
