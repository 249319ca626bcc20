// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/RenderLayout.h"

#include "Support/PipelineErrors.h"
#include "Support/TestSupport.h"

#include <cmath>
#include <limits>

namespace ferrow {

namespace {

RenderRecipe bordered(BorderUnit unit, double width)
{
    return {.border = {.unit = unit, .width = width}};
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

    EXPECT_EQ(layout.scaled(0.1).canvasSize, (PixelSize{616, 416}));
    EXPECT_DOUBLE_EQ(layout.scaled(0.1).imageRect.width(), 600);
    EXPECT_EQ(layout.scaled(0.00001).canvasSize, (PixelSize{1, 1}));
    EXPECT_EQ(RenderLayout::calculate({6000, 4000}, bordered(BorderUnit::percent, 2), 1), layout);
}

TEST(RenderLayout, captionsOfEachPositionLieWhereTheyAreNamed)
{
    // A canvas of 400 × 300 with a border of 50; y grows upwards. Paddings 10 and 8, a box of 40 × 20.
    const QRectF image(50, 50, 300, 200);
    const QRectF canvas(0, 0, 400, 300);
    constexpr double rows[] = {222, 140, 58, 272, 8};
    for (std::size_t i = 0; i < 15; ++i) {
        const CaptionPosition position = allCases<CaptionPosition>()[i];
        SCOPED_TRACE(rawValue(position).toStdString());
        const QRectF area = captionArea(position, image, canvas, 10, 8);
        const double x = isInBorder(position) ? 10 + 170.0 * double(i % 3) : 60 + 120.0 * double(i % 3);
        EXPECT_EQ(anchoredRect({40, 20}, area, position), QRectF(x, rows[i / 3], 40, 20));
        // In the border the padding is kept from the outer edge alone.
        EXPECT_EQ(area.height(), isInBorder(position) ? 42 : 184);
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
    const auto refusal = [](PixelSize size, double border) {
        return test::pipelineErrorOf([&] { validateRenderBounds(size, bordered(BorderUnit::pixels, border), 1); });
    };
    using Error = ImagePipelineError;
    using TooLarge = Error::UnreasonableOutputDimensions;
    EXPECT_EQ(refusal({49'000, 1}, 600), Error(TooLarge{50'200, 1'201}).value);
    EXPECT_EQ(refusal({20'000, 10'001}, 0.25), Error(TooLarge{20'001, 10'002}).value);
    EXPECT_EQ(refusal({20'000, 10'001}, 0), Error(TooLarge{20'000, 10'001}).value);
    EXPECT_ANY_THROW(validateRenderBounds({0, 10}, bordered(BorderUnit::pixels, 0), 1));
    EXPECT_NO_THROW(validateRenderBounds({20'000, 2}, bordered(BorderUnit::pixels, 0), 0.1)) << "drawn as one pixel";
    EXPECT_NO_THROW(validateRenderBounds({49'000, 1}, bordered(BorderUnit::pixels, 500), 1));
    EXPECT_NO_THROW(validateRenderBounds({20'000, 10'000}, bordered(BorderUnit::pixels, 0), 1));
    EXPECT_NO_THROW(validateRenderBounds({49'000, 1000}, bordered(BorderUnit::pixels, 600), 0.1));
}

TEST(RenderLayout, refusesEveryValueThatIsNoNumber)
{
    double Caption::*const members[] = {&Caption::fontSize, &Caption::lineSpacing, &Caption::padding,
                                        &Caption::verticalPadding, &Caption::opacity};
    for (const double value : {infinity, -infinity, std::nan("")}) {
        std::vector<RenderRecipe> recipes(std::size(members) + 2);
        for (std::size_t i = 0; i < std::size(members); ++i)
            recipes[i].captions.emplace_back().*members[i] = value;
        recipes[std::size(members)].border.width = value;
        recipes.back().logo = LogoConfiguration::placeholder();
        recipes.back().logo->opacity = value;
        for (const RenderRecipe& recipe : recipes)
            EXPECT_THROW(validateRenderBounds({10, 10}, recipe, 1), ImagePipelineError);
        EXPECT_THROW(validateRenderBounds({10, 10}, RenderRecipe(), value), ImagePipelineError);
    }
    EXPECT_THROW(validateRenderBounds({10, 10}, RenderRecipe(), 0), ImagePipelineError);
    EXPECT_EQ(finiteInteger(infinity), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(finiteInteger(-3), 0);
}

} // namespace ferrow
