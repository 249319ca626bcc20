// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/FileType.h"

#include "Codecs/TiffBytes.h"
#include "Support/TestSupport.h"

namespace ferrow {

namespace {

using namespace test;

constexpr const char* unknown = "unknown";

QByteArray detected(const QByteArray& bytes)
{
    const MemoryFile file(bytes);
    const auto type = detectFileType(ByteSource(file.descriptor(), file.size()));
    if (!type)
        return unknown;
    EXPECT_EQ(type->type.has_value(), type->description.isEmpty());
    if (!type->type)
        return type->description.toUtf8();
    switch (*type->type) {
    case FileType::jpeg:
        return "JPEG";
    case FileType::png:
        return "PNG";
    case FileType::tiff:
        return "TIFF";
    case FileType::heif:
        return "HEIF";
    case FileType::pdf:
        return "PDF";
    }
    return {};
}

QByteArray box(const QByteArray& type, const QByteArray& content)
{
    QByteArray length(4, Qt::Uninitialized);
    qToBigEndian(quint32(8 + content.size()), length.data());
    return length + type + content;
}

QByteArray brands(const QByteArray& major, const QByteArray& compatible)
{
    return box("ftyp", major + QByteArray(4, '\0') + compatible);
}

/// A `meta` box whose items 1, 2 … have the given types; `primary` is the primary item.
QByteArray items(char primary, const std::vector<QByteArray>& types)
{
    QByteArray entries = QByteArray("\0\0\0\0\0", 5) + char(types.size());
    char id = 1;
    for (const QByteArray& type : types)
        entries += box("infe", QByteArray("\2\0\0\0\0", 5) + id++ + QByteArray("\0\0", 2) + type + '\0');
    return box("meta", QByteArray(4, '\0') + box("pitm", QByteArray("\0\0\0\0\0", 5) + primary) + box("iinf", entries));
}

struct Row {
    const char* name;
    QByteArray bytes;
    QByteArray type;
};

void expectTypes(const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(detected(row.bytes), row.type);
    }
}

} // namespace

TEST(FileType, knowsSignatures)
{
    const QByteArray filler(32, '\0');
    expectTypes({
        {"JPEG", "\xff\xd8\xff\xe1" + filler, "JPEG"},
        {"PNG", "\x89PNG\r\n\x1a\n" + filler, "PNG"},
        {"PDF behind a mail header", QByteArray(1000, ' ') + "%PDF-1.4\n", "PDF"},
        {"GIF", "GIF89a" + filler, "GIF image"},
        {"WebP", "RIFF\x10\x20\x30\x40WEBPVP8 " + filler, "WebP image"},
        {"BMP", "BM\x8a\xc0" + QByteArray(10, '\0') + "\x28" + filler, "Windows BMP image"},
        {"icon", QByteArray("\0\0\1\0\1\0\x10\x10\0\0", 10) + filler, "Windows icon"},
        {"JPEG 2000", QByteArray("\0\0\0\x0cjP  \r\n\x87\n", 12) + filler, "JPEG 2000 image"},
        {"JPEG XL", QByteArray("\xff\x0a", 2) + filler, "JPEG XL image"},
        {"Photoshop", "8BPS" + filler, "Photoshop document"},
        {"Netpbm", "P6\n# made by hand\n2 2\n255\n" + filler, "Netpbm image"},
        {"SVG behind a comment", "<?xml version='1.0'?><!-- a drawing -->\n<svg xmlns='x'/>", "SVG image"},
        {"SVG behind a byte order mark", "\xef\xbb\xbf <svg/>", "SVG image"},
        {"EPS", "%!PS-Adobe-3.0 EPSF-3.0\n%PDF-1.4 is only mentioned", "EPS image"},
        {"PCX", QByteArray("\x0a\x05\x01\x08", 4) + filler, "PCX image"},
        {"TGA with its footer", filler + filler + QByteArray("TRUEVISION-XFILE.\0", 18), "TGA image"},
        {"Fujifilm", "FUJIFILMCCD-RAW 0201" + filler, "Fujifilm RAF raw image"},
        {"QuickTime", QByteArray("\0\0\x0f\x17moov", 8) + filler, "QuickTime movie"},
    });
}

TEST(FileType, doesNotTakeTextsAndScrapsForPictures)
{
    expectTypes({
        {"nothing", {}, unknown},
        {"one byte", "\xff", unknown},
        {"PDF header too far in", QByteArray(1100, ' ') + "%PDF-1.4\n", unknown},
        {"a word that starts with BM", "BMW drivers often write letters like these", unknown},
        {"a word that starts with P", "P60 is a tax form in some countries", unknown},
        {"a page with a drawing in it", "<!DOCTYPE html><html><svg></svg></html>", unknown},
        {"RIFF sound", QByteArray("RIFF\0\0\0\0WAVEfmt ", 16), unknown},
        {"PNG whose first byte was lost", "PNG\r\n\x1a\n                       ", unknown},
        {"TIFF header with another version", QByteArray("II\x2f\0\x08\0\0\0\0\0\0\0\0\0\0\0", 16), unknown},
    });
}

