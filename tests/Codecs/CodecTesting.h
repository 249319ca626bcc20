// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"

#include "Support/TestSupport.h"

#include <QImage>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace ferrow {

inline void PrintTo(const CodecError& error, std::ostream* out)
{
    *out << "reason " << int(error.reason) << " \"" << error.kind.toStdString() << '"';
}

} // namespace ferrow

namespace ferrow::test {

using Pixels = std::vector<std::uint8_t>;
using Components = std::vector<int>;

inline const CodecError malformed{CodecError::Reason::malformed, {}};
inline const CodecError damaged{CodecError::Reason::damaged, {}};
inline const CodecError tooLarge{CodecError::Reason::tooLarge, {}};
inline CodecError unsupported(const char* kind)
{
    return {CodecError::Reason::unsupported, QString::fromUtf8(kind)};
}

/// What decoding a file gave: its pixels, or why there are none.
struct Decoded {
    PixelSize storedSize;
    PixelSize size;
    PixelFormat format;
    ColorProfile profile;
    std::int64_t heldBytes = 0;
    Pixels pixels;
    std::optional<CodecError> error;

    [[nodiscard]] Components at(std::int64_t x, std::int64_t y) const
    {
        Components components;
        for (int i = 0; i < format.channels(); ++i) {
            const auto* in = &pixels[std::size_t((y * size.width + x) * format.bytesPerPixel())];
            std::uint16_t wide = in[i];
            std::memcpy(&wide, in + i * 2, format.bitsPerComponent == 16 ? 2 : 0);
            components.push_back(wide);
        }
        return components;
    }
};

/// Rows are asked for in uneven bands, with bytes between them that must stay as they are.
inline Decoded decodeAs(FileType type, const QByteArray& bytes, Tolerance tolerance = Tolerance::strict,
                        std::int64_t enough = 0)
{
    constexpr std::size_t gap = 6; // Even, as 16-bit components want it.
    constexpr std::int64_t band = 7;
    const MemoryFile file(bytes);
    const ByteSource source(file.descriptor(), file.size());
    Decoded result;
    try {
        const auto decoder = openDecoder(type, source, {.enoughDimension = enough, .tolerance = tolerance});
        result.storedSize = decoder->storedSize();
        result.size = decoder->size();
        result.format = decoder->format();
        result.profile = decoder->profile();
        result.heldBytes = decoder->heldBytes();
        const std::size_t rowBytes = std::size_t(result.size.width * result.format.bytesPerPixel());
        if (result.size.width > 10'000'000 / result.size.height) {
            std::byte row[8];
            decoder->readRows(1, row, sizeof row);
            return result;
        }
        Pixels rows(std::size_t(band) * (rowBytes + gap), 0xee);
        for (std::int64_t y = 0; y < result.size.height; y += band) {
            const std::int64_t count = std::min(band, result.size.height - y);
            decoder->readRows(count, reinterpret_cast<std::byte*>(rows.data()), rowBytes + gap);
            for (std::size_t at = 0; at < std::size_t(count) * (rowBytes + gap); at += rowBytes + gap) {
                result.pixels.insert(result.pixels.end(), &rows[at], &rows[at + rowBytes]);
                EXPECT_EQ(rows[at + rowBytes], 0xee) << "written behind the row";
            }
        }
        decoder->finish();
    } catch (const CodecError& error) {
        result.error = error;
    }
    return result;
}

inline EncodeOptions optionsFor(PixelSize size, PixelFormat format = rgb8)
{
    return {size, format, ColorProfile::displayP3(), 1, {}};
}

inline void encode(OutputType type, ByteSink& sink, const EncodeOptions& options, const Pixels& pixels)
{
    const auto encoder = openEncoder(type, sink, options);
    const std::int64_t rowBytes = options.size.width * options.format.bytesPerPixel();
    for (std::int64_t y = 0; y < options.size.height; y += 19)
        encoder->writeRows(std::min<std::int64_t>(19, options.size.height - y),
                           reinterpret_cast<const std::byte*>(pixels.data() + y * rowBytes), std::size_t(rowBytes));
    encoder->finish();
}

inline QByteArray encode(OutputType type, const EncodeOptions& options, const Pixels& pixels)
{
    const MemoryFile file;
    ByteSink sink(file.descriptor());
    encode(type, sink, options, pixels);
    return file.bytes();
}

/// Gradients with some texture: smooth enough for JPEG, and no two rows alike.
inline Pixels picture(PixelSize size, int channels)
{
    Pixels pixels;
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width; ++x)
            for (std::int64_t c = 0; c < channels; ++c)
                pixels.push_back(
                    std::uint8_t(std::abs((x * (c + 1) + y * 2 + c * 40) % 460 - 230) + x * y / 16 % 5 * 6));
    return pixels;
}

