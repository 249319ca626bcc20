// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ImageLoader.h"

#include "Engine/Answerer.h"
#include "Metadata/MetadataExtractor.h"
#include "Models/ErrorTexts.h"

namespace ferrow::ImageLoader {

namespace {

void checkSize(const OpenedFile& file)
{
    if (file.size() > maximumFileSize)
        throw ImagePipelineError(ImagePipelineError::FileTooLarge{file.size()});
}

} // namespace

OpenedFile openSource(const FileUrl& url)
{
    try {
        OpenedFile file = OpenedFile::open(url);
        checkSize(file);
        return file;
    } catch (const SystemError&) {
        throw ImagePipelineError(ImagePipelineError::unreadableFile);
    }
}

ImportedPhoto load(const FileUrl& url, const std::stop_token& stop)
{
    return load(url, previewDimension, stop);
}

ImportedPhoto loadBatchThumbnail(const FileUrl& url, const std::stop_token& stop)
{
    return load(url, batchThumbnailDimension, stop);
}

ImportedPhoto load(const FileUrl& url, std::int64_t previewMaximumDimension, const std::stop_token& stop)
{
    return load(openSource(url), previewMaximumDimension, stop);
}

ImportedPhoto load(const OpenedFile& file, std::int64_t previewMaximumDimension, const std::stop_token& stop)
{
    checkSize(file);
    Engine::InspectRequest request;
    request.source = {file.descriptor(), file.size()};
    request.maximumDimension = previewMaximumDimension;
    Engine::InspectAnswer answer = Engine::answerer().inspect(request, stop);
    if (file.currentIdentity() != file.identity())
        throw ImagePipelineError(ImagePipelineError::unreadableFile);

    ImportedPhoto photo;
    photo.url = file.url();
    photo.type = answer.type;
    photo.pixelSize = answer.uprightSize;
    photo.metadata =
        MetadataExtractor::extract(answer.properties.image, answer.properties.xmp, file.url().lastPathComponent());
    photo.previewSource = std::move(answer.picture);
    photo.colorProfileName = std::move(answer.colorProfileName);
    photo.codedData = answer.codedData;
    return photo;
}

} // namespace ferrow::ImageLoader
