// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ImageRenderer.h"

#include "Support/Pictures.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr PixelSize photoSize{600, 400};
constexpr int border = 80;

RenderRecipe captioned(CaptionPosition position)
{
    RenderRecipe recipe;
    recipe.borderWidth = border;
    recipe.setCaptionTemplate(QStringLiteral("HHHH"));
    recipe.captionPosition = position;
    recipe.captionPadding = 20;
    recipe.captionVerticalPadding = 12;
    recipe.captionFontSize = 24;
    recipe.captionOpacity = 1;
    return recipe;
}

/// Grey photo, white border: black ink is easily told from both.
Bitmap rendered(const RenderRecipe& recipe, const Bitmap& logo = {})
{
    const Bitmap photo = test::flat(photoSize, rgb8, {190, 190, 190});
    return ImageRenderer::render(photo, photoSize, recipe, {}, logo, ImageRenderer::SourceScale::fullSize, {});
}

/// Bounds of the pixels darker than `level`, rows from the top.
QRect inkBounds(const Bitmap& picture, int level)
{
    QRect bounds;
    for (int y = 0; y < picture.size().height; ++y)
        for (int x = 0; x < picture.size().width; ++x)
            if (test::component(picture, x, y, 1) < level)
                bounds |= QRect(x, y, 1, 1);
    return bounds;
}

} // namespace

TEST(ImageRenderer, drawsCaptionsOfAllFifteenPositionsInTheirCorners)
{
    const QRect photo(border, border, 600, 400);
    const QRect canvas(0, 0, 760, 560);
    for (const CaptionPosition position : allCases<CaptionPosition>()) {
        const QString name = rawValue(position);
        SCOPED_TRACE(name.toStdString());
        const QRect ink = inkBounds(rendered(captioned(position)), 100);
        ASSERT_FALSE(ink.isEmpty());
        const QRect frame = isInBorder(position) ? canvas : photo;
        EXPECT_TRUE(frame.adjusted(20, 12, -20, -12).contains(ink));
        EXPECT_EQ(photo.intersects(ink), !isInBorder(position));
        const double column = (ink.center().x() - frame.left()) / double(frame.width());
        const double row = (ink.center().y() - frame.top()) / double(frame.height());
        EXPECT_NEAR(column,
                    name.endsWith(QLatin1StringView("Left"))    ? 0.1
                    : name.endsWith(QLatin1StringView("Right")) ? 0.9
                                                                : 0.5,
                    0.1);
        EXPECT_NEAR(row,
                    name.contains(QLatin1StringView("Top"))      ? 0.07
                    : name.contains(QLatin1StringView("Bottom")) ? 0.93
                                                                 : 0.5,
                    0.07);
    }
}

TEST(ImageRenderer, captionsOnThePhotoCastAShadowAndBorderOnesDoNot)
{
    for (const bool onPhoto : {true, false}) {
        RenderRecipe recipe = captioned(onPhoto ? CaptionPosition::imageCenter : CaptionPosition::borderBottomCenter);
        recipe.borderColor = {190 / 255.0, 190 / 255.0, 190 / 255.0, 1};
        recipe.captionColor = RGBAColor::white;
        // White text can't darken grey: only a shadow can.
        EXPECT_EQ(inkBounds(rendered(recipe), 150).isEmpty(), !onPhoto);
    }
}

TEST(ImageRenderer, leavesOutWhatHasNoRoomOrIsSwitchedOff)
{
    const auto hasInk = [](const RenderRecipe& recipe) { return !inkBounds(rendered(recipe), 100).isEmpty(); };
    RenderRecipe recipe = captioned(CaptionPosition::borderBottomLeft);
    EXPECT_TRUE(hasInk(recipe));
    recipe.captionOpacity = 1.7;
    EXPECT_TRUE(hasInk(recipe));
    recipe.captionOpacity = -0.2;
    EXPECT_FALSE(hasInk(recipe));
    recipe = captioned(CaptionPosition::borderBottomLeft);
    recipe.captionVerticalPadding = border + 1;
    EXPECT_FALSE(hasInk(recipe)) << "the padding is larger than the border";
    recipe = captioned(CaptionPosition::borderBottomLeft);
    recipe.captionEnabled = false;
    EXPECT_FALSE(hasInk(recipe));
    recipe = captioned(CaptionPosition::borderBottomLeft);
    recipe.setCaptionTemplate(QStringLiteral("{lens} · {iso}"));
    EXPECT_FALSE(hasInk(recipe)) << "nothing but separators is left";
}

