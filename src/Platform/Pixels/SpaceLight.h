// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/LightEncoding.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace ferrow {

/// The curves of an RGB space: those of sRGB for one that tables describe. For the .cpp files of this folder alone,
/// like what follows.
struct SpaceCurves {
    /// Throws std::bad_alloc.
    explicit SpaceCurves(const ColorProfile& space);

    LittleCms::Context context;
    LittleCms::Profile profile;
    LittleCms::Curve sRGB;
    std::array<const cmsToneCurve*, 3> all{};
};

/// What light the levels of an RGB space stand for, of 8 or 16 bits, and back.
template <typename Component>
class SpaceLight {
public:
    /// Throws std::bad_alloc.
    explicit SpaceLight(const ColorProfile& space) : SpaceLight(SpaceCurves(space)) {}

    [[nodiscard]] float light(std::size_t channel, Component level) const { return light_[channel][level]; }
    [[nodiscard]] const LightEncoding<Component>& encoding() const { return encoding_; }

private:
    static constexpr std::size_t most = std::numeric_limits<Component>::max();

    explicit SpaceLight(const SpaceCurves& curves) : encoding_(curves.all)
    {
        for (std::size_t channel = 0; channel < light_.size(); ++channel)
            for (std::size_t level = 0; level <= most; ++level)
                light_[channel][level] = float(preciseLightOf(curves.all[channel], double(level) / most));
    }

    std::array<std::array<float, most + 1>, 3> light_{};
    LightEncoding<Component> encoding_;
};

} // namespace ferrow
