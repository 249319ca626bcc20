// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/BatchImporter.h"

#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Localization.h"
#include "Platform/Base/TaskGroup.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/FolderWalk.h"
#include "Platform/Files/ImageTypeNames.h"
#include "Shared/UserFacingError.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <variant>

namespace ferrow::BatchImporter {

namespace {

using Outcome = std::variant<ImportedPhoto, BatchExportFailure>;

bool isSupportedExtension(const QByteArray& extension)
{
    static constexpr std::array<std::string_view, 7> supported{"jpg", "jpeg", "png", "tif", "tiff", "heic", "heif"};
    const QByteArray lower = extension.toLower();
    return std::find(supported.begin(), supported.end(), std::string_view(lower.constData(), size_t(lower.size()))) !=
           supported.end();
}

std::vector<FileUrl> deduplicated(const std::vector<FileUrl>& urls)
{
    std::set<FileUrl> distinct;
    for (const FileUrl& url : urls)
        distinct.insert(url.standardized());
    // Each text is made once: the comparison runs far more often than there are paths.
    std::vector<std::pair<QString, FileUrl>> keyed;
    keyed.reserve(distinct.size());
    for (const FileUrl& url : distinct)
        keyed.emplace_back(url.displayPath(), url);
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto& left, const auto& right) {
        return Localization::standardCompare(left.first, right.first) < 0;
    });
    std::vector<FileUrl> sorted;
    sorted.reserve(keyed.size());
    for (auto& [text, url] : keyed)
        sorted.push_back(std::move(url));
    return sorted;
}

BatchExportFailure failureOf(const FileUrl& url, const QString& message)
{
    BatchExportFailure failure;
    failure.filename = url.lastPathComponent();
    failure.message = message;
    failure.source = url;
    return failure;
}

Outcome loadOne(const FileUrl& url, const Loader& loader)
{
    try {
        return loader ? loader(url) : ImageLoader::loadBatchThumbnail(url);
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
            if (isSupportedExtension(extension))
                found.candidates.push_back(item);
            else if (ImageTypeNames::isImageExtension(extension))
                found.unsupported.push_back(item);
        });
        if (failure != 0)
            found.unreadable.push_back(failureOf(root, SystemError{failure, root}.description()));
    }
    return {deduplicated(found.candidates), deduplicated(found.unsupported), std::move(found.unreadable)};
}

BatchImportResult load(const std::vector<FileUrl>& urls, int maximumConcurrency, const Loader& loader,
                       const Progress& progress)
{
    if (maximumConcurrency < 0)
        qFatal("A negative number of loads can't run at once.");
    BatchImportResult result;
    if (maximumConcurrency == 0)
        return result;
    std::size_t done = 0;
    runBounded<Outcome>(
        urls.size(), std::size_t(maximumConcurrency), [&](std::size_t index) { return loadOne(urls[index], loader); },
        [&](std::size_t, Outcome outcome) {
            if (auto* photo = std::get_if<ImportedPhoto>(&outcome))
                result.photos.push_back(std::move(*photo));
            else
                result.failures.push_back(std::get<BatchExportFailure>(std::move(outcome)));
            ++done;
            if (progress)
                progress(done);
        },
        [] { return true; });
    return result;
}

BatchExportFailure unsupportedFailure(const FileUrl& url)
{
    const QByteArray extension = url.pathExtension();
    QString description = ImageTypeNames::description(extension).value_or(QString());
    if (description.isEmpty())
        description = extension.isEmpty() ? QStringLiteral("This file type") : QString::fromUtf8(extension).toUpper();
    const ImagePipelineError error = ImagePipelineError::UnsupportedType{description};
    return failureOf(url, UserFacingError::message(localizedTexts(error)));
}

} // namespace ferrow::BatchImporter
