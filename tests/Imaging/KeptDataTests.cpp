// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/KeptData.h"

#include "Support/TestSupport.h"

#include <functional>

namespace ferrow {

namespace {

struct Sides {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;
    std::int64_t bottom = 0;

    bool operator==(const Sides&) const = default;
};

void PrintTo(const Sides& sides, std::ostream* out)
{
    *out << sides.left << ' ' << sides.top << ' ' << sides.right << ' ' << sides.bottom;
}

Sides sidesOf(PixelSize photo, const Border& border, const BlockGrid& grid)
{
    const RenderLayout layout = RenderLayout::framedLayout(photo, {.border = border}, grid);
    const QRectF place = layout.fromTop(layout.imageRect);
    return {std::int64_t(place.x()), std::int64_t(place.y()),
            layout.canvasSize.width - std::int64_t(place.x()) - photo.width,
            layout.canvasSize.height - std::int64_t(place.y()) - photo.height};
}

ImportedPhoto jpeg()
{
    ImportedPhoto photo;
    photo.pixelSize = {600, 400};
    photo.codedData = CodedData{.grid = {16, 16}, .keepsColors = {true, false, true}};
    return photo;
}

const ExportSettings keeping{.keepsPhotoData = true};

} // namespace

TEST(KeptData, movesABorderOntoTheBlocks)
{
    constexpr PixelSize photo{600, 400};
    const auto even = [](double width) { return Border{.width = width}; };
    EXPECT_EQ(sidesOf(photo, even(120), {}), (Sides{120, 120, 120, 120}));
    EXPECT_EQ(sidesOf(photo, even(120), {8, 8}), (Sides{120, 120, 120, 120}));
    EXPECT_EQ(sidesOf(photo, even(120), {16, 16}), (Sides{128, 128, 128, 128}));
    EXPECT_EQ(sidesOf(photo, even(120), {16, 8}), (Sides{128, 128, 128, 128})) << "as wide on all sides";
    EXPECT_EQ(sidesOf(photo, even(7), {16, 16}), (Sides{})) << "the nearest";
    EXPECT_EQ(sidesOf(photo, even(0), {16, 16, 5, 0}), (Sides{5, 0, 5, 0})) << "what a turned photo's blocks hold";
    EXPECT_EQ(sidesOf(photo, even(40), {16, 16, 5, 3}), (Sides{37, 35, 37, 35}));
    EXPECT_EQ(sidesOf(photo, {.sides = SideLengths{20, 30, 200, 30}}, {16, 16}), (Sides{32, 16, 32, 200}));
    EXPECT_EQ(sidesOf(photo, {.sides = SideLengths{20, 50, 20, 30}}, {16, 8}), (Sides{32, 24, 50, 24}));
    // The square adds 200 above and below: 96 of them are the next to the half.
    EXPECT_EQ(sidesOf(photo, {.width = 16, .shape = FrameShape{}}, {16, 16}), (Sides{16, 112, 16, 120}));
    FrameShape above;
    above.balance = 100;
    EXPECT_EQ(sidesOf(photo, {.width = 16, .shape = above}, {16, 16}), (Sides{16, 208, 16, 24}));
}

TEST(KeptData, saysWhyNotAndKeepsWhatItCan)
{
    const RenderRecipe plain;
    EXPECT_EQ(obstacleToKeeping(jpeg(), plain, {}), std::nullopt);
    EXPECT_EQ(keptGrid(jpeg(), plain, keeping), (BlockGrid{16, 16}));
    EXPECT_EQ(keptGrid(jpeg(), plain, {}), std::nullopt) << "unasked";
    EXPECT_EQ(keptGrid(jpeg(), plain, {.format = ExportFormat::png, .keepsPhotoData = true}), std::nullopt);
    EXPECT_EQ(exportLayout(jpeg(), plain, keeping).layout.canvasSize, (PixelSize{856, 656}));
    EXPECT_EQ(exportLayout(jpeg(), plain, {}).layout.canvasSize, (PixelSize{840, 640}));
    EXPECT_EQ(movedBorder(jpeg(), plain, keeping)->distance(), 8);
    EXPECT_EQ(movedBorder(jpeg(), plain, {}), std::nullopt);

    using Obstacle = KeepObstacle;
    const std::tuple<Obstacle, std::function<void(ImportedPhoto&, RenderRecipe&, OutputSize&)>> rows[]{
        {Obstacle::notJpeg, [](auto& photo, auto&, auto&) { photo.type = FileType::png; }},
        {Obstacle::coding, [](auto& photo, auto&, auto&) { photo.codedData.reset(); }},
        {Obstacle::colorProfile,
         [](auto&, auto& recipe, auto&) { recipe.outputColorProfile = OutputColorProfile::displayP3; }},
        {Obstacle::size, [](auto&, auto&, auto& size) { size = OutputSize::withLongSide(855); }},
        {Obstacle::size,
         [](auto& photo, auto&, auto&) {
             photo.pixelSize = {49'760, 100};
         }},
        {Obstacle::blurredBackground,
         [](auto&, auto& recipe, auto&) { recipe.border.blurredBackground = BlurredBackground(); }},
        {Obstacle::translucentBorder, [](auto&, auto& recipe, auto&) { recipe.border.color.alpha = 0.9; }},
        {Obstacle::roundCorners, [](auto&, auto& recipe, auto&) { recipe.border.photoEdge.cornerRadius.value = 4; }},
    };
    for (const auto& [obstacle, change] : rows) {
        SCOPED_TRACE(rawValue(obstacle).toStdString());
        ImportedPhoto photo = jpeg();
        RenderRecipe recipe;
        ExportSettings settings = keeping;
        change(photo, recipe, settings.size);
        EXPECT_EQ(obstacleToKeeping(photo, recipe, settings.size), obstacle);
        EXPECT_EQ(keptGrid(photo, recipe, settings), std::nullopt);
    }
    EXPECT_EQ(obstacleToKeeping(jpeg(), plain, OutputSize::withLongSide(856)), std::nullopt) << "never enlarged";
}

} // namespace ferrow
