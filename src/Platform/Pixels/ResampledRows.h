// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/Bitmap.h"
#include "Platform/Pixels/FilterAxis.h"

#include <cstddef>
#include <type_traits>

/// The two ways of running the filter over a picture. For the .cpp files of this folder alone.
namespace ferrow {

/// Calls `work` with the number of channels as a type, so that loops over them are laid out for it.
template <typename Work>
void withChannels(PixelFormat format, const Work& work)
{
    switch (format.channels()) {
    case 1:
        return work(std::integral_constant<std::size_t, 1>());
    case 2:
        return work(std::integral_constant<std::size_t, 2>());
    case 3:
        return work(std::integral_constant<std::size_t, 3>());
    case 4:
        return work(std::integral_constant<std::size_t, 4>());
    default:
        break;
    }
}

/// In 16-bit fixed point, for pixels that can be added up as they are: opaque or premultiplied. Within a level of the
/// other way and several times as fast. Both axes must suit fixed point.
void resampleFixed(const Bitmap& source, const FilterAxis& across, const FilterAxis& down, Bitmap& result);

/// In floating point, for any of the formats and any ratio. `result` has the source's format, or premultiplied alpha
/// where the source's is straight.
void resampleFloating(const Bitmap& source, const FilterAxis& across, const FilterAxis& down, Bitmap& result);

} // namespace ferrow
