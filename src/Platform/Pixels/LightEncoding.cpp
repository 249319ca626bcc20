// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/LightEncoding.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace ferrow {

namespace {

bool hasAny(cmsHPROFILE profile, std::initializer_list<cmsTagSignature> tags)
{
    return std::ranges::any_of(tags, [&](cmsTagSignature tag) { return cmsIsTag(profile, tag) != 0; });
}

} // namespace

Lanes columnOf(const Matrix& matrix, std::size_t column)
{
    return Lanes{float(matrix[0][column]), float(matrix[1][column]), float(matrix[2][column]), 0};
}

float lightOf(const cmsToneCurve* curve, double level)
{
    const float light = cmsEvalToneCurveFloat(curve, static_cast<cmsFloat32Number>(level));
    return light > 0 ? std::min(light, 1.0F) : 0.0F; // Not a number becomes 0 as well.
}

std::optional<MatrixProfile> matrixProfileOf(cmsHPROFILE profile, Way way)
{
    const bool hasTables = way == Way::fromPictures ? hasAny(profile, {cmsSigAToB0Tag, cmsSigAToB1Tag})
                                                    : hasAny(profile, {cmsSigBToA0Tag, cmsSigBToA1Tag});
    const std::optional<Matrix> colorants = colorantsOf(profile);
    if (hasTables || !colorants)
        return std::nullopt;
    MatrixProfile result{*colorants, {}};
    constexpr std::array tags{cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    for (std::size_t channel = 0; channel < tags.size(); ++channel) {
        result.curves[channel] = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tags[channel]));
        if (!result.curves[channel])
            return std::nullopt;
    }
    return result;
}

LightEncoding::LightEncoding(const std::array<const cmsToneCurve*, 3>& curves)
{
    for (std::size_t channel = 0; channel < curves.size(); ++channel) {
        const LittleCms::Curve encoding(cmsReverseToneCurve(curves[channel]));
        if (!encoding)
            throw std::bad_alloc();
        for (std::size_t entry = 0; entry < levels_[channel].size(); ++entry) {
            const auto bits = std::int32_t(entry) + first;
            const auto middle = std::bit_cast<float>((bits << droppedBits) | (1 << (droppedBits - 1)));
            levels_[channel][entry] = std::uint8_t(std::lround(lightOf(encoding.get(), middle) * 255));
        }
        tables_[channel] = levels_[channel] == levels_[0] ? 0 : channel;
    }
}

} // namespace ferrow
