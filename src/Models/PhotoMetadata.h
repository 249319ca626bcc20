// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ValueHash.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace ferrow {

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

    bool operator==(const PhotoMetadata&) const = default;
};

void feed(ValueHash& hash, const PhotoMetadata& metadata);

} // namespace ferrow

template <>
struct std::hash<ferrow::PhotoMetadata> : ferrow::ValueHasher {
};
