// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/PhotoMetadata.h"

#include <QStringList>

namespace ferrow {

std::optional<QString> PhotoMetadata::camera() const
{
    QStringList parts;
    for (const auto& part : {cameraMake, cameraModel})
        if (part && !part->trimmed().isEmpty())
            parts.append(part->trimmed());
    parts.removeDuplicates();
    if (parts.isEmpty())
        return std::nullopt;
    return parts.join(u' ');
}

std::optional<QString> PhotoMetadata::captureYear() const
{
    if (!captureDate || !captureDate->isValid())
        return std::nullopt;
    return QString::number(captureDate->toLocalTime().date().year());
}

void feed(ValueHash& hash, const PhotoMetadata& metadata)
{
    feed(hash, metadata.filename);
    feed(hash, metadata.captureDate.has_value());
    if (metadata.captureDate)
        feed(hash, std::int64_t{metadata.captureDate->toMSecsSinceEpoch()});
    for (const auto* field : {&metadata.cameraMake, &metadata.cameraModel, &metadata.lens, &metadata.focalLength,
                              &metadata.aperture, &metadata.shutterSpeed, &metadata.iso, &metadata.exposureCompensation,
                              &metadata.artist, &metadata.copyright, &metadata.title, &metadata.caption})
        feed(hash, *field);
}

} // namespace ferrow
