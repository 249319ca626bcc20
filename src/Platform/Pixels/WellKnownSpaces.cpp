// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/WellKnownSpaces.h"

#include "Platform/Pixels/Matrix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

namespace ferrow {

namespace {

constexpr Chromaticity d65{0.3127, 0.3290};
constexpr Chromaticity d50{0.3457, 0.3585};

struct NamedSpace {
    WellKnown known;
    RgbSpace space;
};

constexpr std::array<NamedSpace, 5> rgbSpaces{{
    {WellKnown::sRGB, {"sRGB IEC61966-2.1", {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, d65, Curve::sRGB}},
    {WellKnown::displayP3, {"Display P3", {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, d65, Curve::sRGB}},
    {WellKnown::adobeRGB, {"Adobe RGB (1998)", {0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}, d65, Curve::adobeGamma}},
    {WellKnown::proPhoto, {"ProPhoto RGB", {0.7347, 0.2653}, {0.1596, 0.8404}, {0.0366, 0.0001}, d50, Curve::gamma18}},
    {WellKnown::rec2020, {"Rec. ITU-R BT.2020", {0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}, d65, Curve::rec709}},
}};

double sRGBEncoded(double light)
{
    const double level = std::clamp(light, 0.0, 1.0);
    return level <= 0.0031308 ? level * 12.92 : 1.055 * std::pow(level, 1 / 2.4) - 0.055;
}

/// Whether both curves give light that looks the same at every level. Compared as the sRGB levels that the light shows
/// as, since that is what an eye or a screen makes of it.
bool looksLike(const cmsToneCurve* found, const cmsToneCurve* known)
{
    constexpr int steps = 64;
    constexpr double tolerance = 0.5 / 255;
    for (int step = 0; step <= steps; ++step) {
        const auto level = static_cast<cmsFloat32Number>(step) / steps;
        if (std::abs(sRGBEncoded(cmsEvalToneCurveFloat(found, level)) -
                     sRGBEncoded(cmsEvalToneCurveFloat(known, level))) > tolerance)
            return false;
    }
    return true;
}

/// Whether the profile converts to the connection space through tables, whatever its matrix says.
bool hasTables(cmsHPROFILE profile)
{
    return cmsIsTag(profile, cmsSigAToB0Tag) || cmsIsTag(profile, cmsSigAToB1Tag);
}

/// Whether light said in one set of primaries may be taken for light said in the other. What is missing between them
/// matters most where one component is dark and the others bright: there, sRGB's slope of 12.92 makes a level of 8 bits
/// of 0.0003.
bool nearlyEqual(const Matrix& found, const Matrix& known)
{
    constexpr double tolerance = 0.00045; // Just enough for the sRGB of the color library's first version.
    const std::optional<Matrix> back = inverse(known);
    if (!back)
        return false;
    const Matrix change = product(*back, found);
    for (std::size_t row = 0; row < 3; ++row) {
        double above = 0;
        double below = 0;
        for (std::size_t column = 0; column < 3; ++column) {
            const double difference = change[row][column] - (row == column ? 1 : 0);
            (difference > 0 ? above : below) += difference;
        }
        if (above > tolerance || -below > tolerance)
            return false;
    }
    return true;
}

/// What the found profile is compared with, worked out once.
struct Reference {
    WellKnown known;
    Matrix matrix;
    LittleCms::Curve curve;
};

struct References {
    LittleCms::Context context;
    std::vector<Reference> rgb;
    std::vector<Reference> gray;

    References()
    {
        for (const NamedSpace& named : rgbSpaces) {
            const LittleCms::Profile profile = virtualProfile(context, named.space);
            if (const std::optional<Matrix> matrix = colorantsOf(profile.get()))
                rgb.push_back({named.known, *matrix, decodingCurve(context, named.space.curve)});
        }
        gray.push_back({WellKnown::sGray, {}, decodingCurve(context, Curve::sRGB)});
        gray.push_back({WellKnown::grayGamma22, {}, decodingCurve(context, Curve::gamma22)});
        gray.push_back({WellKnown::dotGain20, {}, decodingCurve(context, Curve::dotGain20)});
    }
};

const References& references()
{
    static const References all;
    return all;
}

WellKnown recognizeRgb(cmsHPROFILE profile)
{
    const std::optional<Matrix> matrix = colorantsOf(profile);
    if (!matrix || hasTables(profile))
        return WellKnown::none;
    for (const Reference& reference : references().rgb) {
        if (!nearlyEqual(*matrix, reference.matrix))
            continue;
        for (const cmsTagSignature tag : {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag}) {
            const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tag));
            if (!curve || !looksLike(curve, reference.curve.get()))
                return WellKnown::none;
        }
        return reference.known;
    }
    return WellKnown::none;
}

WellKnown recognizeGray(cmsHPROFILE profile)
{
    if (hasTables(profile))
        return WellKnown::none;
    const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, cmsSigGrayTRCTag));
    if (!curve)
        return WellKnown::none;
    for (const Reference& reference : references().gray)
        if (looksLike(curve, reference.curve.get()))
            return reference.known;
    return WellKnown::none;
}

