// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/SpaceLight.h"

#include <new>
#include <optional>

namespace ferrow {

SpaceCurves::SpaceCurves(const ColorProfile& space)
    : context(space.icc().size()), profile(LittleCms::openProfile(context, space.icc())),
      sRGB(LittleCms::sRGBCurve(context))
{
    if (!sRGB)
        throw std::bad_alloc();
    const std::optional<MatrixProfile> matrix =
        profile ? matrixProfileOf(profile.get(), Way::toPictures) : std::nullopt;
    if (matrix)
        all = matrix->curves;
    else
        all.fill(sRGB.get());
}

} // namespace ferrow
