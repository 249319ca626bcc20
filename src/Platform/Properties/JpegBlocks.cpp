// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/IptcReader.h"
#include "Platform/Properties/MetadataBlocks.h"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace ferrow {

namespace {

constexpr int startOfImage = 0xD8;
constexpr int endOfImage = 0xD9;
constexpr int startOfScan = 0xDA;
constexpr int app1 = 0xE1;
constexpr int app13 = 0xED;

/// Junk between segments is passed over as decoders do, up to this many bytes in the whole file.
constexpr std::int64_t maximumJunk = 64 * 1024;
/// An ordinary file has some twenty; one with a large extended packet or depth map a few hundred.
constexpr int maximumSegments = 4096;

const QByteArray exifName("Exif\0\0", 6);
const QByteArray extendedXmpName("http://ns.adobe.com/xmp/extension/\0", 35);
const QByteArray photoshopName("Photoshop 3.0\0", 14);

struct Segment {
    int marker = 0;
    std::int64_t offset = 0; ///< Of the content behind the length.
    std::int64_t length = 0;
};

/// Goes from segment to segment up to the first scan.
class SegmentWalk {
public:
    explicit SegmentWalk(const ByteSource& source) : source_(source) {}

    std::optional<Segment> next()
    {
        if (++count_ > maximumSegments)
            return std::nullopt;
        const auto marker = nextMarker();
        if (!marker || *marker == startOfScan || *marker == endOfImage)
            return std::nullopt;
        const auto lengthBytes = source_.bytesAt(position_, 2);
        if (lengthBytes.size() != 2)
            return std::nullopt;
        const int length = qFromBigEndian<quint16>(lengthBytes.data());
        if (length < 2 || length > source_.size() - position_)
            return std::nullopt;
        const Segment segment{*marker, position_ + 2, length - 2};
        position_ += length;
        return segment;
    }

private:
    /// The next marker that stands before a length: any number of 0xFF, then a byte that is neither that nor 0.
    std::optional<int> nextMarker()
    {
        std::array<std::byte, 64> window;
        bool isAfterFill = false;
        while (junk_ <= maximumJunk) {
            const std::size_t got = source_.readAt(position_, window);
            if (got == 0)
                return std::nullopt;
            for (std::size_t i = 0; i < got; ++i, ++junk_) {
                const int byte = std::to_integer<int>(window[i]);
                const bool isMarker = isAfterFill && byte != 0 && byte != 0xFF && byte != startOfImage;
                isAfterFill = byte == 0xFF;
                if (!isMarker)
                    continue;
                position_ += std::int64_t(i) + 1;
                return byte;
            }
            position_ += std::int64_t(got);
        }
        return std::nullopt;
    }

    const ByteSource& source_;
    std::int64_t position_ = 0;
    std::int64_t junk_ = 0;
    int count_ = 0;
};

QByteArray bytesAt(const ByteSource& source, std::int64_t offset, std::int64_t length)
{
    QByteArray bytes(qsizetype(std::max<std::int64_t>(0, length)), Qt::Uninitialized);
    const std::span into(reinterpret_cast<std::byte*>(bytes.data()), std::size_t(bytes.size()));
    bytes.truncate(qsizetype(source.readAt(offset, into)));
    return bytes;
}

QByteArray startOf(const ByteSource& source, const Segment& segment, qsizetype length)
{
    return bytesAt(source, segment.offset, std::min<std::int64_t>(segment.length, length));
}

/// The content behind its first `skipped` bytes.
QByteArray bytesOf(const ByteSource& source, const Segment& segment, qsizetype skipped)
{
    return bytesAt(source, segment.offset + skipped, segment.length - skipped);
}

/// Puts an extended packet together. Its pieces may come in any order; those of another packet than the first are not
/// ours. Large ones are depth maps, of which nothing is read.
class ExtendedXmp {
public:
    /// What stands between a segment's name and its piece: identifier, length of the packet, place of the piece.
    static constexpr qsizetype headerLength = 40;

    void add(const ByteSource& source, const Segment& segment, const QByteArray& header)
    {
        constexpr qsizetype identifierLength = 32;
        const qsizetype pieceAt = extendedXmpName.size() + headerLength;
        if (header.size() != headerLength || segment.length <= pieceAt)
            return;
        const qint64 wholeLength = qFromBigEndian<quint32>(header.constData() + identifierLength);
        const qint64 place = qFromBigEndian<quint32>(header.constData() + identifierLength + 4);
        const qint64 length = segment.length - pieceAt;
        if (identifier_.isEmpty() && wholeLength <= MetadataBlocks::maximumLength) {
            identifier_ = header.left(identifierLength);
            packet_.fill(' ', wholeLength);
        }
        if (!header.startsWith(identifier_) || wholeLength != packet_.size() || place > wholeLength - length)
            return;
        const QByteArray piece = bytesOf(source, segment, pieceAt);
        std::copy(piece.begin(), piece.end(), packet_.begin() + place);
        received_ += piece.size();
    }

    /// Empty unless all of it came and the main packet names it.
    [[nodiscard]] QByteArray packet(const QByteArray& mainPacket) const
    {
        const bool isComplete = !identifier_.isEmpty() && received_ == packet_.size();
        return isComplete && mainPacket.contains(identifier_) ? packet_ : QByteArray();
    }

private:
    QByteArray identifier_;
    QByteArray packet_;
    qint64 received_ = 0;
};

/// A block longer than a segment goes on in the next one; one with a byte order mark of its own is another block.
bool continuesExif(const QByteArray& content, const QByteArray& block)
{
    const bool startsAnew = content.startsWith("II*") || content.startsWith(QByteArray("MM\0*", 4));
    return !startsAnew && block.size() < MetadataBlocks::maximumLength;
}

} // namespace

MetadataBlocks jpegMetadataBlocks(const ByteSource& source)
{
    MetadataBlocks blocks;
    QByteArray resources;
    ExtendedXmp extended;
    SegmentWalk walk(source);
    while (const auto segment = walk.next()) {
        if (segment->marker != app1 && segment->marker != app13)
            continue;
        const QByteArray start = startOf(source, *segment, extendedXmpName.size() + ExtendedXmp::headerLength);
        if (segment->marker == app13) {
            // A block longer than a segment is spread over several.
            if (start.startsWith(photoshopName) && resources.size() < MetadataBlocks::maximumLength)
                resources += bytesOf(source, *segment, photoshopName.size());
        } else if (start.startsWith(exifName)) {
            const QByteArray content = bytesOf(source, *segment, exifName.size());
            if (blocks.exif.isEmpty() || continuesExif(content, blocks.exif))
                blocks.exif += content;
        } else if (const qsizetype xmpAt = xmpNameLength(start); xmpAt > 0 && blocks.xmp.isEmpty()) {
            blocks.xmp = bytesOf(source, *segment, xmpAt);
        } else if (start.startsWith(extendedXmpName)) {
            extended.add(source, *segment, start.mid(extendedXmpName.size()));
        }
    }
    blocks.iptc = iptcOfPhotoshopResources(resources);
    blocks.extendedXmp = extended.packet(blocks.xmp);
    return blocks;
}

} // namespace ferrow
