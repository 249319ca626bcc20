// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/ColorTransform.h"

#include "Pixels/TestProfiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace ferrow {

namespace {

using namespace TestProfiles;

constexpr PixelFormat gray8{ColorModel::gray, 8, Alpha::none};
constexpr PixelFormat grayAlpha16{ColorModel::gray, 16, Alpha::straight};
constexpr PixelFormat cmyk8{ColorModel::cmyk, 8, Alpha::none};
constexpr PixelFormat cmykAlpha16{ColorModel::cmyk, 16, Alpha::straight};
constexpr PixelFormat lab8{ColorModel::lab, 8, Alpha::none};
constexpr PixelFormat lab16{ColorModel::lab, 16, Alpha::none};

const ColorProfile none;
const ColorProfile& sRGB = ColorProfile::sRGB();
const ColorProfile& p3 = ColorProfile::displayP3();
const ColorProfile adobeRGB = *ColorProfile::fromIcc(rgb(adobePrimaries, gamma(2.19921875)), ColorModel::rgb);
const ColorProfile proPhoto = *ColorProfile::fromIcc(rgb(proPhotoPrimaries, gamma(1.8)), ColorModel::rgb);
const ColorProfile gray22 = *ColorProfile::fromIcc(gray(gamma(2.2)), ColorModel::gray);

using Levels = std::vector<int>;

Levels converted(const ColorProfile& from, PixelFormat source, const Levels& components, const ColorProfile& to = sRGB,
                 PixelFormat target = rgb8)
{
    const std::vector<std::uint16_t> deep(components.begin(), components.end());
    const std::vector<std::uint8_t> plain(components.begin(), components.end());
    const void* in = source.bitsPerComponent == 16 ? static_cast<const void*>(deep.data()) : plain.data();
    const std::size_t pixels = components.size() / std::size_t(source.channels());
    const auto transformed = [&]<typename Component>(std::vector<Component> out) -> Levels {
        ColorTransform(from, source, to, target)
            .apply(static_cast<const std::byte*>(in), reinterpret_cast<std::byte*>(out.data()), pixels);
        return {out.begin(), out.end()};
    };
    const std::size_t count = pixels * std::size_t(target.channels());
    return target.bitsPerComponent == 16 ? transformed(std::vector<std::uint16_t>(count))
                                         : transformed(std::vector<std::uint8_t>(count));
}

void expectNear(const Levels& found, const Levels& wanted, int tolerance = 1)
{
    ASSERT_EQ(found.size(), wanted.size());
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_NEAR(found[i], wanted[i], tolerance) << i << " of " << testing::PrintToString(wanted);
}

} // namespace

// Grays that libplacebo's functions for PQ, HLG and BT.2390 (knee offset 0.5) give, and colors by hand, from the factor
// that a gray as bright as the brightest component has.
TEST(ColorTransform, drawsHighDynamicRangeTogether)
{
    struct Row {
        double level;
        double shown;
    };
    const auto gray = [](double level) { return Levels(3, int(std::lround(level * 65535))); };
    const ColorProfile pq = ColorProfile::hdr(WellKnown::bt2100Pq, ColorModel::rgb);
    const ColorProfile hlg = ColorProfile::hdr(WellKnown::bt2100Hlg, ColorModel::rgb);
    for (const auto& [level, shown] :
         {Row{0, 0}, Row{.10, 5.3}, Row{.20, 28.5}, Row{.30, 62.8}, Row{.40, 111.3}, Row{.50, 179.6}, Row{.5807, 229.0},
          Row{.65, 249.3}, Row{.7518, 255}, Row{.85, 255}, Row{1, 255}})
        for (const ColorProfile& to : {sRGB, p3})
            for (const int found : converted(pq, rgb16, gray(level), to))
                EXPECT_NEAR(found, shown, 0.7) << "PQ " << level;
    for (const auto& [level, shown] :
         {Row{0, 0}, Row{.05, 3.3}, Row{.10, 16.2}, Row{.25, 61.4}, Row{.38, 100.7}, Row{.50, 136.9}, Row{.60, 173.0},
          Row{.75, 229.0}, Row{.85, 248.8}, Row{.90, 253.1}, Row{1, 255}})
        for (const int found : converted(hlg, rgb16, gray(level)))
            EXPECT_NEAR(found, shown, 0.7) << "HLG " << level;
    const auto color = [](double red, double green, double blue) {
        return Levels{int(std::lround(red * 65535)), int(std::lround(green * 65535)), int(std::lround(blue * 65535))};
    };
    expectNear(converted(pq, rgb16, color(.58, .40, .30)), {255, 59, 35});
    expectNear(converted(hlg, rgb16, color(.58, .40, .30)), {181, 102, 78});

    // As bright as a page: nothing is drawn together, and what would be brighter is cut off.
    const ColorProfile dim = ColorProfile::hdr(WellKnown::bt2100Pq, ColorModel::rgb, 203);
    expectNear(converted(dim, rgb16, gray(.5)), Levels(3, 181));
    expectNear(converted(dim, rgb8, {148, 148, 148}), Levels(3, 255));
    expectNear(converted(pq, PixelFormat{ColorModel::rgb, 8, Alpha::straight}, {128, 128, 128, 77}, sRGB, rgba8),
               {181, 181, 181, 77});
    expectNear(converted(ColorProfile::hdr(WellKnown::bt2100Pq, ColorModel::gray), gray8, {128}), Levels(3, 181));
    EXPECT_FALSE(pq.isEquivalentTo(ColorProfile::rec2020()));
    EXPECT_FALSE(pq.canBeTarget());
}

