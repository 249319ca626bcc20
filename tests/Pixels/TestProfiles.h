// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/ColorProfile.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

/// Profiles made for a test with the color library, as other programs' profiles are.
namespace ferrow::TestProfiles {

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;
using Curve = std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)>;

/// x and y of red, green, blue and white.
using Primaries = std::array<double, 8>;

inline constexpr Primaries sRGBPrimaries{0.64, 0.33, 0.30, 0.60, 0.15, 0.06, 0.3127, 0.3290};
inline constexpr Primaries p3Primaries{0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.3127, 0.3290};
inline constexpr Primaries adobePrimaries{0.64, 0.33, 0.21, 0.71, 0.15, 0.06, 0.3127, 0.3290};
inline constexpr Primaries proPhotoPrimaries{0.7347, 0.2653, 0.1596, 0.8404, 0.0366, 0.0001, 0.3457, 0.3585};

inline Curve gamma(double exponent)
{
    return {cmsBuildGamma(nullptr, exponent), cmsFreeToneCurve};
}

/// `curve` sampled at that many points.
inline Curve table(cmsUInt32Number points, const std::function<double(double)>& curve)
{
    std::vector<cmsUInt16Number> values;
    for (cmsUInt32Number point = 0; point < points; ++point)
        values.push_back(cmsUInt16Number(std::lround(65535 * curve(double(point) / (points - 1)))));
    return {cmsBuildTabulatedToneCurve16(nullptr, points, values.data()), cmsFreeToneCurve};
}

inline double sRGBLight(double level)
{
    return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
}

/// The curve of sRGB with the numbers that a profile holds, which are 65536ths, and its inverse.
namespace StoredSRGB {

inline double stored(double number)
{
    return std::round(number * 65536) / 65536;
}

inline const double exponent = stored(2.4);
inline const double factor = stored(1 / 1.055);
inline const double offset = stored(0.055 / 1.055);
inline const double slope = stored(1 / 12.92);
inline const double end = stored(0.04045);

inline double light(double level)
{
    return level < end ? level * slope : std::pow(factor * level + offset, exponent);
}

inline double level(double light)
{
    return light < end * slope ? light / slope : (std::pow(light, 1 / exponent) - offset) / factor;
}

} // namespace StoredSRGB

inline QByteArray bytesOf(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(qsizetype(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    return bytes;
}

inline QByteArray rgb(const Primaries& p, const Curve& curve)
{
    const cmsCIExyY white{p[6], p[7], 1};
    const cmsCIExyYTRIPLE primaries{{p[0], p[1], 1}, {p[2], p[3], 1}, {p[4], p[5], 1}};
    cmsToneCurve* const curves[]{curve.get(), curve.get(), curve.get()};
    const Profile profile(cmsCreateRGBProfile(&white, &primaries, curves), cmsCloseProfile);
    return bytesOf(profile.get());
}

inline QByteArray gray(const Curve& curve)
{
    return bytesOf(Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()), cmsCloseProfile).get());
}

/// What the color library makes of RGB colors of 0…1 in floating point.
inline std::vector<double> exactly(const QByteArray& from, const QByteArray& to, const std::vector<double>& in)
{
    const Profile source(cmsOpenProfileFromMem(from.constData(), cmsUInt32Number(from.size())), cmsCloseProfile);
    const Profile target(cmsOpenProfileFromMem(to.constData(), cmsUInt32Number(to.size())), cmsCloseProfile);
    cmsHTRANSFORM transform = cmsCreateTransform(source.get(), TYPE_RGB_DBL, target.get(), TYPE_RGB_DBL,
                                                 INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
    std::vector<double> out(in.size());
    cmsDoTransform(transform, in.data(), out.data(), cmsUInt32Number(in.size() / 3));
    cmsDeleteTransform(transform);
    std::ranges::transform(out, out.begin(), [](double level) { return std::clamp(level, 0.0, 1.0); });
    return out;
}

} // namespace ferrow::TestProfiles
