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

TEST(RenderLayout, shapeAddsRoomAndNothingElse)
{
    const auto pixels = [](double width, const std::optional<FrameShape>& shape) {
        return Border{.width = width, .shape = shape};
    };
    const auto shaped = [](double width, double height, double balance = 0, bool turns = false) {
        return FrameShape{width, height, turns, balance};
    };
    const Border instant{.unit = BorderUnit::percent, .sides = SideLengths{4, 4, 16, 4}};
    Border balancedInstant = instant;
    balancedInstant.shape = shaped(4, 5, 50);
    // All worked out by hand: the photo with its border, the side that is too short, half of what it lacks.
    const struct {
        const char* name;
        PixelSize photo;
        Border border;
        PixelSize canvas;
        double x; ///< Of the photo, from the canvas's left edge.
        double y; ///< From its top.
    } rows[] = {
        {"square, landscape", {6000, 4000}, pixels(120, shaped(1, 1)), {6240, 6240}, 120, 1120},
        {"square, portrait", {4000, 6000}, pixels(120, shaped(1, 1)), {6240, 6240}, 1120, 120},
        {"square, square already", {500, 500}, pixels(7, shaped(3, 3)), {514, 514}, 7, 7},
        {"4:5, portrait", {4000, 6000}, pixels(120, shaped(4, 5)), {4992, 6240}, 496, 120},
        {"4:5, landscape", {6000, 4000}, pixels(120, shaped(4, 5)), {6240, 7800}, 120, 1900},
        {"4:5 turned, landscape", {6000, 4000}, pixels(120, shaped(4, 5, 0, true)), {6240, 4992}, 120, 496},
        {"4:5 turning, portrait", {4000, 6000}, pixels(120, shaped(4, 5, 0, true)), {4992, 6240}, 496, 120},
        {"4:5 turning, square", {1000, 1000}, pixels(0, shaped(4, 5, 0, true)), {1000, 1250}, 0, 125},
        {"5:4, portrait", {4000, 6000}, pixels(120, shaped(5, 4)), {7800, 6240}, 1900, 120},
        {"5:4 turned, portrait", {4000, 6000}, pixels(120, shaped(5, 4, 0, true)), {4992, 6240}, 496, 120},
        {"3:2, 3:2 already", {6000, 4000}, pixels(0, shaped(3, 2)), {6000, 4000}, 0, 0},
        {"3:2, wider by its border", {6000, 4000}, pixels(120, shaped(3, 2)), {6360, 4240}, 180, 120},
        {"2:3, portrait", {4000, 6000}, pixels(120, shaped(2, 3)), {4240, 6360}, 120, 180},
        {"16:9, to the nearest pixel", {6000, 4000}, pixels(0, shaped(16, 9)), {7111, 4000}, 556, 0},
        {"9:16, landscape", {6000, 4000}, pixels(0, shaped(9, 16)), {6000, 10667}, 0, 3334},
        {"own ratio", {1000, 1000}, pixels(10, shaped(1.91, 1)), {1948, 1020}, 474, 10},
        {"tiny", {1, 1}, pixels(0, shaped(16, 9)), {2, 1}, 1, 0},
        {"panorama", {12'000, 600}, pixels(6, shaped(1, 1)), {12'012, 12'012}, 6, 5706},
        {"at the top", {6000, 4000}, pixels(120, shaped(1, 1, -100)), {6240, 6240}, 120, 120},
        {"a little up", {6000, 4000}, pixels(120, shaped(1, 1, -20)), {6240, 6240}, 120, 920},
        {"at the bottom", {6000, 4000}, pixels(120, shaped(1, 1, 100)), {6240, 6240}, 120, 2120},
        {"no further", {6000, 4000}, pixels(120, shaped(1, 1, 1e9)), {6240, 6240}, 120, 2120},
        {"at the right", {4000, 6000}, pixels(120, shaped(1, 1, 100)), {6240, 6240}, 2120, 120},
        {"instant print", {6000, 4000}, instant, {6320, 4800}, 160, 160},
        {"instant print in a shape", {6000, 4000}, balancedInstant, {6320, 7900}, 160, 2485},
        {"parts of pixels", {100, 100}, {.sides = SideLengths{0.2, 1.5, -9, 3}}, {105, 101}, 3, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const RenderLayout layout = RenderLayout::framedLayout(row.photo, {.border = row.border});
        EXPECT_EQ(layout.canvasSize, row.canvas);
        EXPECT_EQ(layout.imageRect.size(), QSizeF(double(row.photo.width), double(row.photo.height)));
        EXPECT_EQ(layout.imageRect.x(), row.x);
        EXPECT_EQ(double(row.canvas.height) - layout.imageRect.bottom(), row.y);
        EXPECT_NO_THROW(validateRenderBounds(row.photo, {.border = row.border}, 1));
    }
    // Captions have all of the room on their side: 4,800 − 4,160 below an instant print, 2,485 above one in a shape.
    const auto room = [](const Border& border, CaptionPosition position) {
        const RenderLayout layout = RenderLayout::framedLayout({6000, 4000}, {.border = border});
        return captionArea(position, layout.imageRect, layout.canvasRect(), 30, 40);
    };
    EXPECT_EQ(room(instant, CaptionPosition::borderBottomLeft), QRectF(30, 40, 6260, 600));
    EXPECT_EQ(room(balancedInstant, CaptionPosition::borderTopRight), QRectF(30, 5415, 6260, 2445));
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
    const auto shapeRefusal = [](PixelSize size, const Border& border) {
        return test::pipelineErrorOf([&] { validateRenderBounds(size, {.border = border}, 1); });
    };
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(shapeRefusal({20'000, 1'000}, {.width = 0, .shape = FrameShape()}),
              Error(TooLarge{20'000, 20'000}).value);
    EXPECT_EQ(shapeRefusal({10, 10}, {.width = 0, .shape = FrameShape{1e20, 1}}), Error(TooLarge{largest, 10}).value);
    EXPECT_EQ(shapeRefusal({10, 10}, {.sides = SideLengths{0, 0, 1e20, 5}}), Error(TooLarge{15, largest}).value);
    for (const FrameShape& shape :
         {FrameShape{0, 1}, {1, 0}, {0, 0}, {-4, 5}, {-4, -5}, {1e308, 1e-308}, {1e-308, 1e308}})
        EXPECT_EQ(shapeRefusal({10, 10}, {.shape = shape}), Error(Error::invalidRenderRecipe).value);
    EXPECT_ANY_THROW(validateRenderBounds({0, 10}, bordered(BorderUnit::pixels, 0), 1));
    EXPECT_NO_THROW(validateRenderBounds({20'000, 2}, bordered(BorderUnit::pixels, 0), 0.1)) << "drawn as one pixel";
    EXPECT_NO_THROW(validateRenderBounds({49'000, 1}, bordered(BorderUnit::pixels, 500), 1));
    EXPECT_NO_THROW(validateRenderBounds({20'000, 10'000}, bordered(BorderUnit::pixels, 0), 1));
    EXPECT_NO_THROW(validateRenderBounds({49'000, 1000}, bordered(BorderUnit::pixels, 600), 0.1));
}

TEST(RenderLayout, refusesEveryValueThatIsNoNumber)
{
    double Caption::*const members[] = {&Caption::letterSpacing, &Caption::opacity};
    Length Caption::*const lengths[] = {&Caption::fontSize, &Caption::lineSpacing, &Caption::padding,
                                        &Caption::verticalPadding};
    for (const double value : {infinity, -infinity, std::nan("")}) {
        std::vector<RenderRecipe> recipes(std::size(members) + 2);
        for (std::size_t i = 0; i < std::size(members); ++i)
            recipes[i].captions.emplace_back().*members[i] = value;
        const Length length{value, BorderUnit::percent};
        for (const Border& border :
             {Border{.sides = SideLengths{0, value, 0, 0}}, Border{.blurredBackground = BlurredBackground{value, 0}},
              Border{.blurredBackground = BlurredBackground{0, value}}, Border{.shape = FrameShape{value, 1}},
              Border{.shape = FrameShape{1, value}}, Border{.shape = FrameShape{1, 1, true, value}},
              Border{.line = FrameLine{length, {}}}, Border{.line = FrameLine{{}, length}},
              Border{.photoEdge = {length}}})
            recipes.insert(recipes.begin(), {.border = border});
        (recipes.end() - 2)->border.width = value;
        recipes.back().logo = LogoConfiguration::placeholder();
        recipes.back().logo->opacity = value;
        for (const auto member : lengths)
            recipes.emplace_back().captions.front().*member = {value};
        for (const RenderRecipe& recipe : recipes)
            EXPECT_THROW(validateRenderBounds({10, 10}, recipe, 1), ImagePipelineError);
        EXPECT_THROW(validateRenderBounds({10, 10}, RenderRecipe(), value), ImagePipelineError);
    }
    EXPECT_THROW(validateRenderBounds({10, 10}, RenderRecipe(), 0), ImagePipelineError);
    const RenderRecipe beyondNumbers{.captions = {{.padding = {1e308, BorderUnit::percent}}}};
    EXPECT_THROW(validateRenderBounds({1000, 1000}, beyondNumbers, 1), ImagePipelineError);
    EXPECT_EQ(finiteInteger(infinity), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(finiteInteger(-3), 0);
}

} // namespace ferrow
