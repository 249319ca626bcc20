// SPDX-License-Identifier: GPL-3.0-or-later
#include "Models/RenderRecipe.h"

#include "Models/BatchExportModels.h"
#include "Support/TestSupport.h"

#include <cmath>
#include <limits>

namespace ferrow {

namespace {

using Content = CaptionSegment::Content;

Content text(const char* value)
{
    return QString::fromUtf8(value);
}

std::vector<Content> contents(const std::vector<CaptionSegment>& segments)
{
    std::vector<Content> list;
    for (const CaptionSegment& segment : segments)
        list.push_back(segment.content);
    return list;
}

} // namespace

TEST(RenderRecipe, readsTemplatesAsSegments)
{
    struct Row {
        const char* name;
        const char* captionTemplate;
        std::vector<Content> expected;
    };
    const Row rows[] = {
        {"empty", "", {}},
        {"tokens around a separator",
         "{camera} \u00B7 {lens}",
         {MetadataToken::camera, CaptionSeparator::middleDot, MetadataToken::lens}},
        {"tokens side by side", "{aperture}{iso}", {MetadataToken::aperture, MetadataToken::iso}},
        {"line break", "{title}\n{year}", {MetadataToken::title, CaptionSeparator::lineBreak, MetadataToken::year}},
        {"a separator alone", " | ", {CaptionSeparator::verticalBar}},
        {"words around a separator stay one text", " \u00B7 by {artist}", {text(" \u00B7 by "), MetadataToken::artist}},
        {"two separators are one text", " |  | ", {text(" |  | ")}},
        {"two line breaks are one text", "\n\n", {text("\n\n")}},
        {"another case is no token", "{Camera}", {text("{Camera}")}},
        {"no name", "{}", {text("{}")}},
        {"unclosed", "Shot on {camera", {text("Shot on "), text("{camera")}},
        {"unclosed to the end, separator and all", "{iso}{ \u2014 ", {MetadataToken::iso, text("{ \u2014 ")}},
        {"the first closing brace ends a name", "{{year}", {text("{{year}")}},
        {"a closing brace alone is text", "a}{year}}", {text("a}"), MetadataToken::year, text("}")}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        RenderRecipe recipe;
        recipe.setCaptionTemplate(QString::fromUtf8(row.captionTemplate));
        EXPECT_EQ(contents(recipe.captionSegments), row.expected);
        EXPECT_EQ(recipe.captionTemplate(), QString::fromUtf8(row.captionTemplate));
    }
}

TEST(RenderRecipe, roundTripsEveryTokenAndSeparator)
{
    for (const MetadataToken token : allCases<MetadataToken>())
        EXPECT_EQ(contents(CaptionSegment::parse(templateValue(token))), std::vector<Content>{token});
    for (const CaptionSeparator separator : allCases<CaptionSeparator>())
        EXPECT_EQ(contents(CaptionSegment::parse(rawValue(separator))), std::vector<Content>{separator});
}

TEST(RenderRecipe, tellsCaptionsApartByTheirChips)
{
    RenderRecipe recipe;
    EXPECT_EQ(recipe, RenderRecipe{});
    EXPECT_EQ(recipe.captionTemplate(), QStringLiteral("{camera} \u00B7 {lens}"));
    recipe.setCaptionTemplate(recipe.captionTemplate());
    EXPECT_NE(recipe, RenderRecipe{});

    const std::vector<CaptionSegment> twice = CaptionSegment::parse(QStringLiteral("{iso}{iso}"));
    ASSERT_EQ(twice.size(), 2U);
    EXPECT_NE(twice[0].id, twice[1].id);
}

TEST(RenderRecipe, hashesLikeItCompares)
{
    const std::hash<RenderRecipe> hash;
    RenderRecipe zero{.borderWidth = 0.0};
    const RenderRecipe negativeZero{.borderWidth = -0.0};
    EXPECT_EQ(zero, negativeZero);
    EXPECT_EQ(hash(zero), hash(negativeZero));
    EXPECT_NE(hash(zero), hash(RenderRecipe{}));

    RenderRecipe withLogo = zero;
    withLogo.logo = LogoConfiguration::placeholder();
    RenderRecipe hiddenLogo = withLogo;
    hiddenLogo.logo->isEnabled = false;
    EXPECT_NE(hash(withLogo), hash(zero));
    EXPECT_NE(hash(withLogo), hash(hiddenLogo));
    EXPECT_NE(withLogo.logo->asset.id, LogoConfiguration::placeholder().asset.id);
}

TEST(RenderRecipe, keepsTheBorderWhenItsUnitChanges)
{
    struct Row {
        const char* name;
        BorderUnit from;
        double width;
        PixelSize size;
        double pixels;    ///< Thickness before.
        double converted; ///< Width in the other unit.
    };
    const Row rows[] = {
        {"percent of the shorter side", BorderUnit::percent, 2, {6000, 4000}, 80, 80},
        {"pixels", BorderUnit::pixels, 80, {4000, 6000}, 80, 2},
        {"not rounded", BorderUnit::percent, 0.1, {333, 999}, 0.333, 0.333},
        {"negative counts as none", BorderUnit::pixels, -5, {6000, 4000}, 0, 0},
        {"negative percent", BorderUnit::percent, -5, {6000, 4000}, 0, 0},
        {"no shorter side", BorderUnit::pixels, 120, {6000, 0}, 120, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        RenderRecipe recipe{.borderUnit = row.from, .borderWidth = row.width};
        EXPECT_DOUBLE_EQ(recipe.borderWidthFor(row.size), row.pixels);
        recipe.convertBorder(row.from, row.size);
        EXPECT_EQ(recipe.borderWidth, row.width);

        const BorderUnit other = row.from == BorderUnit::pixels ? BorderUnit::percent : BorderUnit::pixels;
        recipe.convertBorder(other, row.size);
        EXPECT_EQ(recipe.borderUnit, other);
        EXPECT_DOUBLE_EQ(recipe.borderWidth, row.converted);
    }
}

TEST(RenderRecipe, appliesAPhotosOwnRecipeInSelectedScopeAlone)
{
    const FileUrl own = FileUrl::fromPath(QByteArray("/own.jpg"));
    const FileUrl other = FileUrl::fromPath(QByteArray("/other.jpg"));
    const RenderRecipe batch;
    const std::unordered_map<FileUrl, RenderRecipe> perPhoto{{own, {.borderWidth = 7}}};
    const auto width = [&](RecipeScope scope, const std::optional<FileUrl>& photo) {
        return RenderRecipe::resolve(scope, photo, batch, perPhoto).borderWidth;
    };
    EXPECT_EQ(width(RecipeScope::selected, own), 7);
    EXPECT_EQ(width(RecipeScope::selected, other), 120);
    EXPECT_EQ(width(RecipeScope::selected, std::nullopt), 120);
    EXPECT_EQ(width(RecipeScope::batch, own), 120);
}

TEST(RenderRecipe, speaksColoursInBytes)
{
    struct Row {
        const char* name;
        RGBAColor color;
        const char* text;
    };
    const Row rows[] = {
        {"white", RGBAColor::white, "red 255, green 255, blue 255"},
        {"ties go up, alpha is silent",
         {.red = 0.5, .green = 0.0019, .blue = 0.002, .alpha = 0},
         "red 128, green 0, blue 1"},
        {"beyond the usual range",
         {.red = -0.5, .green = 2, .blue = 1e16},
         "red -128, green 510, blue 2550000000000000000"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.color.accessibilityDescription(), QString::fromUtf8(row.text));
    }
    EXPECT_DEATH((void)RGBAColor{.red = std::nan("")}.accessibilityDescription(), "finite");
    EXPECT_DEATH((void)RGBAColor{.red = 1e17}.accessibilityDescription(), "finite");
}

TEST(RenderRecipe, namesItsCases)
{
    EXPECT_EQ(chipLabel(CaptionSeparator::middleDot), QStringLiteral("\u00B7"));
    EXPECT_EQ(chipLabel(CaptionSeparator::lineBreak), QStringLiteral("\u21B5"));
    EXPECT_EQ(filenameExtension(ExportFormat::jpeg), QStringLiteral("jpg"));
    EXPECT_EQ(filenameExtension(ExportFormat::tiff), QStringLiteral("tiff"));
    EXPECT_EQ(contentType(ExportFormat::jpeg), QStringLiteral("image/jpeg"));
    EXPECT_TRUE(supportsQuality(ExportFormat::heic));
    EXPECT_FALSE(supportsQuality(ExportFormat::tiff));
    int inBorder = 0;
    for (const CaptionPosition position : allCases<CaptionPosition>()) {
        EXPECT_EQ(isInBorder(position), rawValue(position).startsWith(QStringLiteral("Border")));
        inBorder += isInBorder(position) ? 1 : 0;
    }
    EXPECT_EQ(inBorder, 6);
    EXPECT_EQ(fromRawValue<CaptionFont>(u"New York"), CaptionFont::serif);
    EXPECT_EQ(fromRawValue<CaptionFont>(u"new york"), std::nullopt);
    EXPECT_EQ(fromRawValue<CaptionFont>(u"New York "), std::nullopt);
}

} // namespace ferrow
