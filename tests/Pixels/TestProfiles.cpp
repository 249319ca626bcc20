// SPDX-License-Identifier: GPL-3.0-or-later
#include "Pixels/TestProfiles.h"

#include <cmath>
#include <vector>

namespace ferrow::TestProfiles {

Curve gamma(double exponent)
{
    return {cmsBuildGamma(nullptr, exponent), cmsFreeToneCurve};
}

Curve table(int points, const std::function<double(double)>& curve)
{
    std::vector<cmsUInt16Number> values;
    for (int point = 0; point < points; ++point)
        values.push_back(
            static_cast<cmsUInt16Number>(std::lround(65535 * curve(static_cast<double>(point) / (points - 1)))));
    return {cmsBuildTabulatedToneCurve16(nullptr, static_cast<cmsUInt32Number>(points), values.data()),
            cmsFreeToneCurve};
}

double sRGBLight(double level)
{
    return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
}

QByteArray rgb(const Primaries& p, const cmsToneCurve& curve, double version)
{
    const cmsCIExyY white{p[6], p[7], 1};
    const cmsCIExyYTRIPLE primaries{{p[0], p[1], 1}, {p[2], p[3], 1}, {p[4], p[5], 1}};
    auto* shared = const_cast<cmsToneCurve*>(&curve); // The library only reads it.
    cmsToneCurve* const curves[]{shared, shared, shared};
    const Profile profile(cmsCreateRGBProfile(&white, &primaries, curves), cmsCloseProfile);
    cmsSetProfileVersion(profile.get(), version);
    return bytesOf(profile.get());
}

QByteArray gray(const cmsToneCurve& curve)
{
    const Profile profile(cmsCreateGrayProfile(cmsD50_xyY(), &curve), cmsCloseProfile);
    return bytesOf(profile.get());
}

QByteArray bytesOf(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    return bytes;
}

Profile open(const QByteArray& icc)
{
    return {cmsOpenProfileFromMem(icc.constData(), static_cast<cmsUInt32Number>(icc.size())), cmsCloseProfile};
}

} // namespace ferrow::TestProfiles
