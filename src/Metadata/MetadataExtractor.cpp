// SPDX-License-Identifier: GPL-3.0-or-later
#include "Metadata/MetadataExtractor.h"

#include "Platform/Base/Localization.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>
#include <QTimeZone>

#include <cmath>
#include <span>
#include <vector>

namespace ferrow::MetadataExtractor {

namespace {

/// Limits on hostile texts: nesting of maps, and user-perceived characters of a field.
constexpr int maximumDepth = 4;
constexpr qsizetype maximumCharacters = 4096;

using Candidates = std::span<const PropertyValue* const>;

/// An absent or mistyped sub-map is an empty one.
const PropertyMap& dictionary(const PropertyMap& properties, const QString& key)
{
    static const PropertyMap none;
    const PropertyValue* value = properties.find(key);
    const auto* map = value ? std::get_if<PropertyMap>(&value->value) : nullptr;
    return map ? *map : none;
}

QString cutToLimit(const QString& text)
{
    // No character is shorter than one unit.
    if (text.size() <= maximumCharacters)
        return text;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype end = 0;
    for (qsizetype count = 0; count < maximumCharacters; ++count) {
        const qsizetype next = finder.toNextBoundary();
        if (next < 0)
            return text;
        end = next;
    }
    return text.left(end);
}

std::optional<QString> firstString(Candidates candidates, int depth = 0)
{
    if (depth > maximumDepth)
        return std::nullopt;
    for (const PropertyValue* candidate : candidates) {
        if (!candidate)
            continue;
        if (const auto* text = std::get_if<QString>(&candidate->value)) {
            const QString trimmed = text->trimmed();
            if (!trimmed.isEmpty())
                return cutToLimit(trimmed);
        } else if (const auto* texts = std::get_if<TextList>(&candidate->value)) {
            if (!texts->empty() && !texts->front().isEmpty())
                return cutToLimit(texts->front());
        } else if (const auto* map = std::get_if<PropertyMap>(&candidate->value)) {
            std::vector<const PropertyValue*> values;
            for (const auto& entry : map->entries())
                values.push_back(&entry.second);
            return firstString(values, depth + 1);
        }
    }
    return std::nullopt;
}

std::optional<QString> firstString(std::initializer_list<const PropertyValue*> candidates)
{
    return firstString(Candidates(candidates.begin(), candidates.size()));
}

std::optional<double> number(const PropertyMap& map, const QString& key)
{
    const PropertyValue* value = map.find(key);
    const auto* number = value ? std::get_if<double>(&value->value) : nullptr;
    return number ? std::optional(*number) : std::nullopt;
}

QString format(double value, QLatin1StringView suffix = {})
{
    return Localization::number(value, std::round(value) == value ? 0 : 1) + suffix;
}

/// Absent when there is no number.
template <typename Format>
std::optional<QString> formatted(const std::optional<double>& value, Format format)
{
    return value ? std::optional<QString>(format(*value)) : std::nullopt;
}

bool fitsInteger(double value)
{
    return value > -0x1p63 && value < 0x1p63;
}

std::optional<QString> formatExposureTime(double seconds)
{
    if (!(seconds > 0))
        return QStringLiteral("0 s");
    if (seconds >= 1)
        return format(seconds, QLatin1StringView(" s"));
    const double reciprocal = std::round(1 / seconds);
    // No shutter is that fast, and a 64-bit number does not hold it.
    if (!fitsInteger(reciprocal))
        return std::nullopt;
    return QStringLiteral("1/%1 s").arg(QString::number(qint64(reciprocal)));
}

std::optional<QString> isoValue(const PropertyMap& exif)
{
    const PropertyValue* value = exif.find(PropertyKey::exifISOSpeedRatings);
    const auto* numbers = value ? std::get_if<NumberList>(&value->value) : nullptr;
    if (!numbers || numbers->empty() || !fitsInteger(numbers->front()))
        return std::nullopt;
    return QString::number(qint64(numbers->front()));
}

QString formatExposureBias(double stops)
{
    return (stops > 0 ? QStringLiteral("+") : QString()) + format(stops, QLatin1StringView(" EV"));
}

std::optional<QDateTime> captureDate(const PropertyMap& exif, const PropertyMap& tiff, const PropertyMap& xmp)
{
    const auto text =
        firstString({exif.find(PropertyKey::exifDateTimeOriginal), exif.find(PropertyKey::exifDateTimeDigitized),
                     tiff.find(PropertyKey::tiffDateTime), xmp.find(u"photoshop:DateCreated")});
    return text ? parsedDate(*text) : std::nullopt;
}

} // namespace

std::optional<QDateTime> parsedDate(const QString& text)
{
    static const QRegularExpression exifForm(
        QStringLiteral("\\A(\\d{4}):(\\d\\d):(\\d\\d) (\\d\\d):(\\d\\d):(\\d\\d)\\z"));
    static const QRegularExpression isoForm(
        QStringLiteral("\\A(\\d{4})-(\\d\\d)-(\\d\\d)T(\\d\\d):(\\d\\d):(\\d\\d)(Z|([+-])(\\d\\d):([0-5]\\d))?\\z"));
    QRegularExpressionMatch match = exifForm.match(text);
    if (!match.hasMatch())
        match = isoForm.match(text);
    if (!match.hasMatch())
        return std::nullopt;

    const auto part = [&](int group) { return match.capturedView(group).toInt(); };
    const QDate date(part(1), part(2), part(3));
    const QTime time(part(4), part(5), part(6));
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    if (match.capturedView(7).isEmpty())
        return Localization::localTime(date, time);
    const int offset = (part(9) * 60 + part(10)) * 60 * (match.capturedView(8) == u"-" ? -1 : 1);
    return QDateTime(date, time, QTimeZone::utc()).addSecs(-offset).toLocalTime();
}

PhotoMetadata extract(const PropertyMap& properties, const PropertyMap& xmp, const QString& filename)
{
    const PropertyMap& exif = dictionary(properties, PropertyKey::exif);
    const PropertyMap& tiff = dictionary(properties, PropertyKey::tiff);
    const PropertyMap& iptc = dictionary(properties, PropertyKey::iptc);

    PhotoMetadata metadata;
    metadata.filename = filename;
    metadata.captureDate = captureDate(exif, tiff, xmp);
    metadata.cameraMake = firstString({tiff.find(PropertyKey::tiffMake)});
    metadata.cameraModel = firstString({tiff.find(PropertyKey::tiffModel)});
    metadata.lens =
        firstString({exif.find(PropertyKey::exifLensModel), xmp.find(u"aux:Lens"), xmp.find(u"exifEX:LensModel")});
    metadata.focalLength = formatted(number(exif, PropertyKey::exifFocalLength),
                                     [](double value) { return format(value, QLatin1StringView(" mm")); });
    metadata.aperture = formatted(number(exif, PropertyKey::exifFNumber),
                                  [](double value) { return QStringLiteral("f/") + format(value); });
    if (const auto seconds = number(exif, PropertyKey::exifExposureTime))
        metadata.shutterSpeed = formatExposureTime(*seconds);
    metadata.iso = isoValue(exif);
    metadata.exposureCompensation = formatted(number(exif, PropertyKey::exifExposureBiasValue), formatExposureBias);
    metadata.artist = firstString({tiff.find(PropertyKey::tiffArtist), iptc.find(PropertyKey::iptcByline)});
    metadata.copyright =
        firstString({tiff.find(PropertyKey::tiffCopyright), iptc.find(PropertyKey::iptcCopyrightNotice)});
    metadata.title = firstString({iptc.find(PropertyKey::iptcObjectName), xmp.find(u"dc:title")});
    metadata.caption = firstString({iptc.find(PropertyKey::iptcCaptionAbstract),
                                    tiff.find(PropertyKey::tiffImageDescription), xmp.find(u"dc:description")});
    return metadata;
}

} // namespace ferrow::MetadataExtractor
