// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/Matrix.h"

#include <cmath>

namespace ferrow {

Matrix product(const Matrix& left, const Matrix& right)
{
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            for (std::size_t k = 0; k < 3; ++k)
                result[row][column] += left[row][k] * right[k][column];
    return result;
}

std::optional<Matrix> inverse(const Matrix& m)
{
    const auto cofactor = [&](std::size_t row, std::size_t column) {
        const std::size_t r1 = (row + 1) % 3;
        const std::size_t r2 = (row + 2) % 3;
        const std::size_t c1 = (column + 1) % 3;
        const std::size_t c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    const double determinant = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    // sRGB's is 0.2; what is far below that is no space for pictures, and would blow up the numbers.
    if (std::abs(determinant) < 1e-4)
        return std::nullopt;
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            result[row][column] = cofactor(column, row) / determinant;
    return result;
}

std::optional<Matrix> colorantsOf(cmsHPROFILE profile)
{
    constexpr std::array tags{cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    Matrix matrix{};
    for (std::size_t column = 0; column < tags.size(); ++column) {
        const auto* colorant = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tags[column]));
        if (!colorant)
            return std::nullopt;
        matrix[0][column] = colorant->X;
        matrix[1][column] = colorant->Y;
        matrix[2][column] = colorant->Z;
    }
    return matrix;
}

} // namespace ferrow
