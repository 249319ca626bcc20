// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/RenderRecipe.h"

#include <algorithm>

namespace ferrow {

LogoConfiguration LogoConfiguration::placeholder()
{
    return {.asset = {.id = QUuid::createUuid(), .displayName = QStringLiteral("Logo"), .managedFilename = {}}};
}

bool RenderRecipe::showsCaption() const
{
    return std::ranges::any_of(captions, [](const Caption& caption) { return caption.isEnabled; });
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
}

} // namespace ferrow
