// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/BatchImporter.h"

#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Base/Localization.h"
#include "Platform/Base/TaskGroup.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/FolderWalk.h"
#include "Platform/Files/ImageTypes.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>
#include <variant>

namespace ferrow::BatchImporter {

namespace {

std::vector<FileUrl> deduplicated(std::vector<FileUrl> urls)
{
    for (FileUrl& url : urls)
        url = url.standardized();
    std::ranges::sort(urls);
    const auto rest = std::ranges::unique(urls);
    urls.erase(rest.begin(), rest.end());
    Localization::standardSort(urls, &FileUrl::displayPath);
    return urls;
}

BatchExportFailure failureOf(const FileUrl& url, const QString& message)
{
    BatchExportFailure failure;
    failure.filename = url.lastPathComponent();
    failure.message = message;
    failure.source = url;
    return failure;
}

/// An unsupported image found in a folder, named by its extension.
BatchExportFailure unsupportedFailure(const FileUrl& url)
{
    const QByteArray extension = url.pathExtension();
    QString description = ImageTypes::description(extension).value_or(QString());
    if (description.isEmpty())
        description = extension.isEmpty() ? QStringLiteral("This file type") : QString::fromUtf8(extension).toUpper();
    const ImagePipelineError error = ImagePipelineError::UnsupportedType{description};
    return failureOf(url, UserFacingError::message(localizedTexts(error)));
}

Outcome loadOne(const FileUrl& url, const Loader& loader, const std::stop_token& stop)
{
    try {
        throwIfCanceled(stop);
        return loader ? loader(url, stop) : ImageLoader::loadBatchThumbnail(url, stop);
    } catch (const Canceled&) {
        return Unread{};
    } catch (...) {
        return failureOf(url, UserFacingError::message(std::current_exception()));
    }
}

} // namespace

BatchImportScan scan(const std::vector<FileUrl>& roots)
{
    BatchImportScan found;
    for (const FileUrl& root : roots) {
        if (fileKind(root) != FileKind::folder) {
            found.candidates.push_back(root);
            continue;
        }
        const int failure = walkFolder(root, [&found](const FileUrl& item) {
            const QByteArray extension = item.pathExtension();
            if (ImageTypes::isPhotoExtension(extension))
                found.candidates.push_back(item);
            else if (ImageTypes::isImageExtension(extension))
                found.unsupported.push_back(item);
        });
        if (failure != 0)
            found.unreadable.push_back(failureOf(root, SystemError{failure, root}.description()));
    }
    return {deduplicated(std::move(found.candidates)), deduplicated(std::move(found.unsupported)),
            std::move(found.unreadable)};
}

void loadEach(const std::vector<FileUrl>& urls, int maximumConcurrency, const Loader& loader, const Taker& take,
              const Progress& progress, const std::stop_token& stop)
{
    if (maximumConcurrency < 0)
        qFatal("A negative number of loads can't run at once.");
    std::map<std::size_t, Outcome> early; // Read before one that comes before them.
    std::size_t next = 0;
    std::size_t done = 0;
    runBounded<Outcome>(
        urls.size(), std::size_t(maximumConcurrency),
        [&](std::size_t index) { return loadOne(urls[index], loader, stop); },
        [&](std::size_t index, Outcome outcome) {
            early.emplace(index, std::move(outcome));
            for (; !early.empty() && early.begin()->first == next; ++next)
                take(next, std::move(early.extract(early.begin()).mapped()));
            ++done;
            if (progress)
                progress(done);
        },
        [&] { return !stop.stop_requested(); });
    for (; next < urls.size(); ++next)
        take(next, Unread());
}

BatchImportResult load(const std::vector<FileUrl>& urls, int maximumConcurrency, const Loader& loader,
                       const Progress& progress, const std::stop_token& stop)
{
    BatchImportResult result;
    if (maximumConcurrency == 0)
        return result;
    loadEach(
        urls, maximumConcurrency, loader,
        [&](std::size_t index, Outcome outcome) {
            if (auto* photo = std::get_if<ImportedPhoto>(&outcome))
                result.photos.push_back(std::move(*photo));
            else if (auto* failure = std::get_if<BatchExportFailure>(&outcome))
                result.failures.push_back(std::move(*failure));
            else
                result.unread.push_back(urls[index]);
        },
        progress, stop);
    return result;
}

BatchImportResult importScanned(const BatchImportScan& scan, const Loader& loader, const Progress& progress,
                                const std::stop_token& stop, int maximumConcurrency)
{
    BatchImportResult result;
    try {
        result = load(inListOrder(scan.candidates), maximumConcurrency, loader, progress, stop);
    } catch (...) {
        const QString message = UserFacingError::message(std::current_exception());
        for (const FileUrl& url : scan.candidates)
            result.failures.push_back(failureOf(url, message));
    }
    std::ranges::move(refused(scan), std::back_inserter(result.failures));
    Localization::standardSort(result.failures, [](const BatchExportFailure& failure) { return failure.filename; });
    return result;
}

std::vector<FileUrl> inListOrder(std::vector<FileUrl> urls)
{
    Localization::standardSort(urls, &FileUrl::lastPathComponent);
    return urls;
}

std::vector<BatchExportFailure> refused(const BatchImportScan& scan)
{
    std::vector<BatchExportFailure> failures = scan.unreadable;
    std::ranges::transform(scan.unsupported, std::back_inserter(failures), unsupportedFailure);
    return failures;
}

bool precedes(const ImportedPhoto& left, const ImportedPhoto& right)
{
    return Localization::standardCompare(left.filename(), right.filename()) < 0;
}

} // namespace ferrow::BatchImporter