/// A press on which half the ink covers seven tenths: the power that leads from 0.5 to 0.3, never flatter than 1/16 so
/// that shadows can be told apart.
LittleCms::Curve dotGainCurve(const LittleCms::Context& context)
{
    const double exponent = std::log(0.3) / std::log(0.5);
    std::array<cmsUInt16Number, 256> levels{};
    for (std::size_t level = 0; level < levels.size(); ++level) {
        const double paper = double(level) / 255;
        levels[level] =
            static_cast<cmsUInt16Number>(std::lround(65535 * std::max(paper / 16, std::pow(paper, exponent))));
    }
    return LittleCms::Curve(cmsBuildTabulatedToneCurve16(context.get(), levels.size(), levels.data()));
}

} // namespace

const RgbSpace& rgbSpace(WellKnown space)
{
    const auto* found = std::ranges::find(rgbSpaces, space, &NamedSpace::known);
    return found == rgbSpaces.end() ? rgbSpaces.front().space : found->space;
}

const char* nameOf(WellKnown space)
{
    switch (space) {
    case WellKnown::sRGB:
    case WellKnown::displayP3:
    case WellKnown::adobeRGB:
    case WellKnown::proPhoto:
    case WellKnown::rec2020:
        return rgbSpace(space).name;
    case WellKnown::grayGamma22:
        return "Generic Gray Gamma 2.2 Profile";
    case WellKnown::sGray:
        return "sGray";
    case WellKnown::dotGain20:
        return "Dot Gain 20%";
    case WellKnown::bt2100Pq:
        return "Rec. ITU-R BT.2100 PQ (HDR)";
    case WellKnown::bt2100Hlg:
        return "Rec. ITU-R BT.2100 HLG (HDR)";
    case WellKnown::none:
        break;
    }
    return "Embedded profile";
}

LittleCms::Curve decodingCurve(const LittleCms::Context& context, Curve curve)
{
    switch (curve) {
    case Curve::sRGB:
        return LittleCms::sRGBCurve(context);
    case Curve::rec709: {
        // Exponent, scale, offset, slope of the straight part and where it ends (ITU-R BT.2020, table 4).
        constexpr double alpha = 1.09929682680944;
        constexpr double beta = 0.018053968510807;
        const cmsFloat64Number parameters[]{1 / 0.45, 1 / alpha, (alpha - 1) / alpha, 1 / 4.5, 4.5 * beta};
        return LittleCms::Curve(cmsBuildParametricToneCurve(context.get(), 4, parameters));
    }
    case Curve::gamma18:
        return LittleCms::Curve(cmsBuildGamma(context.get(), 1.8));
    case Curve::gamma22:
        return LittleCms::Curve(cmsBuildGamma(context.get(), 2.2));
    case Curve::adobeGamma:
        // 2 + 51/256, which the definition of Adobe RGB writes out.
        return LittleCms::Curve(cmsBuildGamma(context.get(), 2.19921875));
    case Curve::dotGain20:
        return dotGainCurve(context);
    }
    return nullptr;
}

LittleCms::Profile virtualProfile(const LittleCms::Context& context, const RgbSpace& space)
{
    const LittleCms::Curve curve = decodingCurve(context, space.curve);
    cmsToneCurve* const curves[]{curve.get(), curve.get(), curve.get()};
    const cmsCIExyY white{space.white.x, space.white.y, 1};
    const cmsCIExyYTRIPLE primaries{
        {space.red.x, space.red.y, 1}, {space.green.x, space.green.y, 1}, {space.blue.x, space.blue.y, 1}};
    return LittleCms::Profile(cmsCreateRGBProfileTHR(context.get(), &white, &primaries, curves));
}

WellKnown recognize(cmsHPROFILE profile, ColorModel model)
{
    switch (model) {
    case ColorModel::rgb:
        return recognizeRgb(profile);
    case ColorModel::gray:
        return recognizeGray(profile);
    case ColorModel::cmyk:
    case ColorModel::lab:
        break;
    }
    return WellKnown::none;
}

} // namespace ferrow
