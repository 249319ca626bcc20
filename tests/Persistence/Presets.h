// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetModels.h"

namespace ferrow::test {

/// A payload in which no field has the value that anything starts with.
inline PresetPayload oddPayload()
{
    const LogoAssetReference asset{QUuid::fromString(QStringLiteral("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0")),
                                   QStringLiteral("Lögo"), QStringLiteral("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0.png")};
    return {
        .borderUnit = BorderUnit::percent,
        .borderWidth = 2.5,
        .borderColor = {0.1, 0.2, 0.3, 0.4},
        .captionEnabled = false,
        .captionTemplate = QStringLiteral("{title} · „x“\n{year}"),
        .captionPosition = CaptionPosition::imageCenterLeft,
        .captionFont = CaptionFont::serif,
        .captionFontSize = 31.25,
        .captionColor = {0.5, 0.6, 0.7, 0.8},
        .captionAlignment = CaptionAlignment::center,
        .captionLineSpacing = -1,
        .captionPadding = 1e-9,
        .captionVerticalPadding = 12345678.5,
        .captionOpacity = 1.0 / 3,
        .logo = LogoConfiguration{asset, false, CaptionPosition::borderTopLeft, 7, 8, 9, 0.25},
        .outputColorProfile = OutputColorProfile::displayP3,
        .exportFormat = ExportFormat::heic,
        .exportQuality = 0.7,
        .destinationMode = ExportDestinationMode::sourceSubfolder,
        .sourceSubfolderName = QStringLiteral("Rahmen"),
        .filenameTemplate = QStringLiteral("{filename}-x"),
        .collisionRule = CollisionRule::skip,
    };
}

} // namespace ferrow::test
