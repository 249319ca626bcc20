// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"
#include "Platform/Pixels/Bitmap.h"
#include "Support/TestSupport.h"

#include <cstring>
#include <random>

/// Small pictures and files made of them.
namespace ferrow::test {

/// Every byte random but repeatable: no two places look alike, so that a misplaced pixel shows.
inline Bitmap noise(PixelSize size, PixelFormat format, unsigned seed = 1)
{
    Bitmap picture(size, format, ColorProfile::sRGB());
    std::mt19937 random(seed);
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::size_t i = 0; i < std::size_t(size.width) * std::size_t(format.bytesPerPixel()); ++i)
            picture.row(y)[i] = std::byte(random() & 0xff);
    return picture;
}

/// One color all over: `components` as many as the format has channels.
inline Bitmap flat(PixelSize size, PixelFormat format, std::initializer_list<int> components,
                   const ColorProfile& profile = ColorProfile::sRGB())
{
    Bitmap picture(size, format, profile);
    for (std::int64_t y = 0; y < size.height; ++y) {
        std::byte* out = picture.row(y);
        for (std::int64_t x = 0; x < size.width; ++x)
            for (const int component : components) {
                std::memcpy(out, &component, std::size_t(format.bitsPerComponent / 8)); // Little-endian, as all here.
                out += format.bitsPerComponent / 8;
            }
    }
    return picture;
}

inline QByteArray encoded(OutputType type, const Bitmap& picture, const OutputMetadata& metadata = {},
                          double quality = 0.95)
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    EncodeOptions options;
    options.size = picture.size();
    options.format = picture.format();
    options.profile = picture.profile();
    options.quality = quality;
    options.metadata = metadata;
    const auto encoder = openEncoder(type, sink, options);
    encoder->writeRows(picture.size().height, picture.row(0), picture.stride());
    encoder->finish();
    return file.bytes();
}

/// The file's picture as its decoder delivers it: not oriented, in its own space.
inline Bitmap decoded(const QByteArray& bytes)
{
    const MemoryFile file(bytes);
    const ByteSource source(file.descriptor(), bytes.size());
    const auto type = detectFileType(source);
    if (!type || !type->type)
        throw std::runtime_error("not a picture");
    const auto decoder = openDecoder(*type->type, source, {});
    Bitmap picture(decoder->size(), decoder->format(), decoder->profile());
    decoder->readRows(picture.size().height, picture.row(0), picture.stride());
    decoder->finish();
    return picture;
}

/// A little-endian TIFF or Exif block with another orientation: tag 0x0112, type SHORT, count 1.
inline QByteArray withOrientation(QByteArray bytes, int orientation)
{
    const qsizetype entry = bytes.indexOf(QByteArray("\x12\x01\x03\x00\x01\x00\x00\x00", 8));
    if (entry < 0)
        throw std::runtime_error("no orientation to change");
    bytes[entry + 8] = char(orientation);
    return bytes;
}

/// Whether `part` lies in `whole` with its top left pixel at (x, y), byte for byte.
inline bool holdsAt(const Bitmap& whole, std::int64_t x, std::int64_t y, const Bitmap& part)
{
    if (x + part.size().width > whole.size().width || y + part.size().height > whole.size().height ||
        whole.format() != part.format())
        return false;
    const std::int64_t bytes = part.format().bytesPerPixel();
    for (std::int64_t row = 0; row < part.size().height; ++row)
        if (std::memcmp(whole.row(y + row) + x * bytes, part.row(row), std::size_t(part.size().width * bytes)) != 0)
            return false;
    return true;
}

inline bool samePixels(const Bitmap& left, const Bitmap& right)
{
    return left.size() == right.size() && holdsAt(left, 0, 0, right);
}

inline int component(const Bitmap& picture, std::int64_t x, std::int64_t y, int channel)
{
    const int bytes = picture.format().bitsPerComponent / 8;
    const std::byte* at = picture.row(y) + x * picture.format().bytesPerPixel() + channel * bytes;
    return std::to_integer<int>(at[0]) + (bytes == 2 ? std::to_integer<int>(at[1]) * 256 : 0);
}

/// An 8-bit picture in 16 bits: each level 257 times as high, so that the highest is again the highest.
inline Bitmap widened(const Bitmap& picture)
{
    Bitmap wide(picture.size(), rgbFormat(16, picture.format().hasAlpha()), picture.profile());
    const std::int64_t bytes = picture.size().width * picture.format().bytesPerPixel();
    for (std::int64_t y = 0; y < picture.size().height; ++y)
        for (std::int64_t i = 0; i < bytes; ++i)
            wide.row(y)[2 * i] = wide.row(y)[2 * i + 1] = picture.row(y)[i];
    return wide;
}

} // namespace ferrow::test
