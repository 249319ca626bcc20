// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/CompressedPicture.h"

#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"
#include "Platform/Files/MemoryFile.h"
#include "Platform/Pixels/ColorTransform.h"

#include <new>
#include <optional>
#include <span>
#include <vector>

namespace ferrow {

namespace {

void encode(const Bitmap& picture, ByteSink& sink, double quality)
{
    const bool hasAlpha = picture.format().hasAlpha();
    EncodeOptions options;
    options.size = picture.size();
    options.format = hasAlpha ? rgba8 : rgb8;
    options.quality = quality;
    // Without a profile, as these bytes are read again by decode() alone: telling which one it is takes longer than the
    // picture.
    const auto encoder = openEncoder(hasAlpha ? OutputType::png : OutputType::jpeg, sink, options);
    const ColorTransform transform(picture.profile(), picture.format(), ColorProfile::sRGB(), options.format);
    std::vector<std::byte> row(std::size_t(picture.size().width) * std::size_t(options.format.bytesPerPixel()));
    for (std::int64_t y = 0; y < picture.size().height; ++y) {
        transform.apply(picture.row(y), row.data(), std::size_t(picture.size().width));
        encoder->writeRows(1, row.data(), row.size());
    }
    encoder->finish();
}

/// The codecs work from descriptors.
Descriptor openFile()
{
    return openMemoryFile("ferrow-thumbnail");
}

QByteArray written(const ByteSink& sink, int descriptor)
{
    const std::vector<std::byte> bytes =
        ByteSource(descriptor, sink.position()).bytesAt(0, std::size_t(sink.position()));
    return {reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size())};
}

Bitmap decode(const ByteSource& source, FileType type)
{
    const auto decoder = openDecoder(type, source, {.tolerance = Tolerance::tolerant});
    const PixelFormat format = decoder->format();
    if (format != rgb8 && format != rgba8)
        return {};
    Bitmap picture(decoder->size(), format, ColorProfile::sRGB());
    decoder->readRows(picture.size().height, picture.row(0), picture.stride());
    return picture;
}

} // namespace

CompressedPicture CompressedPicture::compress(const Bitmap& picture, double quality)
{
    CompressedPicture compressed;
    const Descriptor file = openFile();
    if (picture.isNull() || !file.isOpen())
        return compressed;
    try {
        ByteSink sink(file.get());
        encode(picture, sink, quality);
        compressed.bytes_ = written(sink, file.get());
    } catch (const EncoderError&) {
    } catch (const InputOutputError&) {
    } catch (const std::bad_alloc&) {
        // The list shows the photo without its picture.
    }
    return compressed;
}

Bitmap CompressedPicture::decoded() const
{
    const Descriptor file = openFile();
    if (isNull() || !file.isOpen())
        return {};
    try {
        ByteSink sink(file.get());
        sink.write(std::as_bytes(std::span(bytes_.constData(), std::size_t(bytes_.size()))));
        sink.flush();
        const ByteSource source(file.get(), bytes_.size());
        return decode(source, bytes_.startsWith("\x89PNG") ? FileType::png : FileType::jpeg);
    } catch (const CodecError&) {
    } catch (const InputOutputError&) {
    } catch (const std::bad_alloc&) {
    }
    return {};
}

} // namespace ferrow
