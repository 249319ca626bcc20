// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/RenderRecipe.h"

#include "Models/BatchExportModels.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

/// Text between two braces' worth of template: a separator when it is exactly one, else literal text.
CaptionSegment::Content literal(const QString& text)
{
    if (const auto separator = fromRawValue<CaptionSeparator>(text))
        return *separator;
    return text;
}

QString byteValueText(double component)
{
    const double scaled = std::round(component * 255);
    // 2^63: what a 64-bit integer no longer holds. The comparison is false for NaN.
    if (!(std::abs(scaled) < 9223372036854775808.0))
        qFatal("A colour component is not a finite number in range.");
    return QString::number(static_cast<qint64>(scaled));
}

} // namespace

QString RGBAColor::accessibilityDescription() const
{
    return QStringLiteral("red %1, green %2, blue %3")
        .arg(byteValueText(red), byteValueText(green), byteValueText(blue));
}

QString suffix(BorderUnit unit)
{
    return unit == BorderUnit::pixels ? QStringLiteral("px") : QStringLiteral("%");
}

QString displayName(MetadataToken token)
{
    switch (token) {
    case MetadataToken::filename:
        return QStringLiteral("Filename");
    case MetadataToken::captureDate:
        return QStringLiteral("Capture Date");
    case MetadataToken::camera:
        return QStringLiteral("Camera");
    case MetadataToken::cameraMake:
        return QStringLiteral("Camera Make");
    case MetadataToken::cameraModel:
        return QStringLiteral("Camera Model");
    case MetadataToken::lens:
        return QStringLiteral("Lens");
    case MetadataToken::focalLength:
        return QStringLiteral("Focal Length");
    case MetadataToken::aperture:
        return QStringLiteral("Aperture");
    case MetadataToken::shutterSpeed:
        return QStringLiteral("Shutter Speed");
    case MetadataToken::iso:
        return QStringLiteral("ISO");
    case MetadataToken::exposureCompensation:
        return QStringLiteral("Exposure Compensation");
    case MetadataToken::artist:
        return QStringLiteral("Artist");
    case MetadataToken::copyright:
        return QStringLiteral("Copyright");
    case MetadataToken::title:
        return QStringLiteral("Title");
    case MetadataToken::caption:
        return QStringLiteral("Caption");
    case MetadataToken::year:
        return QStringLiteral("Year");
    }
    return {};
}

QString templateValue(MetadataToken token)
{
    return u'{' + rawValue(token) + u'}';
}

QString displayName(CaptionSeparator separator)
{
    switch (separator) {
    case CaptionSeparator::middleDot:
        return QStringLiteral("Middle dot  \u00B7");
    case CaptionSeparator::verticalBar:
        return QStringLiteral("Vertical bar  |");
    case CaptionSeparator::emDash:
        return QStringLiteral("Em dash  \u2014");
    case CaptionSeparator::lineBreak:
        return QStringLiteral("Line break");
    }
    return {};
}

QString chipLabel(CaptionSeparator separator)
{
    return separator == CaptionSeparator::lineBreak ? QStringLiteral("\u21B5") : rawValue(separator).trimmed();
}

const std::vector<CaptionSegment>& CaptionSegment::defaultCaption()
{
    static const std::vector<CaptionSegment> segments{
        {.content = MetadataToken::camera}, {.content = CaptionSeparator::middleDot}, {.content = MetadataToken::lens}};
    return segments;
}

std::vector<CaptionSegment> CaptionSegment::parse(const QString& captionTemplate)
{
    std::vector<CaptionSegment> segments;
    const auto append = [&](Content content) { segments.push_back({.content = std::move(content)}); };

    qsizetype position = 0;
    while (position < captionTemplate.size()) {
        const qsizetype open = captionTemplate.indexOf(u'{', position);
        const qsizetype literalEnd = open < 0 ? captionTemplate.size() : open;
        if (literalEnd > position)
            append(literal(captionTemplate.mid(position, literalEnd - position)));
        if (open < 0)
            break;

        const qsizetype close = captionTemplate.indexOf(u'}', open);
        if (close < 0) {
            append(captionTemplate.mid(open));
            break;
        }
        if (const auto token =
                fromRawValue<MetadataToken>(QStringView(captionTemplate).mid(open + 1, close - open - 1)))
            append(*token);
        else
            append(captionTemplate.mid(open, close - open + 1));
        position = close + 1;
    }
    return segments;
}

