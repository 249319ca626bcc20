// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/BlurredPicture.h"

#include "Platform/Pixels/SoftField.h"
#include "Platform/Pixels/SpaceLight.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <type_traits>
#include <vector>

namespace ferrow {

namespace {

/// Samples to a standard deviation: from four on, the spline between them is no longer to be told from the Gaussian.
constexpr double samplesPerSigma = 4;
/// Pixels to a side of a sample: codecs and the resampler reduce levels, the rest of the way is gone with light.
constexpr double pixelsPerSample = 4;
/// Of the reduced picture, which is held at 16 bytes each where nothing is left to average.
constexpr double mostPixels = 1 << 19;

/// Red, green, blue and alpha: light times alpha.
struct Light {
    Lanes lanes{};

    friend Light operator+(const Light& a, const Light& b) { return {a.lanes + b.lanes}; }
    friend Light operator*(const Light& light, float weight) { return {light.lanes * weight}; }
};

double coveringScale(PixelSize picture, PixelSize canvas)
{
    return std::max(double(canvas.width) / double(picture.width), double(canvas.height) / double(picture.height));
}

/// Samples that the longer side of the picture is worth, scaled to cover the canvas.
double samplesFor(PixelSize picture, PixelSize canvas, double sigma)
{
    return samplesPerSigma * double(picture.longestSide()) * coveringScale(picture, canvas) / std::max(sigma, 1e-6);
}

PixelSize samplesOf(PixelSize pixels, std::int64_t factor)
{
    return {(pixels.width + factor - 1) / factor, (pixels.height + factor - 1) / factor};
}

/// The light of blocks of `factor` × `factor` pixels, of what is left at the right and below.
std::vector<Light> averagedLight(const Bitmap& picture, std::int64_t factor, const SpaceLight<std::uint8_t>& space,
                                 float kept)
{
    const PixelSize size = picture.size();
    const PixelSize samples = samplesOf(size, factor);
    std::vector<Light> sums(std::size_t(samples.width * samples.height));
    const bool hasAlpha = picture.format().hasAlpha();
    const int step = picture.format().bytesPerPixel();
    for (std::int64_t y = 0; y < size.height; ++y) {
        const auto* pixel = reinterpret_cast<const std::uint8_t*>(picture.row(y));
        const std::int64_t rows = std::min(factor, size.height - y / factor * factor);
        Light* row = sums.data() + y / factor * samples.width;
        for (std::int64_t x = 0; x < size.width; ++x, pixel += step) {
            const std::int64_t columns = std::min(factor, size.width - x / factor * factor);
            const float share = (hasAlpha ? float(pixel[3]) / 255 : 1) / float(rows * columns);
            const float weight = share * kept;
            Light& sum = row[x / factor];
            sum = sum + Light{Lanes{space.light(0, pixel[0]) * weight, space.light(1, pixel[1]) * weight,
                                    space.light(2, pixel[2]) * weight, share}};
        }
    }
    return sums;
}

/// Blocks of `reduced` over the canvas, the last ones reaching beyond the picture where they are not whole.
SoftField<Light>::Placement placementOf(PixelSize reduced, std::int64_t factor, PixelSize picture, PixelSize canvas)
{
    const double scale = coveringScale(picture, canvas);
    const double width = double(picture.width) * scale;
    const double height = double(picture.height) * scale;
    return {(double(canvas.width) - width) / 2, (double(canvas.height) - height) / 2,
            width * double(factor) / double(reduced.width), height * double(factor) / double(reduced.height)};
}

SoftField<Light> fieldOf(const Bitmap& reduced, PixelSize original, PixelSize canvas, double sigma, float kept,
                         const SpaceLight<std::uint8_t>& space)
{
    const double samples = samplesFor(original, canvas, sigma);
    const auto factor =
        std::max<std::int64_t>(std::int64_t(std::floor(double(reduced.size().longestSide()) / samples)), 1);
    return {averagedLight(reduced, factor, space, kept), samplesOf(reduced.size(), factor),
            placementOf(reduced.size(), factor, original, canvas), sigma, canvas.width};
}

} // namespace

struct BlurredPicture::Implementation {
    Implementation(const Bitmap& reduced, PixelSize original, PixelSize canvas, double sigma, double light)
        : profile(reduced.profile()), space(profile),
          field(fieldOf(reduced, original, canvas, sigma, float(light), space))
    {
    }

    template <typename Component>
    const LightEncoding<Component>& encoding()
    {
        if constexpr (std::is_same_v<Component, std::uint8_t>)
            return space.encoding();
        else
            return deepEncoding ? *deepEncoding : deepEncoding.emplace(SpaceCurves(profile).all);
    }

    template <typename Component>
    void read(std::int64_t first, std::int64_t last, bool hasAlpha, std::byte* out)
    {
        constexpr float most = std::numeric_limits<Component>::max();
        const typename LightEncoding<Component>::Tables tables(encoding<Component>());
        if (!hasAlpha) {
            for (std::int64_t x = first; x < last; ++x, out += 3 * sizeof(Component))
                tables.store(field.at(x).lanes, out);
            return;
        }
        for (std::int64_t x = first; x < last; ++x, out += 4 * sizeof(Component)) {
            const Lanes light = field.at(x).lanes;
            const float alpha = light[3];
            tables.store(light / std::max(alpha, 1e-6F), out);
            const auto level = Component(std::lround(std::clamp(alpha, 0.0F, 1.0F) * most));
            std::memcpy(out + 3 * sizeof level, &level, sizeof level);
        }
    }

    ColorProfile profile;
    SpaceLight<std::uint8_t> space;
    std::optional<LightEncoding<std::uint16_t>> deepEncoding; ///< Made when it is asked for.
    SoftField<Light> field;
};

std::int64_t BlurredPicture::enoughDimension(PixelSize picture, PixelSize canvas, double sigma)
{
    const auto longest = double(picture.longestSide());
    const double enough = pixelsPerSample * samplesFor(picture, canvas, sigma);
    const double most = std::sqrt(mostPixels * longest / double(picture.shorterSide()));
    return std::max<std::int64_t>(std::int64_t(std::ceil(std::min({enough, most, longest}))), 1);
}

BlurredPicture::BlurredPicture(const Bitmap& reduced, PixelSize original, PixelSize canvas, double sigma, double light)
    : implementation_(std::make_unique<Implementation>(reduced, original, canvas, sigma, light))
{
}

BlurredPicture::~BlurredPicture() = default;
BlurredPicture::BlurredPicture(BlurredPicture&&) noexcept = default;
BlurredPicture& BlurredPicture::operator=(BlurredPicture&&) noexcept = default;

void BlurredPicture::moveTo(std::int64_t row)
{
    implementation_->field.moveTo(row);
}

void BlurredPicture::read(std::int64_t first, std::int64_t last, PixelFormat format, std::byte* out) const
{
    if (format.bitsPerComponent == 16)
        implementation_->read<std::uint16_t>(first, last, format.hasAlpha(), out);
    else
        implementation_->read<std::uint8_t>(first, last, format.hasAlpha(), out);
}

} // namespace ferrow
