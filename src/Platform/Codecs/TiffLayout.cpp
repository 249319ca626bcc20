// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/TiffLayout.h"

#include "Platform/Codecs/ImageDecoder.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr int mostSamples = 8;

[[noreturn]] void refuseAsMalformed()
{
    throw CodecError{CodecError::Reason::malformed, {}};
}

[[noreturn]] void refuseAsUnsupported(const QString& kind)
{
    throw CodecError{CodecError::Reason::unsupported, kind};
}

void readSize(const TiffInput& input, TiffLayout& layout)
{
    layout.size.width = input.tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
    layout.size.height = input.tag<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    if (layout.size.width < 1 || layout.size.height < 1)
        refuseAsMalformed();
}

int readCompression(const TiffInput& input)
{
    const int compression = input.tag<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (!TIFFIsCODECConfigured(std::uint16_t(compression)))
        refuseAsUnsupported(QStringLiteral("TIFF image with compression %1").arg(compression));
    return compression;
}

bool hasColorMap(const TiffInput& input)
{
    std::uint16_t* red = nullptr;
    std::uint16_t* green = nullptr;
    std::uint16_t* blue = nullptr;
    return TIFFGetField(input.get(), TIFFTAG_COLORMAP, &red, &green, &blue) == 1;
}

int readPhotometric(const TiffInput& input, int samples)
{
    // Some writers leave it out; then the number of samples and a color map leave little choice.
    std::uint16_t photometric = 0;
    if (TIFFGetField(input.get(), TIFFTAG_PHOTOMETRIC, &photometric) == 1)
        return photometric;
    if (samples >= 3)
        return PHOTOMETRIC_RGB;
    return hasColorMap(input) ? PHOTOMETRIC_PALETTE : PHOTOMETRIC_MINISBLACK;
}

TiffColor colorFor(const TiffInput& input, int photometric)
{
    switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
        return TiffColor::invertedGray;
    case PHOTOMETRIC_MINISBLACK:
        return TiffColor::gray;
    case PHOTOMETRIC_RGB:
        return TiffColor::rgb;
    case PHOTOMETRIC_PALETTE:
        return TiffColor::palette;
    case PHOTOMETRIC_YCBCR:
        return TiffColor::yCbCr;
    case PHOTOMETRIC_CIELAB:
        return TiffColor::cieLab;
    case PHOTOMETRIC_ICCLAB:
        return TiffColor::iccLab;
    case PHOTOMETRIC_SEPARATED:
        if (input.tag<std::uint16_t>(TIFFTAG_INKSET, INKSET_CMYK) != INKSET_CMYK)
            refuseAsUnsupported(QStringLiteral("TIFF image in inks other than CMYK"));
        return TiffColor::cmyk;
    case PHOTOMETRIC_MASK:
        refuseAsUnsupported(QStringLiteral("Transparency mask TIFF image"));
    case PHOTOMETRIC_ITULAB:
        refuseAsUnsupported(QStringLiteral("ITU Lab TIFF image"));
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
        refuseAsUnsupported(QStringLiteral("LogLuv TIFF image"));
    default:
        refuseAsUnsupported(QStringLiteral("TIFF image with photometric interpretation %1").arg(photometric));
    }
}

void readSamples(const TiffInput& input, TiffLayout& layout)
{
    layout.bits = input.tag<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    layout.samples = input.tag<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    if (layout.bits < 1 || layout.samples < 1)
        refuseAsMalformed();
    if (layout.samples > mostSamples)
        refuseAsUnsupported(QStringLiteral("%1-band TIFF image").arg(layout.samples));
}

void readSampleFormat(const TiffInput& input, TiffLayout& layout)
{
    const bool isLab = layout.color == TiffColor::cieLab || layout.color == TiffColor::iccLab;
    const bool hasNumericColor = layout.color != TiffColor::palette && layout.color != TiffColor::yCbCr && !isLab;
    const int format = input.tag<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    layout.isFloat = format == SAMPLEFORMAT_IEEEFP;

    const auto name = [&](const char* kind) {
        return QStringLiteral("%1-bit %2TIFF image").arg(layout.bits).arg(QLatin1StringView(kind));
    };
    if (format == SAMPLEFORMAT_COMPLEXINT || format == SAMPLEFORMAT_COMPLEXIEEEFP)
        refuseAsUnsupported(name("complex "));
    // Two of Lab's components are signed whatever the tag says.
    if (format == SAMPLEFORMAT_INT && !isLab)
        refuseAsUnsupported(name("signed "));
    if (layout.isFloat && (!hasNumericColor || (layout.bits != 16 && layout.bits != 32 && layout.bits != 64)))
        refuseAsUnsupported(name("floating-point "));
    const bool isPlainDepth = layout.bits <= 16 || (layout.bits == 32 && hasNumericColor);
    const bool isLabDepth = layout.bits == 8 || layout.bits == 16;
    if (!layout.isFloat && (!isPlainDepth || (isLab && !isLabDepth)))
        refuseAsUnsupported(name(isLab ? "Lab " : ""));
}

void readExtraSamples(const TiffInput& input, TiffLayout& layout)
{
    const int color = layout.colorSamples();
    if (layout.samples < color)
        refuseAsUnsupported(QStringLiteral("%1-band TIFF image of this color model").arg(layout.samples));
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (TIFFGetField(input.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1)
        return;
    for (int i = 0; i < count && color + i < layout.samples; ++i) {
        // Samples of no stated meaning are not alpha: masks and spot channels are stored that way.
        if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA)
            continue;
        layout.alphaSample = color + i;
        layout.isPremultiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
        return;
    }
}

