// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ferrow {

/// Which source pixels make up each pixel of a result along one axis, and by how much: a Lanczos-3 kernel, widened for
/// reduction, cut off at the picture's edges and made to sum to one.
class FilterAxis {
public:
    struct Window {
        std::size_t first;
        std::size_t count;
    };

    /// Every window's weights are followed by zeros up to a multiple of this, for loops of whole vectors.
    static constexpr std::size_t padding = 8;
    /// One, in fixed point.
    static constexpr int fixedOne = 1 << 14;

    /// `source` pixels are spread over the `length` from `origin` on, in the result's pixels; `result` of them are
    /// computed from 0 on.
    FilterAxis(std::int64_t source, std::int64_t result, double origin, double length);

    [[nodiscard]] std::size_t size() const { return windows_.size(); }
    [[nodiscard]] const Window& window(std::size_t pixel) const { return windows_[pixel]; }
    [[nodiscard]] const float* weights(std::size_t pixel) const { return weights_.data() + pixel * stride_; }
    /// The same in fixed point, summing to fixedOne exactly.
    [[nodiscard]] const std::int16_t* fixedWeights(std::size_t pixel) const { return fixed_.data() + pixel * stride_; }
    /// The largest window's count.
    [[nodiscard]] std::size_t mostTaps() const { return mostTaps_; }
    /// Whether fixed-point weights are fine enough not to show.
    [[nodiscard]] bool suitsFixedPoint() const { return mostTaps_ <= 200; }

private:
    std::vector<Window> windows_;
    std::vector<float> weights_;
    std::vector<std::int16_t> fixed_;
    std::size_t stride_ = 0;
    std::size_t mostTaps_ = 0;
};

} // namespace ferrow
