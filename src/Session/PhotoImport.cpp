// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PhotoImport.h"

#include <mutex>
#include <utility>

namespace ferrow::PhotoImport {

void run(Work& work, const BatchImporter::Loader& load, const std::function<void()>& news)
{
    std::mutex mutex;
    const auto loadCompressed = [&](const FileUrl& url, const std::stop_token& stop) {
        ImportedPhoto photo = load(url, stop);
        CompressedPicture thumbnail = CompressedPicture::compress(std::exchange(photo.previewSource, {}));
        const std::scoped_lock lock(mutex);
        work.thumbnails.insert_or_assign(photo.id(), std::move(thumbnail));
        return photo;
    };
    const std::stop_token stop = work.stop.get_token();
    const auto progress = [&](std::size_t read) {
        if (stop.stop_requested())
            return;
        work.read = read;
        if (!work.isTold.exchange(true))
            news();
    };
    work.result = BatchImporter::importScanned(work.scan, loadCompressed, progress, stop);
    if (work.result.photos.empty())
        work.thumbnails.clear(); // Of photos that were read before all of them failed.
}

} // namespace ferrow::PhotoImport
