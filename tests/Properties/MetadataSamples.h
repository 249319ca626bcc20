// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Properties/PropertyMap.h"

#include <QByteArray>
#include <QList>
#include <QtEndian>

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

template <typename Number>
QByteArray bigEndian(Number number)
{
    const Number stored = qToBigEndian(number);
    return {reinterpret_cast<const char*>(&stored), sizeof stored};
}

/// One tag of a TIFF structure; the parts of its values are written in the structure's byte order.
struct Tag {
    quint16 tag;
    quint16 type;
    quint32 count;
    int width; ///< Of one part, in bytes: a rational has two parts of four.
    QByteArray bigEndianParts;
};

inline Tag text(quint16 tag, const QByteArray& bytes, quint16 type = 2)
{
    return {tag, type, quint32(bytes.size()), 1, bytes};
}
/// A text as it stands in most files, ended by a NUL.
inline Tag ended(quint16 tag, const QByteArray& bytes)
{
    return text(tag, bytes + '\0');
}
template <typename... Values>
Tag shorts(quint16 tag, Values... values)
{
    return {tag, 3, sizeof...(values), 2, (bigEndian(quint16(values)) + ...)};
}
inline Tag number(quint16 tag, quint32 value)
{
    return {tag, 4, 1, 4, bigEndian(value)};
}
inline Tag rational(quint16 tag, qint32 numerator, qint32 denominator, quint16 type = 5)
{
    return {tag, type, 1, 4, bigEndian(numerator) + bigEndian(denominator)};
}

enum class ByteOrder { little, big };

using Child = std::pair<quint16, QList<Tag>>;

/// A TIFF structure of a first directory and those below it, each with the tag that points there.
inline QByteArray tiffStructure(ByteOrder order, QList<Tag> first, const QList<Child>& children = {})
{
    const auto ordered = [order](QByteArray parts, int width) {
        for (qsizetype i = 0; order == ByteOrder::little && i < parts.size(); i += width)
            std::reverse(parts.begin() + i, parts.begin() + i + width);
        return parts;
    };
    const auto directory = [&](const QList<Tag>& tags, qsizetype at) {
        QByteArray table = ordered(bigEndian(quint16(tags.size())), 2);
        QByteArray values;
        for (const Tag& tag : tags) {
            const qsizetype valuesAt = at + 2 + tags.size() * 12 + 4 + values.size();
            const QByteArray stored = ordered(tag.bigEndianParts, tag.width);
            const bool isInside = stored.size() <= 4;
            table += ordered(bigEndian(tag.tag) + bigEndian(tag.type), 2) + ordered(bigEndian(tag.count), 4);
            table += isInside ? stored + QByteArray(4 - stored.size(), '\0') : ordered(bigEndian(quint32(valuesAt)), 4);
            values += isInside ? QByteArray() : stored;
        }
        return table + QByteArray(4, '\0') + values;
    };

    constexpr qsizetype headerLength = 8;
    for (const auto& [pointer, tags] : children)
        first.append(number(pointer, 0));
    QByteArray below;
    qsizetype at = headerLength + directory(first, headerLength).size();
    for (qsizetype i = 0; i < children.size(); ++i) {
        first[first.size() - children.size() + i] = number(children[i].first, quint32(at));
        const QByteArray child = directory(children[i].second, at);
        below += child;
        at += child.size();
    }
    const QByteArray mark = order == ByteOrder::big ? "MM" : "II";
    return mark + ordered(bigEndian(quint16(42)), 2) + ordered(bigEndian(quint32(headerLength)), 4) +
           directory(first, headerLength) + below;
}

inline QByteArray segment(int marker, const QByteArray& content)
{
    return QByteArray("\xFF") + char(marker) + bigEndian(quint16(content.size() + 2)) + content;
}
inline QByteArray jpegWith(const QByteArray& segments)
{
    return "\xFF\xD8" + segments + segment(0xDA, QByteArray(6, '\0')) + QByteArray(100, '\x55') + "\xFF\xD9";
}

inline QByteArray chunk(const char* type, const QByteArray& data)
{
    // Checksums are not looked at here.
    return bigEndian(quint32(data.size())) + type + data + QByteArray(4, '\0');
}
inline QByteArray pngWith(const QByteArray& chunks)
{
    return QByteArray("\x89PNG\r\n\x1A\n") + chunk("IHDR", QByteArray(13, '\0')) + chunks + chunk("IEND", QByteArray());
}

inline QByteArray dataset(int record, int number, const QByteArray& value)
{
    return QByteArray("\x1C") + char(record) + char(number) + bigEndian(quint16(value.size())) + value;
}
inline QByteArray resource(int number, const QByteArray& data)
{
    return "8BIM" + bigEndian(quint16(number)) + QByteArray(2, '\0') + bigEndian(quint32(data.size())) + data +
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
