// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/FileType.h"

#include "Platform/Codecs/Gzip.h"
#include "Platform/Codecs/TiffDirectory.h"

#include <QByteArray>
#include <QByteArrayView>

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>

namespace ferrow {

namespace {

using Detection = std::optional<DetectedType>;

/// Enough for every signature, and for the opening tag of an SVG behind its comments.
constexpr std::size_t headLength = 4096;
/// Readers look this far for a PDF's header, and some producers put mail headers before it.
constexpr qsizetype pdfHeaderReach = 1024;

QByteArray bytesAt(const ByteSource& source, std::int64_t offset, std::size_t length)
{
    QByteArray bytes(qsizetype(length), Qt::Uninitialized);
    bytes.truncate(qsizetype(source.readAt(offset, {reinterpret_cast<std::byte*>(bytes.data()), length})));
    return bytes;
}

Detection withCodec(FileType type)
{
    return DetectedType{type, {}};
}

Detection withoutCodec(QLatin1StringView description)
{
    return DetectedType{std::nullopt, description};
}

/// Unsigned big-endian number of `width` bytes; 0 beyond the end.
std::uint64_t bigEndian(QByteArrayView bytes, qsizetype offset, int width)
{
    if (offset < 0 || offset > bytes.size() - width)
        return 0;
    std::uint64_t value = 0;
    for (int i = 0; i < width; ++i)
        value = value << 8 | std::uint8_t(bytes[offset + i]);
    return value;
}

constexpr std::uint16_t compressionTag = 259;
constexpr std::uint16_t photometricTag = 262;
constexpr std::uint16_t makeTag = 271;
constexpr std::uint16_t subDirectoriesTag = 330;
constexpr std::uint16_t dngVersionTag = 50706;

constexpr std::array<std::int64_t, 2> sensorPhotometrics{32803, 34892};               // Color filter array, linear raw.
constexpr std::array<std::int64_t, 4> makersCompressions{34713, 32767, 32770, 65535}; // Nikon, Sony, Samsung, Pentax.

bool holdsOneOf(const TiffStructure& structure, const TiffDirectory& directory, std::uint16_t tag,
                std::span<const std::int64_t> wanted)
{
    const TiffEntry* entry = directory.find(tag);
    if (!entry)
        return false;
    const auto values = structure.integers(*entry, 1);
    return !values.empty() && std::find(wanted.begin(), wanted.end(), values.front()) != wanted.end();
}

bool holdsSensorData(const TiffStructure& structure, const TiffDirectory& directory)
{
    return holdsOneOf(structure, directory, photometricTag, sensorPhotometrics) ||
           holdsOneOf(structure, directory, compressionTag, makersCompressions);
}

QLatin1StringView rawNameForMake(const TiffStructure& structure, const TiffDirectory& directory)
{
    struct Maker {
        const char* make;
        QLatin1StringView name;
    };
    static constexpr std::array makers{
        Maker{"nikon", ImageTypeNames::nikonNef},
        Maker{"sony", ImageTypeNames::sonyArw},
        Maker{"pentax", ImageTypeNames::pentax},
        Maker{"ricoh", ImageTypeNames::pentax},
        Maker{"canon", ImageTypeNames::canonCr2},
        Maker{"samsung", ImageTypeNames::samsung},
        Maker{"hasselblad", ImageTypeNames::hasselblad3fr},
        Maker{"phase one", ImageTypeNames::phaseOne},
        Maker{"seiko epson", ImageTypeNames::epson},
        Maker{"eastman kodak", ImageTypeNames::kodak},
    };
    const TiffEntry* entry = directory.find(makeTag);
    const QByteArray make = entry ? structure.bytes(*entry, 64).toLower() : QByteArray();
    const auto maker = std::find_if(makers.begin(), makers.end(),
                                    [&](const Maker& candidate) { return make.startsWith(candidate.make); });
    return maker == makers.end() ? ImageTypeNames::raw : maker->name;
}

/// Judged by what the directories hold, never by the maker alone: the makers' own programs export ordinary TIFFs too.
Detection detectTiff(const TiffStructure& structure)
{
    const auto first = structure.firstDirectory();
    if (!first)
        return withCodec(FileType::tiff);
    if (first->find(dngVersionTag))
        return withoutCodec(ImageTypeNames::dng);
    if (holdsSensorData(structure, *first))
        return withoutCodec(rawNameForMake(structure, *first));

    constexpr std::size_t mostSubDirectories = 16;
    for (std::size_t i = 0; i < mostSubDirectories; ++i) {
        const auto child = structure.childDirectory(*first, subDirectoriesTag, i);
        if (child && holdsSensorData(structure, *child))
            return withoutCodec(rawNameForMake(structure, *first));
    }
    return withCodec(FileType::tiff);
}

Detection detectTiffFamily(const ByteSource& source, QByteArrayView head)
{
    if (head.startsWith("IIRO") || head.startsWith("IIRS") || head.startsWith("MMOR"))
        return withoutCodec(ImageTypeNames::olympus);
    if (head.startsWith(QByteArrayView("IIU\0", 4)))
        return withoutCodec(ImageTypeNames::panasonic);
    if (head.startsWith("II\x1a") && head.sliced(3).startsWith(QByteArrayView("\0\0\0HEAPCCDR", 11)))
        return withoutCodec(ImageTypeNames::canonCrw);
    const auto structure = TiffStructure::open(source);
    if (!structure)
        return std::nullopt;
    if (head.size() > 10 && head.sliced(8).startsWith("CR\x02"))
        return withoutCodec(ImageTypeNames::canonCr2);
    return detectTiff(*structure);
}

bool isBrandOf(QByteArrayView brand, std::initializer_list<const char*> brands)
{
    return std::any_of(brands.begin(), brands.end(), [&](const char* other) { return brand == QByteArrayView(other); });
}

struct Box {
    QByteArrayView type;
    QByteArrayView content;
};

/// Takes the next box off the front of `boxes`; a box cut short gives what there is. Absent at the end.
std::optional<Box> takeBox(QByteArrayView& boxes)
{
    if (boxes.size() < 8)
        return std::nullopt;
    qsizetype header = 8;
    std::uint64_t length = bigEndian(boxes, 0, 4);
    if (length == 1) {
        header = 16;
        length = bigEndian(boxes, 8, 8);
    } else if (length == 0) {
        length = std::uint64_t(boxes.size());
    }
    if (length < std::uint64_t(header) || boxes.size() < header)
        return std::nullopt;
    const auto taken = qsizetype(std::min(length, std::uint64_t(boxes.size())));
    const Box box{boxes.sliced(4, 4), boxes.sliced(header, taken - header)};
    boxes = boxes.sliced(taken);
    return box;
}

/// What the pictures of a HEIF are coded in, as far as the item list says.
struct ItemCodings {
    QByteArray primary; ///< Item type of the primary item ("hvc1", "av01", "grid" …); empty when unknown.
    bool hasHevc = false;
    bool hasAv1 = false;
};

ItemCodings readItems(QByteArrayView metaBoxes)
{
    ItemCodings codings;
    std::uint64_t primaryId = 0;
    QByteArrayView itemList;
    while (const auto box = takeBox(metaBoxes))
        if (box->type == "pitm")
            primaryId = bigEndian(box->content, 4, bigEndian(box->content, 0, 1) == 0 ? 2 : 4);
        else if (box->type == "iinf")
            itemList = box->content;
    const qsizetype listHeader = bigEndian(itemList, 0, 1) == 0 ? 6 : 8;
    if (itemList.size() < listHeader)
        return codings;
    itemList = itemList.sliced(listHeader);
    while (const auto entry = takeBox(itemList)) {
        const auto version = bigEndian(entry->content, 0, 1);
        const int idWidth = version == 2 ? 2 : 4;
        if (entry->type != "infe" || version < 2 || entry->content.size() < 4 + idWidth + 6)
            continue;
        const QByteArrayView type = entry->content.sliced(4 + idWidth + 2, 4);
        codings.hasHevc = codings.hasHevc || type == "hvc1";
        codings.hasAv1 = codings.hasAv1 || type == "av01";
        if (primaryId != 0 && bigEndian(entry->content, 4, idWidth) == primaryId)
            codings.primary = type.toByteArray();
    }
    return codings;
}

/// The content of the file's `meta` box behind its version; empty when it is not among the first boxes.
QByteArray readMetaBoxes(const ByteSource& source)
{
    constexpr int mostBoxes = 32;
    constexpr std::uint64_t mostBytes = 4 << 20;
    std::int64_t offset = 0;
    for (int i = 0; i < mostBoxes && offset < source.size(); ++i) {
        const QByteArray header = bytesAt(source, offset, 16);
        std::uint64_t length = bigEndian(header, 0, 4);
        const std::int64_t headerLength = length == 1 ? 16 : 8;
        if (length == 1)
            length = bigEndian(header, 8, 8);
        const auto left = std::uint64_t(source.size() - offset);
        if (length == 0 || length > left)
            length = left;
        if (length < std::uint64_t(headerLength))
            break;
        if (QByteArrayView(header).sliced(std::min<qsizetype>(4, header.size())).startsWith("meta"))
            return bytesAt(source, offset + headerLength, std::min(length - std::uint64_t(headerLength), mostBytes))
                .mid(4);
        offset += std::int64_t(length);
    }
    return {};
}

bool isAv1Coded(const ByteSource& source, bool saidByBrand)
{
    const ItemCodings codings = readItems(readMetaBoxes(source));
    if (codings.primary == "hvc1")
        return false;
    if (codings.primary == "av01")
        return true;
    // A grid or an overlay says nothing itself: what it is made of does.
    if (codings.hasHevc != codings.hasAv1)
        return codings.hasAv1;
    return saidByBrand;
}

Detection detectBaseMedia(const ByteSource& source, QByteArrayView head)
{
    const auto length = qsizetype(std::min(bigEndian(head, 0, 4), std::uint64_t(head.size())));
    const QByteArrayView major = head.sliced(8).first(std::min<qsizetype>(4, head.size() - 8));
    bool isHeif = false;
    bool isAvif = false;
    const auto note = [&](QByteArrayView brand) {
        isHeif = isHeif || isBrandOf(brand, {"heic", "heix", "hevc", "hevx", "heim", "heis", "hevm", "hevs", "mif1",
                                             "mif2", "msf1", "heif"});
        isAvif = isAvif || isBrandOf(brand, {"avif", "avis"});
    };
    note(major);
    for (qsizetype i = 16; i + 4 <= length; i += 4)
        note(head.sliced(i, 4));

    if (isBrandOf(major, {"crx "}))
        return withoutCodec(ImageTypeNames::canonCr3);
    if (isHeif || isAvif)
        return isAv1Coded(source, isAvif) ? withoutCodec(ImageTypeNames::avif) : withCodec(FileType::heif);
    if (isBrandOf(major, {"qt  "}))
        return withoutCodec(QLatin1StringView("QuickTime movie"));
    if (isBrandOf(major, {"isom", "iso2", "iso4", "iso5", "iso6", "mp41", "mp42", "avc1", "M4V ", "MSNV"}))
        return withoutCodec(QLatin1StringView("MPEG-4 movie"));
    return std::nullopt;
}

struct Signature {
    qsizetype offset;
    QByteArrayView bytes;
    QLatin1StringView name;
};

Detection detectBySignature(QByteArrayView head)
{
    static const std::array signatures{
        Signature{0, "GIF87a", ImageTypeNames::gif},
        Signature{0, "GIF89a", ImageTypeNames::gif},
        Signature{0, "8BPS", ImageTypeNames::photoshop},
        Signature{0, "v/1\x01", ImageTypeNames::openExr},
        Signature{0, "#?RADIANCE", ImageTypeNames::radiance},
        Signature{0, "#?RGBE", ImageTypeNames::radiance},
        Signature{0, "gimp xcf ", ImageTypeNames::gimp},
        Signature{0, "FUJIFILMCCD-RAW", ImageTypeNames::fujifilm},
        Signature{0, "FOVb", ImageTypeNames::sigma},
        Signature{0, {"\0MRM", 4}, ImageTypeNames::minolta},
        Signature{0, {"\0\0\0\x0cjP  \r\n\x87\n", 12}, ImageTypeNames::jpeg2000},
        Signature{0, "\xff\x4f\xff\x51", ImageTypeNames::jpeg2000},
        Signature{0, {"\0\0\0\x0cJXL \r\n\x87\n", 12}, ImageTypeNames::jpegXl},
        Signature{0, "\xff\x0a", ImageTypeNames::jpegXl},
        Signature{0, "\xc5\xd0\xd3\xc6", ImageTypeNames::eps},
        Signature{0, "%!PS-Adobe", ImageTypeNames::eps},
        Signature{4, "moov", QLatin1StringView("QuickTime movie")},
        Signature{4, {"mdat", 4}, QLatin1StringView("QuickTime movie")},
        Signature{4, {"wide\0\0", 6}, QLatin1StringView("QuickTime movie")},
    };
    for (const Signature& signature : signatures)
        if (head.size() >= signature.offset && head.sliced(signature.offset).startsWith(signature.bytes))
            return withoutCodec(signature.name);
    return std::nullopt;
}

/// Signatures too short to be believed alone: further header fields must make sense.
Detection detectByHeader(QByteArrayView head)
{
    const auto byteAt = [&](qsizetype offset) { return int(bigEndian(head, offset, 1)); };
    if (head.size() < 16)
        return std::nullopt;
    if (head.startsWith("RIFF") && head.sliced(8).startsWith("WEBP"))
        return withoutCodec(ImageTypeNames::webp);
    // The length of a bitmap's second header names its version: 12 to 124 bytes.
    if (head.startsWith("BM") && byteAt(14) >= 12 && byteAt(14) <= 124 && byteAt(15) == 0)
        return withoutCodec(ImageTypeNames::bmp);
    if (head.startsWith(QByteArrayView("\0\0\1\0", 4)) && byteAt(4) + byteAt(5) > 0 && byteAt(9) == 0)
        return withoutCodec(ImageTypeNames::icon);
    const int pcxBits = byteAt(3);
    if (byteAt(0) == 10 && byteAt(1) <= 5 && byteAt(2) == 1 &&
        (pcxBits == 1 || pcxBits == 2 || pcxBits == 4 || pcxBits == 8))
        return withoutCodec(ImageTypeNames::pcx);
    const char* const blanks = " \t\r\n#";
    if (byteAt(0) == 'P' && byteAt(1) >= '1' && byteAt(1) <= '7' && byteAt(2) != 0 &&
        QByteArrayView(blanks).contains(head[2]))
        return withoutCodec(ImageTypeNames::netpbm);
    return std::nullopt;
}

Detection detectSvg(QByteArrayView head)
{
    QByteArrayView text = head;
    if (text.startsWith("\xef\xbb\xbf"))
        text = text.sliced(3);
    text = text.trimmed();
    const bool startsAsSvg = text.startsWith("<svg") || text.startsWith("<?xml") || text.startsWith("<!--") ||
                             text.startsWith("<!DOCTYPE svg");
    return startsAsSvg && text.contains("<svg") ? withCodec(FileType::svg) : std::nullopt;
}

Detection detectText(QByteArrayView head)
{
    if (Detection found = detectSvg(head))
        return found;
    if (head.first(std::min(head.size(), pdfHeaderReach)).contains("%PDF-"))
        return withCodec(FileType::pdf);
    return std::nullopt;
}

/// Targa has no signature at its start, and an optional one at its end.
Detection detectByFooter(const ByteSource& source)
{
    constexpr std::int64_t headerLength = 18;
    constexpr std::int64_t footerLength = 26;
    constexpr std::int64_t signatureLength = 18; // The footer ends with it.
    if (source.size() >= headerLength + footerLength &&
        bytesAt(source, source.size() - signatureLength, signatureLength) == QByteArrayView("TRUEVISION-XFILE.\0", 18))
        return withoutCodec(ImageTypeNames::targa);
    return std::nullopt;
}

} // namespace

std::optional<DetectedType> detectFileType(const ByteSource& source)
{
    const QByteArray head = bytesAt(source, 0, headLength);
    // The start marker alone: some cameras leave stray bytes before the first segment.
    if (head.startsWith("\xff\xd8"))
        return withCodec(FileType::jpeg);
    if (head.startsWith("\x89PNG\r\n\x1a\n"))
        return withCodec(FileType::png);
    if (QByteArrayView(head).sliced(std::min<qsizetype>(4, head.size())).startsWith("ftyp") && head.size() >= 12)
        return detectBaseMedia(source, head);
    if (isGzip(head))
        return detectSvg(inflatedGzip(head, headLength));
    if (Detection found = detectTiffFamily(source, head))
        return found;
    if (Detection found = detectBySignature(head))
        return found;
    if (Detection found = detectByHeader(head))
        return found;
    if (Detection found = detectText(head))
        return found;
    return detectByFooter(source);
}

} // namespace ferrow
