// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ColorTransform.h"

#include "Pixels/TestProfiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace ferrow {

namespace {

using namespace TestProfiles;

constexpr PixelFormat rgb16{ColorModel::rgb, 16, Alpha::none};
constexpr PixelFormat rgba16{ColorModel::rgb, 16, Alpha::straight};
constexpr PixelFormat gray8{ColorModel::gray, 8, Alpha::none};
constexpr PixelFormat grayAlpha16{ColorModel::gray, 16, Alpha::straight};
constexpr PixelFormat cmyk8{ColorModel::cmyk, 8, Alpha::none};
constexpr PixelFormat lab8{ColorModel::lab, 8, Alpha::none};
constexpr PixelFormat lab16{ColorModel::lab, 16, Alpha::none};

using Levels = std::vector<int>;

Levels converted(const ColorTransform& transform, PixelFormat source, PixelFormat target, const Levels& components)
{
    std::vector<std::byte> in;
    for (const int component : components) {
        const auto deep = static_cast<std::uint16_t>(component);
        std::array<std::byte, 2> bytes{static_cast<std::byte>(component)};
        if (source.bitsPerComponent == 16)
            std::memcpy(bytes.data(), &deep, 2);
        in.insert(in.end(), bytes.begin(), bytes.begin() + source.bitsPerComponent / 8);
    }
    const std::size_t pixels = components.size() / static_cast<std::size_t>(source.channels());
    std::vector<std::byte> out(pixels * static_cast<std::size_t>(target.channels()));
    transform.apply(in.data(), out.data(), pixels);
    Levels levels;
    for (const std::byte level : out)
        levels.push_back(std::to_integer<int>(level));
    return levels;
}

Levels converted(const ColorProfile& from, PixelFormat source, const ColorProfile& to, PixelFormat target,
                 const Levels& components)
{
    return converted(ColorTransform(from, source, to, target), source, target, components);
}

void expectNear(const Levels& found, const Levels& wanted, int tolerance)
{
    ASSERT_EQ(found.size(), wanted.size());
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_NEAR(found[i], wanted[i], tolerance) << "component " << i;
}

ColorProfile profileOf(const QByteArray& icc, ColorModel model)
{
    return ColorProfile::fromIcc(icc, model).value();
}

ColorProfile adobeRGB()
{
    return profileOf(rgb(adobePrimaries, *gamma(2.19921875)), ColorModel::rgb);
}

ColorProfile proPhoto()
{
    return profileOf(rgb(proPhotoPrimaries, *gamma(1.8)), ColorModel::rgb);
}

} // namespace

