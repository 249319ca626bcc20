// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ColorProfile.h"

#include "Pixels/TestProfiles.h"

#include <gtest/gtest.h>

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace ferrow {

namespace {

using namespace TestProfiles;

std::string nameOf(const QByteArray& icc, ColorModel model)
{
    const auto profile = ColorProfile::fromIcc(icc, model);
    return profile ? profile->name().toStdString() : "refused";
}

/// The largest difference in 8-bit levels between a colour in one space and the same numbers in the other.
double largestDifference(const QByteArray& one, const QByteArray& other)
{
    const Profile from = open(one);
    const Profile to = open(other);
    const std::unique_ptr<void, decltype(&cmsDeleteTransform)> transform(
        cmsCreateTransform(from.get(), TYPE_RGB_FLT, to.get(), TYPE_RGB_FLT, INTENT_RELATIVE_COLORIMETRIC,
                           cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE),
        cmsDeleteTransform);
    constexpr int steps = 15;
    double largest = 0;
    for (int color = 0; color < (steps + 1) * (steps + 1) * (steps + 1); ++color) {
        const std::array<float, 3> in{static_cast<float>(color % 16) / steps,
                                      static_cast<float>(color / 16 % 16) / steps,
                                      static_cast<float>(color / 256) / steps};
        std::array<float, 3> out{};
        cmsDoTransform(transform.get(), in.data(), out.data(), 1);
        for (std::size_t i = 0; i < 3; ++i)
            largest = std::max(largest, std::abs(std::clamp(out[i], 0.0F, 1.0F) - in[i]) * 255.0);
    }
    return largest;
}

/// A tag's place in the file, or 0.
qsizetype offsetOf(const QByteArray& icc, const char* signature)
{
    const auto count = qFromBigEndian<quint32>(icc.constData() + 128);
    for (quint32 tag = 0; tag < count; ++tag)
        if (icc.mid(132 + 12 * tag, 4) == signature)
            return qFromBigEndian<quint32>(icc.constData() + 132 + 12 * tag + 4);
    return 0;
}

QByteArray changed(QByteArray icc, qsizetype at, const QByteArray& bytes)
{
    return icc.replace(at, bytes.size(), bytes);
}

/// An RGB profile whose table claims that many points a side and has none.
QByteArray emptyTable(int inputs, int points)
{
    QByteArray table("mft2\0\0\0\0", 8);
    table += static_cast<char>(inputs);
    table += '\3';
    table += static_cast<char>(points);
    table += QByteArray(40, '\0');
    QByteArray icc = ColorProfile::sRGB().icc();
    // In the place of the first tag of all, which is as good as any.
    icc.replace(132, 4, "A2B0");
    const auto offset = static_cast<quint32>(icc.size());
    icc += table;
    qToBigEndian(offset, icc.data() + 136);
    qToBigEndian(static_cast<quint32>(table.size()), icc.data() + 140);
    qToBigEndian(static_cast<quint32>(icc.size()), icc.data());
    return icc;
}

} // namespace

TEST(ColorProfile, recognisesSpacesByPrimariesAndCurve)
{
    const Curve fine = table(1024, sRGBLight);
    const Curve coarse = table(64, sRGBLight);
    const Curve parametric(
        cmsBuildParametricToneCurve(nullptr, 4,
                                    std::array<double, 5>{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045}.data()),
        cmsFreeToneCurve);
    const Curve dotGain = table(256, [](double paper) { return std::max(paper / 16, std::pow(paper, 1.737)); });
    Primaries swapped = sRGBPrimaries;
    std::swap_ranges(swapped.begin(), swapped.begin() + 2, swapped.begin() + 2);
    Primaries shifted = sRGBPrimaries;
    shifted[2] += 0.002;

    const struct {
        const char* what;
        QByteArray icc;
        ColorModel model;
        const char* name;
    } rows[]{
        {"sRGB as 1024 points", rgb(sRGBPrimaries, *fine), ColorModel::rgb, "sRGB IEC61966-2.1"},
        {"sRGB as a formula", rgb(sRGBPrimaries, *parametric, 4.3), ColorModel::rgb, "sRGB IEC61966-2.1"},
        {"P3 primaries, curve of sRGB", rgb(p3Primaries, *fine), ColorModel::rgb, "Display P3"},
        {"Adobe RGB", rgb(adobePrimaries, *gamma(2.2)), ColorModel::rgb, "Adobe RGB (1998)"},
        {"ProPhoto", rgb(proPhotoPrimaries, *gamma(1.8)), ColorModel::rgb, "ProPhoto RGB"},
        {"grey, curve of sRGB", gray(*fine), ColorModel::gray, "sGray"},
        {"grey, 2.2", gray(*gamma(2.2)), ColorModel::gray, "Generic Gray Gamma 2.2 Profile"},
        {"grey, dot gain", gray(*dotGain), ColorModel::gray, "Dot Gain 20%"},
        {"primaries of sRGB, plain 2.2", rgb(sRGBPrimaries, *gamma(2.2)), ColorModel::rgb, "Embedded profile"},
        {"P3 as cinemas have it", rgb(p3Primaries, *gamma(2.6)), ColorModel::rgb, "Embedded profile"},
        {"sRGB with few points", rgb(sRGBPrimaries, *table(8, sRGBLight)), ColorModel::rgb, "Embedded profile"},
        {"red and green swapped", rgb(swapped, *fine), ColorModel::rgb, "Embedded profile"},
        {"another green", rgb(shifted, *fine), ColorModel::rgb, "Embedded profile"},
        {"grey, 1.8", gray(*gamma(1.8)), ColorModel::gray, "Embedded profile"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(nameOf(row.icc, row.model), row.name);
    }
    EXPECT_EQ(ColorProfile().name().toStdString(), "sRGB (assumed)");
}

// Pictures in equivalent spaces are copied without a look at their numbers.
TEST(ColorProfile, spacesTakenForTheSameDifferByAboutALevel)
{
    const struct {
        Primaries primaries;
        QByteArray known;
    } rows[]{{sRGBPrimaries, ColorProfile::sRGB().icc()}, {p3Primaries, ColorProfile::displayP3().icc()}};
    int taken = 0;
    int refused = 0;
    for (const auto& row : rows)
        for (std::size_t coordinate = 0; coordinate < 6; ++coordinate)
            for (const double shift : {-1e-3, -3e-4, -1e-4, -3e-5, 3e-5, 1e-4, 3e-4, 1e-3})
                for (const double bend : {-0.003, 0.0, 0.003}) {
                    Primaries primaries = row.primaries;
                    primaries[coordinate] += shift;
                    const Curve curve = table(1024, [&](double level) { return std::pow(sRGBLight(level), 1 + bend); });
                    const QByteArray icc = rgb(primaries, *curve);
                    const auto profile = ColorProfile::fromIcc(icc, ColorModel::rgb);
                    const auto known = ColorProfile::fromIcc(row.known, ColorModel::rgb);
                    ASSERT_TRUE(profile && known);
                    if (!profile->isEquivalentTo(*known)) {
                        ++refused;
                        continue;
                    }
                    ++taken;
                    EXPECT_LE(largestDifference(icc, row.known), 1.6) << coordinate << ' ' << shift << ' ' << bend;
                }
    EXPECT_GT(taken, 50);
    EXPECT_GT(refused, 50);
}

TEST(ColorProfile, builtInSpacesAreSmallAndReproducible)
{
    for (const ColorProfile* profile :
         {&ColorProfile::sRGB(), &ColorProfile::displayP3(), &ColorProfile::rec2020(), &ColorProfile::sGray()}) {
        SCOPED_TRACE(profile->name().toStdString());
        EXPECT_LT(profile->icc().size(), 1000);
        EXPECT_EQ(nameOf(profile->icc(), profile->model()), profile->name().toStdString());
        EXPECT_EQ(profile->icc().mid(24, 12).toHex(), "07d000010001000000000000"); // 1 January 2000.
        const Profile opened = open(profile->icc());
        std::array<char, 64> description{};
        cmsGetProfileInfoASCII(opened.get(), cmsInfoDescription, "en", "US", description.data(), description.size());
        EXPECT_STREQ(description.data(), profile->name().toUtf8().constData());
    }
}

TEST(ColorProfile, equivalenceNeedsTheSameSpace)
{
    const auto fine = ColorProfile::fromIcc(rgb(sRGBPrimaries, *table(1024, sRGBLight)), ColorModel::rgb);
    const auto one = ColorProfile::fromIcc(rgb(sRGBPrimaries, *gamma(2.4)), ColorModel::rgb);
    const auto other = ColorProfile::fromIcc(rgb(sRGBPrimaries, *gamma(2.5)), ColorModel::rgb);
    ASSERT_TRUE(fine && one && other);
    EXPECT_TRUE(fine->isEquivalentTo(ColorProfile::sRGB()));
    EXPECT_TRUE(ColorProfile().isEquivalentTo(*fine));
    EXPECT_TRUE(one->isEquivalentTo(*one));
    EXPECT_FALSE(one->isEquivalentTo(*other)); // Both without a name.
    EXPECT_FALSE(one->isEquivalentTo(ColorProfile()));
    EXPECT_FALSE(ColorProfile::sRGB().isEquivalentTo(ColorProfile::sGray()));
}

TEST(ColorProfile, refusesWhatIsNoUseForAPicture)
{
    const QByteArray good = ColorProfile::sRGB().icc();
    const qsizetype curve = offsetOf(rgb(sRGBPrimaries, *table(64, sRGBLight)), "rTRC");
    const QByteArray tabulated = rgb(sRGBPrimaries, *table(64, sRGBLight));
    ASSERT_GT(curve, 0);
    QByteArray padded = good;
    padded += QByteArray(16 << 20, '\0');
    qToBigEndian(static_cast<quint32>(padded.size()), padded.data());

    const struct {
        const char* what;
        QByteArray icc;
    } rows[]{
        {"nothing", {}},
        {"text", QByteArray(4000, 'x')},
        {"above 16 MB", padded},
        {"longer than its bytes", changed(good, 0, "\x7f\xff\xff\xff")},
        {"grey", ColorProfile::sGray().icc()},
        {"device link", changed(good, 12, "link")},
        {"named colours", changed(good, 12, "nmcl")},
        {"abstract", changed(good, 12, "abst")},
        {"no colour space to connect to", changed(good, 20, "CMYK")},
        {"4 G tags", changed(good, 128, "\xff\xff\xff\xff")},
        {"tags outside", changed(good, 132 + 4, "\x7f\x00\x00\x00").replace(QByteArray("rXYZ"), QByteArray("none"))},
        {"a curve of 4 G points", changed(tabulated, curve + 8, "\xff\xff\xff\xff")},
        {"a table of 255 to the third", emptyTable(3, 255)},
        {"a table of 255 to the fifteenth", emptyTable(15, 255)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(nameOf(row.icc, ColorModel::rgb), "refused");
    }
    for (const ColorModel model : {ColorModel::gray, ColorModel::cmyk, ColorModel::lab})
        EXPECT_EQ(nameOf(good, model), "refused");
    for (qsizetype length = 0; length < good.size(); ++length)
        EXPECT_EQ(nameOf(good.first(length), ColorModel::rgb), "refused") << length;
    EXPECT_EQ(nameOf(good + "padding", ColorModel::rgb), "sRGB IEC61966-2.1");
}

TEST(ColorProfile, saysWhatColoursCanBeConvertedTo)
{
    EXPECT_TRUE(ColorProfile::sRGB().canBeTarget());
    EXPECT_FALSE(ColorProfile::sGray().canBeTarget());
    EXPECT_TRUE(ColorProfile::fromIcc(rgb(sRGBPrimaries, *gamma(2.4)), ColorModel::rgb)->canBeTarget());

    // A camera's: a table to the connection space and none back.
    const Profile camera(cmsCreateProfilePlaceholder(nullptr), cmsCloseProfile);
    cmsSetProfileVersion(camera.get(), 2.1);
    cmsSetDeviceClass(camera.get(), cmsSigInputClass);
    cmsSetColorSpace(camera.get(), cmsSigRgbData);
    cmsSetPCS(camera.get(), cmsSigLabData);
    const std::unique_ptr<cmsPipeline, decltype(&cmsPipelineFree)> pipeline(cmsPipelineAlloc(nullptr, 3, 3),
                                                                            cmsPipelineFree);
    cmsPipelineInsertStage(pipeline.get(), cmsAT_END, cmsStageAllocCLut16bit(nullptr, 2, 3, 3, nullptr));
    cmsWriteTag(camera.get(), cmsSigAToB0Tag, pipeline.get());
    const auto profile = ColorProfile::fromIcc(bytesOf(camera.get()), ColorModel::rgb);
    ASSERT_TRUE(profile);
    EXPECT_FALSE(profile->canBeTarget());
}

} // namespace ferrow
