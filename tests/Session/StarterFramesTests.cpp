// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/CaptionDrawing.h"
#include "Session/StarterPicture.h"

#include "SessionTestSupport.h"

namespace ferrow {

TEST(StarterFrames, standWholeOnPhotosOfEveryShapeAndSize)
{
    PhotoMetadata metadata;
    metadata.title = QStringLiteral("The long way home along the harbor wall, early in the morning");
    metadata.cameraMake = QStringLiteral("EASTMAN KODAK COMPANY");
    metadata.cameraModel = QStringLiteral("KODAK CX7530 ZOOM DIGITAL CAMERA");
    metadata.focalLength = QStringLiteral("128.5 mm");
    metadata.aperture = QStringLiteral("f/11");
    metadata.shutterSpeed = QStringLiteral("1/8000 s");
    for (StarterFrame frame : starterFrames()) {
        EXPECT_NE(frame.recipe, RenderRecipe()) << "nothing is chosen in a new window";
        // Also one that shows no caption at first.
        Caption& caption = frame.recipe.captions.front();
        caption.isEnabled = true;
        const double usual = CaptionDrawing::fontSize({6'000, 4'000}, frame.recipe, caption, metadata) / 4'000;
        for (const PixelSize size : {PixelSize{6'000, 4'000}, PixelSize{4'000, 6'000}, PixelSize{12'000, 1'500},
                                     PixelSize{1'500, 12'000}, PixelSize{160, 120}}) {
            SCOPED_TRACE(frame.name.toStdString() + " on " + size.formatted().toStdString());
            EXPECT_FALSE(CaptionDrawing::cut(size, frame.recipe, caption, metadata).isCut());
            const double shorter = double(std::min(size.width, size.height));
            EXPECT_LE(CaptionDrawing::fontSize(size, frame.recipe, caption, metadata) / shorter, usual + 0.001);
            const QString text = CaptionDrawing::text(caption, metadata);
            EXPECT_TRUE(text.contains(*metadata.cameraModel) && !text.contains(*metadata.cameraMake));
        }
    }
}

TEST(StarterPicture, fillsItsBoxWithTheFrameItself)
{
    const QSize box(148, 116);
    int scene = 0;
    for (const StarterFrame& frame : starterFrames()) {
        SCOPED_TRACE(frame.name.toStdString());
        const QImage picture = starterPicture(frame, scene++, box, {});
        EXPECT_TRUE(picture.width() <= box.width() + 1 && picture.height() <= box.height() + 1);
        EXPECT_TRUE(picture.width() >= box.width() - 1 || picture.height() >= box.height() - 1);
        const RGBAColor& color = frame.recipe.border.color;
        const QRgb border = QColor::fromRgbF(float(color.red), float(color.green), float(color.blue)).rgb();
        EXPECT_EQ(picture.pixel(0, 0), border);
        EXPECT_EQ(picture.pixel(picture.width() - 1, picture.height() - 1), border);
        EXPECT_NE(picture.pixel(picture.rect().center()), border);
    }
}

} // namespace ferrow
