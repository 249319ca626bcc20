// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ImageEncoder.h"

#include "Platform/Codecs/TiffHandle.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace ferrow {

namespace {

/// Decoded bytes of a strip: large enough to compress well, small enough for readers that hold whole strips.
constexpr std::int64_t stripBytes = 256 * 1024;
/// From here on the plain format's 32-bit offsets could run out: the picture may not compress at all.
constexpr std::int64_t bigTiffBytes = 3'500'000'000;
/// Measured: docs/tiff-compression.md.
constexpr int deflateLevel = 1;

/// What libtiff's procedures write to. No exception may pass through the library: failures are kept here.
struct Output {
    ByteSink& sink;
    std::int64_t position = 0;
    std::int64_t end = 0;
    int errorNumber = 0;

    template <typename Work>
    tmsize_t guarded(Work&& work)
    {
        if (errorNumber != 0)
            return -1;
        try {
            return work();
        } catch (const InputOutputError& error) {
            errorNumber = error.errorNumber;
        } catch (...) {
            errorNumber = ENOMEM;
        }
        return -1;
    }
};

tmsize_t readBack(thandle_t handle, void* into, tmsize_t length)
{
    auto& output = *static_cast<Output*>(handle);
    return output.guarded([&] {
        const auto read = output.sink.readAt(output.position, {static_cast<std::byte*>(into), std::size_t(length)});
        output.position += std::int64_t(read);
        return tmsize_t(read);
    });
}

tmsize_t writeOut(thandle_t handle, void* bytes, tmsize_t length)
{
    auto& output = *static_cast<Output*>(handle);
    return output.guarded([&] {
        if (output.sink.position() != output.position)
            output.sink.seek(output.position);
        output.sink.write({static_cast<const std::byte*>(bytes), std::size_t(length)});
        output.position += length;
        output.end = std::max(output.end, output.position);
        return length;
    });
}

toff_t seekTo(thandle_t handle, toff_t offset, int whence)
{
    auto& output = *static_cast<Output*>(handle);
    const std::int64_t base = whence == SEEK_CUR ? output.position : whence == SEEK_END ? output.end : 0;
    output.position = base + std::int64_t(offset);
    return toff_t(output.position);
}

int closeNothing(thandle_t)
{
    return 0;
}

toff_t sizeSoFar(thandle_t handle)
{
    return toff_t(static_cast<Output*>(handle)->end);
}

int refuseMapping(thandle_t, void**, toff_t*)
{
    return 0;
}

void unmapNothing(thandle_t, void*, toff_t) {}

int ignoreMessage(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

TiffHandle openForWriting(Output& output, bool isBig)
{
    const TiffOptions options(TIFFOpenOptionsAlloc());
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), ignoreMessage, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreMessage, nullptr);
    return TiffHandle(TIFFClientOpenExt("output", isBig ? "w8" : "w", &output, readBack, writeOut, seekTo, closeNothing,
                                        sizeSoFar, refuseMapping, unmapNothing, options.get()));
}

class TiffEncoder final : public ImageEncoder {
public:
    TiffEncoder(ByteSink& sink, const EncodeOptions& options);

    void writeRows(std::int64_t count, const std::byte* rows, std::size_t stride) override;
    void finish() override;

private:
    /// Turns libtiff's answer into an error of ours.
    void require(bool succeeded) const;
    [[nodiscard]] std::uint64_t writeExifDirectory(const QString& dateTimeOriginal);
    void setPictureTags();
    void setMetadataTags();
    void writeStrip();

    EncodeOptions options_;
    Output output_;
    std::size_t rowBytes_;
    std::size_t rowsPerStrip_;
    std::vector<std::byte> strip_; ///< Rows collected for the next strip.
    std::uint32_t stripIndex_ = 0;
    TiffHandle tiff_;
};

TiffEncoder::TiffEncoder(ByteSink& sink, const EncodeOptions& options)
    : options_(options), output_{sink},
      rowBytes_(std::size_t(options.size.width) * std::size_t(options.format.bytesPerPixel())),
      rowsPerStrip_(std::size_t(std::clamp<std::int64_t>(stripBytes / std::int64_t(rowBytes_), 1, options.size.height)))
{
    tiff_ = openForWriting(output_, std::int64_t(rowBytes_) * options.size.height > bigTiffBytes);
    require(tiff_ != nullptr);
    strip_.reserve(rowsPerStrip_ * rowBytes_);

    // The Exif directory goes first: pointing to it from a directory that is written already would mean writing that
    // one a second time.
    const auto& date = options_.metadata.dateTimeOriginal;
    const std::uint64_t exifOffset = date ? writeExifDirectory(*date) : 0;
    setPictureTags();
    setMetadataTags();
    if (date)
        require(TIFFSetField(tiff_.get(), TIFFTAG_EXIFIFD, exifOffset) == 1);
}