// Display P3 values as CSS Color 4's examples have them (0.9175 0.2003 0.1386 for red); Adobe RGB's worked out from its
// published matrix (its curve turns a last digit of the matrix into two levels of black, hence the ones); grey levels
// from the curves alone.
TEST(ColorTransform, agreesWithPublishedColours)
{
    const ColorProfile& sRGB = ColorProfile::sRGB();
    const ColorProfile& p3 = ColorProfile::displayP3();
    const struct {
        const char* what;
        const ColorProfile from;
        const ColorProfile to;
        Levels in;
        Levels out;
    } rows[]{
        {"red in P3", sRGB, p3, {255, 0, 0}, {234, 51, 35}},
        {"green in P3", sRGB, p3, {0, 255, 0}, {117, 251, 76}},
        {"blue in P3", sRGB, p3, {0, 0, 255}, {0, 0, 245}},
        {"red from P3", p3, sRGB, {234, 51, 35}, {255, 0, 0}},
        {"P3's own red is cut off", p3, sRGB, {255, 0, 0}, {255, 0, 0}},
        {"red in Adobe RGB", sRGB, adobeRGB(), {255, 0, 0}, {219, 1, 1}},
        {"green in Adobe RGB", sRGB, adobeRGB(), {0, 255, 0}, {144, 255, 60}},
        {"blue in Adobe RGB", sRGB, adobeRGB(), {0, 0, 255}, {1, 1, 250}},
        {"yellow from Adobe RGB", adobeRGB(), sRGB, {255, 255, 60}, {255, 255, 0}},
        {"white", adobeRGB(), p3, {255, 255, 255}, {255, 255, 255}},
        {"black", p3, adobeRGB(), {0, 0, 0}, {0, 0, 0}},
        {"grey of 1.8", proPhoto(), sRGB, {128, 128, 128}, {146, 146, 146}},
        {"grey of P3", p3, sRGB, {77, 77, 77}, {77, 77, 77}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        expectNear(converted(row.from, rgb8, row.to, rgb8, row.in), row.out, 1);
    }
}

TEST(ColorTransform, isAnIdentityOnlyWhereBytesAreTheSame)
{
    const ColorProfile table1024 = profileOf(rgb(sRGBPrimaries, *table(1024, sRGBLight)), ColorModel::rgb);
    const ColorProfile& sRGB = ColorProfile::sRGB();
    const struct {
        const char* what;
        ColorProfile from;
        PixelFormat source;
        ColorProfile to;
        PixelFormat target;
        bool identity;
    } rows[]{
        {"no profile", {}, rgb8, sRGB, rgb8, true},
        {"other bytes for sRGB", table1024, rgb8, sRGB, rgb8, true},
        {"with alpha", sRGB, rgba8, sRGB, rgba8, true},
        {"own space", adobeRGB(), rgb8, adobeRGB(), rgb8, true},
        {"16 bits", {}, rgb16, sRGB, rgb8, false},
        {"alpha is added", {}, rgb8, sRGB, rgba8, false},
        {"grey", {}, gray8, sRGB, rgb8, false},
        {"another space", ColorProfile::displayP3(), rgb8, sRGB, rgb8, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(ColorTransform(row.from, row.source, row.to, row.target).isIdentity(), row.identity);
    }
    expectNear(converted(table1024, rgba8, sRGB, rgba8, {1, 2, 3, 4, 250, 251, 252, 253}),
               {1, 2, 3, 4, 250, 251, 252, 253}, 0);
}

TEST(ColorTransform, roundsSixteenBitsToTheNearestLevel)
{
    const ColorTransform transform({}, rgb16, ColorProfile::sRGB(), rgb8);
    Levels colors;
    for (int value = 0; value < 65536; ++value)
        colors.insert(colors.end(), {value, 65535 - value, value});
    const Levels found = converted(transform, rgb16, rgb8, colors);
    for (std::size_t i = 0; i < colors.size(); ++i)
        ASSERT_EQ(found[i], std::lround(colors[i] / 257.0)) << colors[i];
}

TEST(ColorTransform, carriesAlphaAndAddsIt)
{
    const ColorProfile& p3 = ColorProfile::displayP3();
    const ColorProfile& sRGB = ColorProfile::sRGB();
    const ColorProfile gray22 = profileOf(gray(*gamma(2.2)), ColorModel::gray);
    EXPECT_EQ(converted({}, rgb8, sRGB, rgba8, {1, 2, 3}), (Levels{1, 2, 3, 255}));
    EXPECT_EQ(converted({}, gray8, sRGB, rgba8, {9}), (Levels{9, 9, 9, 255}));
    EXPECT_EQ(converted({}, grayAlpha16, sRGB, rgba8, {257 * 9, 257 * 7}), (Levels{9, 9, 9, 7}));
    EXPECT_EQ(converted(p3, rgb8, sRGB, rgba8, {0, 0, 0}), (Levels{0, 0, 0, 255}));
    EXPECT_EQ(converted(p3, rgba8, sRGB, rgba8, {255, 255, 255, 31}), (Levels{255, 255, 255, 31}));
    EXPECT_EQ(converted(p3, rgba16, sRGB, rgba8, {65535, 65535, 65535, 257 * 31}), (Levels{255, 255, 255, 31}));
    EXPECT_EQ(converted(gray22, grayAlpha16, sRGB, rgba8, {65535, 257 * 31})[3], 31);
    EXPECT_EQ(converted({}, cmyk8, sRGB, rgba8, {0, 0, 0, 0}), (Levels{255, 255, 255, 255}));
    constexpr PixelFormat cmykAlpha16{ColorModel::cmyk, 16, Alpha::straight};
    EXPECT_EQ(converted({}, cmykAlpha16, sRGB, rgba8, {0, 0, 0, 0, 257 * 77}), (Levels{255, 255, 255, 77}));
}

// The colour library's floating-point result is the reference; our own loops must not be further off than a level.
TEST(ColorTransform, staysWithinALevelOfTheExactResult)
{
    const struct {
        const char* what;
        ColorProfile from;
        ColorProfile to;
    } rows[]{
        {"P3 to sRGB", ColorProfile::displayP3(), ColorProfile::sRGB()},
        {"sRGB to P3", ColorProfile::sRGB(), ColorProfile::displayP3()},
        {"Adobe RGB to sRGB", adobeRGB(), ColorProfile::sRGB()},
        {"sRGB to Adobe RGB", ColorProfile::sRGB(), adobeRGB()},
        {"ProPhoto to P3", proPhoto(), ColorProfile::displayP3()},
        {"BT.2020 to sRGB", ColorProfile::rec2020(), ColorProfile::sRGB()},
    };
    std::mt19937 random(7);
    for (const auto& row : rows)
        for (const PixelFormat source : {rgb8, rgb16}) {
            SCOPED_TRACE(std::string(row.what) + " from " + std::to_string(source.bitsPerComponent) + " bits");
            const bool deep = source.bitsPerComponent == 16;
            const int most = deep ? 65535 : 255;
            Levels colors;
            for (int i = 0; i < 3 * 3000; ++i) // Half of them dark, where curves are steep.
                colors.push_back(static_cast<int>(random() % static_cast<unsigned>(i < 4500 ? most + 1 : most / 16)));
            const Levels found = converted(row.from, source, row.to, rgb8, colors);

            const Profile from = open(row.from.icc());
            const Profile to = open(row.to.icc());
            const std::unique_ptr<void, decltype(&cmsDeleteTransform)> exact(
                cmsCreateTransform(from.get(), TYPE_RGB_DBL, to.get(), TYPE_RGB_DBL, INTENT_RELATIVE_COLORIMETRIC,
                                   cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE),
                cmsDeleteTransform);
            double worst = 0;
            for (std::size_t i = 0; i < colors.size(); i += 3) {
                const std::array<double, 3> in{colors[i] * 1.0 / most, colors[i + 1] * 1.0 / most,
                                               colors[i + 2] * 1.0 / most};
                std::array<double, 3> out{};
                cmsDoTransform(exact.get(), in.data(), out.data(), 1);
                for (std::size_t k = 0; k < 3; ++k)
                    worst = std::max(worst, std::abs(std::clamp(out[k], 0.0, 1.0) * 255 - found[i + k]));
            }
            EXPECT_LT(worst, 1.0);
        }
}

TEST(ColorTransform, readsGreyOnItsOwnCurve)
{
    const ColorProfile gray22 = profileOf(gray(*gamma(2.2)), ColorModel::gray);
    const ColorProfile linear = profileOf(gray(*gamma(1.0)), ColorModel::gray);
    // 0.5 of the light is level 188 of sRGB, 10 of 255 to the power of 2.2 is level 2.6.
    expectNear(converted(linear, gray8, ColorProfile::sRGB(), rgb8, {0, 128, 255}),
               {0, 0, 0, 188, 188, 188, 255, 255, 255}, 1);
    expectNear(converted(gray22, gray8, ColorProfile::sRGB(), rgb8, {10, 128}), {3, 3, 3, 128, 128, 128}, 1);
    EXPECT_EQ(converted({}, gray8, ColorProfile::displayP3(), rgb8, {77}), (Levels{77, 77, 77}));
    // On another curve than the target's the same grey has another number.
    EXPECT_GT(converted({}, gray8, proPhoto(), rgb8, {40})[0], 20);
    EXPECT_LT(converted({}, gray8, proPhoto(), rgb8, {40})[0], 39);
}

// Lightness 50 is 18.4 % of the light, level 119; the reds and blues from the definition of Lab and sRGB's matrix.
TEST(ColorTransform, readsLabOfBothDepths)
{
    expectNear(converted({}, lab8, ColorProfile::sRGB(), rgb8, {255, 128, 128, 0, 128, 128}), {255, 255, 255, 0, 0, 0},
               1);
    expectNear(converted({}, lab16, ColorProfile::sRGB(), rgb8, {32768, 128 * 257, 128 * 257}), {119, 119, 119}, 1);
    // sRGB's red is L 54.29, a 80.80, b 69.89 and its blue L 29.57, a 68.30, b -112.03 against D50.
    expectNear(converted({}, lab16, ColorProfile::sRGB(), rgb8, {35579, 53661, 50857, 19379, 50449, 4104}),
               {255, 0, 0, 0, 0, 255}, 3);
}

// The solids of coated web offset: their published Lab values relative to the paper's, turned into sRGB by hand.
TEST(ColorTransform, readsInkWithoutAProfileAsAPress)
{
    const struct {
        const char* what;
        Levels ink;
        Levels color;
    } rows[]{
        {"paper", {0, 0, 0, 0}, {255, 255, 255}},    {"cyan", {255, 0, 0, 0}, {0, 176, 239}},
        {"magenta", {0, 255, 0, 0}, {235, 37, 144}}, {"yellow", {0, 0, 255, 0}, {255, 241, 24}},
        {"red", {0, 255, 255, 0}, {237, 52, 57}},    {"green", {255, 0, 255, 0}, {0, 169, 92}},
        {"blue", {255, 255, 0, 0}, {61, 63, 148}},   {"black", {0, 0, 0, 255}, {56, 54, 55}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        expectNear(converted({}, cmyk8, ColorProfile::sRGB(), rgb8, row.ink), row.color, 2);
    }
    int lighter = 256;
    for (int black = 0; black < 256; black += 15) {
        const int level = converted({}, cmyk8, ColorProfile::sRGB(), rgb8, {0, 0, 0, black})[1];
        EXPECT_LT(level, lighter) << black;
        lighter = level;
    }
}

TEST(ColorTransform, ignoresAProfileOfAnotherModel)
{
    EXPECT_EQ(converted(ColorProfile::sRGB(), gray8, ColorProfile::sRGB(), rgb8, {77}), (Levels{77, 77, 77}));
    EXPECT_EQ(converted(ColorProfile::sGray(), rgb8, ColorProfile::sRGB(), rgb8, {1, 2, 3}), (Levels{1, 2, 3}));
}

TEST(ColorTransform, servesSeveralThreads)
{
    const ColorTransform transform({}, cmyk8, ColorProfile::sRGB(), rgb8);
    std::mt19937 random(3);
    std::vector<Levels> inks(4);
    for (Levels& ink : inks)
        std::generate_n(std::back_inserter(ink), 4 * 20000, [&] { return static_cast<int>(random() % 4 * 80); });
    std::vector<Levels> together(inks.size());
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < inks.size(); ++i)
            threads.emplace_back([&, i] { together[i] = converted(transform, cmyk8, rgb8, inks[i]); });
    }
    for (std::size_t i = 0; i < inks.size(); ++i)
        EXPECT_EQ(together[i], converted(transform, cmyk8, rgb8, inks[i]));
}

// Whatever a profile says that passes for one must neither crash nor hang.
TEST(ColorTransform, survivesProfilesWithDamagedBytes)
{
    const QByteArray sound[]{ColorProfile::sRGB().icc(), rgb(sRGBPrimaries, *table(16, sRGBLight)),
                             ColorProfile::sGray().icc()};
    std::mt19937 random(11);
    int used = 0;
    for (const QByteArray& icc : sound)
        for (int round = 0; round < 150; ++round) {
            const ColorModel model = icc == sound[2] ? ColorModel::gray : ColorModel::rgb;
            QByteArray damaged = icc;
            for (int i = 0; i < 1 + round % 3; ++i)
                damaged[static_cast<qsizetype>(random() % static_cast<unsigned>(icc.size()))] =
                    static_cast<char>(random());
            const auto profile = ColorProfile::fromIcc(damaged, model);
            if (!profile || profile->name() != QStringLiteral("Embedded profile"))
                continue;
            ++used;
            const PixelFormat source{model, 8, Alpha::none};
            EXPECT_EQ(converted(*profile, source, ColorProfile::sRGB(), rgb8, {1, 2, 3}).size() % 3, 0U);
            if (profile->canBeTarget()) {
                EXPECT_EQ(converted({}, rgb8, *profile, rgb8, {1, 2, 3}).size(), 3U);
            }
        }
    EXPECT_GT(used, 30);
}

} // namespace ferrow