// Display P3 values as CSS Color 4's examples have them (0.9175 0.2003 0.1386 for red); Adobe RGB's worked out from its
// published matrix (its curve turns a last digit of the matrix into two levels of black, hence the ones); the gray of
// ProPhoto from the curves alone.
TEST(ColorTransform, agreesWithPublishedColors)
{
    expectNear(converted(sRGB, rgb8, {255, 0, 0, 0, 255, 0, 0, 0, 255}, p3), {234, 51, 35, 117, 251, 76, 0, 0, 245});
    expectNear(converted(p3, rgb8, {234, 51, 35, 255, 0, 0, 77, 77, 77}), {255, 0, 0, 255, 0, 0, 77, 77, 77});
    expectNear(converted(sRGB, rgb8, {255, 0, 0, 0, 0, 255, 0, 0, 0}, adobeRGB), {219, 1, 1, 1, 1, 250, 0, 0, 0});
    expectNear(converted(adobeRGB, rgb8, {255, 255, 60, 255, 255, 255}), {255, 255, 0, 255, 255, 255});
    expectNear(converted(proPhoto, rgb8, {128, 128, 128}), {146, 146, 146});
}

TEST(ColorTransform, isAnIdentityOnlyWhereBytesAreTheSame)
{
    const ColorProfile foreign = *ColorProfile::fromIcc(rgb(sRGBPrimaries, table(1024, sRGBLight)), ColorModel::rgb);
    EXPECT_TRUE(ColorTransform(foreign, rgba8, sRGB, rgba8).isIdentity());
    EXPECT_TRUE(ColorTransform(adobeRGB, rgb8, adobeRGB, rgb8).isIdentity());
    EXPECT_FALSE(ColorTransform(none, rgb16, sRGB, rgb8).isIdentity());
    EXPECT_FALSE(ColorTransform(none, rgb8, sRGB, rgba8).isIdentity());
    EXPECT_FALSE(ColorTransform(p3, rgb8, sRGB, rgb8).isIdentity());
    expectNear(converted(foreign, rgba8, {1, 2, 3, 4, 250, 5, 6, 7}, sRGB, rgba8), {1, 2, 3, 4, 250, 5, 6, 7}, 0);
}

TEST(ColorTransform, roundsAndCarriesAlphaOrAddsIt)
{
    EXPECT_EQ(converted(none, rgb16, {128, 129, 385, 386, 65406, 65407}), (Levels{0, 1, 1, 2, 254, 255}));
    EXPECT_EQ(converted(none, grayAlpha16, {257 * 9, 257 * 7}, sRGB, rgba8), (Levels{9, 9, 9, 7}));
    EXPECT_EQ(converted(gray22, grayAlpha16, {65535, 257 * 31}, sRGB, rgba8), (Levels{255, 255, 255, 31}));
    EXPECT_EQ(converted(p3, rgb8, {0, 0, 0}, sRGB, rgba8), (Levels{0, 0, 0, 255}));
    EXPECT_EQ(converted(p3, rgba8, {255, 255, 255, 31}, sRGB, rgba8), (Levels{255, 255, 255, 31}));
    EXPECT_EQ(converted(none, cmyk8, {0, 0, 0, 0}, sRGB, rgba8), (Levels{255, 255, 255, 255}));
    EXPECT_EQ(converted(none, cmykAlpha16, {0, 0, 0, 0, 257 * 77}, sRGB, rgba8), (Levels{255, 255, 255, 77}));
}