void TiffEncoder::require(bool succeeded) const
{
    if (!succeeded || output_.errorNumber != 0)
        throw EncoderError{output_.errorNumber};
}

std::uint64_t TiffEncoder::writeExifDirectory(const QString& dateTimeOriginal)
{
    TIFF* tiff = tiff_.get();
    std::uint64_t offset = 0;
    require(TIFFCreateEXIFDirectory(tiff) == 0);
    require(TIFFSetField(tiff, EXIFTAG_EXIFVERSION, "0232") == 1);
    require(TIFFSetField(tiff, EXIFTAG_DATETIMEORIGINAL, dateTimeOriginal.toUtf8().constData()) == 1);
    // Exif requires these of every directory of its own.
    const bool isSrgb = options_.profile.isEquivalentTo(ColorProfile::sRGB());
    require(TIFFSetField(tiff, EXIFTAG_FLASHPIXVERSION, "0100") == 1);
    require(TIFFSetField(tiff, EXIFTAG_COLORSPACE, isSrgb ? 1 : 0xffff) == 1);
    require(TIFFWriteCustomDirectory(tiff, &offset) == 1);
    TIFFFreeDirectory(tiff);
    require(TIFFCreateDirectory(tiff) == 0);
    return offset;
}

void TiffEncoder::setPictureTags()
{
    TIFF* tiff = tiff_.get();
    const auto set = [&](std::uint32_t tag, auto value) { require(TIFFSetField(tiff, tag, value) == 1); };
    set(TIFFTAG_IMAGEWIDTH, std::uint32_t(options_.size.width));
    set(TIFFTAG_IMAGELENGTH, std::uint32_t(options_.size.height));
    set(TIFFTAG_BITSPERSAMPLE, options_.format.bitsPerComponent);
    set(TIFFTAG_SAMPLESPERPIXEL, options_.format.channels());
    set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    set(TIFFTAG_ROWSPERSTRIP, std::uint32_t(rowsPerStrip_));
    set(TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    set(TIFFTAG_ZIPQUALITY, deflateLevel);
    if (options_.format.hasAlpha()) {
        const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
        require(TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind) == 1);
    }
    set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    set(TIFFTAG_XRESOLUTION, 72.0);
    set(TIFFTAG_YRESOLUTION, 72.0);
    set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    const QByteArray& icc = options_.profile.icc();
    if (!icc.isEmpty())
        require(TIFFSetField(tiff, TIFFTAG_ICCPROFILE, std::uint32_t(icc.size()), icc.constData()) == 1);
}

void TiffEncoder::setMetadataTags()
{
    const auto setText = [&](std::uint32_t tag, const std::optional<QString>& text) {
        if (text)
            require(TIFFSetField(tiff_.get(), tag, text->toUtf8().constData()) == 1);
    };
    setText(TIFFTAG_MAKE, options_.metadata.make);
    setText(TIFFTAG_MODEL, options_.metadata.model);
    setText(TIFFTAG_ARTIST, options_.metadata.artist);
    setText(TIFFTAG_COPYRIGHT, options_.metadata.copyright);
}

void TiffEncoder::writeRows(std::int64_t count, const std::byte* rows, std::size_t stride)
{
    for (std::int64_t i = 0; i < count; ++i) {
        strip_.insert(strip_.end(), rows, rows + rowBytes_);
        rows += stride;
        if (strip_.size() == rowsPerStrip_ * rowBytes_)
            writeStrip();
    }
}

void TiffEncoder::writeStrip()
{
    const auto length = tmsize_t(strip_.size());
    require(TIFFWriteEncodedStrip(tiff_.get(), stripIndex_++, strip_.data(), length) == length);
    strip_.clear();
}

void TiffEncoder::finish()
{
    if (!strip_.empty())
        writeStrip();
    require(TIFFWriteDirectory(tiff_.get()) == 1);
    try {
        output_.sink.flush();
    } catch (const InputOutputError& error) {
        throw EncoderError{error.errorNumber};
    }
}

} // namespace

std::unique_ptr<ImageEncoder> openTiffEncoder(ByteSink& sink, const EncodeOptions& options)
{
    return std::make_unique<TiffEncoder>(sink, options);
}

} // namespace ferrow
