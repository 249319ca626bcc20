// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/ExifReader.h"

#include "Platform/Properties/MetadataText.h"

#include <array>
#include <cmath>

namespace ferrow {

namespace {

constexpr std::uint16_t orientationTag = 0x0112;
constexpr std::uint16_t exifDirectoryTag = 0x8769;

/// Room for every count that a camera writes for a single number or a list of sensitivities.
constexpr std::size_t maximumNumbers = 16;

struct ListedTag {
    std::uint16_t tag;
    const QString& key;
};

const std::array tiffTexts{
    ListedTag{0x010F, PropertyKey::tiffMake},
    ListedTag{0x0110, PropertyKey::tiffModel},
    ListedTag{0x013B, PropertyKey::tiffArtist},
    ListedTag{0x8298, PropertyKey::tiffCopyright},
    ListedTag{0x010E, PropertyKey::tiffImageDescription},
    ListedTag{0x0132, PropertyKey::tiffDateTime},
};

const std::array exifTexts{
    ListedTag{0xA434, PropertyKey::exifLensModel},
    ListedTag{0x9003, PropertyKey::exifDateTimeOriginal},
    ListedTag{0x9004, PropertyKey::exifDateTimeDigitized},
};

const std::array exifNumbers{
    ListedTag{0x920A, PropertyKey::exifFocalLength},
    ListedTag{0x829D, PropertyKey::exifFNumber},
    ListedTag{0x829A, PropertyKey::exifExposureTime},
    ListedTag{0x9204, PropertyKey::exifExposureBiasValue},
};

constexpr std::uint16_t sensitivityTag = 0x8827;

/// The finite numbers of a tag: a rational without a denominator says nothing.
NumberList finiteNumbers(const TiffStructure& structure, const TiffEntry& entry)
{
    NumberList numbers = structure.numbers(entry, maximumNumbers);
    std::erase_if(numbers, [](double number) { return !std::isfinite(number); });
    return numbers;
}

void readTexts(const TiffStructure& structure, const TiffDirectory& directory, std::span<const ListedTag> listed,
               PropertyMap& into)
{
    for (const auto& [tag, key] : listed) {
        const TiffEntry* entry = directory.find(tag);
        // Some cameras declare their texts as plain bytes.
        if (!entry ||
            (entry->type != TiffType::ascii && entry->type != TiffType::byte && entry->type != TiffType::undefined))
            continue;
        const QString text = MetadataText::decoded(structure.bytes(*entry, MetadataText::maximumLength + 1));
        if (!text.isEmpty())
            into.set(key, {text});
    }
}

PropertyMap readExifDirectory(const TiffStructure& structure, const TiffDirectory& directory)
{
    PropertyMap exif;
    readTexts(structure, directory, exifTexts, exif);
    for (const auto& [tag, key] : exifNumbers) {
        const TiffEntry* entry = directory.find(tag);
        if (!entry)
            continue;
        const NumberList numbers = finiteNumbers(structure, *entry);
        if (!numbers.empty())
            exif.set(key, {numbers.front()});
    }
    if (const TiffEntry* entry = directory.find(sensitivityTag)) {
        NumberList numbers = finiteNumbers(structure, *entry);
        if (!numbers.empty())
            exif.set(PropertyKey::exifISOSpeedRatings, {std::move(numbers)});
    }
    return exif;
}

} // namespace

PropertyMap readExif(const TiffStructure& structure)
{
    PropertyMap image;
    const auto first = structure.firstDirectory();
    if (!first)
        return image;

    if (const TiffEntry* entry = first->find(orientationTag)) {
        const auto values = structure.integers(*entry, 1);
        if (!values.empty())
            image.set(PropertyKey::orientation, {double(values.front())});
    }
    PropertyMap tiff;
    readTexts(structure, *first, tiffTexts, tiff);
    if (!tiff.isEmpty())
        image.set(PropertyKey::tiff, {std::move(tiff)});
    if (const auto directory = structure.childDirectory(*first, exifDirectoryTag)) {
        PropertyMap exif = readExifDirectory(structure, *directory);
        if (!exif.isEmpty())
            image.set(PropertyKey::exif, {std::move(exif)});
    }
    return image;
}

} // namespace ferrow
