// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/FileType.h"

#include "Codecs/CodecTesting.h"
#include "Codecs/TiffBytes.h"

namespace ferrow {

namespace {

using namespace test;

constexpr const char* unknown = "unknown";

QByteArray detected(const QByteArray& bytes)
{
    const MemoryFile file(bytes);
    const auto found = detectFileType(ByteSource(file.descriptor(), file.size()));
    constexpr const char* names[]{"JPEG", "PNG", "TIFF", "HEIF", "PDF", "SVG"};
    if (!found)
        return unknown;
    return found->type ? QByteArray(names[int(*found->type)]) : found->description.toUtf8();
}

QByteArray brands(const QByteArray& major, const QByteArray& compatible)
{
    return box("ftyp", major + QByteArray(4, '\0') + compatible);
}

/// A neutral file whose items 1, 2 … have the given types; `primary` is the primary item.
QByteArray items(int primary, const std::vector<QByteArray>& types, const QByteArray& compatible = "mif1")
{
    QByteArray entries = bigEndian(0) + bigEndian(types.size(), 2);
    for (std::size_t i = 0; i < types.size(); ++i)
        entries += box("infe", bigEndian(2, 1) + bigEndian(i + 1, 5) + bigEndian(0, 2) + types[i] + '\0');
    const QByteArray first = box("pitm", bigEndian(quint64(primary), 6));
    return brands("mif1", compatible) + box("meta", bigEndian(0) + first + box("iinf", entries));
}

using Rows = std::vector<std::tuple<const char*, QByteArray, const char*>>;

void expectTypes(const Rows& rows)
{
    for (const auto& [name, bytes, type] : rows)
        EXPECT_EQ(detected(bytes), type) << name;
}

} // namespace

TEST(FileType, knowsSignaturesAndTakesNoTextsForPictures)
{
    const QByteArray filler(32, '\0');
    expectTypes({
        {"JPEG", "\xff\xd8\xff\xe1" + filler, "JPEG"},
        {"PNG", "\x89PNG\r\n\x1a\n" + filler, "PNG"},
        {"PDF behind a mail header", QByteArray(1000, ' ') + "%PDF-1.4\n", "PDF"},
        {"WebP", "RIFF\x10\x20\x30\x40WEBPVP8 " + filler, "WebP image"},
        {"Netpbm", "P6\n# made by hand\n2 2\n255\n" + filler, "Netpbm image"},
        {"SVG behind a comment", "<?xml version='1.0'?><!-- a drawing -->\n<svg xmlns='x'/>", "SVG"},
        {"SVG, compressed", QByteArray::fromBase64("H4sIAAAAAAACA7MpLkvXtwMASfu5rAYAAAA="), "SVG"},
        {"another text, compressed", QByteArray::fromBase64("H4sIAAAAAAACA8tIzcnJBwCGphA2BQAAAA=="), unknown},
        {"EPS", "%!PS-Adobe-3.0 EPSF-3.0\n%PDF-1.4 is only mentioned", "EPS image"},
        {"PDF header too far in", QByteArray(1100, ' ') + "%PDF-1.4\n", unknown},
        {"a word that starts with BM", "BMW drivers often write letters like these", unknown},
        {"PNG whose first byte was lost", "PNG\r\n\x1a\n                       ", unknown},
        {"TIFF header with another version", QByteArray("II\x2f\0\x08\0\0\0\0\0\0\0\0\0\0\0", 16), unknown},
    });
}

TEST(FileType, callsATypeWhatItsExtensionDoes)
{
    const QByteArray filler(32, '\0');
    const std::tuple<const char*, QByteArray> rows[] = {
        {"bmp", "BM" + QByteArray(12, '\0') + QByteArray(1, 40) + filler},
        {"dng", tiffFile({{50706, 1, 4, QByteArray("\1\4\0\0", 4)}})},
        {"ico", QByteArray("\0\0\1\0\1\0", 6) + filler},
        {"kdc", tiffFile({textTag(271, "Eastman Kodak"), shortTag(262, 32803)})},
        {"pgm", "P5\n2 2\n255\n" + filler},
        {"psd", "8BPS" + filler},
        {"raw", tiffFile({shortTag(262, 32803)})},
        {"xcf", "gimp xcf file" + filler},
    };
    for (const auto& [extension, bytes] : rows)
        EXPECT_EQ(detected(bytes), ImageTypes::description(extension)->toUtf8());
}

TEST(FileType, tellsRawsFromTiffs)
{
    const auto withSubDirectory = [](const QByteArray& make, const std::vector<TiffTag>& tags) {
        return tiffFile({textTag(271, make)}, {{330, tags}});
    };
    const QByteArray nikon = "NIKON CORPORATION";
    expectTypes({
        {"plain", tiffFile(pictureTags(2, 2), "abcd"), "TIFF"},
        {"exported by a maker's program", tiffFile(pictureTags(2, 2, {textTag(271, nikon)}), "abcd"), "TIFF"},
        {"with a thumbnail below", withSubDirectory(nikon, {shortTag(254, 1), shortTag(262, 2)}), "TIFF"},
        {"DNG", tiffFile({textTag(271, "Canon"), {50706, 1, 4, QByteArray("\1\4\0\0", 4)}}), "Adobe DNG raw image"},
        {"NEF", withSubDirectory(nikon, {shortTag(259, 34713)}), "Nikon NEF raw image"},
        {"raw of an unknown maker", tiffFile({shortTag(262, 32803)}), "Camera raw image"},
        {"CR2", QByteArray("II*\0\x10\0\0\0CR\2\0\0\0\0\0", 16), "Canon CR2 raw image"},
        {"sub-directory that is its own parent", tiffFile({longTag(330, 8)}), "TIFF"},
    });
}

TEST(FileType, tellsHeifFromAvifByWhatIsCoded)
{
    expectTypes({
        {"AVIF by brand alone", brands("avif", "avifmif1"), "AVIF image"},
        {"neutral brand, HEVC primary", items(1, {"hvc1", "Exif"}), "HEIF"},
        {"neutral brand, AV1 primary", items(1, {"av01", "Exif"}), "AVIF image"},
        {"AVIF among the brands, HEVC primary", items(2, {"av01", "hvc1"}, "avifheic"), "HEIF"},
        {"grid of AV1 tiles", items(3, {"av01", "av01", "grid"}), "AVIF image"},
        {"item list cut short", items(1, {"av01"}).left(50), "HEIF"},
        {"CR3", brands("crx ", "isom"), "Canon CR3 raw image"},
        {"ftyp and no more", bigEndian(16) + "ftyp", unknown},
    });
}

} // namespace ferrow
