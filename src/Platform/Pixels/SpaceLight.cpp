// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/SpaceLight.h"

#include <new>
#include <optional>

namespace ferrow {

SpaceLight::Curves::Curves(const ColorProfile& space)
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

SpaceLight::SpaceLight(const ColorProfile& space) : SpaceLight(Curves(space)) {}

SpaceLight::SpaceLight(const Curves& curves) : encoding_(curves.all)
{
    for (std::size_t channel = 0; channel < light_.size(); ++channel)
        for (std::size_t level = 0; level < light_[channel].size(); ++level)
            light_[channel][level] = lightOf(curves.all[channel], double(level) / 255);
}

} // namespace ferrow
