// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetModels.h"

namespace ferrow::test {

/// A payload in which no field has the value that anything starts with.
inline PresetPayload oddPayload()
{
    const LogoAssetReference asset{QUuid::fromString(QStringLiteral("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0")),
                                   QStringLiteral("Lögo"), QStringLiteral("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0.png")};
    const Caption caption{
        .isEnabled = false,
        .segments = CaptionSegment::parse(QStringLiteral("{title} · „x“\n{year}")),
        .position = CaptionPosition::imageCenterLeft,
        .font = CaptionFont::serif,
        .fontSize = {31.25},
        .color = {0.5, 0.6, 0.7, 0.8},
        .alignment = CaptionAlignment::center,
        .lineSpacing = {-1},
        .padding = {1e-9},
        .verticalPadding = {12345678.5},
        .opacity = 1.0 / 3,
    };
    const RenderRecipe recipe{
        .border = {BorderUnit::percent, 2.5, {0.1, 0.2, 0.3, 0.4}},
        .captions = {caption},
        .logo = LogoConfiguration{asset, false, CaptionPosition::borderTopLeft, 7, 8, 9, 0.25},
        .outputColorProfile = OutputColorProfile::displayP3,
    };
    const BatchExportConfiguration configuration{
        .destinationMode = ExportDestinationMode::sourceSubfolder,
        .sourceSubfolderName = QStringLiteral("Rahmen"),
        .filenameTemplate = QStringLiteral("{filename}-x"),
        .collisionRule = CollisionRule::skip,
    };
    return PresetPayload::make(recipe, {ExportFormat::heic, 0.7}, configuration);
}

} // namespace ferrow::test
