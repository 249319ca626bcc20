// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/RenderRecipe.h"

#include <algorithm>

namespace ferrow {

namespace {

/// Where no caption is: in the row of `near` where there is such a place, else from the bottom upwards; there are more
/// places than captions.
CaptionPosition freePlace(const std::vector<Caption>& captions, CaptionPosition near)
{
    constexpr int columns = 3;
    constexpr int leftRightCenter[columns] = {0, 2, 1};
    const int rows[] = {int(near) / columns, 4, 3, 2, 1, 0};
    for (const int row : rows)
        for (const int column : leftRightCenter) {
            const auto place = static_cast<CaptionPosition>(row * columns + column);
            if (std::ranges::find(captions, place, &Caption::position) == captions.end())
                return place;
        }
    return near;
}

} // namespace

LogoConfiguration LogoConfiguration::placeholder()
{
    return {.asset = {.id = QUuid::createUuid(), .displayName = QStringLiteral("Logo"), .managedFilename = {}}};
}

bool RenderRecipe::showsCaption() const
{
    return std::ranges::any_of(captions, [](const Caption& caption) { return caption.isEnabled; });
}

Caption RenderRecipe::captionLike(std::size_t index) const
{
    Caption caption = captions[index];
    caption.isEnabled = true;
    caption.segments.clear();
    caption.position = freePlace(captions, caption.position);
    caption.alignment = alignmentAt(caption.position);
    return caption;
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

std::vector<BitDepth> depthsOf(ExportFormat format)
{
    switch (format) {
    case ExportFormat::jpeg:
        break;
    case ExportFormat::png:
    case ExportFormat::tiff:
        return {BitDepth::eight, BitDepth::sixteen};
    case ExportFormat::heic:
        return {BitDepth::eight, BitDepth::ten};
    }
    return {BitDepth::eight};
}

BitDepth ExportSettings::writtenDepth() const
{
    const std::vector<BitDepth> depths = depthsOf(format);
    return std::ranges::find(depths, depth) == depths.end() ? BitDepth::eight : depth;
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
    feed(hash, recipe.border);
    feed(hash, recipe.captions);
    feed(hash, recipe.logo);
    feed(hash, recipe.outputColorProfile);
}

void feed(ValueHash& hash, const ExportSettings& settings)
{
    feed(hash, settings.format);
    feed(hash, settings.quality);
    feed(hash, settings.size);
    feed(hash, settings.checksWritten);
    feed(hash, settings.keepsPhotoData);
    feed(hash, settings.depth);
}

} // namespace ferrow
