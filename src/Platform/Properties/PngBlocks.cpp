// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/IptcReader.h"
#include "Platform/Properties/MetadataBlocks.h"

#include <QtEndian>

#include <zlib.h>

#include <algorithm>
#include <array>

namespace ferrow {

namespace {

constexpr std::int64_t signatureLength = 8;
constexpr std::int64_t chunkOverhead = 12; // Length, type, checksum.

/// A 200-megapixel PNG in chunks of 8 kB has some 100,000.
constexpr int maximumChunks = 400'000;

/// Old raw profiles write each byte as two digits.
constexpr qsizetype maximumInflated = 2 * MetadataBlocks::maximumLength + 64 * 1024;

constexpr quint32 typeCode(const char (&name)[5])
{
    return quint32(name[0]) << 24 | quint32(name[1]) << 16 | quint32(name[2]) << 8 | quint32(name[3]);
}

struct Chunk {
    quint32 type = 0;
    std::int64_t offset = 0; ///< Of its data.
    std::int64_t length = 0;
};

/// Goes over a file's chunks through a window, so that many small ones don't cost a read each.
class ChunkWalk {
public:
    explicit ChunkWalk(const ByteSource& source) : source_(source) {}

    std::optional<Chunk> next()
    {
        std::array<std::byte, 8> header;
        if (++count_ > maximumChunks || !headerAt(position_, header))
            return std::nullopt;
        const Chunk chunk{qFromBigEndian<quint32>(header.data() + 4), position_ + 8,
                          qFromBigEndian<quint32>(header.data())};
        if (chunk.type == typeCode("IEND"))
            return std::nullopt;
        position_ += chunkOverhead + chunk.length;
        return chunk;
    }

private:
    bool headerAt(std::int64_t offset, std::array<std::byte, 8>& header)
    {
        if (offset < windowAt_ || offset + 8 > windowAt_ + std::int64_t(windowLength_)) {
            windowAt_ = offset;
            windowLength_ = source_.readAt(offset, window_);
        }
        if (windowLength_ < 8)
            return false;
        const auto at = std::size_t(offset - windowAt_);
        std::copy_n(window_.begin() + std::ptrdiff_t(at), 8, header.begin());
        return true;
    }

    const ByteSource& source_;
    std::int64_t position_ = signatureLength;
    int count_ = 0;
    std::array<std::byte, 2048> window_;
    std::int64_t windowAt_ = 0;
    std::size_t windowLength_ = 0;
};

QByteArray bytesOf(const ByteSource& source, const Chunk& chunk, std::int64_t limit)
{
    QByteArray bytes(qsizetype(std::min(chunk.length, limit)), Qt::Uninitialized);
    const std::span into(reinterpret_cast<std::byte*>(bytes.data()), std::size_t(bytes.size()));
    bytes.truncate(qsizetype(source.readAt(chunk.offset, into)));
    return bytes;
}

/// Empty when the data is damaged or inflates to more than `limit` bytes.
QByteArray inflated(const QByteArray& data, qsizetype limit)
{
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return {};
    const std::unique_ptr<z_stream, decltype(&inflateEnd)> end(&stream, &inflateEnd);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.constData()));
    stream.avail_in = uInt(data.size());
    QByteArray result;
    while (result.size() <= limit) {
        std::array<char, 16 * 1024> part;
        stream.next_out = reinterpret_cast<Bytef*>(part.data());
        stream.avail_out = uInt(part.size());
        const int status = inflate(&stream, Z_NO_FLUSH);
        result.append(part.data(), qsizetype(part.size() - stream.avail_out));
        if (status == Z_STREAM_END)
            return result.size() <= limit ? result : QByteArray();
        if (status != Z_OK)
            return {};
    }
    return {};
}

/// A text chunk's keyword; its value starts behind the NUL that follows.
QByteArray keywordOf(const ByteSource& source, const Chunk& chunk)
{
    constexpr std::int64_t maximumKeyword = 79;
    const QByteArray start = bytesOf(source, chunk, maximumKeyword + 1);
    return start.left(std::max<qsizetype>(0, start.indexOf('\0')));
}

/// Compression flag and method, language, translated keyword, text.
QByteArray internationalText(const QByteArray& value)
{
    const qsizetype languageEnd = value.indexOf('\0', 2);
    const qsizetype keywordEnd = languageEnd < 0 ? -1 : value.indexOf('\0', languageEnd + 1);
    if (keywordEnd < 0)
        return {};
    const QByteArray text = value.mid(keywordEnd + 1);
    return value.at(0) == 0 ? text : inflated(text, MetadataBlocks::maximumLength);
}

