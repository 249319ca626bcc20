// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/LightEncoding.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <span>

namespace ferrow {

namespace {

bool hasAny(cmsHPROFILE profile, std::initializer_list<cmsTagSignature> tags)
{
    return std::ranges::any_of(tags, [&](cmsTagSignature tag) { return cmsIsTag(profile, tag) != 0; });
}

/// The values of a curve that is a table; empty for a formula.
std::span<const cmsUInt16Number> tableOf(const cmsToneCurve* curve)
{
    if (cmsGetToneCurveParametricType(curve) != 0)
        return {};
    return {cmsGetToneCurveEstimatedTable(curve), cmsGetToneCurveEstimatedTableEntries(curve)};
}

/// Of the kinds of formulas in use, which the library rounds to single precision: by the numbers of the ICC's functions
/// 0, 3 and 4, which the library counts from 1.
double formulaLightOf(const cmsToneCurve* curve, double level)
{
    const cmsFloat64Number* const p = cmsGetToneCurveParams(curve);
    const auto power = [&] { return std::pow(std::max(p[1] * level + p[2], 0.0), p[0]); };
    double light = 0;
    switch (cmsGetToneCurveParametricType(curve)) {
    case 1:
        light = std::pow(level, p[0]);
        break;
    case 4:
        light = level >= p[4] ? power() : p[3] * level;
        break;
    case 5:
        light = level >= p[4] ? power() + p[5] : p[3] * level + p[6];
        break;
    default:
        return double(lightOf(curve, level));
    }
    return light > 0 ? std::min(light, 1.0) : 0; // Not a number becomes 0 as well.
}

/// A curve's inverse, with all that its table tells.
class LevelOfLight {
public:
    explicit LevelOfLight(const cmsToneCurve* curve) : table_(tableOf(curve)), reversed_(cmsReverseToneCurve(curve))
    {
        if (!reversed_)
            throw std::bad_alloc();
        // What falls now and then has no inverse of its own: the library's will do.
        if (table_.size() < 2 || !std::ranges::is_sorted(table_))
            table_ = {};
    }

    /// Within 0…1.
    [[nodiscard]] double operator()(float light) const
    {
        if (table_.empty())
            return lightOf(reversed_.get(), light);
        const double value = double(light) * 65535;
        const auto behind = std::ranges::lower_bound(table_, value, {}, [](cmsUInt16Number v) { return double(v); });
        if (behind == table_.begin())
            return 0;
        if (behind == table_.end())
            return 1;
        const auto before = behind - 1;
        const double part = (value - *before) / double(*behind - *before);
        return (double(before - table_.begin()) + part) / double(table_.size() - 1);
    }

private:
    std::span<const cmsUInt16Number> table_;
    LittleCms::Curve reversed_;
};

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

double preciseLightOf(const cmsToneCurve* curve, double level)
{
    const auto table = tableOf(curve);
    if (table.size() < 2)
        return formulaLightOf(curve, level);
    const double place = std::clamp(level, 0.0, 1.0) * double(table.size() - 1);
    const auto before = std::min(std::size_t(place), table.size() - 2);
    const double part = place - double(before);
    return (table[before] * (1 - part) + table[before + 1] * part) / 65535;
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

LightEncoding<std::uint8_t>::LightEncoding(const std::array<const cmsToneCurve*, 3>& curves)
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

LightEncoding<std::uint16_t>::LightEncoding(const std::array<const cmsToneCurve*, 3>& curves)
{
    for (std::size_t channel = 0; channel < curves.size(); ++channel) {
        const LevelOfLight level(curves[channel]);
        for (std::int32_t entry = first; entry <= last; ++entry)
            levels_[channel].push_back(float(level(std::bit_cast<float>(entry << droppedBits)) * 65535 + 0.5));
        tables_[channel] = levels_[channel] == levels_[0] ? 0 : channel;
    }
}

} // namespace ferrow