TEST(FileType, tellsRawsFromTiffs)
{
    // The second directory stands where the first one ends; one tag with four bytes of value more does not move it.
    const auto withSubDirectory = [](const QByteArray& make, const std::vector<TiffTag>& tags) {
        const auto first = [&](std::uint32_t offset) { return tiffFile({textTag(271, make), longTag(330, offset)}); };
        const auto offset = std::uint32_t(first(0).size());
        return first(offset) + tiffDirectory(tags, offset);
    };
    const QByteArray nikon = "NIKON CORPORATION";
    expectTypes({
        {"plain", tiffFile(grayTags(2, 2), "abcd"), "TIFF"},
        {"nothing but a header", QByteArray("MM\0*\0\0\0\x08", 8), "TIFF"},
        {"too many tags: for the decoder to refuse", tiffFile(std::vector(600, shortTag(50706, 1))), "TIFF"},
        {"exported by a maker's program", tiffFile(grayTags(2, 2, {textTag(271, nikon)}), "abcd"), "TIFF"},
        {"with a thumbnail below", withSubDirectory(nikon, {shortTag(254, 1), shortTag(262, 2)}), "TIFF"},
        {"DNG", tiffFile({textTag(271, "Canon"), {50706, 1, 4, QByteArray("\1\4\0\0", 4)}}), "Adobe DNG raw image"},
        {"NEF", withSubDirectory(nikon, {shortTag(259, 34713)}), "Nikon NEF raw image"},
        {"ARW", withSubDirectory("SONY", {shortTag(262, 32803)}), "Sony ARW raw image"},
        {"PEF", tiffFile({shortTag(262, 32803), textTag(271, "PENTAX")}), "Pentax PEF raw image"},
        {"raw of an unknown maker", tiffFile({shortTag(262, 32803)}), "Camera raw image"},
        {"CR2", QByteArray("II*\0\x10\0\0\0CR\2\0\0\0\0\0", 16), "Canon CR2 raw image"},
        {"RW2", QByteArray("IIU\0\x18\0\0\0\0\0\0\0\0\0\0\0", 16), "Panasonic RW2 raw image"},
        {"ORF", QByteArray("IIRO\x08\0\0\0\0\0\0\0\0\0\0\0", 16), "Olympus ORF raw image"},
        {"sub-directory that is its own parent", tiffFile({longTag(330, 8)}), "TIFF"},
    });
}

TEST(FileType, tellsHeifFromAvifByWhatIsCoded)
{
    expectTypes({
        {"HEIC by brand alone", brands("heic", "mif1heic"), "HEIF"},
        {"AVIF by brand alone", brands("avif", "avifmif1"), "AVIF image"},
        {"neutral brand, HEVC primary", brands("mif1", "mif1") + items(1, {"hvc1", "Exif"}), "HEIF"},
        {"neutral brand, AV1 primary", brands("mif1", "mif1") + items(1, {"av01", "Exif"}), "AVIF image"},
        {"AVIF among the brands, HEVC primary", brands("mif1", "avifheic") + items(2, {"av01", "hvc1"}), "HEIF"},
        {"grid of AV1 tiles", brands("mif1", "mif1") + items(3, {"av01", "av01", "grid"}), "AVIF image"},
        {"grid of HEVC tiles", brands("mif1", "avif") + items(3, {"hvc1", "hvc1", "grid"}), "HEIF"},
        {"uncompressed", brands("mif1", "mif1") + items(1, {"unci"}), "HEIF"},
        {"item list cut short", (brands("mif1", "mif1") + items(1, {"av01"})).left(50), "HEIF"},
        {"CR3", brands("crx ", "isom"), "Canon CR3 raw image"},
        {"movie", brands("qt  ", "qt  "), "QuickTime movie"},
        {"MPEG-4", brands("isom", "mp41"), "MPEG-4 movie"},
        {"other brand", brands("abcd", "efgh"), unknown},
        {"ftyp and no more",
         QByteArray("\0\0\0\x10"
                    "ftyp",
                    8),
         unknown},
    });
}

TEST(FileType, survivesEveryCut)
{
    const QByteArray heif = brands("mif1", "mif1") + items(3, {"av01", "av01", "grid"});
    const QByteArray tiff = tiffFile(grayTags(2, 2, {textTag(271, "NIKON CORPORATION"), longTag(330, 8)}), "abcd");
    for (const QByteArray& whole : {heif, tiff}) {
        for (qsizetype length = 0; length < whole.size(); ++length)
            EXPECT_NO_THROW(std::ignore = detected(whole.left(length))) << length;
    }
}

} // namespace ferrow
