// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PositionScene.h"

#include "Imaging/ImageRenderer.h"

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

/// What a line of text takes at least, in font sizes: the renderer's own measure.
constexpr double lineHeight = 1.2;

/// Pixels of the border on each side; absent where it depends on a photo and there is none.
std::optional<double> borderThickness(const RenderRecipe& recipe, const ImportedPhoto* photo)
{
    if (photo)
        return std::ceil(recipe.borderWidthFor(photo->pixelSize));
    if (recipe.borderUnit == BorderUnit::percent && recipe.borderWidth > 0)
        return std::nullopt;
    return std::max(recipe.borderWidth, 0.0);
}

} // namespace

QString borderWarning(PlacedElement element, const RenderRecipe& recipe, const ImportedPhoto* photo)
{
    const std::optional<double> thickness = borderThickness(recipe, photo);
    if (!thickness)
        return {};
    if (element == PlacedElement::caption) {
        const double room = *thickness - std::max(recipe.captionVerticalPadding, 0.0);
        const bool fits = !isInBorder(recipe.captionPosition) ||
                          (photo ? !ImageRenderer::captionCut(photo->pixelSize, recipe, photo->metadata).isCut()
                                 : room >= lineHeight * recipe.captionFontSize);
        return fits ? QString() : QStringLiteral("The border is too thin for the caption.");
    }
    const bool isAffected = recipe.logo && isInBorder(recipe.logo->position);
    const bool fits = !isAffected || *thickness - std::max(recipe.logo->verticalPadding, 0.0) >= 1;
    return fits ? QString() : QStringLiteral("The border is too thin for the logo.");
}

PositionScene PositionScene::make(PlacedElement element, const RenderRecipe& recipe, const ImportedPhoto* photo)
{
    const bool showsLogo = recipe.logo && recipe.logo->isEnabled;
    PositionScene scene;
    scene.element = element;
    if (element == PlacedElement::caption) {
        scene.position = recipe.captionPosition;
        if (showsLogo)
            scene.other = recipe.logo->position;
    } else {
        scene.position = recipe.logo ? recipe.logo->position : LogoConfiguration::placeholder().position;
        if (recipe.captionEnabled)
            scene.other = recipe.captionPosition;
    }
    scene.borderColor = recipe.borderColor;
    if (photo && photo->pixelSize.height > 0)
        scene.aspectRatio = photo->pixelSize.aspectRatio();
    if (photo)
        scene.photoID = photo->id();
    scene.warning = borderWarning(element, recipe, photo);
    return scene;
}

} // namespace ferrow