void readPalette(const TiffInput& input, TiffLayout& layout)
{
    std::uint16_t* red = nullptr;
    std::uint16_t* green = nullptr;
    std::uint16_t* blue = nullptr;
    if (TIFFGetField(input.get(), TIFFTAG_COLORMAP, &red, &green, &blue) != 1 || !red || !green || !blue)
        refuseAsMalformed();
    const std::size_t count = std::size_t(1) << layout.bits;
    // The format asks for 16 bits, but old writers filled in 8.
    const auto isByte = [](std::uint16_t value) { return value < 256; };
    const bool isEightBit = std::all_of(red, red + count, isByte) && std::all_of(green, green + count, isByte) &&
                            std::all_of(blue, blue + count, isByte);
    const auto reduced = [&](std::uint16_t value) {
        return std::uint8_t(isEightBit ? value : (value * 255u + 32767u) / 65535u);
    };
    layout.palette.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        layout.palette.push_back({reduced(red[i]), reduced(green[i]), reduced(blue[i])});
}

void readYCbCr(const TiffInput& input, TiffLayout& layout)
{
    if (layout.bits != 8 || layout.samples != 3)
        refuseAsUnsupported(QStringLiteral("%1-bit %2-band YCbCr TIFF image").arg(layout.bits).arg(layout.samples));
    std::uint16_t x = 2;
    std::uint16_t y = 2;
    TIFFGetFieldDefaulted(input.get(), TIFFTAG_YCBCRSUBSAMPLING, &x, &y);
    const auto isFactor = [](int factor) { return factor == 1 || factor == 2 || factor == 4; };
    if (!isFactor(x) || !isFactor(y))
        refuseAsMalformed();
    if (layout.isPlanar && (x != 1 || y != 1))
        refuseAsUnsupported(QStringLiteral("YCbCr TIFF image in subsampled planes"));
    layout.subsamplingX = x;
    layout.subsamplingY = y;

    float* weights = nullptr;
    float* reference = nullptr;
    TIFFGetFieldDefaulted(input.get(), TIFFTAG_YCBCRCOEFFICIENTS, &weights);
    TIFFGetFieldDefaulted(input.get(), TIFFTAG_REFERENCEBLACKWHITE, &reference);
    const auto isFinite = [](float value) { return std::isfinite(value); };
    if (!weights || !reference || !(weights[1] > 0) || !std::all_of(weights, weights + 3, isFinite) ||
        !std::all_of(reference, reference + 6, isFinite))
        refuseAsMalformed();
    std::copy_n(weights, 3, layout.yCbCrWeights.begin());
    std::copy_n(reference, 6, layout.yCbCrReference.begin());
}

void readChunks(const TiffInput& input, TiffLayout& layout)
{
    layout.isTiled = TIFFIsTiled(input.get()) != 0;
    layout.chunkWidth = layout.isTiled ? input.tag<std::uint32_t>(TIFFTAG_TILEWIDTH, 0) : layout.size.width;
    layout.chunkRows =
        layout.isTiled
            ? input.tag<std::uint32_t>(TIFFTAG_TILELENGTH, 0)
            : std::min<std::int64_t>(input.tag<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, 0xffffffff), layout.size.height);
    if (layout.chunkWidth < 1 || layout.chunkRows < 1)
        refuseAsMalformed();
}

} // namespace

int TiffLayout::colorSamples() const
{
    switch (color) {
    case TiffColor::gray:
    case TiffColor::invertedGray:
    case TiffColor::palette:
        return 1;
    case TiffColor::cmyk:
        return 4;
    case TiffColor::rgb:
    case TiffColor::cieLab:
    case TiffColor::iccLab:
    case TiffColor::yCbCr:
        return 3;
    }
    return 1;
}

PixelFormat TiffLayout::format() const
{
    PixelFormat format;
    format.model = ColorModel::rgb;
    if (color == TiffColor::gray || color == TiffColor::invertedGray)
        format.model = ColorModel::gray;
    else if (color == TiffColor::cmyk)
        format.model = ColorModel::cmyk;
    else if (color == TiffColor::cieLab || color == TiffColor::iccLab)
        format.model = ColorModel::lab;
    format.bitsPerComponent = bits > 8 && color != TiffColor::palette ? 16 : 8;
    format.alpha = alphaSample ? Alpha::straight : Alpha::none;
    return format;
}

TiffLayout readTiffLayout(const TiffInput& input)
{
    TiffLayout layout;
    readSize(input, layout);
    const int compression = readCompression(input);
    readSamples(input, layout);
    layout.color = colorFor(input, readPhotometric(input, layout.samples));
    layout.isPlanar = layout.samples > 1 &&
                      input.tag<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    if (compression == COMPRESSION_JPEG && layout.bits != 8)
        refuseAsUnsupported(QStringLiteral("%1-bit JPEG TIFF image").arg(layout.bits));
    if (compression == COMPRESSION_JPEG && layout.color == TiffColor::yCbCr && !layout.isPlanar) {
        TIFFSetField(input.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        layout.color = TiffColor::rgb;
    }

    readSampleFormat(input, layout);
    readExtraSamples(input, layout);
    if (layout.color == TiffColor::palette)
        readPalette(input, layout);
    if (layout.color == TiffColor::yCbCr)
        readYCbCr(input, layout);
    readChunks(input, layout);
    return layout;
}

} // namespace ferrow
