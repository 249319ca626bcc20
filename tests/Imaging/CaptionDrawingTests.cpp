// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/CaptionDrawing.h"

#include "Imaging/ImageRenderer.h"
#include "Support/Pictures.h"

#include <QFontMetricsF>
#include <QImage>

#include <limits>

namespace ferrow {

namespace {

constexpr PixelSize photoSize{600, 400};

/// One line in DejaVu Sans below the photo.
Caption captionOf(const char* text, CaptionPosition position = CaptionPosition::borderBottomLeft)
{
    Caption caption{.position = position,
                    .face = FontFace{QStringLiteral("DejaVu Sans"), {}},
                    .fontSize = {40},
                    .padding = {20},
                    .verticalPadding = {10},
                    .opacity = 1};
    caption.setCaptionTemplate(QString::fromUtf8(text));
    return caption;
}

std::vector<Engine::Overlay> drawn(const RenderRecipe& recipe, PixelSize size = photoSize, double scale = 1)
{
    return CaptionDrawing::draw(RenderLayout::calculate(size, recipe, scale), recipe, {}, scale, {});
}

bool sameOverlays(const std::vector<Engine::Overlay>& some, const std::vector<Engine::Overlay>& others)
{
    return std::ranges::equal(some, others, [](const Engine::Overlay& one, const Engine::Overlay& other) {
        return one.x == other.x && one.y == other.y && test::samePixels(one.picture, other.picture);
    });
}

/// Width of the text and height of a line in sizes, by the toolkit's own metrics.
QSizeF extentInSizes(const char* text)
{
    QImage device(1, 1, QImage::Format_RGB32);
    device.setDotsPerMeterX(2835);
    device.setDotsPerMeterY(2835);
    QFont font(QStringList{QStringLiteral("DejaVu Sans")});
    font.setPointSizeF(1000);
    font.setHintingPreference(QFont::PreferNoHinting);
    const QFontMetricsF metrics(font, &device);
    return {metrics.horizontalAdvance(QString::fromUtf8(text)) / 1000, (metrics.ascent() + metrics.descent()) / 1000};
}

} // namespace

TEST(CaptionDrawing, tellsWhatAnExportCutsOff)
{
    RenderRecipe recipe;
    recipe.captions.front().setCaptionTemplate(QStringLiteral("Hamburg, in March"));
    const auto cut = [&](PixelSize size) { return CaptionDrawing::cut(size, recipe, recipe.captions.front(), {}); };
    EXPECT_FALSE(cut({6000, 4000}).isCut());
    EXPECT_TRUE(cut({40, 400}).leftOut.endsWith(QStringLiteral("March")));
    recipe.border.width = 40;
    EXPECT_EQ(cut({6000, 4000}), (TextCut{{}, true}));
    recipe.captions.front().verticalPadding = {40}; // No room at all.
    EXPECT_EQ(cut({6000, 4000}), (TextCut{QStringLiteral("Hamburg, in March"), false}));
    recipe.captions.front().opacity = 0;
    EXPECT_FALSE(cut({6000, 4000}).isCut());
    recipe.captions.front().opacity = 1;
    recipe.border.width = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(cut({6000, 4000}).isCut());
}

TEST(CaptionDrawing, shrinksToTheLargestSizeThatFits)
{
    const struct {
        const char* name;
        const char* text;
        double border;
        double size;
    } rows[] = {{"there is room", "Hamburg", 80, 40},
                {"too thin a border", "Hamburg", 40, 40},
                {"letters without descenders are no smaller or larger", "HHH", 40, 40},
                {"a single word wider than the border", "Donaudampfschifffahrtsgesellschaftskapitän", 80, 400},
                {"far too large", "Hamburg", 80, 1e9}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        RenderRecipe recipe{.border = {.width = row.border}, .captions = {captionOf(row.text)}};
        Caption& caption = recipe.captions.front();
        caption.fontSize = {row.size};
        caption.shrinksToFit = true;
        const QSizeF extent = extentInSizes(row.text);
        const QSizeF room(600 + 2 * row.border - 2 * 20, row.border - 10);
        const double fitting = std::min({row.size, room.width() / extent.width(), room.height() / extent.height()});
        EXPECT_FALSE(CaptionDrawing::cut(photoSize, recipe, caption, {}).isCut());
        RenderRecipe expected = recipe;
        expected.captions.front().shrinksToFit = false;
        expected.captions.front().fontSize = {std::floor(fitting * 8) / 8};
        EXPECT_TRUE(sameOverlays(drawn(recipe), drawn(expected)))
            << fitting << CaptionDrawing::fontSize(photoSize, recipe, caption, {});
    }
}

TEST(CaptionDrawing, shrinksWrappedTextsToNoMoreThanNeeded)
{
    // On the photo the width of lines depends on the size.
    for (const CaptionPosition position : {CaptionPosition::borderTopCenter, CaptionPosition::imageCenter})
        for (const char* text :
             {"Hamburg, the fourteenth of March, in heavy rain by the bridge", "one\ntwo\ngreyhounds"}) {
            RenderRecipe recipe{.border = {.width = 90}, .captions = {captionOf(text, position)}};
            Caption& caption = recipe.captions.front();
            caption.fontSize = {300};
            caption.lineSpacing = {0};
            caption.shrinksToFit = true;
            const double size = CaptionDrawing::fontSize(photoSize, recipe, caption, {});
            EXPECT_GT(size, 5);
            EXPECT_FALSE(CaptionDrawing::cut(photoSize, recipe, caption, {}).isCut());
            caption.shrinksToFit = false;
            for (double larger = 1.05 * size; larger <= 300; larger *= 1.05) {
                caption.fontSize = {larger};
                EXPECT_TRUE(CaptionDrawing::cut(photoSize, recipe, caption, {}).isCut()) << text << size << larger;
            }
        }
}

TEST(CaptionDrawing, keepsASizeThatFitsNowhere)
{
    RenderRecipe recipe{.border = {.width = 11}, .captions = {captionOf("Hamburg")}};
    const auto plain = drawn(recipe);
    recipe.captions.front().shrinksToFit = true;
    EXPECT_TRUE(sameOverlays(drawn(recipe), plain));
    EXPECT_TRUE(CaptionDrawing::cut(photoSize, recipe, recipe.captions.front(), {}).isCut());
}

TEST(CaptionDrawing, measuresPercentsByTheShorterSide)
{
    RenderRecipe percents{.border = {.width = 100}, .captions = {captionOf("Hamburg")}};
    RenderRecipe pixels = percents;
    percents.captions.front().fontSize = {10, BorderUnit::percent};
    percents.captions.front().padding = {5, BorderUnit::percent};
    percents.captions.front().verticalPadding = {2.5, BorderUnit::percent};
    EXPECT_TRUE(sameOverlays(drawn(percents), drawn(pixels)));
    pixels.captions.front().fontSize = {80};
    pixels.captions.front().padding = {40};
    pixels.captions.front().verticalPadding = {20};
    for (const double scale : {1.0, 0.5, 0.3})
        EXPECT_TRUE(sameOverlays(drawn(percents, {800, 1200}, scale), drawn(pixels, {800, 1200}, scale)));
    percents.captions.front().convert(BorderUnit::pixels, {800, 1200});
    EXPECT_EQ(percents.captions, pixels.captions);
}

TEST(CaptionDrawing, drawsCapitals)
{
    RenderRecipe recipe{.captions = {captionOf("Straße ﬁ")}};
    recipe.captions.front().isUppercase = true;
    const RenderRecipe capitals{.captions = {captionOf("STRASSE FI")}};
    EXPECT_TRUE(sameOverlays(drawn(recipe), drawn(capitals)));
    EXPECT_EQ(recipe.captions.front().captionTemplate(), QStringLiteral("Straße ﬁ"));
}

TEST(CaptionDrawing, tellsWhichCaptionsLieOverEachOther)
{
    using CaptionDrawing::Overlap;
    const auto overlaps = [](std::vector<Caption> captions, PixelSize size = photoSize) {
        return CaptionDrawing::overlaps(size, {.captions = std::move(captions)}, {});
    };
    const Caption left = captionOf("Hamburg");
    const Caption right = captionOf("in March", CaptionPosition::borderBottomRight);
    EXPECT_TRUE(overlaps({left}).empty());
    EXPECT_TRUE(overlaps({left, right}).empty());
    EXPECT_EQ(overlaps({left, right}, {120, 400}), (std::vector<Overlap>{{0, 1}}));
    EXPECT_EQ(overlaps({left, right, left, left}), (std::vector<Overlap>{{0, 2}, {0, 3}, {2, 3}}));
    Caption hidden = left;
    hidden.isEnabled = false;
    EXPECT_TRUE(overlaps({left, hidden, captionOf("{lens}")}).empty());
    // The end of a long line lies over the short second line's column, but not over that line.
    const Caption two = captionOf("Hamburg and all its bridges\nA", CaptionPosition::imageBottomLeft);
    const Caption beside = captionOf("B", CaptionPosition::imageBottomRight);
    EXPECT_TRUE(overlaps({two, beside}).empty());
}

TEST(CaptionDrawing, tellsWhichCaptionsLieOverTheLogo)
{
    RenderRecipe recipe{.captions = {captionOf("Hamburg"), captionOf("B", CaptionPosition::imageTopLeft),
                                     captionOf("C", CaptionPosition::imageBottomRight)}};
    recipe.logo.emplace();
    const auto over = [&](PixelSize logo) { return CaptionDrawing::overLogo(photoSize, recipe, {}, logo); };
    const std::vector<std::size_t> none;
    EXPECT_EQ(over({300, 100}), std::vector<std::size_t>{2});
    recipe.logo->position = CaptionPosition::imageTopLeft;
    EXPECT_EQ(over({300, 100}), std::vector<std::size_t>{1});
    EXPECT_EQ(over({}), none);
    recipe.logo->isEnabled = false;
    EXPECT_EQ(over({300, 100}), none);
    recipe.logo->isEnabled = true;
    recipe.logo->position = CaptionPosition::imageCenter;
    EXPECT_EQ(over({300, 100}), none);
    recipe.logo->widthPercent = 100;
    recipe.logo->verticalPadding = recipe.logo->horizontalPadding = 0;
    EXPECT_EQ(over({photoSize.width, photoSize.height}), (std::vector<std::size_t>{1, 2})) << "not those in the border";
}

TEST(CaptionDrawing, namesFamiliesThatAreMissing)
{
    Caption caption = captionOf("x");
    EXPECT_EQ(CaptionDrawing::missingFont(caption), std::nullopt);
    caption.face->family = QStringLiteral("No Such Family");
    EXPECT_EQ(CaptionDrawing::missingFont(caption),
              (CaptionDrawing::MissingFont{QStringLiteral("No Such Family"), FontFamilies::system()}));
}

} // namespace ferrow
