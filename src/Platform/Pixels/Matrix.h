// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/LittleCms.h"

#include <array>
#include <optional>

namespace ferrow {

/// Rows of columns.
using Matrix = std::array<std::array<double, 3>, 3>;

[[nodiscard]] Matrix product(const Matrix& left, const Matrix& right);

/// Absent when the matrix leads into a plane or nearly so.
[[nodiscard]] std::optional<Matrix> inverse(const Matrix& matrix);

/// From linear RGB to the D50 connection space, as a profile's colorants say. Absent when it has none.
[[nodiscard]] std::optional<Matrix> colorantsOf(cmsHPROFILE profile);

} // namespace ferrow
