// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PositionScene.h"

#include "Imaging/ImageRenderer.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

/// What a line of text takes at least, in font sizes: the renderer's own measure.
constexpr double lineHeight = 1.2;

/// Pixels of the border where `position` lies in it; absent where that depends on a photo and there is none.
std::optional<double> borderThickness(const Border& border, CaptionPosition position, const ImportedPhoto* photo)
{
    if (!photo && border.unit == BorderUnit::percent && border.width > 0)
        return std::nullopt;
    const SideLengths lengths = border.around(photo ? photo->pixelSize : PixelSize());
    const double length = position < CaptionPosition::borderBottomLeft ? lengths.top : lengths.bottom;
    return photo ? std::ceil(length) : length;
}

QString captionWarning(const RenderRecipe& recipe, const Caption& caption, const ImportedPhoto* photo)
{
    const auto thickness = borderThickness(recipe.border, caption.position, photo);
    if (!thickness || !isInBorder(caption.position))
        return {};
    const double room = *thickness - std::max(caption.verticalPadding, 0.0);
    const bool fits = photo ? !ImageRenderer::captionCut(photo->pixelSize, recipe, caption, photo->metadata).isCut()
                            : room >= lineHeight * caption.fontSize;
    return fits ? QString() : QStringLiteral("The border is too thin for the caption.");
}

QString logoWarning(const RenderRecipe& recipe, const ImportedPhoto* photo)
{
    if (!recipe.logo || !isInBorder(recipe.logo->position))
        return {};
    const auto thickness = borderThickness(recipe.border, recipe.logo->position, photo);
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
    scene.borderColor = recipe.border.color;
    if (photo && photo->pixelSize.height > 0)
        scene.aspectRatio = photo->pixelSize.aspectRatio();
    if (photo)
        scene.photoID = photo->id();
    scene.warning = borderWarning(element, recipe, photo);
    return scene;
}

} // namespace ferrow
