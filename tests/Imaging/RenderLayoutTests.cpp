// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/RenderLayout.h"

#include "Models/ErrorTexts.h"
#include "Support/TestSupport.h"

#include <cmath>
#include <limits>

namespace ferrow {

namespace {

RenderRecipe bordered(BorderUnit unit, double width)
{
    RenderRecipe recipe;
    recipe.borderUnit = unit;
    recipe.borderWidth = width;
    return recipe;
}

constexpr double infinity = std::numeric_limits<double>::infinity();

} // namespace

TEST(RenderLayout, bordersRoundUpAndScaleAsOneWhole)
{
    const RenderLayout layout = RenderLayout::framedLayout({6000, 4000}, bordered(BorderUnit::percent, 2));
    EXPECT_EQ(layout.canvasSize, (PixelSize{6160, 4160}));
    EXPECT_EQ(layout.imageRect, QRectF(80, 80, 6000, 4000));
    EXPECT_EQ(RenderLayout::framedLayout({6000, 4000}, bordered(BorderUnit::percent, 2.01)).borderThickness, 81);
    EXPECT_EQ(RenderLayout::framedLayout({10, 10}, bordered(BorderUnit::pixels, -5)).canvasSize, (PixelSize{10, 10}));

    const RenderLayout tenth = layout.scaled(0.1);
    EXPECT_EQ(tenth.canvasSize, (PixelSize{616, 416}));
    EXPECT_DOUBLE_EQ(tenth.imageRect.width(), 600);
    EXPECT_EQ(layout.scaled(0.00001).canvasSize, (PixelSize{1, 1}));
    EXPECT_EQ(RenderLayout::calculate({6000, 4000}, bordered(BorderUnit::percent, 2), 1), layout);
}

TEST(RenderLayout, captionsOfEachPositionLieWhereTheyAreNamed)
{
    // A canvas of 400 × 300 with a border of 50; y grows upwards. Paddings 10 and 8, a box of 40 × 20.
    const QRectF image(50, 50, 300, 200);
    const QRectF canvas(0, 0, 400, 300);
    const struct {
        CaptionPosition position;
        double x;
        double y;
    } rows[] = {{CaptionPosition::imageTopLeft, 60, 222},     {CaptionPosition::imageTopCenter, 180, 222},
                {CaptionPosition::imageTopRight, 300, 222},   {CaptionPosition::imageCenterLeft, 60, 140},
                {CaptionPosition::imageCenter, 180, 140},     {CaptionPosition::imageCenterRight, 300, 140},
                {CaptionPosition::imageBottomLeft, 60, 58},   {CaptionPosition::imageBottomCenter, 180, 58},
                {CaptionPosition::imageBottomRight, 300, 58}, {CaptionPosition::borderTopLeft, 10, 272},
                {CaptionPosition::borderTopCenter, 180, 272}, {CaptionPosition::borderTopRight, 350, 272},
                {CaptionPosition::borderBottomLeft, 10, 8},   {CaptionPosition::borderBottomCenter, 180, 8},
                {CaptionPosition::borderBottomRight, 350, 8}};
    for (const auto& row : rows) {
        SCOPED_TRACE(rawValue(row.position).toStdString());
        const QRectF area = captionArea(row.position, image, canvas, 10, 8);
        EXPECT_EQ(anchoredRect({40, 20}, area, row.position), QRectF(row.x, row.y, 40, 20));
        if (isInBorder(row.position)) {
            EXPECT_EQ(area.height(), 42) << "the padding is kept from the outer edge alone";
        }
    }
    EXPECT_EQ(captionArea(CaptionPosition::borderTopLeft, image, canvas, 0, 60).height(), 0);
    EXPECT_EQ(captionArea(CaptionPosition::borderBottomLeft, image, canvas, 300, 0).width(), 0);
    EXPECT_EQ(captionArea(CaptionPosition::borderBottomLeft, canvas, canvas, 0, 5).height(), 0) << "no border at all";
}

TEST(RenderLayout, logosTakeAShareOfThePhotoAndShrinkToFit)
{
    const RenderLayout layout = RenderLayout::framedLayout({6000, 4000}, bordered(BorderUnit::pixels, 100));
    LogoConfiguration logo;
    const auto rect = [&](PixelSize size, double scale = 1) {
        return logoRect(size, layout.scaled(scale), logo, scale);
    };
    EXPECT_EQ(*rect({200, 100}), QRectF(100 + 6000 - 30 - 1080, 100 + 30, 1080, 540)) << "18 % of the photo's width";
    EXPECT_DOUBLE_EQ(rect({200, 100}, 0.5)->width(), 540);
    logo.widthPercent = 250;
    EXPECT_DOUBLE_EQ(rect({200, 100})->width(), 5940) << "all of the photo's width, less the paddings";
    EXPECT_DOUBLE_EQ(rect({10, 1000})->height(), 3940) << "a tall logo is bounded by the height";
    logo.position = CaptionPosition::borderTopLeft;
    EXPECT_DOUBLE_EQ(rect({200, 100})->height(), 70);
    logo.horizontalPadding = 4000;
    EXPECT_FALSE(rect({200, 100})) << "no room between the paddings";
    logo.horizontalPadding = 0;
    EXPECT_FALSE(rect({10000, 1}, 0.01)) << "less than a pixel high";
    EXPECT_FALSE(rect({0, 10}));
}

TEST(RenderLayout, refusesWhatCannotBeDrawnSafely)
{
    const struct {
        const char* name;
        PixelSize size;
        double border;
        double scale;
        bool fits;
    } rows[] = {{"at the side limit", {49'000, 1}, 500, 1, true},
                {"over the side limit", {49'000, 1}, 600, 1, false},
                {"at the area limit", {20'000, 10'000}, 0, 1, true},
                {"over the area limit", {20'000, 10'001}, 0, 1, false},
                {"small again when scaled", {49'000, 1000}, 600, 0.1, true},
                {"scaled to nothing", {10, 10}, 0, 0.01, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const RenderRecipe recipe = bordered(BorderUnit::pixels, row.border);
        if (row.fits) {
            EXPECT_NO_THROW(validateRenderBounds(row.size, recipe, row.scale));
        } else {
            EXPECT_THROW(validateRenderBounds(row.size, recipe, row.scale), ImagePipelineError);
        }
    }
    try {
        validateRenderBounds({20'000, 10'001}, bordered(BorderUnit::pixels, 0.25), 1);
        FAIL();
    } catch (const ImagePipelineError& error) {
        EXPECT_EQ(error, ImagePipelineError(ImagePipelineError::UnreasonableOutputDimensions{20'001, 10'002}));
    }
}

TEST(RenderLayout, refusesEveryValueThatIsNoNumber)
{
    double RenderRecipe::*const members[] = {
        &RenderRecipe::borderWidth,    &RenderRecipe::captionFontSize,        &RenderRecipe::captionLineSpacing,
        &RenderRecipe::captionPadding, &RenderRecipe::captionVerticalPadding, &RenderRecipe::captionOpacity};
    for (const double value : {infinity, -infinity, std::nan("")}) {
        for (const auto member : members) {
            RenderRecipe recipe;
            recipe.*member = value;
            EXPECT_THROW(validateRenderBounds({10, 10}, recipe, 1), ImagePipelineError);
        }
        RenderRecipe recipe;
        recipe.logo = LogoConfiguration::placeholder();
        recipe.logo->opacity = value;
        EXPECT_THROW(validateRenderBounds({10, 10}, recipe, 1), ImagePipelineError);
        EXPECT_THROW(validateRenderBounds({10, 10}, RenderRecipe(), value), ImagePipelineError);
    }
    EXPECT_THROW(validateRenderBounds({10, 10}, RenderRecipe(), 0), ImagePipelineError);
    EXPECT_EQ(finiteInteger(infinity), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(finiteInteger(-3), 0);
}

} // namespace ferrow
