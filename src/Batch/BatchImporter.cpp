// SPDX-License-Identifier: GPL-3.0-or-later
#include "Batch/BatchImporter.h"

#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Localization.h"
#include "Platform/Base/TaskGroup.h"
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

Outcome loadOne(const FileUrl& url, const Loader& loader)
{
    try {
        return loader ? loader(url) : ImageLoader::loadBatchThumbnail(url);
    } catch (...) {
        BatchExportFailure failure;
        failure.filename = url.lastPathComponent();
        failure.message = UserFacingError::message(std::current_exception());
        failure.source = url;
        return failure;
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
        walkFolder(root, [&found](const FileUrl& item) {
            const QByteArray extension = item.pathExtension();
            if (isSupportedExtension(extension))
                found.candidates.push_back(item);
            else if (ImageTypeNames::isImageExtension(extension))
                found.unsupported.push_back(item);
        });
    }
    return {deduplicated(found.candidates), deduplicated(found.unsupported)};
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
    BatchExportFailure failure;
    failure.filename = url.lastPathComponent();
    failure.message =
        UserFacingError::message(localizedTexts(ImagePipelineError(ImagePipelineError::UnsupportedType{description})));
    failure.source = url;
    return failure;
}

} // namespace ferrow::BatchImporter
