// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Properties/PropertyMap.h"

#include "Codecs/CodecTesting.h"

#include <QByteArray>

#include <ostream>

namespace ferrow {
inline void PrintTo(const PropertyMap& map, std::ostream* out)
{
    for (const auto& [key, value] : map.entries()) {
        *out << key.toStdString() << ": ";
        std::visit([out](const auto& held) { *out << testing::PrintToString(held).substr(0, 200) << "; "; },
                   value.value);
    }
}
} // namespace ferrow

namespace ferrow::test {

inline QByteArray segment(int marker, const QByteArray& content)
{
    return QByteArray("\xFF") + char(marker) + bigEndian(quint64(content.size() + 2), 2) + content;
}
inline QByteArray jpegWith(const QByteArray& segments)
{
    return "\xFF\xD8" + segments + segment(0xDA, QByteArray(6, '\0')) + QByteArray(100, '\x55') + "\xFF\xD9";
}

inline QByteArray chunk(const char* type, const QByteArray& data)
{
    // Checksums are not looked at here.
    return bigEndian(quint64(data.size())) + type + data + QByteArray(4, '\0');
}
inline QByteArray pngWith(const QByteArray& chunks)
{
    return QByteArray("\x89PNG\r\n\x1A\n") + chunk("IHDR", QByteArray(13, '\0')) + chunks + chunk("IEND", QByteArray());
}

inline QByteArray dataset(int record, int number, const QByteArray& value)
{
    return QByteArray("\x1C") + char(record) + char(number) + bigEndian(quint64(value.size()), 2) + value;
}
inline QByteArray resource(int number, const QByteArray& data)
{
    return "8BIM" + bigEndian(quint64(number), 2) + QByteArray(2, '\0') + bigEndian(quint64(data.size())) + data +
           QByteArray(data.size() % 2, '\0');
}

inline QByteArray xmpPacket(const QByteArray& properties)
{
    return "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
           "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about=''"
           " xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/'"
           " xmlns:aux='http://ns.adobe.com/exif/1.0/aux/' xmlns:exifEX='http://cipa.jp/exif/1.0/'"
           " xmlns:xmpMM='http://ns.adobe.com/xap/1.0/mm/'>" +
           properties + "</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end='w'?>";
}

} // namespace ferrow::test
