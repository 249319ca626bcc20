// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

namespace ferrow {

struct PropertyValue;

/// Text keys to values, in the order they were found: iteration order is part of the meaning (the default entry of a
/// language alternative comes first).
class PropertyMap {
public:
    using Entry = std::pair<QString, PropertyValue>;

    PropertyMap();
    PropertyMap(std::initializer_list<Entry> entries);
    PropertyMap(const PropertyMap&);
    PropertyMap(PropertyMap&&) noexcept;
    PropertyMap& operator=(const PropertyMap&);
    PropertyMap& operator=(PropertyMap&&) noexcept;
    ~PropertyMap();

    [[nodiscard]] bool isEmpty() const;
    /// The first value under `key`; nothing when there is none. Valid until the map changes.
    [[nodiscard]] const PropertyValue* find(QStringView key) const;
    /// Replaces the value under `key`, or appends it.
    void set(const QString& key, PropertyValue value);
    [[nodiscard]] const std::vector<Entry>& entries() const;

    bool operator==(const PropertyMap& other) const;

private:
    std::vector<Entry> entries_;
};

using TextList = std::vector<QString>;
using NumberList = std::vector<double>;

/// One value: a number, a text, a list of either, or a map.
struct PropertyValue {
    std::variant<double, QString, NumberList, TextList, PropertyMap> value;

    bool operator==(const PropertyValue& other) const;
};

/// Keys of the sub-maps and of what they hold: only these are ever read, so position data cannot get in.
namespace PropertyKey {
inline const QString orientation = QStringLiteral("Orientation"); ///< Top level, number. Never set for HEIF.
inline const QString exif = QStringLiteral("{Exif}");
inline const QString tiff = QStringLiteral("{TIFF}");
inline const QString iptc = QStringLiteral("{IPTC}");

inline const QString tiffMake = QStringLiteral("Make");
inline const QString tiffModel = QStringLiteral("Model");
inline const QString tiffArtist = QStringLiteral("Artist");
inline const QString tiffCopyright = QStringLiteral("Copyright");
inline const QString tiffImageDescription = QStringLiteral("ImageDescription");
inline const QString tiffDateTime = QStringLiteral("DateTime");

inline const QString exifLensModel = QStringLiteral("LensModel");
inline const QString exifFocalLength = QStringLiteral("FocalLength");
inline const QString exifFNumber = QStringLiteral("FNumber");
inline const QString exifExposureTime = QStringLiteral("ExposureTime");
inline const QString exifISOSpeedRatings = QStringLiteral("ISOSpeedRatings");
inline const QString exifExposureBiasValue = QStringLiteral("ExposureBiasValue");
inline const QString exifDateTimeOriginal = QStringLiteral("DateTimeOriginal");
inline const QString exifDateTimeDigitized = QStringLiteral("DateTimeDigitized");

inline const QString iptcByline = QStringLiteral("Byline");
inline const QString iptcCopyrightNotice = QStringLiteral("CopyrightNotice");
inline const QString iptcObjectName = QStringLiteral("ObjectName");
inline const QString iptcCaptionAbstract = QStringLiteral("Caption/Abstract");
} // namespace PropertyKey

/// What a file says about its picture: the property map with its {Exif}, {TIFF} and {IPTC} sub-maps, and the XMP
/// values found under "dc:title", "dc:description", "photoshop:DateCreated", "aux:Lens" and "exifEX:LensModel".
struct ImageProperties {
    PropertyMap image;
    PropertyMap xmp;

    bool operator==(const ImageProperties&) const = default;
};

} // namespace ferrow
