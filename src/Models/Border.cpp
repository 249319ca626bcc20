// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/Border.h"

#include <algorithm>

namespace ferrow {

QString suffix(BorderUnit unit)
{
    return unit == BorderUnit::pixels ? QStringLiteral("px") : QStringLiteral("%");
}

double Length::pixels(PixelSize size) const
{
    const double length = std::max(value, 0.0);
    return unit == BorderUnit::pixels ? length : length * double(size.shorterSide()) / 100;
}

Length Length::converted(BorderUnit to, PixelSize size) const
{
    if (to == unit)
        return *this;
    const double length = pixels(size);
    if (to == BorderUnit::pixels)
        return {length, to};
    const auto shorterSide = double(size.shorterSide());
    return {shorterSide < 1 ? 0 : length / shorterSide * 100, to};
}

double FrameShape::ratioFor(PixelSize photo) const
{
    const double ratio = width / height;
    const bool liesOtherWay = (ratio > 1 && photo.width < photo.height) || (ratio < 1 && photo.width > photo.height);
    return turnsWithPhoto && liesOtherWay ? height / width : ratio;
}

SideLengths Border::around(PixelSize size) const
{
    const auto pixels = [&](double length) { return Length{length, unit}.pixels(size); };
    const SideLengths set = sides.value_or(SideLengths{width, width, width, width});
    return {pixels(set.top), pixels(set.right), pixels(set.bottom), pixels(set.left)};
}

void Border::convert(BorderUnit to, PixelSize size)
{
    const auto convertNumber = [&](double& length) { length = Length{length, unit}.converted(to, size).value; };
    convertNumber(width);
    if (sides)
        for (double* side : {&sides->top, &sides->right, &sides->bottom, &sides->left})
            convertNumber(*side);
    unit = to;
    if (line) {
        line->thickness = line->thickness.converted(to, size);
        line->distance = line->distance.converted(to, size);
    }
    // Without a radius there is nothing to convert, and the edge stays the default.
    if (photoEdge.cornerRadius.value != 0)
        photoEdge.cornerRadius = photoEdge.cornerRadius.converted(to, size);
}

void feed(ValueHash& hash, const SideLengths& lengths)
{
    for (const double length : {lengths.top, lengths.right, lengths.bottom, lengths.left})
        feed(hash, length);
}

void feed(ValueHash& hash, const Length& length)
{
    feed(hash, length.value);
    feed(hash, length.unit);
}

void feed(ValueHash& hash, const FrameShape& shape)
{
    feed(hash, shape.width);
    feed(hash, shape.height);
    feed(hash, shape.turnsWithPhoto);
    feed(hash, shape.balance);
}

void feed(ValueHash& hash, const BlurredBackground& background)
{
    feed(hash, background.blur);
    feed(hash, background.dim);
}

void feed(ValueHash& hash, const FrameLine& line)
{
    feed(hash, line.thickness);
    feed(hash, line.distance);
    feed(hash, line.color);
}

void feed(ValueHash& hash, const PhotoEdge& edge)
{
    feed(hash, edge.cornerRadius);
    feed(hash, edge.hasShadow);
}

void feed(ValueHash& hash, const Border& border)
{
    feed(hash, border.unit);
    feed(hash, border.width);
    feed(hash, border.color);
    feed(hash, border.sides);
    feed(hash, border.blurredBackground);
    feed(hash, border.shape);
    feed(hash, border.line);
    feed(hash, border.photoEdge);
}

} // namespace ferrow
