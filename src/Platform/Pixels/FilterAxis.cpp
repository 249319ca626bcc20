// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/FilterAxis.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace ferrow {

namespace {

constexpr double lobes = 3;

double lanczos(double x)
{
    if (std::abs(x) < 1e-9)
        return 1;
    if (std::abs(x) >= lobes)
        return 0;
    const double angle = std::numbers::pi * x;
    return lobes * std::sin(angle) * std::sin(angle / lobes) / (angle * angle);
}

struct Taps {
    std::size_t first;
    std::vector<double> weights;
};

/// The source pixels around `center`, which is in their coordinates. Tails that weigh nothing are left out, so that a
/// picture drawn at its own size on whole pixels is copied.
Taps tapsAround(double center, double widening, std::int64_t source)
{
    const double radius = lobes * widening;
    const auto first = std::max(std::int64_t(std::floor(center - radius)), std::int64_t{0});
    const auto end = std::min(std::int64_t(std::ceil(center + radius)), source);
    Taps taps{std::size_t(first), {}};
    for (std::int64_t pixel = first; pixel < end; ++pixel)
        taps.weights.push_back(lanczos((double(pixel) + 0.5 - center) / widening));

    const auto weighs = [](double weight) { return std::abs(weight) > 1e-6; };
    const auto begin = std::ranges::find_if(taps.weights, weighs);
    taps.first += std::size_t(begin - taps.weights.begin());
    taps.weights.erase(taps.weights.begin(), begin);
    while (!taps.weights.empty() && !weighs(taps.weights.back()))
        taps.weights.pop_back();

    const double sum = std::accumulate(taps.weights.begin(), taps.weights.end(), 0.0);
    for (double& weight : taps.weights)
        weight /= sum;
    return taps;
}

/// What rounding leaves over goes to the heaviest weight, where it matters least.
void toFixedPoint(const std::vector<double>& weights, std::int16_t* fixed)
{
    int left = FilterAxis::fixedOne;
    for (std::size_t tap = 0; tap < weights.size(); ++tap) {
        fixed[tap] = std::int16_t(std::lround(weights[tap] * FilterAxis::fixedOne));
        left -= fixed[tap];
    }
    const auto heaviest = std::ranges::max_element(weights) - weights.begin();
    fixed[heaviest] = std::int16_t(fixed[heaviest] + left);
}

} // namespace

FilterAxis::FilterAxis(std::int64_t source, std::int64_t result, double origin, double length)
{
    const double ratio = double(source) / length;
    const double widening = std::max(1.0, ratio);
    std::vector<Taps> all;
    all.reserve(std::size_t(result));
    for (std::int64_t pixel = 0; pixel < result; ++pixel) {
        // A pixel at the edge may have its middle outside the picture: it shows the picture's edge.
        const double center =
            std::clamp((double(pixel) + 0.5 - origin) * ratio, 0.5, std::max(0.5, double(source) - 0.5));
        all.push_back(tapsAround(center, widening, source));
        mostTaps_ = std::max(mostTaps_, all.back().weights.size());
    }

    stride_ = (mostTaps_ + padding - 1) / padding * padding;
    weights_.resize(all.size() * stride_);
    if (suitsFixedPoint())
        fixed_.resize(all.size() * stride_);
    for (std::size_t pixel = 0; pixel < all.size(); ++pixel) {
        const Taps& taps = all[pixel];
        windows_.push_back({taps.first, taps.weights.size()});
        std::ranges::transform(taps.weights, weights_.begin() + std::ptrdiff_t(pixel * stride_),
                               [](double weight) { return float(weight); });
        if (!fixed_.empty())
            toFixedPoint(taps.weights, fixed_.data() + pixel * stride_);
    }
}

} // namespace ferrow