TEST(ImageRenderer, logosLieInTheirBoxUnderTheCaption)
{
    RenderRecipe recipe = captioned(CaptionPosition::imageCenter);
    recipe.captionColor = {1, 0, 0, 1};
    recipe.logo = LogoConfiguration::placeholder();
    recipe.logo->position = CaptionPosition::imageCenter;
    recipe.logo->widthPercent = 50;
    const Bitmap logo = test::flat({30, 10}, rgba8Premultiplied, {0, 0, 0, 255});
    const Bitmap picture = rendered(recipe, logo);
    EXPECT_EQ(inkBounds(picture, 100), QRect(80 + 150, 80 + 150, 300, 100));
    bool redOnTop = false;
    for (int y = 230; y < 330; ++y)
        for (int x = 230; x < 530; ++x)
            redOnTop |= test::component(picture, x, y, 0) > 200;
    EXPECT_TRUE(redOnTop);

    recipe.captionEnabled = false;
    recipe.logo->opacity = 0.5;
    EXPECT_NEAR(test::component(rendered(recipe, logo), 380, 280, 0), 95, 1);
    recipe.logo->isEnabled = false;
    EXPECT_EQ(test::component(rendered(recipe, logo), 380, 280, 0), 190);
}

TEST(ImageRenderer, previewIsTheExportMadeSmaller)
{
    Bitmap photo({1200, 800}, rgb8, ColorProfile::sRGB());
    for (std::int64_t y = 0; y < 800; ++y)
        for (std::int64_t x = 0; x < 1200; ++x)
            for (int c = 0; c < 3; ++c)
                photo.row(y)[x * 3 + c] =
                    std::byte(std::uint8_t(128 + 100 * std::sin(double(x) / 90 + c) * std::cos(double(y) / 70)));
    Bitmap half({600, 400}, rgb8, ColorProfile::sRGB());
    for (std::int64_t y = 0; y < 400; ++y)
        for (std::int64_t x = 0; x < 600; ++x)
            std::memcpy(half.row(y) + x * 3, photo.row(2 * y) + x * 6, 3);

    RenderRecipe recipe = captioned(CaptionPosition::borderBottomRight);
    recipe.captionFontSize = 60;
    recipe.borderWidth = 150;
    const auto render = [&](const Bitmap& source) {
        return ImageRenderer::render(source, photo.size(), recipe, {}, {}, ImageRenderer::SourceScale::fromSource, {});
    };
    const Bitmap large = render(photo);
    const Bitmap small = render(half);
    ASSERT_EQ(small.size(), (PixelSize{750, 550}));
    const QRect largeInk = inkBounds(large, 20);
    const QRect smallInk = inkBounds(small, 20);
    EXPECT_NEAR(smallInk.left() * 2, largeInk.left(), 4);
    EXPECT_NEAR(smallInk.bottom() * 2, largeInk.bottom(), 4);
    EXPECT_NEAR(test::component(small, 375, 275, 0), test::component(large, 750, 550, 0), 6);
}

TEST(ImageRenderer, preservesTheSourceSpaceOnlyWhereThereIsOne)
{
    RenderRecipe recipe;
    recipe.outputColorProfile = OutputColorProfile::preserveSource;
    const auto space = [&](const ColorProfile& profile) {
        const Bitmap photo = test::flat({8, 8}, rgb8, {1, 2, 3}).withProfile(profile);
        return ImageRenderer::render(photo, {8, 8}, recipe, {}, {}, ImageRenderer::SourceScale::fullSize, {}).profile();
    };
    EXPECT_EQ(space(ColorProfile::displayP3()), ColorProfile::displayP3());
    EXPECT_EQ(space({}), ColorProfile::sRGB());
}

} // namespace ferrow
