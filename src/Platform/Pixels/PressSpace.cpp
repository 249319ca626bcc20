// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/PressSpace.h"

#include "Platform/Pixels/LittleCms.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace ferrow {

namespace {

using Triple = std::array<double, 3>;
constexpr std::size_t inks = 4;

constexpr Triple d50{0.9642, 1, 0.8249};

/// Lab (D50) of bare paper and of every solid and overprint, cyan counting 1, magenta 2, yellow 4 and black 8: what
/// measurements of coated web offset (CGATS TR 001) gave, in whole units.
constexpr std::array<Triple, 16> printedSolids{{
    {89, 0, 4},
    {56, -37, -40},
    {47, 69, -4},
    {26, 18, -41},
    {84, -6, 83},
    {52, -61, 26},
    {47, 63, 42},
    {25, 0, 0},
    {19, 1, 1},
    {14, -7, -8},
    {11, 14, 1},
    {8, 7, -7},
    {17, -2, 12},
    {14, -12, 5},
    {12, 10, 7},
    {9, 1, 1},
}};

/// What a halftone of half the paper covers beyond the half, by ink, and the exponent for the light that the paper
/// scatters between the dots (Yule and Nielsen). Chosen together so that ramps and mixtures come out as the
/// characterization has them: within 1.2 units of Lab on average.
constexpr std::array<double, inks> dotGain{0.14, 0.11, 0.11, 0.125};
constexpr double scattering = 1.25;

constexpr std::size_t gridPoints = 9;

Triple xyzOf(const Triple& lab)
{
    const auto cube = [](double t) { return t > 6.0 / 29 ? t * t * t : (t - 4.0 / 29) * 108 / 841; };
    const double lightness = (lab[0] + 16) / 116;
    return {d50[0] * cube(lightness + lab[1] / 500), d50[1] * cube(lightness), d50[2] * cube(lightness - lab[2] / 200)};
}

Triple labOf(const Triple& xyz)
{
    const auto root = [](double t) { return t > 216.0 / 24389 ? std::cbrt(t) : t * 841 / 108 + 4.0 / 29; };
    const double x = root(xyz[0] / d50[0]);
    const double y = root(xyz[1] / d50[1]);
    const double z = root(xyz[2] / d50[2]);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

/// The solids' light relative to the paper's, which counts as white, ready to be mixed by area.
std::array<Triple, 16> mixableSolids()
{
    const Triple paper = xyzOf(printedSolids[0]);
    std::array<Triple, 16> solids{};
    for (std::size_t solid = 0; solid < solids.size(); ++solid) {
        const Triple xyz = xyzOf(printedSolids[solid]);
        for (std::size_t i = 0; i < 3; ++i)
            solids[solid][i] = std::pow(xyz[i] / paper[i] * d50[i], 1 / scattering);
    }
    return solids;
}

/// The color of dots that cover these shares of the paper and lie over each other by chance (Neugebauer, Demichel).
Triple colorOf(const std::array<double, inks>& covered, const std::array<Triple, 16>& solids)
{
    Triple light{};
    for (std::size_t solid = 0; solid < solids.size(); ++solid) {
        double share = 1;
        for (std::size_t ink = 0; ink < inks; ++ink)
            share *= (solid >> ink & 1) != 0 ? covered[ink] : 1 - covered[ink];
        for (std::size_t i = 0; i < 3; ++i)
            light[i] += share * solids[solid][i];
    }
    for (double& component : light)
        component = std::pow(component, scattering);
    return labOf(light);
}

cmsUInt16Number encoded(double share)
{
    return static_cast<cmsUInt16Number>(std::lround(std::clamp(share, 0.0, 1.0) * 65535));
}

/// Lab at every point of a grid over the covered shares, black running fastest.
std::vector<cmsUInt16Number> labTable()
{
    const std::array<Triple, 16> solids = mixableSolids();
    std::size_t count = 1;
    for (std::size_t ink = 0; ink < inks; ++ink)
        count *= gridPoints;
    std::vector<cmsUInt16Number> table;
    table.reserve(count * 3);
    for (std::size_t point = 0; point < count; ++point) {
        std::array<double, inks> covered{};
        std::size_t rest = point;
        for (std::size_t ink = inks; ink-- > 0; rest /= gridPoints)
            covered[ink] = double(rest % gridPoints) / (gridPoints - 1);
        const Triple lab = colorOf(covered, solids);
        table.insert(table.end(),
                     {encoded(lab[0] / 100), encoded((lab[1] + 128) / 255), encoded((lab[2] + 128) / 255)});
    }
    return table;
}

/// From the share of the paper that the file asks for to the share that the press covers.
LittleCms::Curve gainCurve(const LittleCms::Context& context, double gain)
{
    std::array<cmsUInt16Number, 256> levels{};
    for (std::size_t level = 0; level < levels.size(); ++level) {
        const double asked = double(level) / 255;
        levels[level] = encoded(asked + 4 * gain * asked * (1 - asked));
    }
    return LittleCms::Curve(cmsBuildTabulatedToneCurve16(context.get(), levels.size(), levels.data()));
}

QByteArray makePressProfile()
{
    const LittleCms::Context context;
    std::array<LittleCms::Curve, inks> curves;
    std::array<cmsToneCurve*, inks> gains{};
    for (std::size_t ink = 0; ink < inks; ++ink) {
        curves[ink] = gainCurve(context, dotGain[ink]);
        gains[ink] = curves[ink].get();
    }
    const std::vector<cmsUInt16Number> table = labTable();

    const std::unique_ptr<cmsPipeline, decltype(&cmsPipelineFree)> pipeline(cmsPipelineAlloc(context.get(), inks, 3),
                                                                            cmsPipelineFree);
    cmsPipelineInsertStage(pipeline.get(), cmsAT_END, cmsStageAllocToneCurves(context.get(), inks, gains.data()));
    cmsPipelineInsertStage(pipeline.get(), cmsAT_END,
                           cmsStageAllocCLut16bit(context.get(), gridPoints, inks, 3, table.data()));
    cmsPipelineInsertStage(pipeline.get(), cmsAT_END, cmsStageAllocToneCurves(context.get(), 3, nullptr));

    const LittleCms::Profile profile(cmsCreateProfilePlaceholder(context.get()));
    cmsSetProfileVersion(profile.get(), 4.3);
    cmsSetDeviceClass(profile.get(), cmsSigOutputClass);
    cmsSetColorSpace(profile.get(), cmsSigCmykData);
    cmsSetPCS(profile.get(), cmsSigLabData);
    cmsWriteTag(profile.get(), cmsSigAToB0Tag, pipeline.get());
    return LittleCms::bytesOf(profile.get());
}

} // namespace

const QByteArray& pressProfile()
{
    static const QByteArray profile = makePressProfile();
    return profile;
}

} // namespace ferrow
