// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ColorProfile.h"

#include "Platform/Pixels/IccMending.h"
#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/WellKnownSpaces.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace ferrow {

namespace {

constexpr qsizetype largestProfile = 16 << 20;
constexpr qsizetype headerLength = 128;

cmsColorSpaceSignature signatureOf(ColorModel model)
{
    switch (model) {
    case ColorModel::gray:
        return cmsSigGrayData;
    case ColorModel::rgb:
        return cmsSigRgbData;
    case ColorModel::cmyk:
        return cmsSigCmykData;
    case ColorModel::lab:
        return cmsSigLabData;
    }
    return cmsSigRgbData;
}

void describe(const LittleCms::Context& context, cmsHPROFILE profile, const char* description)
{
    using Text = std::unique_ptr<cmsMLU, decltype(&cmsMLUfree)>;
    for (const auto& [tag, words] : {std::pair{cmsSigProfileDescriptionTag, description},
                                     std::pair{cmsSigCopyrightTag, "No copyright, use freely"}}) {
        const Text text(cmsMLUalloc(context.get(), 1), cmsMLUfree);
        cmsMLUsetASCII(text.get(), "en", "US", words);
        cmsWriteTag(profile, tag, text.get());
    }
}

QByteArray rgbProfile(const RgbSpace& space)
{
    const LittleCms::Context context;
    const LittleCms::Profile profile = virtualProfile(context, space);
    describe(context, profile.get(), space.name);
    return LittleCms::bytesOf(profile.get());
}

QByteArray grayProfile(Curve curve, const char* name)
{
    const LittleCms::Context context;
    const LittleCms::Profile profile(
        cmsCreateGrayProfileTHR(context.get(), cmsD50_xyY(), decodingCurve(context, curve).get()));
    describe(context, profile.get(), name);
    return LittleCms::bytesOf(profile.get());
}

qsizetype declaredSize(const QByteArray& icc)
{
    return icc.size() < headerLength ? 0 : qsizetype(qFromBigEndian<quint32>(icc.constData()));
}

/// Whether what the profile is made for includes saying what a picture's numbers mean.
bool describesPictures(cmsHPROFILE profile)
{
    switch (cmsGetDeviceClass(profile)) {
    case cmsSigInputClass:
    case cmsSigDisplayClass:
    case cmsSigOutputClass:
    case cmsSigColorSpaceClass:
        return cmsGetPCS(profile) == cmsSigXYZData || cmsGetPCS(profile) == cmsSigLabData;
    default:
        return false;
    }
}

/// Whether the tables for that way are there and sound. Nothing is computed ahead, so that this costs no more than
/// reading them.
bool leadsBetween(const LittleCms::Context& context, cmsHPROFILE from, cmsHPROFILE to)
{
    const auto format = [](cmsHPROFILE profile) {
        return COLORSPACE_SH(PT_ANY) | CHANNELS_SH(cmsChannelsOf(cmsGetColorSpace(profile))) | BYTES_SH(2U);
    };
    const LittleCms::Transform transform(cmsCreateTransformTHR(context.get(), from, format(from), to, format(to),
                                                               INTENT_RELATIVE_COLORIMETRIC,
                                                               cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE));
    return transform != nullptr;
}

} // namespace

ColorProfile::ColorProfile(QByteArray icc, ColorModel model, WellKnown known, bool canBeTarget)
    : icc_(std::move(icc)), model_(model), known_(known), canBeTarget_(canBeTarget)
{
}

const ColorProfile& ColorProfile::sRGB()
{
    static const ColorProfile profile(rgbProfile(rgbSpace(WellKnown::sRGB)), ColorModel::rgb, WellKnown::sRGB, true);
    return profile;
}

const ColorProfile& ColorProfile::displayP3()
{
    static const ColorProfile profile(rgbProfile(rgbSpace(WellKnown::displayP3)), ColorModel::rgb, WellKnown::displayP3,
                                      true);
    return profile;
}

const ColorProfile& ColorProfile::rec2020()
{
    static const ColorProfile profile(rgbProfile(rgbSpace(WellKnown::rec2020)), ColorModel::rgb, WellKnown::rec2020,
                                      true);
    return profile;
}

ColorProfile ColorProfile::of(WellKnown space)
{
    switch (space) {
    case WellKnown::sRGB:
        return sRGB();
    case WellKnown::displayP3:
        return displayP3();
    case WellKnown::rec2020:
        return rec2020();
    case WellKnown::adobeRGB: {
        static const ColorProfile profile(rgbProfile(rgbSpace(space)), ColorModel::rgb, space, true);
        return profile;
    }
    case WellKnown::proPhoto: {
        static const ColorProfile profile(rgbProfile(rgbSpace(space)), ColorModel::rgb, space, true);
        return profile;
    }
    case WellKnown::none:
    case WellKnown::grayGamma22:
    case WellKnown::sGray:
    case WellKnown::dotGain20:
    case WellKnown::bt2100Pq:
    case WellKnown::bt2100Hlg:
        break;
    }
    return {};
}

ColorProfile ColorProfile::hdr(WellKnown curve, ColorModel model, int peak)
{
    ColorProfile profile(rec2020().icc(), model, curve, false); // For the primaries.
    profile.peak_ = peak;
    return profile;
}

const ColorProfile& ColorProfile::sGray()
{
    static const ColorProfile profile(grayProfile(Curve::sRGB, "sGray"), ColorModel::gray, WellKnown::sGray, false);
    return profile;
}

std::optional<ColorProfile> ColorProfile::fromIcc(const QByteArray& given, ColorModel model)
{
    const qsizetype size = declaredSize(given);
    if (size <= headerLength || size > largestProfile || size > given.size())
        return std::nullopt;
    const QByteArray icc = given.first(size); // Padding that a container added is not part of it.
    const LittleCms::Context context(size);
    const LittleCms::Profile profile = LittleCms::openProfile(context, icc);
    if (!profile || cmsGetColorSpace(profile.get()) != signatureOf(model) || !describesPictures(profile.get()))
        return std::nullopt;
    const WellKnown known = recognize(profile.get(), model);
    if (known != WellKnown::none)
        return ColorProfile(mendedIcc(icc), model, known, model == ColorModel::rgb);

    const LittleCms::Profile lab(cmsCreateLab4ProfileTHR(context.get(), nullptr));
    if (!leadsBetween(context, profile.get(), lab.get()))
        return std::nullopt;
    const bool canBeTarget = model == ColorModel::rgb && leadsBetween(context, lab.get(), profile.get());
    return ColorProfile(mendedIcc(icc), model, known, canBeTarget);
}

QString ColorProfile::name() const
{
    if (isEmpty())
        return QStringLiteral("sRGB (assumed)");
    return known_ == WellKnown::none ? QStringLiteral("Embedded profile") : QLatin1StringView(nameOf(known_));
}

bool ColorProfile::isEquivalentTo(const ColorProfile& other) const
{
    const auto spaceOf = [](const ColorProfile& profile) {
        return profile.isEmpty() ? WellKnown::sRGB : profile.known_;
    };
    const WellKnown space = spaceOf(*this);
    if (isHdr() || other.isHdr())
        return *this == other;
    return icc_ == other.icc_ || (space != WellKnown::none && space == spaceOf(other));
}

} // namespace ferrow
