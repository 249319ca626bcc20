// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"
#include "Platform/Pixels/ColorProfile.h"
#include "Platform/Pixels/PixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ferrow {

/// Makes a picture smaller while its rows go by: a Lanczos-3 filter widened for the reduction, on light instead of
/// levels, so that fine patterns keep their brightness. Color is weighted by alpha. Between the two directions light is
/// kept in floating point. Holds some ten rows of the source at 12 or 16 bytes a pixel. Use from one thread.
class RowReducer {
public:
    /// Rows of `source` pixels are fed, of which the picture covers the first `coveredWidth` and `coveredHeight`, each
    /// within a pixel of `source`: a codec that decodes at half size rounds up. `format` is RGB or straight RGBA, and
    /// that of the result; `space` is that of both, and says what light a level stands for. (A space that tables
    /// describe is taken to have the curve of sRGB.)
    RowReducer(PixelSize source, double coveredWidth, double coveredHeight, PixelSize result, PixelFormat format,
               const ColorProfile& space);
    ~RowReducer();

    /// The next row of the source. Only when no row is ready.
    void feed(const std::byte* row);
    /// Whether the next row of the result can be taken.
    [[nodiscard]] bool isReady() const;
    void take(std::byte* row);

private:
    struct Implementation;
    template <typename Component, std::size_t count>
    struct Typed;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace ferrow
