// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/HighDynamicRange.h"

#include "Platform/Pixels/LightEncoding.h"
#include "Platform/Pixels/Matrix.h"
#include "Platform/Pixels/PixelRows.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace ferrow {

namespace {

/// In cd/m²: a page's white, the most that PQ codes, and the display that HLG is meant for.
constexpr double white = 203;
constexpr double mostOfPq = 10'000;
constexpr double mostOfHlg = 1'000;

// ITU-R BT.2100, table 4.
constexpr double m1 = 2610.0 / 16384;
constexpr double m2 = 2523.0 / 4096 * 128;
constexpr double c1 = 3424.0 / 4096;
constexpr double c2 = 2413.0 / 4096 * 32;
constexpr double c3 = 2392.0 / 4096 * 32;

/// cd/m² of a level 0…1.
double pqLight(double level)
{
    const double power = std::pow(level, 1 / m2);
    return mostOfPq * std::pow(std::max(0.0, power - c1) / (c2 - c3 * power), 1 / m1);
}

double pqLevel(double light)
{
    const double power = std::pow(std::clamp(light / mostOfPq, 0.0, 1.0), m1);
    return std::pow((c1 + c2 * power) / (1 + c3 * power), m2);
}

/// Light of the scene, 0…1, of a level (table 5).
double hlgLight(double level)
{
    constexpr double a = 0.17883277;
    constexpr double b = 1 - 4 * a;
    const double c = 0.5 - a * std::log(4 * a);
    return level <= 0.5 ? level * level / 3 : (std::exp((level - c) / a) + b) / 12;
}

/// What is shown of `light` where the brightest of the picture is `peak` and of the page `white`, all in cd/m²:
/// BT.2390, section 5.4.1, with black at none.
double drawnTogether(double light, double peak)
{
    if (peak <= white)
        return light;
    const double most = pqLevel(white) / pqLevel(peak);
    const double knee = 1.5 * most - 0.5;
    const double level = std::min(1.0, pqLevel(light) / pqLevel(peak));
    if (level <= knee)
        return light;
    const double t = (level - knee) / (1 - knee);
    const double t2 = t * t;
    const double t3 = t2 * t;
    const double drawn = (2 * t3 - 3 * t2 + 1) * knee + (t3 - 2 * t2 + t) * (1 - knee) + (-2 * t3 + 3 * t2) * most;
    return pqLight(drawn * pqLevel(peak));
}

/// A function of light 0…1, straight between points of which each halving of the light has as many.
class OfLight {
public:
    explicit OfLight(const std::function<double(double)>& function)
    {
        for (std::uint32_t point = first; point <= last + 1; ++point)
            points_.push_back(float(function(std::bit_cast<float>(point << droppedBits))));
    }

    [[nodiscard]] float operator()(float light) const
    {
        const auto bits = std::bit_cast<std::uint32_t>(std::clamp(light, darkest, 1.0F));
        const float* point = points_.data() + ((bits >> droppedBits) - first);
        const float part = float(bits & ((1U << droppedBits) - 1)) * (1.0F / float(1U << droppedBits));
        return point[0] + (point[1] - point[0]) * part;
    }

private:
    static constexpr int droppedBits = 18; ///< Leaves 5 bits: 32 points a halving.
    static constexpr float darkest = 0x1p-30F;
    static constexpr std::uint32_t first = std::bit_cast<std::uint32_t>(darkest) >> droppedBits;
    static constexpr std::uint32_t last = std::bit_cast<std::uint32_t>(1.0F) >> droppedBits;
    std::vector<float> points_;
};

/// Of a picture's three components light on a display, as a share of the most that its curve codes.
template <WellKnown space>
class DisplayLight;

template <>
class DisplayLight<WellKnown::bt2100Pq> {
public:
    static constexpr double most = mostOfPq;
    static double lightOf(double level) { return pqLight(level) / most; }
    [[nodiscard]] Lanes operator()(Lanes light) const { return light; }
};

/// A display shows a scene's light to the power of 1.2, taken of its luminance.
template <>
class DisplayLight<WellKnown::bt2100Hlg> {
public:
    static constexpr double most = mostOfHlg;
    static double lightOf(double level) { return hlgLight(level); }
    [[nodiscard]] Lanes operator()(Lanes light) const
    {
        const float luminance = 0.2627F * light[0] + 0.6780F * light[1] + 0.0593F * light[2];
        return light * power_(luminance);
    }

private:
    OfLight power_{[](double luminance) { return std::pow(luminance, 0.2); }};
};

template <WellKnown space, typename Source, typename Target>
class HdrRows final : public RowConverter {
public:
    /// `matrix` leads from the light of BT.2020 to the target's.
    HdrRows(double peak, const Matrix& matrix, const std::array<const cmsToneCurve*, 3>& encoding)
        : toShare_([peak](double share) {
              const double light = share * Display::most;
              return drawnTogether(light, peak) / light;
          }),
          red_(columnOf(matrix, 0)), green_(columnOf(matrix, 1)), blue_(columnOf(matrix, 2)), encoding_(encoding)
    {
        constexpr std::size_t levels = std::size_t(std::numeric_limits<typename Source::ComponentType>::max()) + 1;
        for (std::size_t level = 0; level < levels; ++level)
            light_.push_back(float(Display::lightOf(double(level) / double(levels - 1))));
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        constexpr float whites = float(Display::most / white);
        const typename Encoding::Tables encoding(encoding_);
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            const auto component = [&](int channel) {
                return light_[Source::component(in, Source::isGray ? 0 : channel)];
            };
            const Lanes light = display_(Lanes{component(0), component(1), component(2), 0});
            const float factor = toShare_(std::max({light[0], light[1], light[2]})) * whites;
            const Lanes drawn = light * factor;
            encoding.store(red_ * drawn[0] + green_ * drawn[1] + blue_ * drawn[2], out);
            carryAlpha<Source, Target>(in, out);
        }
    }

private:
    using Display = DisplayLight<space>;
    using Encoding = LightEncoding<typename Target::ComponentType>;

    Display display_;
    OfLight toShare_; ///< What is left of light, by the brightest component.
    std::vector<float> light_;
    Lanes red_;
    Lanes green_;
    Lanes blue_;
    Encoding encoding_;
};

} // namespace

std::unique_ptr<RowConverter> hdrRows(const ColorProfile& from, PixelFormat source, cmsHPROFILE to, PixelFormat target)
{
    const LittleCms::Context context(from.icc().size());
    const LittleCms::Profile primaries = LittleCms::openProfile(context, from.icc());
    const auto colorants = primaries ? colorantsOf(primaries.get()) : std::nullopt;
    const auto encoding = matrixProfileOf(to, Way::toPictures);
    const auto back = encoding ? inverse(encoding->colorants) : std::nullopt;
    if (!colorants || !back)
        return nullptr;
    const Matrix matrix = product(*back, *colorants);
    return withPixelTypes(source, target, [&]<typename Source, typename Target>() -> std::unique_ptr<RowConverter> {
        if (from.wellKnown() == WellKnown::bt2100Pq)
            return std::make_unique<HdrRows<WellKnown::bt2100Pq, Source, Target>>(from.peak(), matrix,
                                                                                  encoding->curves);
        return std::make_unique<HdrRows<WellKnown::bt2100Hlg, Source, Target>>(mostOfHlg, matrix, encoding->curves);
    });
}

} // namespace ferrow
