// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"

#include "Support/TestSupport.h"

#include <algorithm>
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

/// What decoding a file gave: its pixels, or why there are none.
struct Decoded {
    PixelSize storedSize;
    PixelSize size;
    PixelFormat format;
    ColorProfile profile;
    std::int64_t heldBytes = 0;
    Pixels pixels;
    std::optional<CodecError> error;

    [[nodiscard]] bool isWhole() const { return !error; }
};

/// Rows are asked for in uneven bands, with bytes between them that must stay as they are.
inline Decoded decode(FileType type, const QByteArray& bytes, const DecodeOptions& options = {})
{
    constexpr std::size_t gap = 5;
    constexpr std::int64_t band = 7;
    const MemoryFile file(bytes);
    const ByteSource source(file.descriptor(), file.size());
    Decoded result;
    try {
        const auto decoder = openDecoder(type, source, options);
        result.storedSize = decoder->storedSize();
        result.size = decoder->size();
        result.format = decoder->format();
        result.profile = decoder->profile();
        result.heldBytes = decoder->heldBytes();
        if (result.size.width * result.size.height > 10'000'000) {
            std::byte row[8];
            decoder->readRows(1, row, sizeof row);
            return result;
        }
        const std::size_t rowBytes = std::size_t(result.size.width) * std::size_t(result.format.bytesPerPixel());
        Pixels rows(std::size_t(band) * (rowBytes + gap), 0xee);
        for (std::int64_t y = 0; y < result.size.height; y += band) {
            const std::int64_t count = std::min(band, result.size.height - y);
            decoder->readRows(count, reinterpret_cast<std::byte*>(rows.data()), rowBytes + gap);
            for (std::int64_t i = 0; i < count; ++i) {
                const auto row = rows.begin() + std::ptrdiff_t(std::size_t(i) * (rowBytes + gap));
                result.pixels.insert(result.pixels.end(), row, row + std::ptrdiff_t(rowBytes));
                EXPECT_EQ(*(row + std::ptrdiff_t(rowBytes)), 0xee) << "written behind the row";
            }
        }
        decoder->finish();
    } catch (const CodecError& error) {
        result.error = error;
    }
    return result;
}

inline QByteArray encode(OutputType type, const EncodeOptions& options, const Pixels& pixels)
{
    MemoryFile file;
    ByteSink sink(file.descriptor());
    const auto encoder = openEncoder(type, sink, options);
    const std::size_t rowBytes = std::size_t(options.size.width) * std::size_t(options.format.bytesPerPixel());
    for (std::int64_t y = 0; y < options.size.height; y += 19)
        encoder->writeRows(std::min<std::int64_t>(19, options.size.height - y),
                           reinterpret_cast<const std::byte*>(pixels.data()) + std::size_t(y) * rowBytes, rowBytes);
    encoder->finish();
    return file.bytes();
}

/// Gradients with some texture: smooth enough for JPEG, and no two rows alike.
inline Pixels picture(PixelSize size, int channels)
{
    Pixels pixels;
    for (std::int64_t y = 0; y < size.height; ++y)
        for (std::int64_t x = 0; x < size.width; ++x)
            for (std::int64_t c = 0; c < channels; ++c)
                pixels.push_back(std::uint8_t((x * (c + 1) + y * 2 + (x * y / 16 % 5) * 6 + c * 40) % 256));
    return pixels;
}

inline int worstDifference(const Pixels& a, const Pixels& b)
{
    int worst = a.size() == b.size() ? 0 : 999;
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i)
        worst = std::max(worst, std::abs(int(a[i]) - int(b[i])));
    return worst;
}

inline OutputMetadata someMetadata()
{
    return {QStringLiteral("Fabrikat"), QStringLiteral("Modell 7"), QStringLiteral("Jón Þór"),
            QStringLiteral("© 2024 Иван"), QStringLiteral("2024:07:19 09:14:31")};
}

/// The sRGB profile made longer than one JPEG segment holds, its length field put right.
inline ColorProfile longProfile()
{
    QByteArray icc = ColorProfile::sRGB().icc();
    icc.append(150'000, '\0');
    for (int i = 0; i < 4; ++i)
        icc[i] = char(icc.size() >> (24 - 8 * i));
    return ColorProfile::fromIcc(icc, ColorModel::rgb).value();
}

/// Every way to cut `file` short that strict decoding takes for whole must give the whole file's pixels.
inline void expectNoHalfPictures(FileType type, const QByteArray& file)
{
    const Decoded whole = decode(type, file);
    ASSERT_TRUE(whole.isWhole());
    const qsizetype step = std::max<qsizetype>(1, file.size() / 200);
    for (qsizetype length = file.size() - 1; length > 0; length -= length > file.size() - 40 ? 1 : step) {
        const Decoded cut = decode(type, file.left(length));
        if (cut.isWhole()) {
            EXPECT_EQ(cut.pixels, whole.pixels) << "cut to " << length << " of " << file.size();
        }
    }
    EXPECT_FALSE(decode(type, file.left(file.size() / 2)).isWhole());
}

} // namespace ferrow::test
