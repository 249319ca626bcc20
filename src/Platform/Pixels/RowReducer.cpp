// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/RowReducer.h"

#include "Platform/Pixels/FilterAxis.h"
#include "Platform/Pixels/SpaceLight.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace ferrow {

namespace {

constexpr std::size_t colors = 3;

/// Levels of `channels` components to light; color times alpha where there is one.
template <std::size_t channels, typename Component>
void decodeLevels(const SpaceLight<Component>& space, const Component* level, std::size_t pixels, float* light)
{
    for (std::size_t pixel = 0; pixel < pixels; ++pixel, level += channels, light += channels) {
        light[0] = space.light(0, level[0]);
        light[1] = space.light(1, level[1]);
        light[2] = space.light(2, level[2]);
        if constexpr (channels > colors) {
            const float alpha = float(level[3]) / std::numeric_limits<Component>::max();
            for (std::size_t channel = 0; channel < colors; ++channel)
                light[channel] *= alpha;
            light[3] = alpha;
        }
    }
}

/// Which rows of the result each pair of rows of the source adds to: those that come next, a few at a time.
std::size_t mostOpenRows(const FilterAxis& down)
{
    std::size_t most = 1;
    for (std::size_t first = 0, next = 0; next < down.size(); ++next) {
        // A row of the result is open until the pair is through that its last row of the source is in.
        while (down.window(first).first + down.window(first).count + 1 <= down.window(next).first)
            ++first;
        most = std::max(most, next - first + 1);
    }
    return most;
}

/// a × x + b × y added to `sums`.
void addPair(const float* x, float a, const float* y, float b, float* sums, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        sums[i] += a * x[i] + b * y[i];
}

} // namespace

struct RowReducer::Implementation {
    Implementation(PixelSize source, double coveredWidth, double coveredHeight, PixelSize result, PixelFormat format)
        : across(source.width, result.width, 0, double(result.width) * double(source.width) / coveredWidth),
          down(source.height, result.height, 0, double(result.height) * double(source.height) / coveredHeight),
          channels(std::size_t(format.channels())), width(std::size_t(source.width)),
          height(std::size_t(source.height)), sums(mostOpenRows(down), row())
    {
        pair.fill(row());
    }
    virtual ~Implementation() = default;

    /// One row of the source to light.
    virtual void decode(const std::byte* row, float* light) const = 0;
    /// The sum of rows to one of the result.
    virtual void reduceAcross(const std::vector<float>& line, std::byte* out) const = 0;

    /// One row's light, with room behind it for loops that go on to whole vectors.
    [[nodiscard]] std::vector<float> row() const
    {
        return std::vector<float>((width + FilterAxis::padding) * channels);
    }
    [[nodiscard]] std::size_t endOf(std::size_t resultRow) const
    {
        return down.window(resultRow).first + down.window(resultRow).count;
    }
    [[nodiscard]] float weight(std::size_t resultRow, std::size_t sourceRow) const
    {
        const FilterAxis::Window& window = down.window(resultRow);
        const bool isInside = sourceRow >= window.first && sourceRow < window.first + window.count;
        return isInside ? down.weights(resultRow)[sourceRow - window.first] : 0;
    }

    void addUpPair();

    FilterAxis across;
    FilterAxis down;
    std::size_t channels;
    std::size_t width;
    std::size_t height;
    std::array<std::vector<float>, 2> pair; ///< Rows are added up two at a time: it halves the ways to memory.
    std::vector<std::vector<float>> sums;   ///< Of the rows of the result under way, by their number.
    std::size_t fed = 0;
    std::size_t addedUp = 0;
    std::size_t taken = 0;
};

