// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/PhotoMetadata.h"

#include <QStringList>

namespace ferrow {

namespace {

/// Null for the date, which is no text.
std::optional<QString> PhotoMetadata::*textMember(MetadataField field)
{
    switch (field) {
    case MetadataField::cameraMake:
        return &PhotoMetadata::cameraMake;
    case MetadataField::cameraModel:
        return &PhotoMetadata::cameraModel;
    case MetadataField::lens:
        return &PhotoMetadata::lens;
    case MetadataField::focalLength:
        return &PhotoMetadata::focalLength;
    case MetadataField::aperture:
        return &PhotoMetadata::aperture;
    case MetadataField::shutterSpeed:
        return &PhotoMetadata::shutterSpeed;
    case MetadataField::iso:
        return &PhotoMetadata::iso;
    case MetadataField::exposureCompensation:
        return &PhotoMetadata::exposureCompensation;
    case MetadataField::captureDate:
        return nullptr;
    case MetadataField::artist:
        return &PhotoMetadata::artist;
    case MetadataField::copyright:
        return &PhotoMetadata::copyright;
    case MetadataField::title:
        return &PhotoMetadata::title;
    case MetadataField::caption:
        return &PhotoMetadata::caption;
    }
    return nullptr;
}

template <typename T>
MetadataValue valueOf(const std::optional<T>& member)
{
    return member ? MetadataValue(*member) : MetadataValue();
}

template <typename T>
std::optional<T> memberOf(const MetadataValue& value)
{
    const T* held = std::get_if<T>(&value);
    return held ? std::optional(*held) : std::nullopt;
}

} // namespace

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

MetadataValue PhotoMetadata::value(MetadataField field) const
{
    const auto member = textMember(field);
    return member ? valueOf(this->*member) : valueOf(captureDate);
}

void PhotoMetadata::setValue(MetadataField field, const MetadataValue& value)
{
    if (const auto member = textMember(field))
        this->*member = memberOf<QString>(value);
    else
        captureDate = memberOf<QDateTime>(value);
}

void feed(ValueHash& hash, const PhotoMetadata& metadata)
{
    feed(hash, metadata.filename);
    feed(hash, metadata.captureDate.has_value());
    if (metadata.captureDate)
        feed(hash, std::int64_t{metadata.captureDate->toMSecsSinceEpoch()});
    for (const MetadataField field : allCases<MetadataField>())
        if (const auto member = textMember(field))
            feed(hash, metadata.*member);
}

} // namespace ferrow
