// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/CodecSupport.h"
#include "Platform/Codecs/ExifBlock.h"
#include "Platform/Codecs/ImageEncoder.h"

#include <bit>
#include <cstring>

#include <png.h>
#include <zlib.h>

namespace ferrow {

namespace {

/// Chosen by measurement: docs/png-compression.md.
constexpr int compressionStrategy = Z_RLE;
constexpr int rowFilters = PNG_FILTER_SUB | PNG_FILTER_UP;

/// The contents of an iCCP chunk: a name, the method's number 0, the deflated profile. Written by ourselves because the
/// library leaves out profiles that it judges by its own rules.
QByteArray profileChunk(const QByteArray& icc)
{
    const QByteArray head("ICC profile\0\0", 13);
    auto length = compressBound(uLong(icc.size()));
    QByteArray chunk = head;
    chunk.resize(head.size() + qsizetype(length));
    if (compress(reinterpret_cast<Bytef*>(chunk.data() + head.size()), &length,
                 reinterpret_cast<const Bytef*>(icc.constData()), uLong(icc.size())) != Z_OK)
        throw EncoderError{};
    chunk.resize(head.size() + qsizetype(length));
    return chunk;
}

class PngEncoder final : public ImageEncoder {
public:
    PngEncoder(ByteSink& sink, const EncodeOptions& options) : sink_(sink)
    {
        if (options.format.model != ColorModel::rgb || options.format.alpha == Alpha::premultiplied)
            throw EncoderError{};
        const QByteArray& icc = options.profile.icc();
        const QByteArray profile = icc.isEmpty() ? QByteArray() : profileChunk(icc);
        const QByteArray exif =
            makeExifBlock(options.metadata, options.size, options.profile.isEquivalentTo(ColorProfile::sRGB()));
        run([&] { writeHeader(options, profile, exif); });
    }

    void writeRows(std::int64_t count, const std::byte* rows, std::size_t stride) override
    {
        run([=, this] {
            for (std::int64_t y = 0; y < count; ++y)
                png_write_row(handle_.png, reinterpret_cast<png_const_bytep>(rows + std::size_t(y) * stride));
        });
    }

    void finish() override
    {
        run([this] { png_write_end(handle_.png, nullptr); });
        try {
            sink_.flush();
        } catch (const InputOutputError& error) {
            throw EncoderError{error.errorNumber};
        }
    }

private:
    struct Handle {
        ~Handle() { png_destroy_write_struct(&png, &info); }

        png_structp png = nullptr;
        png_infop info = nullptr;
    };

    static PngEncoder& of(png_voidp self) { return *static_cast<PngEncoder*>(self); }

    void writeHeader(const EncodeOptions& options, const QByteArray& profile, const QByteArray& exif)
    {
        handle_.png = png_create_write_struct(
            PNG_LIBPNG_VER_STRING, this,
            [](png_structp png, png_const_charp) { of(png_get_error_ptr(png)).trap_.spring(); },
            [](png_structp, png_const_charp) {});
        handle_.info = handle_.png ? png_create_info_struct(handle_.png) : nullptr;
        if (!handle_.info)
            trap_.spring();
        png_set_write_fn(
            handle_.png, this,
            [](png_structp png, png_bytep bytes, std::size_t count) { of(png_get_io_ptr(png)).write(bytes, count); },
            [](png_structp) {});
        png_set_compression_strategy(handle_.png, compressionStrategy);
        png_set_compression_buffer_size(handle_.png, 65536);
        png_set_filter(handle_.png, PNG_FILTER_TYPE_BASE, rowFilters);
        png_set_user_limits(handle_.png, 0x7fffffff, 0x7fffffff);
        const int colorType = options.format.hasAlpha() ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
        png_set_IHDR(handle_.png, handle_.info, png_uint_32(options.size.width), png_uint_32(options.size.height),
                     options.format.bitsPerComponent, colorType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                     PNG_FILTER_TYPE_BASE);
        png_write_info(handle_.png, handle_.info);
        writeChunk("iCCP", profile);
        writeChunk("eXIf", exif);
        if (options.format.bitsPerComponent == 16 && std::endian::native == std::endian::little)
            png_set_swap(handle_.png);
    }

    void writeChunk(const char* name, const QByteArray& bytes)
    {
        if (!bytes.isEmpty())
            png_write_chunk(handle_.png, reinterpret_cast<png_const_bytep>(name),
                            reinterpret_cast<png_const_bytep>(bytes.constData()), std::size_t(bytes.size()));
    }

    template <typename Call>
    void run(Call&& call)
    {
        if (!trap_.run(call))
            throw EncoderError{errorNumber_};
    }

    void write(png_bytep bytes, std::size_t count)
    {
        errorNumber_ = writeQuietly(sink_, std::as_bytes(std::span(bytes, count)));
        if (errorNumber_ != 0)
            trap_.spring();
    }

    ErrorTrap trap_;
    ByteSink& sink_;
    Handle handle_;
    int errorNumber_ = 0;
};

} // namespace

std::unique_ptr<ImageEncoder> openPngEncoder(ByteSink& sink, const EncodeOptions& options)
{
    return std::make_unique<PngEncoder>(sink, options);
}

} // namespace ferrow
