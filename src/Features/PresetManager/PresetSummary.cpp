// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PresetManager/PresetSummary.h"

#include "Platform/Base/Localization.h"

#include <QStringList>

#include <algorithm>

namespace ferrow {

namespace {

/// A photo of 12 million pixels is about so high: borders in pixels are drawn as on one.
constexpr double usualShortSide = 3000;
constexpr double exaggeration = 2;
constexpr double leastShare = 0.04;
constexpr double greatestShare = 0.35;

QString borderText(const Border& border)
{
    const int fractionDigits = border.unit == BorderUnit::percent ? 1 : 0;
    return QStringLiteral("%1 %2").arg(Localization::number(border.width, fractionDigits), suffix(border.unit));
}

} // namespace

QString payloadSummary(const PresetPayload& payload)
{
    const RenderRecipe& recipe = payload.framing;
    return QStringList{borderText(recipe.border),
                       recipe.showsCaption() ? QStringLiteral("caption") : QStringLiteral("no caption"),
                       recipe.logo ? QStringLiteral("logo") : QStringLiteral("no logo"), rawValue(payload.exportFormat)}
        .join(QStringLiteral(" · "));
}

double drawnBorderWidth(const Border& border, double side)
{
    if (!(border.width > 0))
        return 0;
    const double share = border.unit == BorderUnit::percent ? border.width / 100 : border.width / usualShortSide;
    return side * std::clamp(leastShare + share * exaggeration, leastShare, greatestShare);
}

} // namespace ferrow
