// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/XmpReader.h"

#include "MetadataSamples.h"

#include <QStringEncoder>

namespace ferrow {

using namespace Qt::StringLiterals;
using namespace test;

namespace {

const QByteArray plainTitle = "<dc:title>Dune</dc:title>";

PropertyMap title(const PropertyValue& value)
{
    return {{u"dc:title"_s, value}};
}

/// Of a packet with `properties`, whose list items and languages go without their prefixes.
PropertyMap readProperties(QByteArray properties)
{
    return readXmpPacket(
        xmpPacket(properties.replace("</li", "</rdf:li").replace("<li", "<rdf:li").replace("lang=", "xml:lang=")));
}

} // namespace

TEST(XmpReader, readsTheListedPropertiesInEveryForm)
{
    const PropertyMap byLanguage{{u"x-default"_s, {u"Dune"_s}}, {u"sv"_s, {u"Sanddyn"_s}}, {u"de"_s, {u"D\u00FCne"_s}}};
    const std::pair<QByteArray, PropertyMap> rows[] = {
        {"<dc:title>50mm &amp; more</dc:title>", title({u"50mm & more"_s})},
        {"<dc:title><rdf:Alt><li lang='sv'>Sanddyn</li><li lang='x-default'>Dune</li><li lang='de'>D\xC3\xBCne</li>"
         "</rdf:Alt></dc:title>",
         title({byLanguage})},
        {"<dc:title><rdf:Alt><li lang='sv'>a</li><li lang='de'>b</li></rdf:Alt></dc:title>",
         title({PropertyMap{{u"sv"_s, {u"a"_s}}, {u"de"_s, {u"b"_s}}}})},
        {"<dc:title>\n <rdf:Seq>\n <li/>\n <li>b</li>\n </rdf:Seq>\n</dc:title>", title({TextList{QString(), u"b"_s}})},
        {"<dc:title><rdf:Alt><li lang='en' rdf:parseType='Resource'><rdf:value>a</rdf:value><dc:note>no</dc:note></li>"
         "</rdf:Alt></dc:title>",
         title({PropertyMap{{u"en"_s, {u"a"_s}}}})},
        {plainTitle + "<dc:title>Other</dc:title>", title({u"Dune"_s})},
        // Another picture's, and one that is not listed.
        {"<xmpMM:Ingredients><rdf:Bag><li><rdf:Description dc:title='no'><dc:title>no</dc:title></rdf:Description></li>"
         "</rdf:Bag></xmpMM:Ingredients>",
         {}},
        {"<dc:creator>me</dc:creator>", {}},
    };
    for (const auto& [properties, expected] : rows)
        EXPECT_EQ(readProperties(properties), expected) << properties.toStdString();
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
    const QByteArray utf8 = xmpPacket("<dc:title>D\xC3\xBCne</dc:title>");
    const QString wide = QString::fromUtf8(utf8);
    EXPECT_EQ(readXmpPacket("\n" + utf8 + QByteArray(300, '\0')), title({u"D\u00FCne"_s}));
    EXPECT_EQ(readXmpPacket(xmpPacket("<dc:title>D\xFCne</dc:title>")), title({u"D\u00FCne"_s}));
    const QByteArray marked = QStringEncoder(QStringEncoder::Utf16, QStringEncoder::Flag::WriteBom).encode(wide);
    EXPECT_EQ(readXmpPacket(marked), title({u"D\u00FCne"_s}));
    const QByteArray bigEndian = QStringEncoder(QStringEncoder::Utf16BE).encode(wide);
    EXPECT_EQ(readXmpPacket(bigEndian), title({u"D\u00FCne"_s}));
}

TEST(XmpReader, keepsWhatWasWholeBeforeTheDamage)
{
    const QByteArray packet = xmpPacket(plainTitle + "<dc:description>later</dc:description>");
    const qsizetype titleEnd = packet.indexOf(plainTitle) + plainTitle.size();
    for (qsizetype length = 0; length < packet.size(); ++length)
        ASSERT_EQ(readXmpPacket(packet.left(length)).find(u"dc:title") != nullptr, length >= titleEnd) << length;
}

TEST(XmpReader, refusesWhatIsMadeToExhaust)
{
    QByteArray bomb = "<!DOCTYPE l [<!ENTITY a0 'ha'>";
    for (char i = '1'; i <= '9'; ++i)
        bomb += QByteArray("<!ENTITY a") + i + " '" + (QByteArray("&a") + char(i - 1) + ';').repeated(10) + "'>";
    const std::pair<const char*, QByteArray> rows[] = {
        {"entity bomb", bomb + "]>" + xmpPacket("<dc:title>&a9;</dc:title>")},
        {"document type alone", "<!DOCTYPE x>" + xmpPacket(plainTitle)},
        {"external entity",
         "<!DOCTYPE x [<!ENTITY e SYSTEM 'file:///etc/hostname'>]>" + xmpPacket("<dc:title>&e;</dc:title>")},
        {"too deep", xmpPacket(QByteArray("<dc:a>").repeated(100) + QByteArray("</dc:a>").repeated(100) + plainTitle)},
        {"too long", xmpPacket(QByteArray(1024 * 1024, ' ') + plainTitle)},
    };
    for (const auto& [name, packet] : rows)
        EXPECT_EQ(readXmpPacket(packet), PropertyMap()) << name;
    // Neither so long nor so deep that an honest program could not have written it.
    EXPECT_EQ(
        readXmpPacket(xmpPacket(QByteArray("<dc:a>").repeated(50) + QByteArray("</dc:a>").repeated(50) + plainTitle)),
        title({u"Dune"_s}));
    EXPECT_EQ(readXmpPacket(xmpPacket(QByteArray(900 * 1024, ' ') + plainTitle)), title({u"Dune"_s}));
}

} // namespace ferrow