QByteArray plainOrCompressedText(quint32 type, const QByteArray& value)
{
    constexpr qsizetype methodLength = 1;
    return type == typeCode("zTXt") ? inflated(value.mid(methodLength), maximumInflated) : value;
}

/// The way older programs put blocks into text chunks: newline, name, newline, length in decimal, newline, hexadecimal
/// digits in lines.
QByteArray rawProfile(const QByteArray& text)
{
    const qsizetype nameEnd = text.indexOf('\n', 1);
    const qsizetype lengthEnd = nameEnd < 0 ? -1 : text.indexOf('\n', nameEnd + 1);
    if (lengthEnd < 0)
        return {};
    bool isNumber = false;
    const qlonglong length = text.mid(nameEnd + 1, lengthEnd - nameEnd - 1).trimmed().toLongLong(&isNumber);
    const QByteArray block = QByteArray::fromHex(text.mid(lengthEnd + 1));
    return isNumber && length >= 0 ? block.left(length) : QByteArray();
}

/// Sorts blocks by what they are, each kind's first one alone.
class BlockCollector {
public:
    explicit BlockCollector(const ByteSource& source) : source_(source) {}

    void add(const Chunk& chunk)
    {
        // Each text chunk costs a read, and files made to exhaust have them by the hundred thousand.
        constexpr int maximumTexts = 1'000;
        const bool isInternational = chunk.type == typeCode("iTXt");
        const bool isText = isInternational || chunk.type == typeCode("tEXt") || chunk.type == typeCode("zTXt");
        if (isText && ++texts_ > maximumTexts)
            return;
        if (chunk.type == typeCode("eXIf") && !hasExif_) {
            hasExif_ = true;
            blocks_.exif = withoutExifPrefix(whole(chunk));
        } else if (isInternational && !hasXmp_ && keywordOf(source_, chunk) == "XML:com.adobe.xmp") {
            hasXmp_ = true;
            blocks_.xmp = internationalText(whole(chunk).mid(sizeof "XML:com.adobe.xmp"));
        } else if (isText && !isInternational) {
            addRawProfile(chunk);
        }
    }

    [[nodiscard]] MetadataBlocks blocks() const
    {
        MetadataBlocks blocks = blocks_;
        if (blocks.exif.isEmpty())
            blocks.exif = rawExif_;
        if (blocks.xmp.isEmpty())
            blocks.xmp = rawXmp_;
        return blocks;
    }

private:
    void addRawProfile(const Chunk& chunk)
    {
        const QByteArray keyword = keywordOf(source_, chunk);
        const bool isApp1 = keyword == "Raw profile type APP1";
        QByteArray* into = keyword == "Raw profile type exif" || isApp1 ? &rawExif_
                           : keyword == "Raw profile type xmp"          ? &rawXmp_
                           : keyword == "Raw profile type iptc"         ? &blocks_.iptc
                                                                        : nullptr;
        // Each is inflated: a limit for all of them is one for the time that takes.
        constexpr int maximumRawProfiles = 8;
        if (!into || !into->isEmpty() || ++rawProfiles_ > maximumRawProfiles)
            return;
        const QByteArray text = plainOrCompressedText(chunk.type, whole(chunk).mid(keyword.size() + 1));
        const QByteArray block = rawProfile(text);
        const qsizetype xmpAt = isApp1 ? xmpNameLength(block) : 0;
        if (xmpAt > 0)
            rawXmp_ = block.mid(xmpAt);
        else if (into == &rawExif_)
            rawExif_ = withoutExifPrefix(block);
        else if (into == &blocks_.iptc)
            blocks_.iptc = block.startsWith("8BIM") ? iptcOfPhotoshopResources(block) : block;
        else
            rawXmp_ = block;
    }

    QByteArray whole(const Chunk& chunk) const
    {
        return chunk.length <= maximumInflated ? bytesOf(source_, chunk, chunk.length) : QByteArray();
    }

    const ByteSource& source_;
    MetadataBlocks blocks_;
    QByteArray rawExif_;
    QByteArray rawXmp_;
    bool hasExif_ = false;
    bool hasXmp_ = false;
    int texts_ = 0;
    int rawProfiles_ = 0;
};

} // namespace

MetadataBlocks pngMetadataBlocks(const ByteSource& source)
{
    BlockCollector collector(source);
    ChunkWalk walk(source);
    while (const auto chunk = walk.next())
        collector.add(*chunk);
    return collector.blocks();
}

} // namespace ferrow
