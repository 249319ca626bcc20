// SPDX-License-Identifier: GPL-3.0-or-later
// Type by content, and all that is asked of a file before and while a codec opens it. No pixel is decoded.
#include "FuzzSupport.h"

#include "Platform/Codecs/HeifBoxes.h"
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/TiffDirectory.h"

using namespace ferrow;

namespace {

void open(FileType type, const ByteSource& source)
{
    try {
        const auto decoder = openDecoder(type, source, {});
        const PixelSize size = decoder->storedSize();
        fuzz::require(size.shorterSide() >= 1, "a size below 1 is refused");
        fuzz::require(decoder->heldBytes() >= 0, "held bytes are counted");
        static_cast<void>(decoder->profile());
    } catch (const CodecError&) {
    }
}

/// The HEIF library stays outside: what it does with damage is its own, and confined.
void inspect(const ByteSource& source)
{
    try {
        const HeifPicture picture = inspectHeifBoxes(source);
        fuzz::require(picture.declaredSize.shorterSide() >= 1, "a size below 1 is refused");
        fuzz::require(picture.tiles >= 1 && picture.tiles <= 4'096, "tiles are bounded");
    } catch (const CodecError&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const fuzz::InputFile file({data, size});
    const auto detected = detectFileType(file.source());
    inspect(file.source());
    if (!detected || !detected->type || *detected->type == FileType::pdf || *detected->type == FileType::svg ||
        *detected->type == FileType::heif)
        return 0;
    open(*detected->type, file.source());
    return 0;
}
