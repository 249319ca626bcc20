// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/RenderRecipe.h"

#include "Models/BatchFraming.h"
#include "Support/TestSupport.h"

#include <cmath>

namespace ferrow {

using namespace Qt::StringLiterals;

namespace {

/// A line for each segment: <token>, [separator], or the text itself.
QString shown(const std::vector<CaptionSegment>& segments)
{
    QStringList list;
    for (const CaptionSegment& segment : segments)
        if (const auto* token = std::get_if<CaptionToken>(&segment.content))
            list += u'<' + token->templateValue().sliced(1).chopped(1) + u'>';
        else if (const auto* separator = std::get_if<CaptionSeparator>(&segment.content))
            list += u'[' + chipLabel(*separator) + u']';
        else
            list += std::get<QString>(segment.content);
    return list.join(u'~');
}

} // namespace

TEST(Caption, readsTemplatesAsSegments)
{
    const std::pair<QString, QString> rows[] = {
        {{}, {}},
        {u"{camera} \u00B7 {lens}"_s, u"<camera>~[\u00B7]~<lens>"_s},
        {u"{aperture}{iso}"_s, u"<aperture>~<iso>"_s},
        {u"{title}\n{year}"_s, u"<title>~[\u21B5]~<year>"_s},
        {u" | "_s, u"[|]"_s},
        {u" \u00B7 by {artist}"_s, u" \u00B7 by ~<artist>"_s},
        {u" |  | "_s, u" |  | "_s},
        {u"{Camera}{}"_s, u"{Camera}~{}"_s},
        {u"Shot on {camera"_s, u"Shot on ~{camera"_s},
        {u"{iso}{ \u2014 "_s, u"<iso>~{ \u2014 "_s},
        {u"{{year}"_s, u"{{year}"_s},
        {u"a}{year}}"_s, u"a}~<year>~}"_s},
        {u"{lens|by hand}{captureDate:iso|\\(\\)}"_s, u"<lens|by hand>~<captureDate:iso|\\(\\)>"_s},
        {u"{title: x}{lens :iso}{captureDate:}{captureDate:ISO}"_s,
         u"{title: x}~{lens :iso}~{captureDate:}~{captureDate:ISO}"_s},
        {u"{lens|{iso}|}"_s, u"{lens|{iso}~|}"_s},
        {u"{lens|a\\x}{lens|a\\}{captureDate:d"_s, u"{lens|a\\x}~{lens|a\\}~{captureDate:d"_s},
    };
    for (const auto& [captionTemplate, expected] : rows) {
        Caption caption;
        caption.setCaptionTemplate(captionTemplate);
        EXPECT_EQ(shown(caption.segments), expected);
        EXPECT_EQ(caption.captionTemplate(), captionTemplate);
    }
    for (const MetadataToken token : allCases<MetadataToken>())
        EXPECT_EQ(CaptionSegment::parse(CaptionToken(token).templateValue()).at(0).content,
                  CaptionSegment::Content(token));
    for (const CaptionSeparator separator : allCases<CaptionSeparator>())
        EXPECT_EQ(CaptionSegment::parse(rawValue(separator)).at(0).content, CaptionSegment::Content(separator));
}

TEST(Caption, tellsCaptionsApartByTheirChips)
{
    Caption caption;
    EXPECT_EQ(caption, Caption{});
    EXPECT_EQ(caption.captionTemplate(), u"{camera} \u00B7 {lens}"_s);
    caption.setCaptionTemplate(u"{iso}{iso}"_s);
    EXPECT_NE(caption.segments.at(0).id, caption.segments.at(1).id);
    const Caption before = caption;
    caption.setCaptionTemplate(caption.captionTemplate());
    EXPECT_NE(caption, before);
}

TEST(RenderRecipe, hashesLikeItCompares)
{
    const std::hash<RenderRecipe> hash;
    const RenderRecipe zero{.border = {.width = 0.0}};
    const RenderRecipe negativeZero{.border = {.width = -0.0}};
    EXPECT_EQ(zero, negativeZero);
    EXPECT_EQ(hash(zero), hash(negativeZero));
    EXPECT_NE(hash(zero), hash(RenderRecipe{}));
    const RenderRecipe two{.captions = {{}, {.fontSize = {9}}}};
    for (const Caption& other : std::initializer_list<Caption>{
             {.fontSize = {8}},
             {.fontSize = {9, BorderUnit::percent}},
             {.face = FontFace{u"Inter"_s, u"Medium"_s}, .fontSize = {9}},
             {.fontSize = {9}, .letterSpacing = 1},
             {.segments = {{two.captions[1].segments[0].id, CaptionToken(MetadataToken::camera, {}, u"x"_s)},
                           two.captions[1].segments[1],
                           two.captions[1].segments[2]},
             .fontSize = {9}},
             {.fontSize = {9}, .isUppercase = true},
             {.fontSize = {9}, .shrinksToFit = true}}) {
        EXPECT_NE(hash(two), hash(RenderRecipe{.captions = {{}, other}}));
        EXPECT_NE(two, (RenderRecipe{.captions = {{}, other}}));
    }

    RenderRecipe withLogo = zero;
    withLogo.logo = LogoConfiguration::placeholder();
    RenderRecipe hiddenLogo = withLogo;
    hiddenLogo.logo->isEnabled = false;
    EXPECT_NE(hash(withLogo), hash(zero));
    EXPECT_NE(hash(withLogo), hash(hiddenLogo));
}

TEST(RenderRecipe, givesEveryFurtherCaptionAPlaceOfItsOwn)
{
    RenderRecipe recipe;
    recipe.captions.front().fontSize = {3, BorderUnit::percent};
    const CaptionPosition places[] = {CaptionPosition::borderBottomRight,  CaptionPosition::borderBottomLeft,
                                      CaptionPosition::borderBottomCenter, CaptionPosition::borderTopLeft,
                                      CaptionPosition::borderTopRight,     CaptionPosition::borderTopCenter};
    while (recipe.captions.size() < RenderRecipe::mostCaptions)
        recipe.captions.push_back(recipe.captionLike(recipe.captions.size() - 1));
    for (std::size_t i = 0; i < RenderRecipe::mostCaptions; ++i) {
        EXPECT_EQ(recipe.captions[i].position, places[i]);
        EXPECT_EQ(recipe.captions[i].fontSize, recipe.captions.front().fontSize);
    }
    EXPECT_EQ(recipe.captions[1].alignment, CaptionAlignment::left);
    EXPECT_EQ(recipe.captions[5].alignment, CaptionAlignment::center);
    recipe.captions.front().position = CaptionPosition::imageCenterLeft;
    EXPECT_EQ(recipe.captionLike(0).position, CaptionPosition::imageCenterRight);
}

TEST(RenderRecipe, keepsTheBorderWhenItsUnitChanges)
{
    const BorderUnit percent = BorderUnit::percent;
    const BorderUnit pixels = BorderUnit::pixels;
    const struct {
        BorderUnit from;
        double width;
        PixelSize size;
        double thickness; ///< In pixels, before.
        BorderUnit to;
        double converted;
    } rows[] = {
        {percent, 2, {6000, 4000}, 80, pixels, 80},       {pixels, 80, {4000, 6000}, 80, percent, 2},
        {percent, 0.1, {333, 999}, 0.333, pixels, 0.333}, {percent, 7, {333, 999}, 23.31, percent, 7},
        {pixels, -5, {6000, 4000}, 0, percent, 0},        {percent, -5, {6000, 4000}, 0, pixels, 0},
        {pixels, 120, {6000, 0}, 120, percent, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        Border border{.unit = row.from, .width = row.width};
        const SideLengths around = border.around(row.size);
        for (const double length : {around.top, around.right, around.bottom, around.left})
            EXPECT_DOUBLE_EQ(length, row.thickness);
        border.convert(row.to, row.size);
        EXPECT_EQ(border.unit, row.to);
        EXPECT_DOUBLE_EQ(border.width, row.converted);
    }
}

TEST(BatchFraming, appliesAPhotosOwnRecipeInSelectedScopeAlone)
{
    const FileUrl own = FileUrl::fromPath(QByteArray("/own.jpg"));
    const auto width = [&](RecipeScope scope, const std::optional<FileUrl>& photo) {
        return BatchFraming{scope, {}, {{own, {.border = {.width = 7}}}}}.recipeFor(photo).border.width;
    };
    EXPECT_EQ(width(RecipeScope::selected, own), 7);
    EXPECT_EQ(width(RecipeScope::selected, FileUrl::fromPath(QByteArray("/other.jpg"))), 120);
    EXPECT_EQ(width(RecipeScope::selected, std::nullopt), 120);
    EXPECT_EQ(width(RecipeScope::batch, own), 120);
}

TEST(RenderRecipe, speaksColorsInBytes)
{
    const RGBAColor ties{.red = 0.5, .green = 0.0019, .blue = 0.002, .alpha = 0};
    const RGBAColor beyond{.red = -0.5, .green = 2, .blue = 1e16};
    EXPECT_EQ(ties.accessibilityDescription(), u"red 128, green 0, blue 1"_s);
    EXPECT_EQ(beyond.accessibilityDescription(), u"red -128, green 510, blue 2550000000000000000"_s);
    EXPECT_DEATH((void)RGBAColor{.red = std::nan("")}.accessibilityDescription(), "finite");
    EXPECT_DEATH((void)RGBAColor{.red = 1e17}.accessibilityDescription(), "finite");
}

TEST(RenderRecipe, namesItsCases)
{
    EXPECT_EQ(filenameExtension(ExportFormat::jpeg), u"jpg"_s);
    EXPECT_EQ(contentType(ExportFormat::jpeg), u"image/jpeg"_s);
    EXPECT_TRUE(supportsQuality(ExportFormat::heic));
    EXPECT_FALSE(supportsQuality(ExportFormat::tiff));
    for (const CaptionPosition position : allCases<CaptionPosition>())
        EXPECT_EQ(isInBorder(position), rawValue(position).startsWith(u"Border"_s));
    EXPECT_EQ(fromRawValue<CaptionFont>(u"New York"), CaptionFont::serif);
    EXPECT_EQ(fromRawValue<CaptionFont>(u"new york"), std::nullopt);
    EXPECT_EQ(fromRawValue<CaptionFont>(u"New York "), std::nullopt);
}

} // namespace ferrow
