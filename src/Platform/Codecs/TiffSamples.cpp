// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/TiffSamples.h"

#include "Platform/Base/Releaser.h"
#include "Platform/Pixels/AlphaArithmetic.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace ferrow {

namespace {

template <typename Value>
Value load(const std::byte* from)
{
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// Floating-point samples are taken as encoded values from 0 to 1; what lies outside is cut off.
std::uint16_t fromUnit(double value)
{
    return std::uint16_t(std::lround(std::clamp(std::isnan(value) ? 0.0 : value, 0.0, 1.0) * 65535.0));
}

double fromHalf(std::uint16_t half)
{
    const int exponent = half >> 10 & 0x1f;
    const int fraction = half & 0x3ff;
    const double sign = half & 0x8000 ? -1.0 : 1.0;
    if (exponent == 31)
        return fraction ? std::numeric_limits<double>::quiet_NaN() : sign * std::numeric_limits<double>::infinity();
    return sign * (exponent == 0 ? std::ldexp(fraction, -24) : std::ldexp(fraction + 1024, exponent - 25));
}

/// The signed 16-bit a and b of CIE Lab, 256 a unit, in the profile connection space's encoding: 257 a unit around 128.
std::uint16_t fromSignedLab16(std::uint16_t stored)
{
    const std::uint32_t shifted = std::uint16_t(stored ^ 0x8000);
    return std::uint16_t(std::min((shifted * 257 + 128) / 256, 65535u));
}

/// Version 2 of that encoding has its white at 65280.
std::uint16_t fromVersion2Lab16(std::uint16_t stored)
{
    return std::uint16_t(std::min((stored * 257u + 128) / 256, 65535u));
}

} // namespace

/// The library's own tables for the conversion to RGB.
struct TiffSamples::YCbCr {
    std::unique_ptr<TIFFYCbCrToRGB, Releaser<std::free>> tables;
};

TiffSamples::TiffSamples(const TiffLayout& layout) : layout_(layout), format_(layout.format())
{
    const bool isStoredAsWanted = layout.color == TiffColor::gray || layout.color == TiffColor::rgb ||
                                  layout.color == TiffColor::cmyk ||
                                  (layout.color == TiffColor::iccLab && layout.bits == 8);
    const bool hasAlphaLast =
        !layout.alphaSample || (*layout.alphaSample == layout.colorSamples() && !layout.isPremultiplied);
    isCopy_ = isStoredAsWanted && hasAlphaLast && !layout.isFloat && layout.bits == format_.bitsPerComponent &&
              layout.samples == format_.channels() && !layout.isPlanar;
    if (layout.color != TiffColor::yCbCr)
        return;

    // The library lays its tables out behind the struct, in one allocation.
    const std::size_t bytes = (sizeof(TIFFYCbCrToRGB) + sizeof(long) - 1) / sizeof(long) * sizeof(long) +
                              4 * 256 * sizeof(TIFFRGBValue) + 2 * 256 * sizeof(int) + 3 * 256 * sizeof(std::int32_t);
    yCbCr_ = std::make_unique<YCbCr>();
    yCbCr_->tables.reset(static_cast<TIFFYCbCrToRGB*>(std::calloc(1, bytes)));
    if (!yCbCr_->tables)
        throw std::bad_alloc();
    auto weights = layout.yCbCrWeights;
    auto reference = layout.yCbCrReference;
    TIFFYCbCrToRGBInit(yCbCr_->tables.get(), weights.data(), reference.data());
}

TiffSamples::~TiffSamples() = default;

void TiffSamples::convert(const TiffRun& run, std::byte* out)
{
    if (run.isLost)
        return fillGray(out, run.pixels);
    if (layout_.color == TiffColor::yCbCr)
        return convertYCbCr(run, out);
    if (isCopy_) {
        std::memcpy(out, run.planes[0], std::size_t(run.pixels * format_.bytesPerPixel()));
        return;
    }
    unpack(run);
    if (format_.bitsPerComponent == 8)
        assemble<std::uint8_t>(run.pixels, out);
    else
        assemble<std::uint16_t>(run.pixels, out);
}

void TiffSamples::fillGray(std::byte* out, std::int64_t pixels) const
{
    const int width = format_.bitsPerComponent / 8;
    for (std::int64_t i = 0; i < pixels; ++i) {
        for (int channel = 0; channel < format_.channels(); ++channel) {
            // Half of each component is neutral in every model but CMYK, where black alone makes gray.
            const bool isColoredInk = format_.model == ColorModel::cmyk && channel < 3;
            const bool isAlpha = channel >= format_.colorChannels();
            std::memset(out, isAlpha ? 0xff : isColoredInk ? 0 : 0x80, std::size_t(width));
            out += width;
        }
    }
}

void TiffSamples::convertYCbCr(const TiffRun& run, std::byte* out) const
{
    const auto put = [&](int luma, int blueness, int redness) {
        std::array<std::uint32_t, 3> rgb{};
        TIFFYCbCrtoRGB(yCbCr_->tables.get(), std::uint32_t(luma), blueness, redness, &rgb[0], &rgb[1], &rgb[2]);
        for (const std::uint32_t component : rgb)
            *out++ = std::byte(component);
    };
    const auto plane = [&](std::size_t index) { return reinterpret_cast<const std::uint8_t*>(run.planes[index]); };
    if (!layout_.isInBlocks()) {
        for (std::int64_t x = 0; x < run.pixels; ++x)
            put(plane(0)[x], plane(1)[x], plane(2)[x]);
        return;
    }
    const int across = layout_.subsamplingX;
    const int chromaAt = across * layout_.subsamplingY;
    for (std::int64_t x = 0; x < run.pixels; ++x) {
        const auto* block = plane(0) + x / across * (chromaAt + 2);
        put(block[run.blockRow * across + x % across], block[chromaAt], block[chromaAt + 1]);
    }
}

void TiffSamples::unpack(const TiffRun& run)
{
    samples_.resize(std::size_t(run.pixels * layout_.samples));
    if (!layout_.isPlanar)
        return unpackPlane(run.planes[0], run.pixels * layout_.samples, samples_.data(), 1);
    for (int plane = 0; plane < layout_.samples; ++plane)
        unpackPlane(run.planes[std::size_t(plane)], run.pixels, samples_.data() + plane, layout_.samples);
}

void TiffSamples::unpackPlane(const std::byte* plane, std::int64_t values, std::uint16_t* into, int step) const
{
    const auto fill = [&](auto&& valueAt) {
        for (std::int64_t i = 0; i < values; ++i)
            into[i * step] = std::uint16_t(valueAt(i));
    };
    const int bits = layout_.bits;
    if (layout_.isFloat && bits == 16)
        return fill([&](std::int64_t i) { return fromUnit(fromHalf(load<std::uint16_t>(plane + i * 2))); });
    if (layout_.isFloat && bits == 32)
        return fill([&](std::int64_t i) { return fromUnit(double(load<float>(plane + i * 4))); });
    if (layout_.isFloat)
        return fill([&](std::int64_t i) { return fromUnit(load<double>(plane + i * 8)); });
    if (bits == 32)
        return fill([&](std::int64_t i) { return load<std::uint32_t>(plane + i * 4) >> 16; });
    if (bits == 16)
        return fill([&](std::int64_t i) { return load<std::uint16_t>(plane + i * 2); });
    if (bits == 8)
        return fill([&](std::int64_t i) { return std::to_integer<std::uint16_t>(plane[i]); });

    // Other depths lie bit by bit, the highest first, and are stretched to the output's.
    const std::uint32_t highest = (1u << bits) - 1;
    const std::uint32_t full = layout_.color == TiffColor::palette ? highest : (1u << format_.bitsPerComponent) - 1;
    fill([&](std::int64_t i) {
        const std::int64_t first = i * bits;
        const std::int64_t last = first + bits - 1;
        std::uint32_t window = 0;
        for (std::int64_t byte = first / 8; byte <= last / 8; ++byte)
            window = window << 8 | std::to_integer<std::uint32_t>(plane[byte]);
        const std::uint32_t value = window >> (7 - last % 8) & highest;
        return (std::uint64_t(value) * full + highest / 2) / highest;
    });
}

template <typename Component>
void TiffSamples::assemble(std::int64_t pixels, std::byte* out) const
{
    const auto full = std::numeric_limits<Component>::max();
    const int colors = layout_.colorSamples();
    const std::uint16_t* pixel = samples_.data();
    const auto put = [&](std::uint32_t value) {
        const auto component = Component(value);
        std::memcpy(out, &component, sizeof component);
        out += sizeof component;
    };
    for (std::int64_t i = 0; i < pixels; ++i, pixel += layout_.samples) {
        const std::uint32_t alpha = layout_.alphaSample ? pixel[*layout_.alphaSample] : full;
        for (int channel = 0; channel < colors; ++channel) {
            std::uint16_t value = pixel[channel];
            if (layout_.isPremultiplied && layout_.color != TiffColor::palette)
                value = straightened<Component>(value, alpha);
            switch (layout_.color) {
            case TiffColor::palette:
                for (const std::uint8_t component : layout_.palette[value])
                    put(component);
                break;
            case TiffColor::invertedGray:
                put(full - value);
                break;
            case TiffColor::cieLab:
                put(channel == 0 ? value : sizeof(full) == 1 ? value ^ 0x80 : fromSignedLab16(value));
                break;
            case TiffColor::iccLab:
                put(sizeof(full) == 1 ? value : fromVersion2Lab16(value));
                break;
            case TiffColor::gray:
            case TiffColor::rgb:
            case TiffColor::cmyk:
            case TiffColor::yCbCr:
                put(value);
                break;
            }
        }
        if (layout_.alphaSample)
            put(layout_.color == TiffColor::palette && layout_.bits != 8 ? alpha * 255 / ((1u << layout_.bits) - 1)
                                                                         : alpha);
    }
}

} // namespace ferrow
