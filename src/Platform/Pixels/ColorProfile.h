// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Pixels/PixelFormat.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace ferrow {

/// Spaces that are recognized by what a profile says of primaries and curve, not by what it calls itself.
enum class WellKnown : std::uint8_t {
    none,
    sRGB,
    displayP3,
    adobeRGB,
    proPhoto,
    rec2020,
    grayGamma22,
    sGray,
    dotGain20,
    bt2100Pq,
    bt2100Hlg
};

/// A color space as a value: ICC bytes with a name. Copies share the bytes.
class ColorProfile {
public:
    /// The empty profile: "the source brought none", read as sRGB, or as the built-in press space for CMYK, gray gamma
    /// of sRGB for gray, D50 Lab for Lab.
    ColorProfile() = default;

    [[nodiscard]] static const ColorProfile& sRGB();
    [[nodiscard]] static const ColorProfile& displayP3();
    /// BT.2020 primaries with its own curve, for HEIC pictures that say so by code points.
    [[nodiscard]] static const ColorProfile& rec2020();
    /// One of the RGB spaces above or Adobe's or ProPhoto's; the empty profile for any other.
    [[nodiscard]] static ColorProfile of(WellKnown space);
    /// Gray with the sRGB curve.
    [[nodiscard]] static const ColorProfile& sGray();

    /// BT.2020 primaries with one of the curves of BT.2100, WellKnown::bt2100Pq or bt2100Hlg, for pictures that say so
    /// by code points. `peak` is how bright the brightest of a PQ picture is, in cd/m². Nothing is converted to it.
    [[nodiscard]] static ColorProfile hdr(WellKnown curve, ColorModel model, int peak = usualPeak);
    static constexpr int usualPeak = 1'000; ///< What pictures are made for that do not say it.

    /// A profile read from a file. Absent when the bytes are not a usable profile of at most 16 MB, or when it is for
    /// another model than `model` (a gray profile in an RGB picture is no use). What strict readers would refuse of it
    /// is mended.
    [[nodiscard]] static std::optional<ColorProfile> fromIcc(const QByteArray& icc, ColorModel model);

    [[nodiscard]] bool isEmpty() const { return icc_.isEmpty(); }
    [[nodiscard]] const QByteArray& icc() const { return icc_; }
    [[nodiscard]] ColorModel model() const { return model_; }

    /// The space that it was recognized as.
    [[nodiscard]] WellKnown wellKnown() const { return known_; }

    [[nodiscard]] bool isHdr() const { return known_ == WellKnown::bt2100Pq || known_ == WellKnown::bt2100Hlg; }
    /// Of a picture that isHdr(), in cd/m².
    [[nodiscard]] int peak() const { return peak_; }

    /// Whether colors can be converted to it: RGB, with a way back from the connection space. Profiles of cameras and
    /// scanners may have none.
    [[nodiscard]] bool canBeTarget() const { return canBeTarget_; }

    /// As shown to the user: a well-known space's name (recognized by primaries and curve: "sRGB IEC61966-2.1",
    /// "Display P3", "Adobe RGB (1998)", …), "Embedded profile" for any other, "sRGB (assumed)" for the empty one.
    [[nodiscard]] QString name() const;

    /// Whether pictures in both look the same without any conversion: same bytes, or both recognized as the same
    /// well-known space. The empty profile counts as sRGB.
    [[nodiscard]] bool isEquivalentTo(const ColorProfile& other) const;

    bool operator==(const ColorProfile& other) const
    {
        return icc_ == other.icc_ && isHdr() == other.isHdr() && (!isHdr() || known_ == other.known_);
    }

private:
    ColorProfile(QByteArray icc, ColorModel model, WellKnown known, bool canBeTarget);

    QByteArray icc_;
    ColorModel model_ = ColorModel::rgb;
    WellKnown known_ = WellKnown::none;
    bool canBeTarget_ = true;
    int peak_ = 0;
};

} // namespace ferrow
