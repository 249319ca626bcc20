// SPDX-License-Identifier: GPL-3.0-or-later
// A file's metadata blocks to the display-ready record.
#include "FuzzSupport.h"

#include "Metadata/MetadataExtractor.h"
#include "Platform/Properties/PropertyReader.h"

using namespace ferrow;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const fuzz::InputFile file({data, size});
    // Whatever the bytes say they are: a file may be taken for another kind by its first ones.
    for (const InputType& input : inputTypes()) {
        if (input.type == FileType::heif)
            continue; // Its library stays outside: what it does with damage is its own, and confined.
        const ImageProperties properties = readProperties(input.type, file.source());
        const PhotoMetadata record =
            MetadataExtractor::extract(properties.image, properties.xmp, QStringLiteral("a.jpg"));
        for (const auto& text : {record.cameraMake, record.lens, record.artist, record.title, record.caption})
            fuzz::require(!text || (!text->isEmpty() && text->size() <= 64 * 1024), "texts are there and bounded");
    }
    return 0;
}
