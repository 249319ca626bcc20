// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/LabRows.h"

#include "Platform/Pixels/LightEncoding.h"
#include "Platform/Pixels/PixelRows.h"

#include <limits>

namespace ferrow {

namespace {

/// The inverse of Lab's lightness function (CIE 15).
float lightOfLab(float t)
{
    return t > 6.0F / 29 ? t * t * t : (t - 4.0F / 29) * 108 / 841;
}

template <typename Source, typename Target>
class LabRows final : public RowConverter {
public:
    /// `matrix` leads from the D50 connection space to the target's light.
    LabRows(const Matrix& matrix, const std::array<const cmsToneCurve*, 3>& encoding)
        : x_(columnOf(matrix, 0) * float(cmsD50_XYZ()->X)), y_(columnOf(matrix, 1)),
          z_(columnOf(matrix, 2) * float(cmsD50_XYZ()->Z)), encoding_(encoding)
    {
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        constexpr float most = std::numeric_limits<typename Source::ComponentType>::max();
        const typename Encoding::Tables encoding(encoding_);
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            const float lightness = (float(Source::component(in, 0)) * (100 / most) + 16) / 116;
            const float a = float(Source::component(in, 1)) * (255 / most) - 128;
            const float b = float(Source::component(in, 2)) * (255 / most) - 128;
            encoding.store(x_ * lightOfLab(lightness + a / 500) + y_ * lightOfLab(lightness) +
                               z_ * lightOfLab(lightness - b / 200),
                           out);
            carryAlpha<Source, Target>(in, out);
        }
    }

private:
    using Encoding = LightEncoding<typename Target::ComponentType>;

    Lanes x_;
    Lanes y_;
    Lanes z_;
    Encoding encoding_;
};

} // namespace

std::unique_ptr<RowConverter> labRows(PixelFormat source, cmsHPROFILE to, PixelFormat target)
{
    const auto encoding = matrixProfileOf(to, Way::toPictures);
    const std::optional<Matrix> matrix = encoding ? inverse(encoding->colorants) : std::nullopt;
    if (!matrix)
        return nullptr;
    return withPixelTypes(source, target, [&]<typename Source, typename Target>() -> std::unique_ptr<RowConverter> {
        if constexpr (Source::isGray)
            return nullptr;
        else
            return std::make_unique<LabRows<Source, Target>>(*matrix, encoding->curves);
    });
}

} // namespace ferrow
