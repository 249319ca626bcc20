// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/MatrixShaper.h"

#include "Platform/Pixels/FixedPointShaper.h"
#include "Platform/Pixels/LightEncoding.h"
#include "Platform/Pixels/PixelRows.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <type_traits>
#include <vector>

namespace ferrow {

namespace {

/// From one component of a pixel to what it adds to the light of the three of the result.
template <typename Component>
class Decoding;

template <>
class Decoding<std::uint8_t> {
public:
    Decoding(const cmsToneCurve* curve, Lanes column) : table_(256)
    {
        for (std::size_t level = 0; level < table_.size(); ++level)
            table_[level].lanes = column * lightOf(curve, double(level) / 255);
    }

    [[nodiscard]] Lanes operator()(std::uint8_t level) const { return table_[level].lanes; }

private:
    struct Entry {
        Lanes lanes;
    };
    std::vector<Entry> table_;
};

/// Between points of the curve, since a table of all levels would not stay near the processor.
template <>
class Decoding<std::uint16_t> {
public:
    Decoding(const cmsToneCurve* curve, Lanes column) : points_((65536 >> stepBits) + 1), column_(column)
    {
        for (std::size_t point = 0; point < points_.size(); ++point)
            points_[point] = lightOf(curve, std::min(1.0, double(point << stepBits) / 65535));
    }

    [[nodiscard]] Lanes operator()(std::uint16_t level) const
    {
        const float* point = points_.data() + (level >> stepBits);
        const float part = float(level & ((1 << stepBits) - 1)) / (1 << stepBits);
        return column_ * (point[0] + (point[1] - point[0]) * part);
    }

private:
    static constexpr int stepBits = 4;
    std::vector<float> points_;
    Lanes column_;
};

/// To levels of 8 bits.
template <typename Source, typename Target>
class MatrixShaper final : public RowConverter {
public:
    /// `matrix` leads from the source's light to the target's.
    MatrixShaper(const std::array<const cmsToneCurve*, 3>& decoding, const Matrix& matrix,
                 const std::array<const cmsToneCurve*, 3>& encoding)
        : red_(decoding[0], columnOf(matrix, 0)), green_(decoding[1], columnOf(matrix, 1)),
          blue_(decoding[2], columnOf(matrix, 2)), encoding_(encoding)
    {
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        const LightEncoding<std::uint8_t>::Tables encoding(encoding_);
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            encoding.store(red_(Source::component(in, 0)) + green_(Source::component(in, 1)) +
                               blue_(Source::component(in, 2)),
                           out);
            carryAlpha<Source, Target>(in, out);
        }
    }

private:
    Decoding<typename Source::ComponentType> red_;
    Decoding<typename Source::ComponentType> green_;
    Decoding<typename Source::ComponentType> blue_;
    LightEncoding<std::uint8_t> encoding_;
};

/// To levels of 16 bits, within half of one of the exact result. In double precision: where parts of the light cancel
/// each other out, what is left of single precision would be off by most of a level.
template <typename Source, typename Target>
class PreciseShaper final : public RowConverter {
public:
    PreciseShaper(const std::array<const cmsToneCurve*, 3>& decoding, const Matrix& matrix,
                  const std::array<const cmsToneCurve*, 3>& encoding)
        : matrix_(matrix), encoding_(encoding)
    {
        constexpr std::size_t most = std::numeric_limits<typename Source::ComponentType>::max();
        for (std::size_t channel = 0; channel < decoding.size(); ++channel) {
            for (std::size_t level = 0; level <= most; ++level)
                light_[channel].push_back(preciseLightOf(decoding[channel], double(level) / most));
            tables_[channel] = light_[channel] == light_[0] ? 0 : channel;
        }
    }

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        const typename LightEncoding<std::uint16_t>::Tables encoding(encoding_);
        const double* const redLight = light_[tables_[0]].data();
        const double* const greenLight = light_[tables_[1]].data();
        const double* const blueLight = light_[tables_[2]].data();
        const Matrix matrix = matrix_;
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            const double red = redLight[Source::component(in, 0)];
            const double green = greenLight[Source::component(in, 1)];
            const double blue = blueLight[Source::component(in, 2)];
            const auto light = [&](std::size_t row) {
                return float(matrix[row][0] * red + matrix[row][1] * green + matrix[row][2] * blue);
            };
            encoding.store(Lanes{light(0), light(1), light(2), 0}, out);
            carryAlpha<Source, Target>(in, out);
        }
    }

private:
    Matrix matrix_;
    std::array<std::vector<double>, 3> light_; ///< By level.
    /// Which table each component uses: equal ones are read as one, so that it stays near the processor.
    std::array<std::size_t, 3> tables_{};
    LightEncoding<std::uint16_t> encoding_;
};

} // namespace

std::unique_ptr<RowConverter> shapedRows(cmsHPROFILE from, PixelFormat source, cmsHPROFILE to, PixelFormat target)
{
    if (source.model != ColorModel::rgb)
        return nullptr;
    const auto decoding = matrixProfileOf(from, Way::fromPictures);
    const auto encoding = matrixProfileOf(to, Way::toPictures);
    const std::optional<Matrix> back = encoding ? inverse(encoding->colorants) : std::nullopt;
    if (!decoding || !back)
        return nullptr;
    const Matrix matrix = product(*back, decoding->colorants);
    if (auto rows = fixedPointRows(decoding->curves, matrix, encoding->curves, source, target))
        return rows;
    return withPixelTypes(source, target, [&]<typename Source, typename Target>() -> std::unique_ptr<RowConverter> {
        if constexpr (Source::isGray)
            return nullptr;
        else if constexpr (std::is_same_v<typename Target::ComponentType, std::uint16_t>)
            return std::make_unique<PreciseShaper<Source, Target>>(decoding->curves, matrix, encoding->curves);
        else
            return std::make_unique<MatrixShaper<Source, Target>>(decoding->curves, matrix, encoding->curves);
    });
}

} // namespace ferrow
