// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"

namespace ferrow {

std::unique_ptr<ImageDecoder> openDecoder(FileType type, const ByteSource& source, const DecodeOptions& options)
{
    switch (type) {
    case FileType::jpeg:
        return openJpegDecoder(source, options);
    case FileType::png:
        return openPngDecoder(source, options);
    case FileType::tiff:
        return openTiffDecoder(source, options);
    case FileType::heif:
        return openHeifDecoder(source, options);
    case FileType::pdf:
    case FileType::svg:
        break;
    }
    throw CodecError{CodecError::Reason::unsupported, inputType(type).code};
}

std::unique_ptr<ImageEncoder> openEncoder(OutputType type, ByteSink& sink, const EncodeOptions& options)
{
    switch (type) {
    case OutputType::jpeg:
        return openJpegEncoder(sink, options);
    case OutputType::png:
        return openPngEncoder(sink, options);
    case OutputType::tiff:
        return openTiffEncoder(sink, options);
    case OutputType::heif:
        return openHeifEncoder(sink, options);
    }
    throw EncoderError{};
}

} // namespace ferrow
