// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/Resampler.h"

#include "Platform/Pixels/FilterAxis.h"
#include "Platform/Pixels/ResampledRows.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ferrow::Resampler {

namespace {

void resample(const Bitmap& source, const FilterAxis& across, const FilterAxis& down, Bitmap& result)
{
    const bool canBeAddedUp = source.format().alpha != Alpha::straight;
    if (canBeAddedUp && across.suitsFixedPoint() && down.suitsFixedPoint())
        resampleFixed(source, across, down, result);
    else
        resampleFloating(source, across, down, result);
}

/// How much of each pixel from `first` on lies between `begin` and `end`.
std::vector<double> coverage(double begin, double end, std::int64_t first, std::int64_t count)
{
    std::vector<double> shares;
    for (std::int64_t pixel = first; pixel < first + count; ++pixel)
        shares.push_back(std::clamp(std::min(end, double(pixel) + 1) - std::max(begin, double(pixel)), 0.0, 1.0));
    return shares;
}

/// Opaque pixels with alpha beside them.
Bitmap withAlpha(const Bitmap& opaque)
{
    Bitmap result(opaque.size(), rgba8Premultiplied, opaque.profile());
    for (std::int64_t y = 0; y < opaque.size().height; ++y) {
        const std::byte* in = opaque.row(y);
        std::byte* out = result.row(y);
        for (std::int64_t x = 0; x < opaque.size().width; ++x, in += 3, out += 4) {
            std::copy_n(in, 3, out);
            out[3] = std::byte{255};
        }
    }
    return result;
}

/// Only pixels at the edges are covered in part.
void fade(Bitmap& bitmap, const std::vector<double>& across, const std::vector<double>& down)
{
    for (std::size_t y = 0; y < down.size(); ++y) {
        std::byte* pixel = bitmap.row(std::int64_t(y));
        for (const double share : across) {
            const double covered = share * down[y];
            if (covered < 1)
                std::transform(pixel, pixel + 4, pixel, [covered](std::byte level) {
                    return static_cast<std::byte>(std::lround(std::to_integer<int>(level) * covered));
                });
            pixel += 4;
        }
    }
}

} // namespace

Bitmap scaled(const Bitmap& source, PixelSize size)
{
    if (source.isNull() || size == source.size())
        return source;
    Bitmap result(size, source.format(), source.profile());
    if (result.isNull())
        return result;
    const FilterAxis across(source.size().width, size.width, 0, double(size.width));
    const FilterAxis down(source.size().height, size.height, 0, double(size.height));
    resample(source, across, down, result);
    return result;
}

PixelSize fitted(PixelSize size, std::int64_t maximumDimension)
{
    const std::int64_t longest = size.longestSide();
    const std::int64_t most = std::max(maximumDimension, std::int64_t{1});
    if (longest <= most)
        return size;
    const double scale = double(most) / double(longest);
    const auto side = [&](std::int64_t length) {
        return std::clamp(std::llround(double(length) * scale), 1LL, static_cast<long long>(most));
    };
    return {side(size.width), side(size.height)};
}

Bitmap drawn(const Bitmap& source, const QRectF& target)
{
    const auto left = std::int64_t(std::floor(target.left()));
    const auto top = std::int64_t(std::floor(target.top()));
    const auto right = std::int64_t(std::ceil(target.right()));
    const auto bottom = std::int64_t(std::ceil(target.bottom()));
    const PixelSize size{right - left, bottom - top};
    if (source.isNull() || !(target.width() > 0) || !(target.height() > 0))
        return {};

    const bool isOpaque = !source.format().hasAlpha();
    Bitmap result(size, isOpaque ? rgb8 : rgba8Premultiplied, source.profile());
    const FilterAxis across(source.size().width, size.width, target.left() - double(left), target.width());
    const FilterAxis down(source.size().height, size.height, target.top() - double(top), target.height());
    resample(source, across, down, result);
    if (isOpaque)
        result = withAlpha(result);
    fade(result, coverage(target.left(), target.right(), left, size.width),
         coverage(target.top(), target.bottom(), top, size.height));
    return result;
}

} // namespace ferrow::Resampler
