// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/PixelSize.h"

#include "Platform/Base/Localization.h"

#include <QHashFunctions>

namespace ferrow {

double PixelSize::aspectRatio() const
{
    return height == 0 ? 0 : double(width) / double(height);
}

QString PixelSize::formatted() const
{
    return Localization::number(width) + QStringLiteral(" × ") + Localization::number(height);
}

} // namespace ferrow

std::size_t std::hash<ferrow::PixelSize>::operator()(const ferrow::PixelSize& size) const noexcept
{
    return qHashMulti(0, size.width, size.height);
}
