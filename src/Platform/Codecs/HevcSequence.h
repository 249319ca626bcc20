// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"

#include <cstddef>
#include <optional>
#include <span>

namespace ferrow {

/// The picture size in an HEVC sequence parameter set, in pixels.
struct HevcSequence {
    PixelSize coded; ///< In whole coding blocks: what a decoder takes memory for. 0 x 0 where it can't be read.
    PixelSize shown; ///< Less what the conformance window cuts off.
};

/// How much of a unit is looked at: the size stands before what may be long.
inline constexpr std::size_t hevcSequenceReach = 256;

/// Of a unit with its header of two bytes and no length before it. Absent when it is of another kind, or belongs to a
/// layer that still pictures don't have and decoders pass over.
[[nodiscard]] std::optional<HevcSequence> readHevcSequence(std::span<const std::byte> unit);

} // namespace ferrow