QString CaptionSegment::templateValue() const
{
    if (const auto* text = std::get_if<QString>(&content))
        return *text;
    if (const auto* token = std::get_if<MetadataToken>(&content))
        return ferrow::templateValue(*token);
    return rawValue(std::get<CaptionSeparator>(content));
}

bool isInBorder(CaptionPosition position)
{
    return position >= CaptionPosition::borderTopLeft;
}

LogoConfiguration LogoConfiguration::placeholder()
{
    return {.asset = {.id = QUuid::createUuid(), .displayName = QStringLiteral("Logo"), .managedFilename = {}}};
}

double RenderRecipe::borderWidthFor(PixelSize size) const
{
    const double width = std::max(borderWidth, 0.0);
    return borderUnit == BorderUnit::pixels ? width : width * static_cast<double>(size.shorterSide()) / 100;
}

void RenderRecipe::convertBorder(BorderUnit unit, PixelSize size)
{
    if (unit == borderUnit)
        return;
    const double pixels = borderWidthFor(size);
    const auto shorterSide = static_cast<double>(size.shorterSide());
    borderUnit = unit;
    if (unit == BorderUnit::pixels)
        borderWidth = pixels;
    else
        borderWidth = shorterSide < 1 ? 0 : pixels / shorterSide * 100;
}

QString RenderRecipe::captionTemplate() const
{
    QString text;
    for (const CaptionSegment& segment : captionSegments)
        text += segment.templateValue();
    return text;
}

void RenderRecipe::setCaptionTemplate(const QString& captionTemplate)
{
    captionSegments = CaptionSegment::parse(captionTemplate);
}

const RenderRecipe& RenderRecipe::resolve(RecipeScope scope, const std::optional<FileUrl>& photoID,
                                          const RenderRecipe& batch,
                                          const std::unordered_map<FileUrl, RenderRecipe>& perPhoto)
{
    if (scope != RecipeScope::selected || !photoID)
        return batch;
    const auto own = perPhoto.find(*photoID);
    return own == perPhoto.end() ? batch : own->second;
}

QString filenameExtension(ExportFormat format)
{
    return format == ExportFormat::jpeg ? QStringLiteral("jpg") : rawValue(format).toLower();
}

QString contentType(ExportFormat format)
{
    return QStringLiteral("image/") + rawValue(format).toLower();
}

bool supportsQuality(ExportFormat format)
{
    return format == ExportFormat::jpeg || format == ExportFormat::heic;
}

void feed(ValueHash& hash, const RGBAColor& color)
{
    for (const double component : {color.red, color.green, color.blue, color.alpha})
        feed(hash, component);
}

void feed(ValueHash& hash, const CaptionSegment& segment)
{
    feed(hash, segment.id);
    feed(hash, static_cast<std::int64_t>(segment.content.index()));
    std::visit([&](const auto& content) { feed(hash, content); }, segment.content);
}

void feed(ValueHash& hash, const LogoAssetReference& asset)
{
    feed(hash, asset.id);
    feed(hash, asset.displayName);
    feed(hash, asset.managedFilename);
}

void feed(ValueHash& hash, const LogoConfiguration& logo)
{
    feed(hash, logo.asset);
    feed(hash, logo.isEnabled);
    feed(hash, logo.position);
    for (const double number : {logo.widthPercent, logo.horizontalPadding, logo.verticalPadding, logo.opacity})
        feed(hash, number);
}

void feed(ValueHash& hash, const RenderRecipe& recipe)
{
    feed(hash, recipe.borderUnit);
    feed(hash, recipe.borderWidth);
    feed(hash, recipe.borderColor);
    feed(hash, recipe.captionEnabled);
    feed(hash, static_cast<std::int64_t>(recipe.captionSegments.size()));
    for (const CaptionSegment& segment : recipe.captionSegments)
        feed(hash, segment);
    feed(hash, recipe.captionPosition);
    feed(hash, recipe.captionFont);
    feed(hash, recipe.captionFontSize);
    feed(hash, recipe.captionColor);
    feed(hash, recipe.captionAlignment);
    for (const double number :
         {recipe.captionLineSpacing, recipe.captionPadding, recipe.captionVerticalPadding, recipe.captionOpacity})
        feed(hash, number);
    feed(hash, recipe.logo);
    feed(hash, recipe.outputColorProfile);
}

void feed(ValueHash& hash, const ExportSettings& settings)
{
    feed(hash, settings.format);
    feed(hash, settings.quality);
}

} // namespace ferrow
