// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ferrow {

/// What a Gaussian leaves of a picture, kept as few samples and read out row by row at any size: between samples leads
/// a cubic B-spline, which has no kinks that could be seen. `Value` is what is blurred; it can be added and be
/// multiplied by a float. The result is the same in whatever order and portions it is read.
template <typename Value>
class SoftField {
public:
    /// Where the samples lie on the canvas: each is the average over a cell.
    struct Placement {
        double left = 0; ///< Of the first cell, in canvas pixels.
        double top = 0;
        double cellWidth = 1;
        double cellHeight = 1;
    };

    /// `samples` are rows from the top. `sigma` is the standard deviation in canvas pixels; what is less than a cell
    /// can't be told from none. Beyond its edges the picture goes on as it ends.
    SoftField(const std::vector<Value>& samples, PixelSize size, const Placement& placement, double sigma,
              std::int64_t canvasWidth)
        : samples_(continued(samples, std::size_t(size.width), std::size_t(size.height))),
          width_(std::size_t(size.width) + 2 * margin), height_(std::size_t(size.height) + 2 * margin),
          placement_(placement), mixed_(width_)
    {
        placement_.left -= margin * placement.cellWidth;
        placement_.top -= margin * placement.cellHeight;
        blurAcross(gaussian(sigma / placement.cellWidth));
        blurDown(gaussian(sigma / placement.cellHeight));
        columns_.reserve(std::size_t(canvasWidth));
        for (std::int64_t x = 0; x < canvasWidth; ++x)
            columns_.push_back(tapsAt((double(x) + 0.5 - placement_.left) / placement_.cellWidth, width_));
    }

    /// The row that at() answers for.
    void moveTo(std::int64_t row)
    {
        const Taps taps = tapsAt((double(row) + 0.5 - placement_.top) / placement_.cellHeight, height_);
        for (std::size_t x = 0; x < width_; ++x) {
            const auto sample = [&](std::size_t tap) {
                return samples_[taps.at[tap] * width_ + x] * taps.weights[tap];
            };
            mixed_[x] = sample(0) + sample(1) + sample(2) + sample(3);
        }
    }
    [[nodiscard]] Value at(std::int64_t column) const
    {
        const Taps& taps = columns_[std::size_t(column)];
        return mixed_[taps.at[0]] * taps.weights[0] + mixed_[taps.at[1]] * taps.weights[1] +
               mixed_[taps.at[2]] * taps.weights[2] + mixed_[taps.at[3]] * taps.weights[3];
    }

private:
    /// Samples beyond each edge: so many the spline looks at there.
    static constexpr std::size_t margin = 2;

    static std::vector<Value> continued(const std::vector<Value>& samples, std::size_t width, std::size_t height)
    {
        std::vector<Value> all;
        all.reserve((width + 2 * margin) * (height + 2 * margin));
        const auto inside = [](std::size_t place, std::size_t count) {
            return std::clamp(place, margin, count + margin - 1) - margin;
        };
        for (std::size_t y = 0; y < height + 2 * margin; ++y)
            for (std::size_t x = 0; x < width + 2 * margin; ++x)
                all.push_back(samples[inside(y, height) * width + inside(x, width)]);
        return all;
    }

    /// The samples that a place lies between, and how much each counts.
    struct Taps {
        std::array<std::uint32_t, 4> at;
        std::array<float, 4> weights;
    };

    /// `place` in cells from the first one's edge.
    static Taps tapsAt(double place, std::size_t count)
    {
        const double centered = place - 0.5;
        const double whole = std::floor(centered);
        const auto part = float(centered - whole);
        const float rest = 1 - part;
        Taps taps{{},
                  {rest * rest * rest / 6, (4 - 3 * part * part * (2 - part)) / 6,
                   (4 - 3 * rest * rest * (2 - rest)) / 6, part * part * part / 6}};
        for (std::size_t i = 0; i < taps.at.size(); ++i)
            taps.at[i] = std::uint32_t(std::clamp(whole + double(i) - 1, 0.0, double(count - 1)));
        return taps;
    }

    /// Weights at distances 0, 1, … to either side, for a whole standard deviation of `sigma` cells.
    static std::vector<float> gaussian(double sigma)
    {
        // The variances, in cells, of the average over one and of the spline.
        const double variance = sigma * sigma - 1.0 / 12 - 1.0 / 3;
        const auto radius = variance > 0 ? std::size_t(std::ceil(3.5 * std::sqrt(variance))) : 0;
        std::vector<float> weights(radius + 1, 1.0F);
        double sum = 1;
        for (std::size_t i = 1; i <= radius; ++i) {
            const double weight = std::exp(-0.5 * double(i * i) / variance);
            weights[i] = float(weight);
            sum += 2 * weight;
        }
        for (float& weight : weights)
            weight = float(weight / sum);
        return weights;
    }

    void blurAcross(const std::vector<float>& weights)
    {
        std::vector<Value> row(width_);
        for (std::size_t y = 0; y < height_; ++y) {
            Value* samples = samples_.data() + y * width_;
            std::copy_n(samples, width_, row.begin());
            blurLine(row, weights, [samples](std::size_t x) -> Value& { return samples[x]; });
        }
    }
    void blurDown(const std::vector<float>& weights)
    {
        std::vector<Value> column(height_);
        for (std::size_t x = 0; x < width_; ++x) {
            const auto place = [&](std::size_t y) -> Value& { return samples_[y * width_ + x]; };
            for (std::size_t y = 0; y < height_; ++y)
                column[y] = place(y);
            blurLine(column, weights, place);
        }
    }
    template <typename Place>
    static void blurLine(const std::vector<Value>& line, const std::vector<float>& weights, const Place& place)
    {
        const std::size_t last = line.size() - 1;
        for (std::size_t i = 0; i <= last; ++i) {
            Value sum = line[i] * weights[0];
            for (std::size_t distance = 1; distance < weights.size(); ++distance)
                sum = sum +
                      (line[i > distance ? i - distance : 0] + line[std::min(i + distance, last)]) * weights[distance];
            place(i) = sum;
        }
    }

    std::vector<Value> samples_;
    std::size_t width_;
    std::size_t height_;
    Placement placement_;
    std::vector<Taps> columns_;
    std::vector<Value> mixed_; ///< The samples of the present row.
};

} // namespace ferrow
