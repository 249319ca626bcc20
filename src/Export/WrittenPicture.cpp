// SPDX-License-Identifier: GPL-3.0-or-later
#include "Export/WrittenPicture.h"

#include "Export/ImageExporter.h"
#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"

namespace ferrow {

bool isWholePicture(const FileUrl& file, PixelSize size, const std::stop_token& stop)
try {
    const ImportedPhoto picture = ImageLoader::load(file, 0, stop);
    if (picture.pixelSize != size)
        return false;
    // The last row comes after all others, and regions are as strict as exports.
    RenderRecipe asItIs;
    asItIs.border.width = 0;
    asItIs.captions.clear();
    asItIs.outputColorProfile = OutputColorProfile::preserveSource;
    const QRect lastRow(0, int(size.height) - 1, int(size.width), 1);
    return !ImageExporter::region(picture, asItIs, lastRow, 1, stop).isNull();
} catch (const ImagePipelineError&) {
    return false;
}

} // namespace ferrow
