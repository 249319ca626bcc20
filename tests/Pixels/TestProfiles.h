// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <lcms2.h>

#include <array>
#include <functional>
#include <memory>

/// Profiles made for a test with the colour library, as other programs' profiles are.
namespace ferrow::TestProfiles {

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;
using Curve = std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)>;

/// x and y of red, green, blue and white.
using Primaries = std::array<double, 8>;

inline constexpr Primaries sRGBPrimaries{0.64, 0.33, 0.30, 0.60, 0.15, 0.06, 0.3127, 0.3290};
inline constexpr Primaries p3Primaries{0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.3127, 0.3290};
inline constexpr Primaries adobePrimaries{0.64, 0.33, 0.21, 0.71, 0.15, 0.06, 0.3127, 0.3290};
inline constexpr Primaries proPhotoPrimaries{0.7347, 0.2653, 0.1596, 0.8404, 0.0366, 0.0001, 0.3457, 0.3585};

[[nodiscard]] Curve gamma(double exponent);
/// `curve` sampled at that many points.
[[nodiscard]] Curve table(int points, const std::function<double(double)>& curve);
[[nodiscard]] double sRGBLight(double level);

[[nodiscard]] QByteArray rgb(const Primaries& primaries, const cmsToneCurve& curve, double version = 2.1);
[[nodiscard]] QByteArray gray(const cmsToneCurve& curve);
[[nodiscard]] QByteArray bytesOf(cmsHPROFILE profile);
[[nodiscard]] Profile open(const QByteArray& icc);

} // namespace ferrow::TestProfiles
