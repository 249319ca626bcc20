// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PositionScene.h"

#include "Features/Inspector/InspectorRows.h"
#include "Imaging/CaptionDrawing.h"

#include <algorithm>

namespace ferrow {

namespace {

/// What a line of text takes at least, in font sizes: the renderer's own measure.
constexpr double lineHeight = 1.2;

/// Pixels of the border where `position` lies in it; absent where that depends on a photo and there is none.
std::optional<double> borderThickness(const RenderRecipe& recipe, CaptionPosition position, const ImportedPhoto* photo)
{
    const Border& border = recipe.border;
    if (!photo && (border.unit == BorderUnit::percent || border.shape))
        return std::nullopt;
    SideLengths lengths = border.around(photo ? photo->pixelSize : PixelSize());
    if (const auto frame = photo ? FrameProportions::of(recipe, photo->pixelSize) : std::nullopt)
        lengths = frame->around;
    return position < CaptionPosition::borderBottomLeft ? lengths.top : lengths.bottom;
}

/// Whether a line of it may stand in that border, as far as that can be told without a photo.
bool mayFit(const Caption& caption, double thickness)
{
    if (caption.verticalPadding.unit == BorderUnit::percent || caption.fontSize.unit == BorderUnit::percent)
        return true;
    const double line = caption.shrinksToFit ? 1 : lineHeight * caption.fontSize.value;
    return thickness - std::max(caption.verticalPadding.value, 0.0) >= line;
}

QString captionWarning(const RenderRecipe& recipe, const Caption& caption, const ImportedPhoto* photo)
{
    const auto thickness = borderThickness(recipe, caption.position, photo);
    if (!thickness || !isInBorder(caption.position))
        return {};
    const bool fits = photo ? !CaptionDrawing::cut(photo->pixelSize, recipe, caption, photo->metadata).isCut()
                            : mayFit(caption, *thickness);
    return fits ? QString() : QStringLiteral("The border is too thin for the caption.");
}

QString logoWarning(const RenderRecipe& recipe, const ImportedPhoto* photo)
{
    if (!recipe.logo || !isInBorder(recipe.logo->position))
        return {};
    const auto thickness = borderThickness(recipe, recipe.logo->position, photo);
    const bool fits = !thickness || *thickness - std::max(recipe.logo->verticalPadding, 0.0) >= 1;
    return fits ? QString() : QStringLiteral("The border is too thin for the logo.");
}

} // namespace

QString borderWarning(PlacedElement element, const RenderRecipe& recipe, const ImportedPhoto* photo)
{
    return element == PlacedElement::caption ? captionWarning(recipe, recipe.captions.front(), photo)
                                             : logoWarning(recipe, photo);
}

PositionScene PositionScene::make(PlacedElement element, const RenderRecipe& recipe, const ImportedPhoto* photo)
{
    const bool showsLogo = recipe.logo && recipe.logo->isEnabled;
    const Caption& caption = recipe.captions.front();
    PositionScene scene;
    scene.element = element;
    if (element == PlacedElement::caption) {
        scene.position = caption.position;
        if (showsLogo)
            scene.other = recipe.logo->position;
    } else {
        scene.position = recipe.logo ? recipe.logo->position : LogoConfiguration::placeholder().position;
        if (caption.isEnabled)
            scene.other = caption.position;
    }
    scene.border = recipe.border;
    const PixelSize size = measuredSize(photo);
    scene.frame = FrameProportions::of(recipe, size).value_or(FrameProportions{size, {}});
    if (photo)
        scene.photoID = photo->id();
    scene.warning = borderWarning(element, recipe, photo);
    return scene;
}

} // namespace ferrow
