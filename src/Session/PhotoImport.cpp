// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PhotoImport.h"

#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Base/Localization.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace ferrow::PhotoImport {

namespace {

/// Sorts by names made once: a comparison costs far more than a name.
template <typename Item, typename Name>
void sortByName(std::vector<Item>& items, const Name& nameOf)
{
    std::vector<std::pair<QString, std::size_t>> keys;
    keys.reserve(items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        keys.emplace_back(nameOf(items[i]), i);
    std::ranges::stable_sort(keys, [](const auto& left, const auto& right) {
        return Localization::standardCompare(left.first, right.first) < 0;
    });
    std::vector<Item> sorted;
    sorted.reserve(items.size());
    for (const auto& key : keys)
        sorted.push_back(std::move(items[key.second]));
    items = std::move(sorted);
}

/// What the threads that read leave beside the importer's own result.
struct Gathered {
    std::mutex mutex;
    std::unordered_map<FileUrl, CompressedPicture> thumbnails;
    std::unordered_set<FileUrl> passedOver;
};

ImportedPhoto loadCompressed(const FileUrl& url, const Loader& load, const std::stop_token& stop, Gathered& gathered)
try {
    throwIfCancelled(stop);
    ImportedPhoto photo = load(url, stop);
    CompressedPicture thumbnail = CompressedPicture::compress(std::exchange(photo.previewSource, {}));
    const std::scoped_lock lock(gathered.mutex);
    gathered.thumbnails.insert_or_assign(photo.id(), std::move(thumbnail));
    return photo;
} catch (const Cancelled&) {
    const std::scoped_lock lock(gathered.mutex);
    gathered.passedOver.insert(url);
    throw ImagePipelineError(ImagePipelineError::unreadableFile); // Taken out of the failures below.
}

/// What is left when not even a list could be had.
BatchImportResult allFailed(const std::vector<FileUrl>& urls, const QString& message)
{
    BatchImportResult result;
    for (const FileUrl& url : urls)
        result.failures.push_back({.filename = url.lastPathComponent(), .message = message, .source = url});
    return result;
}

} // namespace

bool precedes(const ImportedPhoto& left, const ImportedPhoto& right)
{
    return Localization::standardCompare(left.filename(), right.filename()) < 0;
}

void run(Work& work, const Loader& load, int maximumConcurrency, const std::function<void()>& news)
{
    Gathered gathered;
    const std::stop_token stop = work.stop.get_token();
    BatchImportResult result;
    try {
        result = BatchImporter::load(
            work.candidates, maximumConcurrency,
            [&](const FileUrl& url) { return loadCompressed(url, load, stop, gathered); },
            [&](std::size_t read) {
                if (stop.stop_requested())
                    return;
                work.read = read;
                if (!work.isTold.exchange(true))
                    news();
            });
    } catch (...) {
        result = allFailed(work.candidates, UserFacingError::message(std::current_exception()));
        gathered.thumbnails.clear();
    }
    std::erase_if(result.failures, [&](const auto& failure) { return gathered.passedOver.contains(failure.source); });
    for (const FileUrl& url : work.unsupported)
        result.failures.push_back(BatchImporter::unsupportedFailure(url));
    std::ranges::move(work.unreadable, std::back_inserter(result.failures));

    if (!result.photos.empty())
        work.firstLoaded = result.photos.front().id();
    sortByName(result.photos, [](const ImportedPhoto& photo) { return photo.filename(); });
    sortByName(result.failures, [](const BatchExportFailure& failure) { return failure.filename; });
    work.photos = std::move(result.photos);
    work.failures = std::move(result.failures);
    work.thumbnails = std::move(gathered.thumbnails);
}

} // namespace ferrow::PhotoImport
