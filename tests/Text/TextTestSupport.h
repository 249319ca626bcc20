// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Text/TextFrame.h"

#include "Support/TestSupport.h"

#include <QFontDatabase>
#include <QRect>

#include <array>
#include <cmath>
#include <vector>

namespace ferrow::test {

using namespace Qt::StringLiterals;

inline constexpr int margin = 30;

inline std::array<int, 4> pixel(const Bitmap& bitmap, int x, int y)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(bitmap.row(y)) + x * 4;
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

/// Where something was drawn, in pixels of the box (without the margin).
inline QRect inkBounds(const Bitmap& bitmap)
{
    QRect bounds;
    for (int y = 0; y < bitmap.size().height; ++y)
        for (int x = 0; x < bitmap.size().width; ++x)
            if (pixel(bitmap, x, y)[3] >= 64)
                bounds |= QRect(x - margin, y - margin, 1, 1);
    return bounds;
}

inline QByteArray allBytes(const Bitmap& bitmap)
{
    QByteArray bytes;
    for (int y = 0; y < bitmap.size().height; ++y)
        bytes.append(reinterpret_cast<const char*>(bitmap.row(y)), bitmap.size().width * 4);
    return bytes;
}

inline TextStyle styleFor(const char* family, double size = 40)
{
    return {.families = FontFamilies::chainFor(QString::fromLatin1(family)), .pixelSize = size};
}

inline QSizeF sizeOf(const QString& text, const TextStyle& style, QSizeF constraint = {4'000, 4'000})
{
    return TextFrame(text, style).suggestedSize(constraint);
}

inline Bitmap drawBlack(const QString& text, const TextStyle& style, QSizeF box)
{
    return TextFrame(text, style).drawn(box, {}, margin, 0, 0, 0, 1);
}

} // namespace ferrow::test
