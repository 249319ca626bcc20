// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ColorProfile.h"

#include "Platform/Pixels/LittleCms.h"
#include "Platform/Pixels/WellKnownSpaces.h"

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

QByteArray labProfile()
{
    const LittleCms::Context context;
    const LittleCms::Profile profile(cmsCreateLab4ProfileTHR(context.get(), nullptr));
    describe(context, profile.get(), "Lab D50");
    return LittleCms::bytesOf(profile.get());
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

/// Whether the tables are there and sound. Nothing is computed ahead, so that this costs no more than reading them.
bool canBeConverted(const LittleCms::Context& context, cmsHPROFILE profile)
{
    const LittleCms::Profile lab(cmsCreateLab4ProfileTHR(context.get(), nullptr));
    const cmsUInt32Number channels = cmsChannelsOf(cmsGetColorSpace(profile));
    const cmsUInt32Number format = COLORSPACE_SH(PT_ANY) | CHANNELS_SH(channels) | BYTES_SH(2);
    return LittleCms::Transform(cmsCreateTransformTHR(context.get(), profile, format, lab.get(), TYPE_Lab_16,
                                                      INTENT_RELATIVE_COLORIMETRIC,
                                                      cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE)) != nullptr;
}

} // namespace

ColorProfile::ColorProfile(QByteArray icc, ColorModel model, WellKnown known)
    : icc_(std::move(icc)), model_(model), known_(known)
{
}

const ColorProfile& ColorProfile::sRGB()
{
    static const ColorProfile profile(rgbProfile(rgbSpace(WellKnown::sRGB)), ColorModel::rgb, WellKnown::sRGB);
    return profile;
}

const ColorProfile& ColorProfile::displayP3()
{
    static const ColorProfile profile(rgbProfile(rgbSpace(WellKnown::displayP3)), ColorModel::rgb,
                                      WellKnown::displayP3);
    return profile;
}

const ColorProfile& ColorProfile::rec2020()
{
    static const ColorProfile profile(rgbProfile(rgbSpace(WellKnown::rec2020)), ColorModel::rgb, WellKnown::rec2020);
    return profile;
}

const ColorProfile& ColorProfile::sGray()
{
    static const ColorProfile profile(grayProfile(Curve::sRGB, "sGray"), ColorModel::gray, WellKnown::sGray);
    return profile;
}

const ColorProfile& ColorProfile::lab()
{
    static const ColorProfile profile(labProfile(), ColorModel::lab, WellKnown::lab);
    return profile;
}

std::optional<ColorProfile> ColorProfile::fromIcc(const QByteArray& icc, ColorModel model)
{
    if (icc.size() <= headerLength || icc.size() > largestProfile)
        return std::nullopt;
    const LittleCms::Context context;
    const LittleCms::Profile profile = LittleCms::openProfile(context, icc);
    if (!profile || cmsGetColorSpace(profile.get()) != signatureOf(model) || !describesPictures(profile.get()))
        return std::nullopt;
    const WellKnown known = recognise(profile.get(), model);
    if (known == WellKnown::none && !canBeConverted(context, profile.get()))
        return std::nullopt;
    return ColorProfile(icc, model, known);
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
    return icc_ == other.icc_ || (space != WellKnown::none && space == spaceOf(other));
}

} // namespace ferrow
