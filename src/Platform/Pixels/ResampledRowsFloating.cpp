// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ResampledRows.h"

#include <algorithm>
#include <array>
#include <vector>

namespace ferrow {

namespace {

/// A row of the source as numbers that can be added up: color times alpha (up to 255²) where alpha is straight.
template <std::size_t channels>
void loadRow(const std::byte* pixels, Alpha alpha, std::vector<float>& row)
{
    std::transform(pixels, pixels + row.size(), row.begin(),
                   [](std::byte level) { return float(std::to_integer<int>(level)); });
    if (alpha != Alpha::straight)
        return;
    for (std::size_t pixel = 0; pixel < row.size(); pixel += channels)
        for (std::size_t channel = 0; channel + 1 < channels; ++channel)
            row[pixel + channel] *= row[pixel + channels - 1];
}

template <std::size_t channels>
void filterAcross(const std::vector<float>& row, const FilterAxis& across, float* out)
{
    for (std::size_t x = 0; x < across.size(); ++x, out += channels) {
        const FilterAxis::Window& window = across.window(x);
        const float* weights = across.weights(x);
        const float* pixel = row.data() + window.first * channels;
        std::array<float, channels> sums{};
        for (std::size_t tap = 0; tap < window.count; ++tap, pixel += channels)
            for (std::size_t channel = 0; channel < channels; ++channel)
                sums[channel] += weights[tap] * pixel[channel];
        std::copy(sums.begin(), sums.end(), out);
    }
}

/// Rows of the source filtered across, kept while the filter down needs them.
template <std::size_t channels>
class FilteredRows {
public:
    FilteredRows(const Bitmap& source, const FilterAxis& across, std::size_t kept)
        : source_(source), across_(across), kept_(kept, std::vector<float>(across.size() * channels)),
          loaded_(std::size_t(source.size().width) * channels)
    {
    }

    /// Rows must be asked for in windows that move down.
    const std::vector<float>& row(std::size_t y)
    {
        for (; next_ <= y; ++next_)
            if (next_ + kept_.size() > y) {
                loadRow<channels>(source_.row(std::int64_t(next_)), source_.format().alpha, loaded_);
                filterAcross<channels>(loaded_, across_, kept_[next_ % kept_.size()].data());
            }
        return kept_[y % kept_.size()];
    }

private:
    const Bitmap& source_;
    const FilterAxis& across_;
    std::vector<std::vector<float>> kept_;
    std::vector<float> loaded_;
    std::size_t next_ = 0;
};

std::byte rounded(float level)
{
    return static_cast<std::byte>(int(std::clamp(level, 0.0F, 255.0F) + 0.5F));
}

void storeOpaque(const std::vector<float>& row, std::byte* out)
{
    std::ranges::transform(row, out, [](float level) { return rounded(level); });
}

void storePremultiplied(const std::vector<float>& row, std::size_t channels, float colorScale, std::byte* out)
{
    for (std::size_t pixel = 0; pixel < row.size(); pixel += channels) {
        const std::byte alpha = rounded(row[pixel + channels - 1]);
        for (std::size_t channel = 0; channel + 1 < channels; ++channel)
            out[pixel + channel] = std::min(rounded(row[pixel + channel] * colorScale), alpha);
        out[pixel + channels - 1] = alpha;
    }
}

void storeStraight(const std::vector<float>& row, std::size_t channels, std::byte* out)
{
    for (std::size_t pixel = 0; pixel < row.size(); pixel += channels) {
        const float alpha = row[pixel + channels - 1];
        const bool visible = alpha >= 0.5F;
        for (std::size_t channel = 0; channel + 1 < channels; ++channel)
            out[pixel + channel] = visible ? rounded(row[pixel + channel] / alpha) : std::byte{0};
        out[pixel + channels - 1] = rounded(alpha);
    }
}

void storeRow(const std::vector<float>& row, PixelFormat source, PixelFormat result, std::byte* out)
{
    const auto channels = std::size_t(source.channels());
    if (!source.hasAlpha())
        storeOpaque(row, out);
    else if (result.alpha == Alpha::straight)
        storeStraight(row, channels, out);
    else
        storePremultiplied(row, channels, source.alpha == Alpha::straight ? 1.0F / 255 : 1.0F, out);
}

template <std::size_t channels>
void resample(const Bitmap& source, const FilterAxis& across, const FilterAxis& down, Bitmap& result)
{
    FilteredRows<channels> rows(source, across, down.mostTaps());
    std::vector<float> sums(across.size() * channels);
    for (std::size_t y = 0; y < down.size(); ++y) {
        std::ranges::fill(sums, 0.0F);
        const FilterAxis::Window& window = down.window(y);
        for (std::size_t tap = 0; tap < window.count; ++tap) {
            const std::vector<float>& row = rows.row(window.first + tap);
            const float weight = down.weights(y)[tap];
            for (std::size_t index = 0; index < sums.size(); ++index)
                sums[index] += weight * row[index];
        }
        storeRow(sums, source.format(), result.format(), result.row(std::int64_t(y)));
    }
}

} // namespace

void resampleFloating(const Bitmap& source, const FilterAxis& across, const FilterAxis& down, Bitmap& result)
{
    withChannels(source.format(), [&](auto channels) { resample<channels>(source, across, down, result); });
}

} // namespace ferrow
