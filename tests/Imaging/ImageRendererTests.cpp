// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ImageRenderer.h"

#include "Platform/Pixels/Resampler.h"
#include "Support/Pictures.h"

namespace ferrow {

namespace {

constexpr PixelSize photoSize{600, 400};
constexpr int border = 80;

RenderRecipe captioned(CaptionPosition position)
{
    RenderRecipe recipe;
    recipe.border.width = border;
    recipe.captions.front().setCaptionTemplate(QStringLiteral("HHHH"));
    recipe.captions.front().position = position;
    recipe.captions.front().padding = {20};
    recipe.captions.front().verticalPadding = {12};
    recipe.captions.front().fontSize = {24};
    recipe.captions.front().opacity = 1;
    return recipe;
}

/// Gray photo, white border: black ink is easily told from both.
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

/// In levels.
double meanDifference(const Bitmap& left, const Bitmap& right)
{
    EXPECT_EQ(left.size(), right.size());
    double sum = 0;
    for (std::int64_t y = 0; y < left.size().height; ++y)
        for (std::int64_t x = 0; x < left.size().width; ++x)
            for (int c = 0; c < 3; ++c)
                sum += std::abs(test::component(left, x, y, c) - test::component(right, x, y, c));
    return sum / double(left.size().width * left.size().height * 3);
}

} // namespace

TEST(ImageRenderer, drawsCaptionsOfAllFifteenPositionsInTheirCorners)
{
    const QRect photo(border, border, 600, 400);
    const QRect canvas(0, 0, 760, 560);
    constexpr double columns[] = {0.1, 0.5, 0.9};
    constexpr double rows[] = {0.07, 0.5, 0.93, 0.07, 0.93};
    for (std::size_t i = 0; i < 15; ++i) {
        const CaptionPosition position = allCases<CaptionPosition>()[i];
        SCOPED_TRACE(rawValue(position).toStdString());
        const QRect ink = inkBounds(rendered(captioned(position)), 100);
        ASSERT_FALSE(ink.isEmpty());
        const QRect frame = isInBorder(position) ? canvas : photo;
        EXPECT_TRUE(frame.adjusted(20, 12, -20, -12).contains(ink));
        EXPECT_EQ(photo.intersects(ink), !isInBorder(position));
        EXPECT_NEAR((ink.center().x() - frame.left()) / double(frame.width()), columns[i % 3], 0.1);
        EXPECT_NEAR((ink.center().y() - frame.top()) / double(frame.height()), rows[i / 3], 0.07);
    }
}

TEST(ImageRenderer, captionsOnThePhotoCastAShadowAndBorderOnesDoNot)
{
    for (const bool onPhoto : {true, false}) {
        RenderRecipe recipe = captioned(onPhoto ? CaptionPosition::imageCenter : CaptionPosition::borderBottomCenter);
        recipe.border.color = {190 / 255.0, 190 / 255.0, 190 / 255.0, 1};
        recipe.captions.front().color = RGBAColor::white;
        // White text can't darken gray: only a shadow can.
        EXPECT_EQ(inkBounds(rendered(recipe), 150).isEmpty(), !onPhoto);
    }
}

TEST(ImageRenderer, leavesOutWhatHasNoRoomOrIsSwitchedOff)
{
    const auto hasInk = [](const auto& change) {
        RenderRecipe recipe = captioned(CaptionPosition::borderBottomLeft);
        change(recipe);
        return !inkBounds(rendered(recipe), 100).isEmpty();
    };
    EXPECT_TRUE(hasInk([](RenderRecipe& recipe) { recipe.captions.front().opacity = 1.7; }));
    EXPECT_FALSE(hasInk([](RenderRecipe& recipe) { recipe.captions.front().opacity = -0.2; }));
    EXPECT_FALSE(hasInk([](RenderRecipe& recipe) { recipe.captions.front().verticalPadding = {border + 1}; }));
    EXPECT_FALSE(hasInk([](RenderRecipe& recipe) { recipe.captions.front().isEnabled = false; }));
    // Nothing but separators is left of it.
    EXPECT_FALSE(hasInk(
        [](RenderRecipe& recipe) { recipe.captions.front().setCaptionTemplate(QStringLiteral("{lens} · {iso}")); }));
}

TEST(ImageRenderer, drawsEveryCaption)
{
    const RenderRecipe below = captioned(CaptionPosition::borderBottomRight);
    RenderRecipe both = captioned(CaptionPosition::borderTopLeft);
    const QRect above = inkBounds(rendered(both), 100);
    both.captions.push_back(below.captions.front());
    EXPECT_EQ(inkBounds(rendered(both), 100), above.united(inkBounds(rendered(below), 100)));
}

TEST(ImageRenderer, logosLieInTheirBoxUnderTheCaption)
{
    RenderRecipe recipe = captioned(CaptionPosition::imageCenter);
    recipe.captions.front().color = {1, 0, 0, 1};
    recipe.logo = LogoConfiguration::placeholder();
    recipe.logo->position = CaptionPosition::imageCenter;
    recipe.logo->widthPercent = 50;
    const Bitmap logo = test::flat({30, 10}, rgba8Premultiplied, {0, 0, 0, 255});
    const Bitmap picture = rendered(recipe, logo);
    EXPECT_EQ(inkBounds(picture, 100), QRect(80 + 150, 80 + 150, 300, 100));
    recipe.captions.front().isEnabled = false;
    EXPECT_FALSE(test::samePixels(picture, rendered(recipe, logo))) << "the caption is hidden";
    recipe.logo->opacity = 0.5;
    EXPECT_NEAR(test::component(rendered(recipe, logo), 380, 280, 0), 95, 1);
    recipe.logo->isEnabled = false;
    EXPECT_EQ(test::component(rendered(recipe, logo), 380, 280, 0), 190);
}

TEST(ImageRenderer, previewIsTheExportMadeSmaller)
{
    RenderRecipe recipe = captioned(CaptionPosition::imageBottomRight);
    recipe.captions.front().fontSize = {60};
    recipe.border.width = 150;
    const auto render = [&](PixelSize source) {
        return ImageRenderer::render(test::flat(source, rgb8, {99, 99, 99}), {1200, 800}, recipe, {}, {},
                                     ImageRenderer::SourceScale::fromSource, {});
    };
    const Bitmap large = render({1200, 800});
    const Bitmap small = render({600, 400});
    ASSERT_EQ(small.size(), (PixelSize{750, 550}));
    EXPECT_EQ(inkBounds(large, 110), QRect(150, 150, 1200, 800));
    EXPECT_EQ(inkBounds(small, 110), QRect(75, 75, 600, 400));
    const QRect largeInk = inkBounds(large, 20);
    const QRect smallInk = inkBounds(small, 20);
    EXPECT_NEAR(smallInk.left() * 2, largeInk.left(), 4);
    EXPECT_NEAR(smallInk.bottom() * 2, largeInk.bottom(), 4);
}

TEST(ImageRenderer, previewHasWhatSurroundsThePhotoWhereTheExportHasIt)
{
    // Bars of different brightness, so that the background differs from place to place.
    Bitmap photo = test::flat(photoSize, rgb8, {90, 120, 60});
    for (std::int64_t y = 0; y < photoSize.height; ++y)
        for (std::int64_t x = 0; x < photoSize.width; ++x)
            photo.row(y)[x * 3 + 1] = std::byte(60 + 120 * ((x / 150 + y / 133) % 2) + x / 20);
    const Border plain{.width = 60, .color = {0.6, 0.55, 0.5, 1}};
    Border blurred = plain;
    blurred.blurredBackground = BlurredBackground{30, 20};
    Border lined = plain;
    lined.line = FrameLine{{5, BorderUnit::percent}, {11, BorderUnit::pixels}, {0.3, 0.5, 0.4, 1}};
    Border edged = plain;
    edged.photoEdge = {{20, BorderUnit::percent}, true};
    Border all = edged;
    all.blurredBackground = blurred.blurredBackground;
    all.line = FrameLine{{3, BorderUnit::pixels}, {0, BorderUnit::pixels}, {0.9, 0.8, 0.2, 0.7}};
    all.sides = SideLengths{32, 40, 88, 48}; // The photo stands on whole pixels at a quarter, too.
    all.shape = FrameShape();
    for (const auto& [name, framed] : {std::pair("blurred", blurred), {"lined", lined}, {"edged", edged}, {"all", all}})
        for (const PixelSize preview : {PixelSize{300, 200}, {150, 100}}) {
            SCOPED_TRACE(std::string(name) + std::to_string(preview.width));
            const auto render = [&, frame = framed](const Bitmap& source) {
                return ImageRenderer::render(source, photoSize, {.border = frame}, {}, {},
                                             ImageRenderer::SourceScale::fromSource, {});
            };
            const Bitmap small = render(Resampler::scaled(photo, preview));
            const Bitmap reduced = Resampler::scaled(render(photo), small.size());
            EXPECT_LT(meanDifference(small, reduced), 0.7);
        }
    // A photo that has to be scaled is an overlay, with the same corners: of one color it is the same picture.
    const auto flat = [&](PixelSize source) {
        return ImageRenderer::render(test::flat(source, rgb8, {10, 90, 220}), photoSize, {.border = all}, {}, {},
                                     ImageRenderer::SourceScale::fullSize, {});
    };
    EXPECT_LT(meanDifference(flat({300, 200}), flat(photoSize)), 0.02);
}

TEST(ImageRenderer, previewHasTextAndShadowWhereTheExportHasThem)
{
    // The mean height above the lower edge of what differs from flat gray, in pixels of the export.
    const auto inkHeight = [](const RenderRecipe& recipe, PixelSize source) {
        const auto draw = [&](bool isCaptioned) {
            RenderRecipe drawn = recipe;
            drawn.captions.front().isEnabled = isCaptioned;
            return ImageRenderer::render(test::flat(source, rgb8, {190, 190, 190}), photoSize, drawn, {}, {},
                                         ImageRenderer::SourceScale::fromSource, {});
        };
        const Bitmap with = draw(true);
        const Bitmap without = draw(false);
        const std::int64_t height = with.size().height;
        double ink = 0;
        double moment = 0;
        for (std::int64_t y = 0; y < height; ++y)
            for (std::int64_t x = 0; x < with.size().width; ++x) {
                const double dark = test::component(without, x, y, 1) - test::component(with, x, y, 1);
                ink += dark;
                moment += dark * (double(height - y) - 0.5);
            }
        return moment / ink * double(photoSize.width) / double(source.width);
    };
    for (const CaptionPosition position :
         {CaptionPosition::imageTopLeft, CaptionPosition::imageCenter, CaptionPosition::imageBottomRight,
          CaptionPosition::borderTopCenter, CaptionPosition::borderBottomLeft})
        for (const bool isShadowAlone : {false, true})
            for (const double padding : {12.0, 13.0, 15.0}) {
                RenderRecipe recipe = captioned(position);
                recipe.captions.front().verticalPadding = {padding};
                recipe.captions.front().color =
                    isShadowAlone ? RGBAColor{190 / 255.0, 190 / 255.0, 190 / 255.0, 1} : RGBAColor{};
                if (isShadowAlone && isInBorder(position))
                    continue;
                // Scales at which the canvas has whole pixels too.
                for (const PixelSize preview : {PixelSize{300, 200}, PixelSize{285, 190}})
                    EXPECT_NEAR(inkHeight(recipe, preview), inkHeight(recipe, photoSize),
                                0.1 * double(photoSize.width) / double(preview.width))
                        << rawValue(position).toStdString() << ", " << padding << ", " << isShadowAlone;
            }
}

TEST(ImageRenderer, preservesTheSourceSpaceOnlyWhereThereIsOne)
{
    RenderRecipe recipe;
    recipe.outputColorProfile = OutputColorProfile::preserveSource;
    const auto space = [&](const ColorProfile& profile) {
        const Bitmap photo = test::flat({8, 8}, rgb8, {1, 2, 3}, profile);
        return ImageRenderer::render(photo, {8, 8}, recipe, {}, {}, ImageRenderer::SourceScale::fullSize, {}).profile();
    };
    EXPECT_EQ(space(ColorProfile::displayP3()), ColorProfile::displayP3());
    EXPECT_EQ(space({}), ColorProfile::sRGB());
    // A well-known one is written in good bytes, whatever the source's say of it.
    const QByteArray odd = QByteArray(ColorProfile::displayP3().icc()).replace("No copyright", "No Copyright");
    EXPECT_EQ(space(ColorProfile::fromIcc(odd, ColorModel::rgb).value()), ColorProfile::displayP3());
}

} // namespace ferrow
