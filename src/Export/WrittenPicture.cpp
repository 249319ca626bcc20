// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/WrittenPicture.h"

#include "Engine/Answerer.h"
#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"

namespace ferrow {

bool isWholePicture(const FileUrl& file, ExportFormat format, PixelSize size, const std::stop_token& stop)
try {
    const OpenedFile written = ImageLoader::openSource(file);
    return Engine::answerer().readBack({{written.descriptor(), written.size()}, format}, stop).size == size;
} catch (const ImagePipelineError&) {
    return false;
}

} // namespace ferrow
