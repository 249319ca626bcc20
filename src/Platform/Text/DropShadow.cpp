// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Text/TextFrame.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace ferrow {

namespace {

constexpr int alphaByte = 3;
constexpr int bytesPerPixel = 4;

/// Weights of the pixels at distances 0, 1, … to either side; beyond three sigmas too little is left for one level.
std::vector<float> gaussian(double sigma)
{
    const int radius = sigma > 0 ? int(std::ceil(3 * sigma)) : 0;
    std::vector<float> weights(std::size_t(radius) + 1, 1.0f);
    double sum = 1;
    for (int i = 1; i <= radius; ++i) {
        const double weight = std::exp(-0.5 * i * i / (sigma * sigma));
        weights[std::size_t(i)] = float(weight);
        sum += 2 * weight;
    }
    for (float& weight : weights)
        weight = float(weight / sum);
    return weights;
}

/// One row's alpha blurred sideways. `padded` is room for the row with a radius of nothing on both sides.
void blurRow(const std::byte* row, const std::vector<float>& weights, std::vector<float>& padded, float* blurred,
             std::size_t width)
{
    const std::size_t radius = weights.size() - 1;
    for (std::size_t x = 0; x < width; ++x)
        padded[radius + x] = float(row[x * bytesPerPixel + alphaByte]);
    const float* center = padded.data() + radius;
    for (std::size_t x = 0; x < width; ++x)
        blurred[x] = center[x] * weights[0];
    for (std::size_t i = 1; i <= radius; ++i)
        for (std::size_t x = 0; x < width; ++x)
            blurred[x] += (center[x - i] + center[x + i]) * weights[i];
}

} // namespace

Bitmap dropShadow(const Bitmap& shape, double sigma, double alpha)
{
    if (shape.isNull())
        return {};
    const std::vector<float> weights = gaussian(sigma);
    const auto radius = std::int64_t(weights.size()) - 1;
    const auto width = std::size_t(shape.size().width);
    const std::int64_t height = shape.size().height;
    const auto opacity = float(std::clamp(alpha, 0.0, 1.0));

    // Only as many sideways blurred rows as one row of the result needs are kept, however high the shape is.
    const auto kept = std::size_t(2 * radius + 1);
    std::vector<float> rows(kept * width);
    const auto rowAt = [&](std::int64_t y) { return rows.data() + std::size_t(y) % kept * width; };
    std::vector<float> padded(width + 2 * std::size_t(radius));
    std::vector<float> sum(width);

    Bitmap shadow(shape.size(), rgba8Premultiplied, shape.profile());
    std::int64_t ready = 0;
    for (std::int64_t y = 0; y < height; ++y) {
        for (; ready < std::min(y + radius + 1, height); ++ready)
            blurRow(shape.row(ready), weights, padded, rowAt(ready), width);
        std::fill(sum.begin(), sum.end(), 0.0f);
        for (std::int64_t near = std::max<std::int64_t>(y - radius, 0); near < std::min(y + radius + 1, height);
             ++near) {
            const float weight = weights[std::size_t(std::abs(near - y))];
            const float* blurred = rowAt(near);
            for (std::size_t x = 0; x < width; ++x)
                sum[x] += blurred[x] * weight;
        }
        std::byte* into = shadow.row(y);
        for (std::size_t x = 0; x < width; ++x)
            into[x * bytesPerPixel + alphaByte] = static_cast<std::byte>(std::min(sum[x] * opacity + 0.5f, 255.0f));
    }
    return shadow;
}

} // namespace ferrow
