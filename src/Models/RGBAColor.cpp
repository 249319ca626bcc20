// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/RGBAColor.h"

#include <cmath>

namespace ferrow {

namespace {

QString byteValueText(double component)
{
    const double scaled = std::round(component * 255);
    // 2^63: what a 64-bit integer no longer holds. The comparison is false for NaN.
    if (!(std::abs(scaled) < 9223372036854775808.0))
        qFatal("A color component is not a finite number in range.");
    return QString::number(qint64(scaled));
}

} // namespace

QString RGBAColor::accessibilityDescription() const
{
    return QStringLiteral("red %1, green %2, blue %3")
        .arg(byteValueText(red), byteValueText(green), byteValueText(blue));
}

void feed(ValueHash& hash, const RGBAColor& color)
{
    for (const double component : {color.red, color.green, color.blue, color.alpha})
        feed(hash, component);
}

} // namespace ferrow