void RowReducer::Implementation::addUpPair()
{
    /// So many numbers of two rows stay near the processor while all sums take them.
    constexpr std::size_t block = 2048;
    const std::size_t first = addedUp;
    const std::size_t count = width * channels;
    for (std::size_t begin = 0; begin < count; begin += block)
        for (std::size_t row = taken; row < down.size() && down.window(row).first < fed; ++row)
            addPair(pair[0].data() + begin, weight(row, first), pair[1].data() + begin, weight(row, first + 1),
                    sums[row % sums.size()].data() + begin, std::min(block, count - begin));
    addedUp = fed;
}

template <typename Component, std::size_t count>
struct RowReducer::Typed final : Implementation {
    Typed(PixelSize source, double coveredWidth, double coveredHeight, PixelSize result, PixelFormat format,
          const ColorProfile& profile)
        : Implementation(source, coveredWidth, coveredHeight, result, format), space(profile)
    {
    }

    void decode(const std::byte* row, float* light) const override
    {
        decodeLevels<count>(space, reinterpret_cast<const Component*>(row), width, light);
    }
    void reduceAcross(const std::vector<float>& line, std::byte* out) const override;

    SpaceLight<Component> space;
};

template <typename Component, std::size_t count>
void RowReducer::Typed<Component, count>::reduceAcross(const std::vector<float>& line, std::byte* out) const
{
    constexpr float most = std::numeric_limits<Component>::max();
    const typename LightEncoding<Component>::Tables encoding(space.encoding());
    const auto pixelAt = [](const float* from) {
        Lanes lanes;
        std::memcpy(&lanes, from, sizeof lanes);
        return lanes;
    };
    for (std::size_t x = 0; x < across.size(); ++x, out += count * sizeof(Component)) {
        const FilterAxis::Window& window = across.window(x);
        const float* weights = across.weights(x);
        const float* pixel = line.data() + window.first * count;
        // Two sums, each waiting for its own last addition only. Behind a window come zeros.
        std::array<Lanes, 2> sum{};
        for (std::size_t tap = 0; tap < window.count; tap += 2, pixel += 2 * count) {
            sum[0] += weights[tap] * pixelAt(pixel);
            sum[1] += weights[tap + 1] * pixelAt(pixel + count);
        }
        Lanes result = sum[0] + sum[1];
        if constexpr (count > colors) {
            const float alpha = std::clamp(result[3], 0.0F, 1.0F);
            result *= alpha * most >= 0.5F ? 1 / alpha : 0;
            const auto level = Component(alpha * most + 0.5F);
            std::memcpy(out + 3 * sizeof level, &level, sizeof level);
        }
        encoding.store(result, out);
    }
}

RowReducer::RowReducer(PixelSize source, double coveredWidth, double coveredHeight, PixelSize result,
                       PixelFormat format, const ColorProfile& space)
{
    const auto make = [&]<typename Chosen>(std::type_identity<Chosen>) {
        implementation_ = std::make_unique<Chosen>(source, coveredWidth, coveredHeight, result, format, space);
    };
    const bool deep = format.bitsPerComponent == 16;
    if (format.hasAlpha())
        deep ? make(std::type_identity<Typed<std::uint16_t, 4>>()) : make(std::type_identity<Typed<std::uint8_t, 4>>());
    else
        deep ? make(std::type_identity<Typed<std::uint16_t, 3>>()) : make(std::type_identity<Typed<std::uint8_t, 3>>());
}

RowReducer::~RowReducer() = default;

void RowReducer::feed(const std::byte* row)
{
    Implementation& all = *implementation_;
    all.decode(row, all.pair[all.fed % 2].data());
    ++all.fed;
    if (all.fed % 2 == 0 || all.fed == all.height)
        all.addUpPair();
}

bool RowReducer::isReady() const
{
    const Implementation& all = *implementation_;
    return all.taken < all.down.size() && all.addedUp >= all.endOf(all.taken);
}

void RowReducer::take(std::byte* row)
{
    Implementation& all = *implementation_;
    std::vector<float>& line = all.sums[all.taken % all.sums.size()];
    all.reduceAcross(line, row);
    std::ranges::fill(line, 0.0F);
    ++all.taken;
}

} // namespace ferrow
