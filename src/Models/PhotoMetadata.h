// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Models/ValueHash.h"

#include <QDateTime>
#include <QString>

#include <optional>
#include <variant>

namespace ferrow {

/// The values of PhotoMetadata beside the file name.
enum class MetadataField {
    cameraMake,
    cameraModel,
    lens,
    focalLength,
    aperture,
    shutterSpeed,
    iso,
    exposureCompensation,
    captureDate,
    artist,
    copyright,
    title,
    caption
};

/// One of them: missing, a text, or the capture date.
using MetadataValue = std::variant<std::monostate, QString, QDateTime>;

/// What is known of one photo, display-ready: numbers and units were formatted when the file was read. Absent means the
/// file did not say, or said nothing. There is no place for a position: it is never read.
struct PhotoMetadata {
    QString filename;
    std::optional<QDateTime> captureDate; ///< A point in time.
    std::optional<QString> cameraMake;
    std::optional<QString> cameraModel;
    std::optional<QString> lens;
    std::optional<QString> focalLength;
    std::optional<QString> aperture;
    std::optional<QString> shutterSpeed;
    std::optional<QString> iso;
    std::optional<QString> exposureCompensation;
    std::optional<QString> artist;
    std::optional<QString> copyright;
    std::optional<QString> title;
    std::optional<QString> caption;

    /// Make and model, trimmed, exact repeats dropped, joined by a space.
    [[nodiscard]] std::optional<QString> camera() const;
    /// Gregorian year of the capture date on the local calendar, without grouping.
    [[nodiscard]] std::optional<QString> captureYear() const;

    [[nodiscard]] MetadataValue value(MetadataField field) const;
    /// A value of another type than the field's leaves it missing.
    void setValue(MetadataField field, const MetadataValue& value);

    bool operator==(const PhotoMetadata&) const = default;
};

void feed(ValueHash& hash, const PhotoMetadata& metadata);

/// As captions' tokens are called.
template <>
struct CodedCases<MetadataField> {
    static constexpr std::array<CodedCase<MetadataField>, 13> table{
        {{MetadataField::cameraMake, u"cameraMake"},
         {MetadataField::cameraModel, u"cameraModel"},
         {MetadataField::lens, u"lens"},
         {MetadataField::focalLength, u"focalLength"},
         {MetadataField::aperture, u"aperture"},
         {MetadataField::shutterSpeed, u"shutterSpeed"},
         {MetadataField::iso, u"iso"},
         {MetadataField::exposureCompensation, u"exposureCompensation"},
         {MetadataField::captureDate, u"captureDate"},
         {MetadataField::artist, u"artist"},
         {MetadataField::copyright, u"copyright"},
         {MetadataField::title, u"title"},
         {MetadataField::caption, u"caption"}}};
};

} // namespace ferrow

template <>
struct std::hash<ferrow::PhotoMetadata> : ferrow::ValueHasher {
};
