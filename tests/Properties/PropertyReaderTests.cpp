// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/PropertyReader.h"

#include "Codecs/TiffBytes.h"

#include "MetadataSamples.h"

#include <libheif/heif.h>

#include <memory>

namespace ferrow {

using namespace Qt::StringLiterals;
using namespace test;

namespace {

const QByteArray exifName("Exif\0\0", 6);
const QByteArray xmpName("http://ns.adobe.com/xap/1.0/\0", 29);
const QByteArray photoshopName("Photoshop 3.0\0", 14);

ImageProperties read(FileType type, const QByteArray& file)
{
    const MemoryFile memory(file);
    return readProperties(type, ByteSource(memory.descriptor(), memory.size()));
}

TiffTag rationalTag(std::uint16_t tag, qint32 numerator, qint32 denominator, std::uint16_t type = 5)
{
    return {tag, type, 1, littleEndian(numerator) + littleEndian(denominator)};
}

/// A camera's block with all that is listed, a position, and a maker note.
QByteArray cameraBlock()
{
    const std::vector<TiffTag> exif{rationalTag(0x829A, 1, 250),
                                    rationalTag(0x829D, 28, 10),
                                    {0x8827, 3, 2, littleEndian(quint16(400)) + littleEndian(quint16(800))},
                                    textTag(0x9003, "2024:03:05 14:07:09"),
                                    textTag(0x9004, "2024:03:05 14:07:10"),
                                    rationalTag(0x9204, -1, 3, 10),
                                    rationalTag(0x920A, 50, 0),
                                    {0x927C, 7, 200, QByteArray(200, '\x49')},
                                    textTag(0xA434, "XF23mmF2")};
    const std::vector<TiffTag> position{textTag(1, "N"), rationalTag(2, 48, 1)};
    return tiffFile({textTag(0x010E, "D\xC3\xBCne"), textTag(0x010F, "Ko"), textTag(0x0110, "K-1 with a long name"),
                     shortTag(0x0112, 6), textTag(0x0132, "2024:04:01 00:00:00"), textTag(0x013B, "Ren\xE9"),
                     textTag(0x8298, QByteArray("me\0editor", 9))},
                    {{0x8769, exif}, {0x8825, position}});
}

/// A map of texts, as "key=text|key=text".
PropertyMap texts(const QString& entries)
{
    PropertyMap map;
    for (const QString& entry : entries.split(u'|'))
        map.set(entry.section(u'=', 0, 0), {entry.section(u'=', 1)});
    return map;
}

/// What the block holds, with its orientation where the format has no other.
PropertyMap cameraProperties(bool rotated = true)
{
    PropertyMap exif =
        texts(u"LensModel=XF23mmF2|DateTimeOriginal=2024:03:05 14:07:09|DateTimeDigitized=2024:03:05 14:07:10"_s);
    exif.set(u"FNumber"_s, {2.8});
    exif.set(u"ExposureTime"_s, {0.004});
    exif.set(u"ExposureBiasValue"_s, {-1.0 / 3});
    exif.set(u"ISOSpeedRatings"_s, {NumberList{400, 800}});
    const PropertyMap tiff =
        texts(u"Make=Ko|Model=K-1 with a long name|Artist=Ren\u00E9|Copyright=me|ImageDescription=D\u00FCne|"
              "DateTime=2024:04:01 00:00:00"_s);
    PropertyMap properties = rotated ? PropertyMap{{PropertyKey::orientation, {6.0}}} : PropertyMap();
    properties.set(PropertyKey::tiff, {tiff});
    properties.set(PropertyKey::exif, {exif});
    return properties;
}

/// A sub-map, or an empty one.
PropertyMap subMap(const ImageProperties& properties, const QString& key)
{
    const PropertyValue* value = properties.image.find(key);
    return value ? std::get<PropertyMap>(value->value) : PropertyMap();
}

const QByteArray packet = xmpPacket("<dc:title>Dune</dc:title>");
const PropertyMap title = texts(u"dc:title=Dune"_s);

} // namespace

TEST(PropertyReader, readsTheListedTagsAndNothingElse)
{
    const QByteArray block = cameraBlock();
    EXPECT_EQ(read(FileType::jpeg, jpegWith(segment(0xE1, exifName + block))).image, cameraProperties());
    EXPECT_EQ(read(FileType::png, pngWith(chunk("eXIf", block))).image, cameraProperties());
    EXPECT_EQ(read(FileType::tiff, block).image, cameraProperties());
    const QByteArray bigEndian("MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0", 26);
    EXPECT_EQ(read(FileType::tiff, bigEndian).image, (PropertyMap{{PropertyKey::orientation, {6.0}}}));
    // Orientations that there are none of are for others to judge.
    EXPECT_EQ(read(FileType::tiff, tiffFile({shortTag(0x0112, 65535)})).image,
              (PropertyMap{{PropertyKey::orientation, {65535.0}}}));
}

TEST(PropertyReader, takesTextsAsOldCamerasWriteThem)
{
    const auto description = [](std::uint16_t type, const QByteArray& text) {
        const QByteArray file = tiffFile({{0x010E, type, std::uint32_t(text.size() / (type == 3 ? 2 : 1)), text}});
        const PropertyMap tiff = subMap(read(FileType::tiff, file), PropertyKey::tiff);
        const PropertyValue* value = tiff.find(u"ImageDescription");
        return value ? std::get<QString>(value->value) : QString();
    };
    EXPECT_EQ(description(2, "no NUL"), u"no NUL"_s);
    EXPECT_EQ(description(1, "bytes"), u"bytes"_s);
    EXPECT_EQ(description(2, QByteArray(8, '\0')), QString());
    EXPECT_EQ(description(3, "AAAAAA"), QString());
    // A cut in the middle of a character would turn all of it into Windows-1252.
    EXPECT_EQ(description(2, "a" + QByteArray("\xC3\xA9").repeated(100'000)), u'a' + QString(32 * 1024 - 1, u'\u00E9'));
}

TEST(PropertyReader, findsJpegBlocksWhateverStandsBetween)
{
    const QByteArray block = cameraBlock();
    const QByteArray exif = segment(0xE1, exifName + block);
    const std::pair<const char*, QByteArray> rows[] = {
        {"broken profile in front",
         segment(0xE2, QByteArray("ICC_PROFILE\0\1\xFF", 14) + QByteArray(500, '\xFF')) + exif},
        {"junk and fill bytes between segments", QByteArray("\0junk\xFF\0\xFF\xFF\xFF", 10) + exif.mid(1)},
        {"a second block", exif + segment(0xE1, exifName + tiffFile({shortTag(0x0112, 1)}))},
        {"over two segments", segment(0xE1, exifName + block.left(150)) + segment(0xE1, exifName + block.mid(150))},
        {"a broken segment behind", exif + QByteArray("\xFF\xE1\0\1", 4)},
    };
    for (const auto& [name, segments] : rows)
        EXPECT_EQ(read(FileType::jpeg, jpegWith(segments)).image, cameraProperties()) << name;
    const QByteArray oddXmpName = QByteArray(xmpName).insert(xmpName.size() - 1, ' ');
    EXPECT_EQ(read(FileType::jpeg, jpegWith(segment(0xE1, oddXmpName + packet))).xmp, title) << "blank before the zero";
    EXPECT_TRUE(read(FileType::jpeg, jpegWith(QByteArray(100'000, 'x') + exif)).image.isEmpty()) << "unbounded junk";
}

TEST(PropertyReader, readsExtendedXmpThatTheMainPacketNames)
{
    const QByteArray name("http://ns.adobe.com/xmp/extension/\0", 35);
    const QByteArray identifier = "0123456789ABCDEF0123456789ABCDEF";
    const QByteArray extended = xmpPacket("<dc:title>no</dc:title><aux:Lens>XF23</aux:Lens>");
    const auto piece = [&](qsizetype from, qsizetype length, quint32 whole) {
        return segment(0xE1,
                       name + identifier + bigEndian(whole) + bigEndian(quint64(from)) + extended.mid(from, length));
    };
    const auto whole = quint32(extended.size());
    const QByteArray note = "<xmpNote:HasExtendedXMP xmlns:xmpNote='http://ns.adobe.com/xmp/note/'>" + identifier +
                            "</xmpNote:HasExtendedXMP>";
    const auto xmp = [&](const QByteArray& main, const QByteArray& pieces) {
        return read(FileType::jpeg, jpegWith(segment(0xE1, xmpName + xmpPacket(main)) + pieces)).xmp;
    };
    const QByteArray own = "<dc:title>Dune</dc:title>";
    const PropertyMap both = texts(u"dc:title=Dune|aux:Lens=XF23"_s);
    EXPECT_EQ(xmp(own + note, piece(100, whole, whole) + piece(0, 100, whole)), both);
    EXPECT_EQ(xmp(own, piece(0, whole, whole)), title) << "not named";
    EXPECT_EQ(xmp(own + note, piece(0, whole - 9, whole)), title) << "incomplete";
    EXPECT_EQ(xmp(own + note, piece(0, whole, 0xFFFFFFFF)), title) << "claims 4 GB";
    EXPECT_EQ(xmp(own + note, piece(0, whole, whole - 1)), title) << "longer than it says";
}

TEST(PropertyReader, readsIptcByItsCharacterSet)
{
    const auto iptc = [](const QByteArray& datasets) {
        const QByteArray resources = resource(0x03ED, "odd") + resource(0x0404, datasets) + resource(0x0422, "x");
        const QByteArray segments =
            segment(0xED, photoshopName + resources.left(30)) + segment(0xED, photoshopName + resources.mid(30));
        return subMap(read(FileType::jpeg, jpegWith(segments)), PropertyKey::iptc);
    };
    const QByteArray utf8 = dataset(1, 90, "\x1B%G");
    const QByteArray latin1 = dataset(1, 90, "\x1B.A");
    EXPECT_EQ(iptc(utf8 + dataset(2, 5, "D\xC3\xBCne")), texts(u"ObjectName=D\u00FCne"_s));
    EXPECT_EQ(iptc(latin1 + dataset(2, 5, "\xC3\xBC")), texts(u"ObjectName=\u00C3\u00BC"_s));
    EXPECT_EQ(iptc(dataset(2, 5, "D\xC3\xBCne")), texts(u"ObjectName=D\u00FCne"_s));
    EXPECT_EQ(iptc(dataset(2, 5, "D\xFCne\x85")), texts(u"ObjectName=D\u00FCne\u2026"_s));
    EXPECT_EQ(iptc(QByteArray("\x1C\x02\x05\x80\x03\0\0\x04", 8) + "Dune"), texts(u"ObjectName=Dune"_s))
        << "extended length";
    EXPECT_EQ(iptc(dataset(2, 5, "Dune") + QByteArray("\x1C\x02\x78\x80\x04\xFF\xFF\xFF\xFFxyz", 12)),
              texts(u"ObjectName=Dune"_s));
    PropertyMap others{{u"Byline"_s, {TextList{u"A"_s, u"B"_s}}}, {u"CopyrightNotice"_s, {u"(c)"_s}}};
    others.set(u"Caption/Abstract"_s, {u"Caption"_s});
    EXPECT_EQ(iptc(dataset(2, 80, "A") + dataset(2, 101, "France") + dataset(2, 116, "(c)") +
                   dataset(2, 120, "Caption") + dataset(2, 80, "B")),
              others);
}

TEST(PropertyReader, readsPngTextChunks)
{
    // qCompress puts the length in front, which the format doesn't have.
    const auto international = [](const QByteArray& data, char compressed) {
        return chunk("iTXt", QByteArray("XML:com.adobe.xmp\0", 18) + compressed + QByteArray("\0en\0\0", 5) +
                                 (compressed ? qCompress(data).mid(4) : data));
    };
    EXPECT_EQ(read(FileType::png, pngWith(international(packet, 0))).xmp, title);
    EXPECT_EQ(read(FileType::png, pngWith(chunk("IDAT", QByteArray(5000, 'x')) + international(packet, 1))).xmp, title);
    EXPECT_TRUE(read(FileType::png, pngWith(international(packet + QByteArray(2'000'000, ' '), 1))).xmp.isEmpty());
    const QByteArray comment = chunk("tEXt", "Comment");
    EXPECT_EQ(read(FileType::png, pngWith(comment.repeated(900) + international(packet, 0))).xmp, title);
    EXPECT_TRUE(read(FileType::png, pngWith(comment.repeated(1'100) + international(packet, 0))).xmp.isEmpty());

    const auto rawProfile = [](const QByteArray& name, const QByteArray& data, bool compressed) {
        QByteArray text = "\n" + name + "\n   " + QByteArray::number(data.size());
        for (qsizetype i = 0; i < data.size(); i += 36)
            text += "\n" + data.mid(i, 36).toHex();
        return chunk(compressed ? "zTXt" : "tEXt",
                     "Raw profile type " + name + '\0' + (compressed ? '\0' + qCompress(text).mid(4) : text));
    };
    const ImageProperties old = read(
        FileType::png, pngWith(rawProfile("exif", exifName + cameraBlock(), true) + rawProfile("xmp", packet, false) +
                               rawProfile("iptc", resource(0x0404, dataset(2, 5, "Sand")), true)));
    EXPECT_EQ(old.xmp, title);
    EXPECT_EQ(old.image.find(PropertyKey::tiff)->value, cameraProperties().find(PropertyKey::tiff)->value);
    EXPECT_EQ(subMap(old, PropertyKey::iptc), texts(u"ObjectName=Sand"_s));
    for (const QByteArray& name : {xmpName, QByteArray(xmpName).insert(xmpName.size() - 1, ' ')})
        EXPECT_EQ(read(FileType::png, pngWith(rawProfile("APP1", name + packet, true))).xmp, title);
}

TEST(PropertyReader, readsTheBlocksInTiffTags)
{
    const auto block = [](std::uint16_t tag, const QByteArray& bytes) {
        return TiffTag{tag, 7, std::uint32_t(bytes.size()), bytes};
    };
    std::vector<TiffTag> tags{block(700, packet), block(34377, resource(0x0404, dataset(2, 5, "of resources")))};
    const ImageProperties nested = read(FileType::tiff, tiffFile(tags));
    EXPECT_EQ(nested.xmp, title);
    EXPECT_EQ(subMap(nested, PropertyKey::iptc), texts(u"ObjectName=of resources"_s));
    tags.push_back(block(33723, dataset(2, 5, "direct")));
    const ImageProperties direct = read(FileType::tiff, tiffFile(tags));
    EXPECT_EQ(subMap(direct, PropertyKey::iptc), texts(u"ObjectName=direct"_s));
}

TEST(PropertyReader, readsHeifItemsWithoutTheirOrientation)
{
    const std::unique_ptr<heif_context, decltype(&heif_context_free)> context(heif_context_alloc(), heif_context_free);
    heif_encoder* encoder = nullptr;
    ASSERT_EQ(heif_context_get_encoder_for_format(context.get(), heif_compression_HEVC, &encoder).code, heif_error_Ok);
    heif_image* image = nullptr;
    heif_image_create(64, 64, heif_colorspace_RGB, heif_chroma_interleaved_RGB, &image);
    heif_image_add_plane(image, heif_channel_interleaved, 64, 64, 8);
    heif_image_handle* handle = nullptr;
    ASSERT_EQ(heif_context_encode_image(context.get(), image, encoder, nullptr, &handle).code, heif_error_Ok);
    const QByteArray block = exifName + cameraBlock();
    heif_context_add_exif_metadata(context.get(), handle, block.constData(), int(block.size()));
    heif_context_add_XMP_metadata(context.get(), handle, packet.constData(), int(packet.size()));

    QByteArray file;
    heif_writer writer{1, [](heif_context*, const void* data, std::size_t size, void* into) {
                           static_cast<QByteArray*>(into)->append(static_cast<const char*>(data), qsizetype(size));
                           return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
                       }};
    ASSERT_EQ(heif_context_write(context.get(), &writer, &file).code, heif_error_Ok);
    heif_image_handle_release(handle);
    heif_image_release(image);
    heif_encoder_release(encoder);
    const ImageProperties expected{cameraProperties(false), title};
    EXPECT_EQ(read(FileType::heif, file), expected);
    // The item's first four bytes are the distance to what follows them; some writers know nothing of it.
    const qsizetype item = file.indexOf(block) - 4;
    for (const QByteArray& bare : {block + QByteArray(4, '\0'), cameraBlock() + QByteArray(10, '\0')})
        EXPECT_EQ(read(FileType::heif, QByteArray(file).replace(item, bare.size(), bare)), expected);
}

} // namespace ferrow
