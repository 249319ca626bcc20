// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/ByteText.h"

#include <array>

namespace ferrow::ByteText {

namespace {

constexpr char16_t firstEscape = 0xDC80;
constexpr char16_t lastEscape = 0xDCFF;

/// Windows-1252 where it differs from Latin-1; its five unassigned places stay the control characters they are there.
constexpr std::array<char16_t, 32> windows1252{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

struct CodePoint {
    char32_t value = 0;
    int length = 0; ///< In bytes; 0 where no valid sequence starts.
};

/// Shortest forms only, no surrogates, nothing above U+10FFFF.
CodePoint codePointAt(const QByteArray& bytes, qsizetype index)
{
    const auto lead = static_cast<unsigned char>(bytes[index]);
    if (lead < 0x80)
        return {lead, 1};
    const int length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || index + length > bytes.size())
        return {};
    char32_t value = lead & (0x7Fu >> length);
    for (int i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(bytes[index + i]);
        if ((next & 0xC0) != 0x80)
            return {};
        value = value << 6 | (next & 0x3Fu);
    }
    const char32_t smallest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    if (value < smallest || value > QChar::LastValidCodePoint || QChar::isSurrogate(value))
        return {};
    return {value, length};
}

/// Every valid sequence as its character, every other byte as what `stray(byte)` answers.
template <typename Stray>
QString decodeWith(const QByteArray& bytes, Stray stray)
{
    QString text;
    text.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size();) {
        const CodePoint point = codePointAt(bytes, i);
        if (point.length == 0)
            text.append(QChar(stray(static_cast<unsigned char>(bytes[i]))));
        else if (QChar::requiresSurrogates(point.value))
            text.append(QChar(QChar::highSurrogate(point.value))).append(QChar(QChar::lowSurrogate(point.value)));
        else
            text.append(QChar(static_cast<char16_t>(point.value)));
        i += point.length == 0 ? 1 : point.length;
    }
    return text;
}

bool isValid(const QByteArray& bytes)
{
    for (qsizetype i = 0; i < bytes.size();) {
        const int length = codePointAt(bytes, i).length;
        if (length == 0)
            return false;
        i += length;
    }
    return true;
}

} // namespace

QString decode(const QByteArray& bytes)
{
    return decodeWith(bytes, [](unsigned char byte) { return static_cast<char16_t>(0xDC00 + byte); });
}

QByteArray encode(const QString& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    qsizetype plainFrom = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i].unicode();
        // The second half of a pair has the same values as an escaped byte.
        const bool paired = i > 0 && text[i - 1].isHighSurrogate();
        if (unit < firstEscape || unit > lastEscape || paired)
            continue;
        bytes.append(QStringView(text).mid(plainFrom, i - plainFrom).toUtf8()).append(char(unit & 0xFF));
        plainFrom = i + 1;
    }
    return bytes.append(QStringView(text).mid(plainFrom).toUtf8());
}

QString display(const QByteArray& bytes)
{
    return decodeWith(bytes, [](unsigned char) { return char16_t{QChar::ReplacementCharacter}; });
}

QString fromMetadata(const QByteArray& bytes)
{
    const qsizetype end = bytes.indexOf('\0');
    const QByteArray field = end < 0 ? bytes : bytes.left(end);
    if (isValid(field))
        return decode(field);
    QString text;
    text.reserve(field.size());
    for (const char character : field) {
        const auto byte = static_cast<unsigned char>(character);
        text.append(QChar(byte >= 0x80 && byte < 0xA0 ? windows1252[byte - 0x80] : char16_t{byte}));
    }
    return text;
}

} // namespace ferrow::ByteText
