// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/Border.h"

#include <algorithm>

namespace ferrow {

namespace {

double pixels(BorderUnit unit, double width, PixelSize size)
{
    const double length = std::max(width, 0.0);
    return unit == BorderUnit::pixels ? length : length * double(size.shorterSide()) / 100;
}

} // namespace

QString suffix(BorderUnit unit)
{
    return unit == BorderUnit::pixels ? QStringLiteral("px") : QStringLiteral("%");
}

SideLengths Border::around(PixelSize size) const
{
    const double everySide = pixels(unit, width, size);
    return {everySide, everySide, everySide, everySide};
}

void Border::convert(BorderUnit to, PixelSize size)
{
    if (to == unit)
        return;
    const double length = pixels(unit, width, size);
    const auto shorterSide = double(size.shorterSide());
    unit = to;
    if (to == BorderUnit::pixels)
        width = length;
    else
        width = shorterSide < 1 ? 0 : length / shorterSide * 100;
}

void feed(ValueHash& hash, const Border& border)
{
    feed(hash, border.unit);
    feed(hash, border.width);
    feed(hash, border.color);
}

} // namespace ferrow
