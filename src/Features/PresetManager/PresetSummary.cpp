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

QString borderText(const PresetPayload& payload)
{
    const int fractionDigits = payload.borderUnit == BorderUnit::percent ? 1 : 0;
    return QStringLiteral("%1 %2").arg(Localization::number(payload.borderWidth, fractionDigits),
                                       suffix(payload.borderUnit));
}

} // namespace

QString payloadSummary(const PresetPayload& payload)
{
    return QStringList{
        borderText(payload), payload.captionEnabled ? QStringLiteral("caption") : QStringLiteral("no caption"),
        payload.logo ? QStringLiteral("logo") : QStringLiteral("no logo"), rawValue(payload.exportFormat)}
        .join(QStringLiteral(" · "));
}

double drawnBorderWidth(const PresetPayload& payload, double side)
{
    if (!(payload.borderWidth > 0))
        return 0;
    const double share =
        payload.borderUnit == BorderUnit::percent ? payload.borderWidth / 100 : payload.borderWidth / usualShortSide;
    return side * std::clamp(leastShare + share * exaggeration, leastShare, greatestShare);
}

} // namespace ferrow