template <typename Values>
int worstDifference(const Values& a, const Values& b)
{
    int worst = a.size() == b.size() ? 0 : 999;
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i)
        worst = std::max(worst, std::abs(int(a[i]) - int(b[i])));
    return worst;
}

inline QByteArray bigEndian(quint64 value, int width = 4)
{
    QByteArray bytes;
    while (--width >= 0)
        bytes += char(value >> (8 * width));
    return bytes;
}

/// As HEIF is made of.
inline QByteArray box(const QByteArray& type, const QByteArray& content)
{
    return bigEndian(quint64(content.size() + 8)) + type + content;
}

inline QByteArray withByte(QByteArray file, qsizetype at, int value)
{
    file[at] = char(value);
    return file;
}

/// The sRGB profile made longer than two JPEG segments hold, its length field put right.
inline ColorProfile longProfile()
{
    const QByteArray icc = ColorProfile::sRGB().icc() + QByteArray(150'000, '\0');
    return ColorProfile::fromIcc(bigEndian(quint64(icc.size())) + icc.mid(4), ColorModel::rgb).value();
}

/// Qt's reader is the second opinion, in 16 bits. Transparent pixels have no color there; nobody sees it.
inline void expectWhatQtReads(const Decoded& decoded, const QByteArray& file)
{
    ASSERT_EQ(decoded.error, std::nullopt);
    const QImage image = QImage::fromData(file).convertToFormat(QImage::Format_RGBA64);
    ASSERT_EQ(decoded.size, (PixelSize{image.width(), image.height()}));
    const int scale = decoded.format.bitsPerComponent == 16 ? 1 : 257;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            Components own = decoded.at(x, y);
            if (decoded.format.model == ColorModel::gray)
                own.insert(own.begin(), 2, own[0]);
            own.resize(4, 65535 / scale);
            const QRgba64 other = reinterpret_cast<const QRgba64*>(image.constScanLine(y))[x];
            const Components wanted{other.red(), other.green(), other.blue(), other.alpha()};
            std::ranges::transform(own, own.begin(), [scale](int level) { return level * scale; });
            ASSERT_TRUE(own == wanted || (own[3] == 0 && wanted[3] == 0)) << x << ", " << y;
        }
}

/// Every way to cut `file` short that strict decoding takes for whole must give the whole file's pixels.
inline void expectNoHalfPictures(FileType type, const QByteArray& file)
{
    const Decoded whole = decodeAs(type, file);
    ASSERT_EQ(whole.error, std::nullopt);
    const qsizetype step = std::max<qsizetype>(1, file.size() / 200);
    for (qsizetype length = file.size() - 1; length >= 0; length -= length > file.size() - 40 ? 1 : step) {
        const Decoded cut = decodeAs(type, file.left(length));
        EXPECT_TRUE(cut.error || cut.pixels == whole.pixels) << "cut to " << length << " of " << file.size();
        EXPECT_NO_THROW(decodeAs(type, file.left(length), Tolerance::tolerant));
    }
    EXPECT_NE(decodeAs(type, file.left(file.size() / 2)).error, std::nullopt);
}

} // namespace ferrow::test
