// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ColorProfile.h"

#include "Pixels/TestProfiles.h"

#include <gtest/gtest.h>

#include <QtEndian>

namespace ferrow {

namespace {

using namespace TestProfiles;

QByteArray nameOf(const QByteArray& icc, ColorModel model = ColorModel::rgb)
{
    const auto profile = ColorProfile::fromIcc(icc, model);
    return profile ? profile->name().toUtf8() : "refused";
}

QByteArray number(qsizetype value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(quint32(value), bytes.data());
    return bytes;
}

QByteArray changed(QByteArray icc, qsizetype at, const QByteArray& bytes)
{
    return icc.replace(at, bytes.size(), bytes);
}

/// sRGB converted from by a table of that many points a side, with `points` for them. Its entry is the first tag's.
QByteArray withTable(int inputs, int side, const QByteArray& points = {})
{
    const QByteArray header = QByteArray("mft2\0\0\0\0", 8) + char(inputs) + '\3' + char(side) + QByteArray(41, '\0');
    const QByteArray icc = ColorProfile::sRGB().icc();
    const QByteArray entry = "A2B0" + number(icc.size()) + number(header.size() + points.size());
    return changed(changed(icc, 132, entry), 0, number(icc.size() + header.size() + points.size())) + header + points;
}

} // namespace

TEST(ColorProfile, recognizesSpacesByPrimariesAndCurve)
{
    constexpr double formula[]{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    const Curve parametric(cmsBuildParametricToneCurve(nullptr, 4, formula), cmsFreeToneCurve);
    const Curve fine = table(1024, sRGBLight);
    EXPECT_EQ(nameOf(rgb(sRGBPrimaries, fine)), "sRGB IEC61966-2.1");
    EXPECT_EQ(nameOf(rgb(sRGBPrimaries, parametric)), "sRGB IEC61966-2.1");
    EXPECT_EQ(nameOf(rgb(p3Primaries, fine)), "Display P3");
    EXPECT_EQ(nameOf(rgb(adobePrimaries, gamma(2.2))), "Adobe RGB (1998)");
    EXPECT_EQ(nameOf(rgb(proPhotoPrimaries, gamma(1.8))), "ProPhoto RGB");
    EXPECT_EQ(nameOf(gray(fine), ColorModel::gray), "sGray");
    EXPECT_EQ(nameOf(gray(gamma(2.2)), ColorModel::gray), "Generic Gray Gamma 2.2 Profile");
    EXPECT_EQ(nameOf(rgb(sRGBPrimaries, gamma(2.2))), "Embedded profile");
    EXPECT_EQ(nameOf(rgb(sRGBPrimaries, table(8, sRGBLight))), "Embedded profile");
    EXPECT_EQ(nameOf(gray(gamma(1.8)), ColorModel::gray), "Embedded profile");
    EXPECT_EQ(nameOf(ColorProfile::rec2020().icc()), ColorProfile::rec2020().name().toUtf8());
    EXPECT_EQ(ColorProfile::sRGB().icc().mid(24, 12).toHex(), "07d000010001000000000000"); // 1 January 2000.
    const auto one = ColorProfile::fromIcc(rgb(sRGBPrimaries, gamma(2.4)), ColorModel::rgb);
    const auto other = ColorProfile::fromIcc(rgb(sRGBPrimaries, gamma(2.5)), ColorModel::rgb);
    EXPECT_FALSE(one->isEquivalentTo(*other)); // Both without a name.
}

// Pictures in equivalent spaces are copied without a look at their numbers.
TEST(ColorProfile, spacesTakenForTheSameDifferByAboutALevel)
{
    std::vector<double> colors;
    for (int color = 0; color < 16 * 16 * 16; ++color)
        colors.insert(colors.end(), {color % 16 / 15.0, color / 16 % 16 / 15.0, color / 256 / 15.0});
    int taken = 0;
    for (std::size_t coordinate = 0; coordinate < 6; ++coordinate)
        for (const double shift : {-1e-3, -3e-4, -1e-4, -3e-5, 3e-5, 1e-4, 3e-4, 1e-3})
            for (const double bend : {-0.003, 0.0, 0.003}) {
                Primaries primaries = p3Primaries;
                primaries[coordinate] += shift;
                const QByteArray icc =
                    rgb(primaries, table(1024, [&](double level) { return std::pow(sRGBLight(level), 1 + bend); }));
                if (!ColorProfile::fromIcc(icc, ColorModel::rgb).value().isEquivalentTo(ColorProfile::displayP3()))
                    continue;
                ++taken;
                const std::vector<double> out = exactly(icc, ColorProfile::displayP3().icc(), colors);
                for (std::size_t i = 0; i < out.size(); ++i)
                    ASSERT_NEAR(out[i], colors[i], 1.6 / 255) << coordinate << ' ' << shift << ' ' << bend;
            }
    EXPECT_GT(taken, 25);
}

TEST(ColorProfile, refusesWhatIsNoUseForAPictureOrAsATarget)
{
    const QByteArray good = ColorProfile::sRGB().icc();
    const QByteArray tabulated = rgb(sRGBPrimaries, table(64, sRGBLight));
    const qsizetype curve = tabulated.indexOf("curv");
    const QByteArray padding(16 << 20, '\0');
    const auto refuse = [](const char* what, const QByteArray& icc) { EXPECT_EQ(nameOf(icc), "refused") << what; };
    refuse("above 16 MB", changed(good, 0, number(good.size() + padding.size())) + padding);
    refuse("longer than its bytes", changed(good, 0, number(0x7fffffff)));
    refuse("device link", changed(good, 12, "link"));
    refuse("named colors", changed(good, 12, "nmcl"));
    refuse("abstract", changed(good, 12, "abst"));
    refuse("no color space to connect to", changed(good, 20, "CMYK"));
    refuse("4 G tags", changed(good, 128, number(-1)));
    refuse("tags outside", changed(good, 136, number(0x7f000000)).replace("rXYZ", "none"));
    refuse("a curve of 4 G points", changed(tabulated, curve + 8, number(-1)));
    refuse("a table of 255 to the third", withTable(3, 255));
    refuse("a table of 255 to the fifteenth", withTable(15, 255));
    for (const ColorModel model : {ColorModel::gray, ColorModel::cmyk, ColorModel::lab})
        EXPECT_EQ(nameOf(good, model), "refused");
    for (qsizetype length = 0; length < good.size(); ++length)
        EXPECT_EQ(nameOf(good.first(length)), "refused") << length;
    EXPECT_EQ(nameOf(good + "padding"), "sRGB IEC61966-2.1");
    EXPECT_EQ(nameOf(changed(good, 0, number(padding.size())) + padding.chopped(good.size())), "sRGB IEC61966-2.1");

    EXPECT_FALSE(ColorProfile::sGray().canBeTarget());
    const QByteArray table = withTable(3, 2, QByteArray(8 * 3 * 2, '\0'));
    EXPECT_TRUE(ColorProfile::fromIcc(table, ColorModel::rgb).value().canBeTarget());
    // As cameras' are: a table to the connection space and no matrix back.
    const QByteArray camera = QByteArray(table).replace("rXYZ", "none");
    EXPECT_FALSE(ColorProfile::fromIcc(camera, ColorModel::rgb).value().canBeTarget());
}

} // namespace ferrow
