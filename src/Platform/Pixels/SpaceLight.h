// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/LightEncoding.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ferrow {

/// What light an RGB space's levels of 8 bits stand for, and back. A space that tables describe is taken to have the
/// curve of sRGB. For the .cpp files of this folder alone.
class SpaceLight {
public:
    /// Throws std::bad_alloc.
    explicit SpaceLight(const ColorProfile& space);

    [[nodiscard]] float light(std::size_t channel, std::uint8_t level) const { return light_[channel][level]; }
    [[nodiscard]] const LightEncoding& encoding() const { return encoding_; }

private:
    struct Curves {
        explicit Curves(const ColorProfile& space);

        LittleCms::Context context;
        LittleCms::Profile profile;
        LittleCms::Curve sRGB;
        std::array<const cmsToneCurve*, 3> all{};
    };

    explicit SpaceLight(const Curves& curves);

    std::array<std::array<float, 256>, 3> light_{};
    LightEncoding encoding_;
};

} // namespace ferrow
