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
    const bool fits = photo ? !CaptionDrawing::cut(photo->pixelSize, recipe, caption, photo->captionMetadata()).isCut()
                            : mayFit(caption, *thickness);
    return fits ? QString() : QStringLiteral("The border is too thin for the caption.");
}

/// "Overlaps captions 1 and 3, and the logo."
QString overlapText(QStringList numbers, bool withLogo)
{
    QStringList parts;
    if (numbers.size() == 1)
        parts << QStringLiteral("caption %1").arg(numbers.first());
    else if (!numbers.isEmpty()) {
        const QString last = numbers.takeLast();
        parts << QStringLiteral("captions %1 and %2").arg(numbers.join(QStringLiteral(", ")), last);
    }
    if (withLogo)
        parts << QStringLiteral("the logo");
    return parts.isEmpty() ? QString() : QStringLiteral("Overlaps %1.").arg(parts.join(QStringLiteral(", and ")));
}

QString overlapWarning(const RenderRecipe& recipe, std::size_t caption, const ImportedPhoto& photo, PixelSize logo)
{
    QStringList numbers;
    for (const auto& [first, second] : CaptionDrawing::overlaps(photo.pixelSize, recipe, photo.captionMetadata()))
        if (first == caption || second == caption)
            numbers.append(QString::number((first == caption ? second : first) + 1));
    const auto covering = CaptionDrawing::overLogo(photo.pixelSize, recipe, photo.captionMetadata(), logo);
    return overlapText(numbers, std::ranges::find(covering, caption) != covering.end());
}

QString logoWarning(const RenderRecipe& recipe, const ImportedPhoto* photo, PixelSize logo)
{
    if (!recipe.logo)
        return {};
    const auto thickness = borderThickness(recipe, recipe.logo->position, photo);
    if (isInBorder(recipe.logo->position) && thickness && *thickness - std::max(recipe.logo->verticalPadding, 0.0) < 1)
        return QStringLiteral("The border is too thin for the logo.");
    if (!photo)
        return {};
    QStringList numbers;
    for (const std::size_t caption : CaptionDrawing::overLogo(photo->pixelSize, recipe, photo->captionMetadata(), logo))
        numbers.append(QString::number(caption + 1));
    if (recipe.captions.size() == 1 && !numbers.isEmpty())
        return QStringLiteral("Overlaps the caption.");
    return overlapText(numbers, false);
}

} // namespace

QString placeWarning(PlacedElement element, const RenderRecipe& recipe, const ImportedPhoto* photo, PixelSize logo,
                     std::size_t caption)
{
    if (element == PlacedElement::logo)
        return logoWarning(recipe, photo, logo);
    const QString border = captionWarning(recipe, recipe.captions[caption], photo);
    return border.isEmpty() && photo ? overlapWarning(recipe, caption, *photo, logo) : border;
}

const PositionScene::Other* PositionScene::otherAt(CaptionPosition place) const
{
    const auto found = std::ranges::find(others, place, &Other::position);
    return found == others.end() ? nullptr : &*found;
}

void putCaption(RenderRecipe& recipe, std::size_t caption, CaptionPosition place,
                const std::vector<CaptionPosition>& before)
{
    std::vector<Caption>& captions = recipe.captions;
    if (before.size() == captions.size())
        for (std::size_t i = 0; i < captions.size(); ++i)
            captions[i].position = before[i];
    const CaptionPosition left = captions[caption].position;
    for (Caption& other : captions)
        if (other.position == place)
            other.position = left;
    captions[caption].position = place;
}

PositionScene PositionScene::make(PlacedElement element, const RenderRecipe& recipe, const ImportedPhoto* photo,
                                  PixelSize logo, std::size_t caption)
{
    const std::vector<Caption>& captions = recipe.captions;
    const bool isCaption = element == PlacedElement::caption;
    const auto numberOf = [&](std::size_t index) { return captions.size() > 1 ? int(index) + 1 : 0; };
    PositionScene scene;
    scene.element = element;
    if (isCaption) {
        scene.position = captions[caption].position;
        scene.number = numberOf(caption);
    } else {
        scene.position = recipe.logo ? recipe.logo->position : LogoConfiguration::placeholder().position;
    }
    for (std::size_t i = 0; i < captions.size(); ++i)
        if (captions[i].isEnabled && !(isCaption && i == caption))
            scene.others.push_back({captions[i].position, PlacedElement::caption, numberOf(i)});
    if (isCaption && recipe.logo && recipe.logo->isEnabled)
        scene.others.push_back({recipe.logo->position, PlacedElement::logo});
    scene.border = recipe.border;
    const PixelSize size = measuredSize(photo);
    scene.frame = FrameProportions::of(recipe, size).value_or(FrameProportions{size, {}});
    if (photo)
        scene.photoID = photo->id();
    scene.warning = placeWarning(element, recipe, photo, logo, caption);
    return scene;
}

} // namespace ferrow