// The color library's floating-point result is the reference; our own loops must not be further off than a level.
TEST(ColorTransform, staysWithinALevelOfTheExactResult)
{
    std::mt19937 random(7);
    for (const auto& [from, to] : {std::pair(p3, sRGB), {sRGB, adobeRGB}, {proPhoto, p3}})
        for (const PixelFormat source : {rgb8, rgb16}) {
            SCOPED_TRACE((from.name() + to.name()).toStdString() + std::to_string(source.bitsPerComponent));
            const unsigned most = source == rgb16 ? 65535 : 255;
            Levels colors;
            std::vector<double> exact;
            for (int i = 0; i < 3 * 3000; ++i) // Half of them dark, where curves are steep.
                exact.push_back(colors.emplace_back(random() % (i < 4500 ? most + 1 : most / 16)) / double(most));
            const Levels found = converted(from, source, colors, to);
            exact = exactly(from.icc(), to.icc(), exact);
            for (std::size_t i = 0; i < colors.size(); ++i)
                ASSERT_NEAR(found[i], exact[i] * 255, 0.62) << colors[i];
        }
}

/// By the definition in double precision: what the curves make of light, and the profiles' own matrices.
class Definition {
public:
    using Curve = std::function<double(double)>;
    Definition(const ColorProfile& from, Curve toLight, const ColorProfile& to, Curve toLevel)
        : from_(colorants(from)), back_(inverse(colorants(to))), toLight_(std::move(toLight)),
          toLevel_(std::move(toLevel))
    {
    }

    [[nodiscard]] std::array<double, 3> operator()(const int* levels, double most) const
    {
        std::array<double, 3> color{};
        for (std::size_t channel = 0; channel < 3; ++channel)
            color[channel] = toLight_(levels[channel] / most);
        for (double& light : color = times(back_, times(from_, color)))
            light = 65535 * toLevel_(std::clamp(light, 0.0, 1.0));
        return color;
    }

private:
    using Column = std::array<double, 3>;
    using Square = std::array<Column, 3>; ///< Rows of columns.

    static Column times(const Square& matrix, const Column& color)
    {
        Column result{};
        for (std::size_t row = 0; row < 3; ++row)
            for (std::size_t column = 0; column < 3; ++column)
                result[row] += matrix[row][column] * color[column];
        return result;
    }
    static Square colorants(const ColorProfile& profile)
    {
        const Profile opened(cmsOpenProfileFromMem(profile.icc().constData(), cmsUInt32Number(profile.icc().size())),
                             cmsCloseProfile);
        Square matrix{};
        std::size_t column = 0;
        for (const auto tag : {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag}) {
            const auto* color = static_cast<const cmsCIEXYZ*>(cmsReadTag(opened.get(), tag));
            matrix[0][column] = color->X;
            matrix[1][column] = color->Y;
            matrix[2][column++] = color->Z;
        }
        return matrix;
    }
    static Square inverse(const Square& m)
    {
        Square adjugate{};
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = 0; j < 3; ++j)
                adjugate[j][i] = m[(i + 1) % 3][(j + 1) % 3] * m[(i + 2) % 3][(j + 2) % 3] -
                                 m[(i + 1) % 3][(j + 2) % 3] * m[(i + 2) % 3][(j + 1) % 3];
        const double determinant = times({m[0], {}, {}}, {adjugate[0][0], adjugate[1][0], adjugate[2][0]})[0];
        for (Column& row : adjugate)
            for (double& value : row)
                value /= determinant;
        return adjugate;
    }

    Square from_;
    Square back_;
    Curve toLight_;
    Curve toLevel_;
};

