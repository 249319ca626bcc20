// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ExportLayout.h"

#include "Support/PipelineErrors.h"
#include "Support/TestSupport.h"

namespace ferrow {

namespace {

RenderRecipe bordered(double width)
{
    return {.border = {.width = width}};
}

} // namespace

TEST(ExportLayout, scalesFrameAndPhotoTogetherToWholePixels)
{
    const auto [layout, scale] = exportLayout({6000, 4000}, bordered(120), OutputSize::withLongSide(2048));
    EXPECT_DOUBLE_EQ(scale, 2048.0 / 6240);
    EXPECT_EQ(layout.canvasSize, (PixelSize{2048, 1392}));
    // 120 and 6,120 pixels at that scale are 39.4 and 2,008.6; 120 and 4,120 are 39.4 and 1,352.2.
    EXPECT_EQ(layout.imageRect, QRectF(39, 39, 1970, 1313));
    EXPECT_EQ(layout.drawRect, layout.imageRect);

    const auto full = exportLayout({6000, 4000}, bordered(120), {});
    EXPECT_EQ(full.layout, RenderLayout::framedLayout({6000, 4000}, bordered(120)));
    EXPECT_EQ(full.scale, 1);
    const RenderLayout thread = exportLayout({30'000, 1}, bordered(0), OutputSize::withLongSide(300)).layout;
    EXPECT_EQ(thread.imageRect, QRectF(0, 0, 300, 1)) << "of a hundredth of a pixel one is left";
    const RenderLayout speck = exportLayout({1, 1}, bordered(1000), OutputSize::withLongSide(2)).layout;
    EXPECT_EQ(speck.imageRect, QRectF(1, 1, 1, 1)) << "within the canvas";
}

TEST(ExportLayout, limitsWhatIsWritten)
{
    const auto refusal = [](PixelSize photo, double border, const OutputSize& size) {
        return test::pipelineErrorOf([&] { return exportLayout(photo, bordered(border), size); });
    };
    const PixelSize largest{20'000, 10'000};
    EXPECT_TRUE(std::holds_alternative<ImagePipelineError::UnreasonableOutputDimensions>(refusal(largest, 100, {})));
    EXPECT_EQ(exportLayout(largest, bordered(100), OutputSize::withLongSide(2020)).layout.canvasSize,
              (PixelSize{2020, 1020}));
    EXPECT_TRUE(std::holds_alternative<ImagePipelineError::UnreasonableOutputDimensions>(
        refusal({10, 10}, 60'000, OutputSize::withLongSide(50'000))))
        << "the area counts as well";
    EXPECT_EQ(refusal({10, 10}, std::numeric_limits<double>::infinity(), OutputSize::withLongSide(100)),
              ImagePipelineError(ImagePipelineError::invalidRenderRecipe).value);
    EXPECT_TRUE(std::holds_alternative<ImagePipelineError::UnreasonableOutputDimensions>(
        refusal({10, 10}, 1e20, OutputSize::withLongSide(100))))
        << "no layout goes that far";
}

} // namespace ferrow
