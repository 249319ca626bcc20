// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/ExifBlock.h"

#include <algorithm>
#include <vector>

namespace ferrow {

namespace {

enum FieldType : std::uint16_t { ascii = 2, shortInteger = 3, longInteger = 4, rational = 5, undefined = 7 };

struct Field {
    std::uint16_t tag;
    FieldType type;
    std::uint32_t count;
    QByteArray value; ///< As it lies in the file.
};

/// A JPEG segment holds 65,533 bytes: five texts of this length and the fixed fields stay below.
constexpr qsizetype longestText = 12'000;

/// Marks where the offset of the Exif directory goes, filled in once it is known.
constexpr std::uint16_t exifDirectoryTag = 0x8769;

template <typename Integer>
void append(QByteArray& bytes, Integer value)
{
    for (std::size_t i = 0; i < sizeof(Integer); ++i)
        bytes.append(char(value >> (8 * i) & 0xff));
}

template <typename Integer>
Field number(std::uint16_t tag, FieldType type, Integer value)
{
    Field field{tag, type, 1, {}};
    append(field.value, value);
    return field;
}

Field shortField(std::uint16_t tag, std::uint16_t value)
{
    return number(tag, shortInteger, value);
}

Field longField(std::uint16_t tag, std::uint32_t value)
{
    return number(tag, longInteger, value);
}

Field wholeRational(std::uint16_t tag, std::uint32_t value)
{
    Field field = number(tag, rational, value);
    append(field.value, std::uint32_t{1});
    return field;
}

Field bytesField(std::uint16_t tag, QByteArray value)
{
    const auto count = std::uint32_t(value.size());
    return {tag, undefined, count, std::move(value)};
}

/// Cut between characters where it is too long; a NUL would end it for every reader anyway.
QByteArray storedText(const QString& text)
{
    QByteArray bytes = text.left(text.indexOf(QChar::Null)).toUtf8();
    if (bytes.size() > longestText) {
        qsizetype end = longestText;
        while (end > 0 && (bytes.at(end) & 0xc0) == 0x80)
            --end;
        bytes.truncate(end);
    }
    return bytes;
}

void addText(std::vector<Field>& fields, std::uint16_t tag, const std::optional<QString>& text)
{
    QByteArray bytes = text ? storedText(*text) : QByteArray();
    if (bytes.isEmpty())
        return;
    bytes.append('\0');
    const auto count = std::uint32_t(bytes.size());
    fields.push_back({tag, ascii, count, std::move(bytes)});
}

/// Directory entries in the order of their tags, then the values that do not fit into four bytes.
QByteArray directory(std::vector<Field> fields, std::uint32_t offset)
{
    std::ranges::sort(fields, {}, &Field::tag);
    const std::uint32_t valuesAt = offset + 2 + 12 * std::uint32_t(fields.size()) + 4;
    QByteArray entries;
    QByteArray values;
    append(entries, std::uint16_t(fields.size()));
    for (const Field& field : fields) {
        append(entries, field.tag);
        append(entries, std::uint16_t(field.type));
        append(entries, field.count);
        if (field.value.size() <= 4) {
            entries.append(field.value).append(4 - field.value.size(), '\0');
            continue;
        }
        append(entries, valuesAt + std::uint32_t(values.size()));
        values.append(field.value);
        if (values.size() % 2 != 0)
            values.append('\0');
    }
    append(entries, std::uint32_t{0});
    return entries + values;
}

std::vector<Field> mainFields(const OutputMetadata& metadata)
{
    std::vector<Field> fields{
        shortField(0x0112, 1),     // Orientation: upright.
        wholeRational(0x011a, 72), // XResolution
        wholeRational(0x011b, 72), // YResolution
        shortField(0x0128, 2),     // ResolutionUnit: inch.
        shortField(0x0213, 1),     // YCbCrPositioning: centered, as the JPEG encoder samples.
        longField(exifDirectoryTag, 0),
    };
    addText(fields, 0x010f, metadata.make);
    addText(fields, 0x0110, metadata.model);
    addText(fields, 0x013b, metadata.artist);
    addText(fields, 0x8298, metadata.copyright);
    return fields;
}

std::vector<Field> exifFields(const OutputMetadata& metadata, PixelSize size, bool isSrgb)
{
    std::vector<Field> fields{
        bytesField(0x9000, QByteArrayLiteral("0232")), // ExifVersion
        bytesField(0x9101, QByteArray("\1\2\3\0", 4)), // ComponentsConfiguration: Y, Cb, Cr.
        bytesField(0xa000, QByteArrayLiteral("0100")), // FlashpixVersion
        shortField(0xa001, isSrgb ? 1 : 0xffff),       // ColorSpace
        longField(0xa002, std::uint32_t(size.width)),  // PixelXDimension
        longField(0xa003, std::uint32_t(size.height)), // PixelYDimension
    };
    addText(fields, 0x9003, metadata.dateTimeOriginal);
    return fields;
}

} // namespace

QByteArray makeExifBlock(const OutputMetadata& metadata, PixelSize size, bool isSrgb)
{
    QByteArray block("II*\0", 4);
    const std::uint32_t mainAt = 8;
    append(block, mainAt);

    // The length of the first directory does not depend on the offset in it, so it is laid out twice.
    std::vector<Field> fields = mainFields(metadata);
    const auto exifAt = mainAt + std::uint32_t(directory(fields, mainAt).size());
    *std::ranges::find(fields, exifDirectoryTag, &Field::tag) = longField(exifDirectoryTag, exifAt);
    block += directory(std::move(fields), mainAt);
    block += directory(exifFields(metadata, size, isSrgb), exifAt);
    return block;
}

} // namespace ferrow