// A hundredth of a level is allowed beside the half that rounding takes; and one where the two parts of the curve of
// sRGB do not meet: by nine tenths, as rounded as profiles hold it.
TEST(ColorTransform, staysWithinHalfALevelOfSixteenBits)
{
    const auto power = [](double exponent) { return [exponent](double v) { return std::pow(v, exponent); }; };
    const auto tabled = [](double level) { // Of 1024 points in 16 bits, straight between them.
        const auto point = [](double at) { return std::round(65535 * sRGBLight(at / 1023)) / 65535; };
        const double before = std::min(std::floor(level * 1023), 1022.0);
        return point(before) + (point(before + 1) - point(before)) * (level * 1023 - before);
    };
    const ColorProfile p3Table = *ColorProfile::fromIcc(rgb(p3Primaries, table(1024, sRGBLight)), ColorModel::rgb);
    const double exponent = 2.19921875;
    const double knee = 65535 * StoredSRGB::end;
    struct Row {
        const char* name;
        const ColorProfile& from;
        Definition::Curve toLight;
        const ColorProfile& to;
        Definition::Curve toLevel;
    };
    const Row rows[] = {{"wide to sRGB", adobeRGB, power(exponent), sRGB, StoredSRGB::level},
                        {"sRGB to wide", sRGB, StoredSRGB::light, adobeRGB, power(1 / exponent)},
                        {"table to sRGB", p3Table, tabled, sRGB, StoredSRGB::level},
                        {"P3 to wide, where light cancels out", p3, StoredSRGB::light, adobeRGB, power(1 / exponent)}};
    std::mt19937 random(7);
    for (const Row& row : rows)
        for (const PixelFormat source : {rgb8, rgb16}) {
            SCOPED_TRACE(testing::Message() << row.name << ' ' << source.bitsPerComponent);
            const int most = source == rgb16 ? 65535 : 255;
            Levels colors;
            for (int i = 0; i < 3 * 20000; ++i)
                colors.push_back(int(random() % unsigned(i < 30000 ? most + 1 : most / 16)));
            const Levels found = converted(row.from, source, colors, row.to, rgb16);
            const Definition definition(row.from, row.toLight, row.to, row.toLevel);
            for (std::size_t i = 0; i < colors.size(); i += 3) {
                const auto exact = definition(&colors[i], most);
                for (std::size_t c = 0; c < 3; ++c)
                    ASSERT_NEAR(found[i + c], exact[c], std::abs(exact[c] - knee) < 4 ? 1.5 : 0.51)
                        << colors[i] << ' ' << colors[i + 1] << ' ' << colors[i + 2];
            }
        }
}

// Tables by the color library in floating point, without its coarse grid; gray and Lab by way of formulas.
TEST(ColorTransform, reachesSixteenBitsFromOtherModels)
{
    EXPECT_EQ(converted(none, grayAlpha16, {4711, 815}, sRGB, rgba16), (Levels{4711, 4711, 4711, 815}));
    EXPECT_EQ(converted(none, gray8, {9}, sRGB, rgba16), (Levels{2313, 2313, 2313, 65535}));
    EXPECT_EQ(converted(none, rgb8, {1, 2, 255}, sRGB, rgb16), (Levels{257, 514, 65535}));
    EXPECT_EQ(converted(p3, rgba16, {0, 0, 0, 815}, sRGB, rgba16), (Levels{0, 0, 0, 815}));
    for (const int level : {1, 300, 9000, 40000, 65000}) {
        const double light = std::pow(level / 65535.0, 2.2);
        const double shown = light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
        for (const int found : converted(gray22, {ColorModel::gray, 16, Alpha::none}, {level}, sRGB, rgb16))
            EXPECT_NEAR(found, shown * 65535, 4) << level; // The library's white is a 65536th off.
    }
    // L 50 is 18.42 % of light, 0.4663 in sRGB.
    expectNear(converted(none, lab16, {32768, 32896, 32896}, sRGB, rgb16), Levels(3, 30556), 40);
    expectNear(converted(none, cmykAlpha16, {0, 0, 0, 0, 815}, sRGB, rgba16), {65535, 65535, 65535, 815}, 200);
}

