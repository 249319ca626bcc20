// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/XmpReader.h"

#include "Support/TestSupport.h"

#include "MetadataSamples.h"

#include <QStringEncoder>

namespace ferrow {

using namespace Qt::StringLiterals;
using namespace test;

namespace {

const QByteArray plainTitle = "<dc:title>Dune</dc:title>";
const PropertyMap plainTitleRead{{u"dc:title"_s, {u"Dune"_s}}};

} // namespace

TEST(XmpReader, readsTheListedPropertiesInEveryForm)
{
    struct Row {
        const char* name;
        QByteArray properties;
        PropertyMap expected;
    };
    const std::vector<Row> rows{
        {"text",
         plainTitle + "<aux:Lens>50mm &amp; more</aux:Lens>",
         {{u"dc:title"_s, {u"Dune"_s}}, {u"aux:Lens"_s, {u"50mm & more"_s}}}},
        {"default language first",
         "<dc:title><rdf:Alt><rdf:li xml:lang='sv'>Sanddyn</rdf:li>"
         "<rdf:li xml:lang='x-default'>Dune</rdf:li>"
         "<rdf:li xml:lang='de'>D\xC3\xBCne</rdf:li></rdf:Alt></dc:title>",
         {{u"dc:title"_s,
           {PropertyMap{{u"x-default"_s, {u"Dune"_s}}, {u"sv"_s, {u"Sanddyn"_s}}, {u"de"_s, {u"D\u00FCne"_s}}}}}}},
        {"no default language keeps the order",
         "<dc:title><rdf:Alt><rdf:li xml:lang='sv'>Sanddyn</rdf:li>"
         "<rdf:li xml:lang='de'>Sand</rdf:li></rdf:Alt></dc:title>",
         {{u"dc:title"_s, {PropertyMap{{u"sv"_s, {u"Sanddyn"_s}}, {u"de"_s, {u"Sand"_s}}}}}}},
        {"list keeps its empty entry",
         "<dc:description>\n <rdf:Seq>\n <rdf:li/>\n <rdf:li>b</rdf:li>\n </rdf:Seq>"
         "\n</dc:description>",
         {{u"dc:description"_s, {TextList{QString(), u"b"_s}}}}},
        {"qualified value",
         "<dc:title><rdf:Alt><rdf:li xml:lang='en' rdf:parseType='Resource'><rdf:value>Dune"
         "</rdf:value><dc:note>no</dc:note></rdf:li></rdf:Alt></dc:title>",
         {{u"dc:title"_s, {PropertyMap{{u"en"_s, {u"Dune"_s}}}}}}},
        {"first one counts", plainTitle + "<dc:title>Other</dc:title>", plainTitleRead},
        {"another picture's",
         "<xmpMM:Ingredients><rdf:Bag><rdf:li><rdf:Description dc:title='no'><dc:title>no"
         "</dc:title></rdf:Description></rdf:li></rdf:Bag></xmpMM:Ingredients>",
         {}},
        {"not listed",
         "<dc:creator>me</dc:creator><exif:GPSLatitude xmlns:exif='http://ns.adobe.com/exif/1.0/'>"
         "48,51N</exif:GPSLatitude>",
         {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(readXmpPacket(xmpPacket(row.properties)), row.expected);
    }
}

TEST(XmpReader, goesByNamespacesNotPrefixes)
{
    const QByteArray packet =
        "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:Description"
        " xmlns:p='http://ns.adobe.com/photoshop/1.0/' p:DateCreated='2024-03-05T14:07:09Z'/><r:Description"
        " xmlns:dc='http://example.com/'><dc:title>no</dc:title></r:Description><r:Description"
        " xmlns:e='http://cipa.jp/exif/1.0/'><e:LensModel>XF23</e:LensModel></r:Description></r:RDF>";
    const PropertyMap expected{{u"photoshop:DateCreated"_s, {u"2024-03-05T14:07:09Z"_s}},
                               {u"exifEX:LensModel"_s, {u"XF23"_s}}};
    EXPECT_EQ(readXmpPacket(packet), expected);
}

TEST(XmpReader, readsWhateverEncodingWritersUse)
{
    const QString wide = QString::fromUtf8(xmpPacket("<dc:title>D\xC3\xBCne</dc:title>"));
    const PropertyMap expected{{u"dc:title"_s, {u"D\u00FCne"_s}}};
    const QByteArray utf8 = wide.toUtf8();
    const std::vector<std::pair<const char*, QByteArray>> rows{
        {"UTF-8", utf8},
        {"Windows-1252", xmpPacket("<dc:title>D\xFCne</dc:title>")},
        {"UTF-16 with a mark", QStringEncoder(QStringEncoder::Utf16, QStringEncoder::Flag::WriteBom).encode(wide)},
        {"UTF-16 big-endian", QStringEncoder(QStringEncoder::Utf16BE).encode(wide)},
        {"padding and NULs behind", utf8 + QByteArray(300, '\0')},
        {"line break in front", "\n" + utf8},
    };
    for (const auto& [name, packet] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(readXmpPacket(packet), expected);
    }
}

TEST(XmpReader, keepsWhatWasWholeBeforeTheDamage)
{
    const QByteArray packet = xmpPacket(plainTitle + "<dc:description>later</dc:description>");
    const qsizetype titleEnd = packet.indexOf(plainTitle) + plainTitle.size();
    for (qsizetype length = 0; length < packet.size(); ++length) {
        const PropertyMap read = readXmpPacket(packet.left(length));
        ASSERT_EQ(read.find(u"dc:title") != nullptr, length >= titleEnd) << "cut at " << length;
    }
}

TEST(XmpReader, refusesWhatIsMadeToExhaust)
{
    QByteArray bomb = "<!DOCTYPE l [<!ENTITY a0 'ha'>";
    for (int i = 1; i < 10; ++i)
        bomb += QByteArray("<!ENTITY a%1 '%2'>")
                    .replace("%1", QByteArray::number(i))
                    .replace("%2", ("&a" + QByteArray::number(i - 1) + ";").repeated(10));
    bomb += "]>";
    const QByteArray deep = QByteArray("<dc:a>").repeated(100) + QByteArray("</dc:a>").repeated(100);
    const std::vector<std::pair<const char*, QByteArray>> rows{
        {"entity bomb", bomb + xmpPacket("<dc:title>&a9;</dc:title>")},
        {"document type alone", "<!DOCTYPE x>" + xmpPacket(plainTitle)},
        {"external entity",
         "<!DOCTYPE x [<!ENTITY e SYSTEM 'file:///etc/hostname'>]>" + xmpPacket("<dc:title>&e;</dc:title>")},
        {"too deep", xmpPacket(deep + plainTitle)},
        {"too long", xmpPacket(QByteArray(1024 * 1024, ' ') + plainTitle)},
    };
    for (const auto& [name, packet] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(readXmpPacket(packet), PropertyMap());
    }
    // Not so deep or long that an honest program could not have written it.
    EXPECT_EQ(readXmpPacket(xmpPacket(QByteArray(900 * 1024, ' ') + plainTitle)), plainTitleRead);
}

TEST(XmpReader, boundsListsAndTexts)
{
    const auto longText =
        readXmpPacket(xmpPacket("<dc:title>" + QByteArray("\xC3\xA9").repeated(200'000) + "</dc:title>"));
    ASSERT_NE(longText.find(u"dc:title"), nullptr);
    EXPECT_EQ(std::get<QString>(longText.find(u"dc:title")->value), QString(32 * 1024, QChar(u'\u00E9')));

    const auto longList = readXmpPacket(
        xmpPacket("<dc:title><rdf:Bag>" + QByteArray("<rdf:li>a</rdf:li>").repeated(20'000) + "</rdf:Bag></dc:title>"));
    ASSERT_NE(longList.find(u"dc:title"), nullptr);
    EXPECT_LE(std::get<TextList>(longList.find(u"dc:title")->value).size(), 1'000U);
}

} // namespace ferrow