// Long rows may go through the processor's vectors, a single pixel never does.
TEST(ColorTransform, givesAPixelTheSameLevelsInRowsOfAllLengths)
{
    std::mt19937 random(13);
    std::vector<std::byte> in(3 * 60'000);
    for (std::size_t i = 0; i < in.size(); ++i) // Neutral, dark, and any.
        in[i] = std::byte(i < 3 * 256 ? i / 3 : random() % (i < in.size() / 2 ? 24 : 256));
    for (const auto& [from, to] : {std::pair(p3, sRGB), {sRGB, p3}, {adobeRGB, sRGB}, {proPhoto, sRGB}}) {
        SCOPED_TRACE((from.name() + to.name()).toStdString());
        const ColorTransform transform(from, rgb8, to, rgb8);
        std::vector<std::byte> single(in.size());
        for (std::size_t i = 0; i < in.size(); i += 3)
            transform.apply(in.data() + i, single.data() + i, 1);
        std::size_t done = 0;
        for (std::size_t pixels = 0; done + 3 * pixels <= in.size(); done += 3 * pixels++) {
            std::vector<std::byte> row(3 * pixels + 64, std::byte{0xa5});
            transform.apply(in.data() + done, row.data(), pixels);
            ASSERT_TRUE(std::equal(row.begin(), row.end() - 64, single.data() + done)) << pixels;
            ASSERT_EQ(std::ranges::count(row.end() - 64, row.end(), std::byte{0xa5}), 64) << pixels;
        }
    }
}

TEST(ColorTransform, readsGrayLabAndInk)
{
    const ColorProfile linear = *ColorProfile::fromIcc(gray(gamma(1.0)), ColorModel::gray);
    // 0.5 of the light is level 188 of sRGB, 10 of 255 to the power of 2.2 is level 2.6.
    expectNear(converted(linear, gray8, {0, 128, 255}), {0, 0, 0, 188, 188, 188, 255, 255, 255});
    expectNear(converted(gray22, gray8, {10, 128}), {3, 3, 3, 128, 128, 128});
    // Level 40 of sRGB is 2.1 % of the light, level 30 on a curve of 1.8.
    expectNear(converted(none, gray8, {40}, proPhoto), {30, 30, 30});
    // Profiles of another model count as none.
    expectNear(converted(sRGB, gray8, {77}, p3), {77, 77, 77}, 0);
    expectNear(converted(ColorProfile::sGray(), rgb8, {1, 2, 3}), {1, 2, 3}, 0);
    // Lightness 50 is 18.4 % of the light, level 119. sRGB's red is L 54.29, a 80.80, b 69.89 and its blue L 29.57,
    // a 68.30, b -112.03 against D50.
    expectNear(converted(none, lab8, {255, 128, 128, 0, 128, 128}), {255, 255, 255, 0, 0, 0});
    expectNear(converted(none, lab16, {32768, 128 * 257, 128 * 257}), {119, 119, 119});
    expectNear(converted(none, lab16, {35579, 53661, 50857, 19379, 50449, 4104}), {255, 0, 0, 0, 0, 255}, 3);
    // The solids of coated web offset: their published Lab values relative to the paper's, turned into sRGB by hand.
    expectNear(converted(none, cmyk8, {255, 0, 0, 0, 0, 255, 0, 0}), {0, 176, 239, 235, 37, 144}, 2);
    expectNear(converted(none, cmyk8, {0, 0, 255, 0, 0, 0, 0, 255}), {255, 241, 24, 56, 54, 55}, 2);
    expectNear(converted(none, cmyk8, {0, 255, 255, 0, 255, 0, 255, 0}), {237, 52, 57, 0, 169, 92}, 2);
    expectNear(converted(none, cmyk8, {255, 255, 0, 0, 0, 0, 0, 0}), {61, 63, 148, 255, 255, 255}, 2);
}

// Whatever a profile says that passes for one must neither crash nor hang.
TEST(ColorTransform, survivesProfilesWithDamagedBytes)
{
    const QByteArray tabulated = rgb(sRGBPrimaries, table(16, sRGBLight));
    std::mt19937 random(11);
    int used = 0;
    for (int round = 0; round < 300; ++round) {
        QByteArray damaged = round % 2 == 0 ? sRGB.icc() : tabulated;
        for (int i = 0; i < 1 + round % 3; ++i)
            damaged[qsizetype(random() % unsigned(damaged.size()))] = char(random());
        const auto profile = ColorProfile::fromIcc(damaged, ColorModel::rgb);
        if (!profile || !profile->canBeTarget() || profile->isEquivalentTo(sRGB))
            continue;
        ++used;
        std::ignore = converted(*profile, rgb8, {1, 2, 3});
        std::ignore = converted(none, rgb8, {1, 2, 3}, *profile);
    }
    EXPECT_GT(used, 30);
}

} // namespace ferrow
