// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/RenderLayout.h"

#include "Models/ErrorTexts.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <numeric>

namespace ferrow {

namespace {

enum class Column { left, center, right };
enum class Row { top, middle, bottom };

Column columnOf(CaptionPosition position)
{
    switch (position) {
    case CaptionPosition::imageTopLeft:
    case CaptionPosition::imageCenterLeft:
    case CaptionPosition::imageBottomLeft:
    case CaptionPosition::borderTopLeft:
    case CaptionPosition::borderBottomLeft:
        return Column::left;
    case CaptionPosition::imageTopCenter:
    case CaptionPosition::imageCenter:
    case CaptionPosition::imageBottomCenter:
    case CaptionPosition::borderTopCenter:
    case CaptionPosition::borderBottomCenter:
        return Column::center;
    case CaptionPosition::imageTopRight:
    case CaptionPosition::imageCenterRight:
    case CaptionPosition::imageBottomRight:
    case CaptionPosition::borderTopRight:
    case CaptionPosition::borderBottomRight:
        break;
    }
    return Column::right;
}

Row rowOf(CaptionPosition position)
{
    switch (position) {
    case CaptionPosition::imageTopLeft:
    case CaptionPosition::imageTopCenter:
    case CaptionPosition::imageTopRight:
    case CaptionPosition::borderTopLeft:
    case CaptionPosition::borderTopCenter:
    case CaptionPosition::borderTopRight:
        return Row::top;
    case CaptionPosition::imageCenterLeft:
    case CaptionPosition::imageCenter:
    case CaptionPosition::imageCenterRight:
        return Row::middle;
    case CaptionPosition::imageBottomLeft:
    case CaptionPosition::imageBottomCenter:
    case CaptionPosition::imageBottomRight:
    case CaptionPosition::borderBottomLeft:
    case CaptionPosition::borderBottomCenter:
    case CaptionPosition::borderBottomRight:
        break;
    }
    return Row::bottom;
}

QRectF scaledRect(const QRectF& rect, double scale)
{
    return {rect.x() * scale, rect.y() * scale, rect.width() * scale, rect.height() * scale};
}

bool areFinite(std::initializer_list<double> values)
{
    return std::ranges::all_of(values, [](double value) { return std::isfinite(value); });
}

/// Percents may go beyond all numbers by the photo's size alone.
bool isFinite(const Caption& caption, PixelSize size)
{
    for (const Length& length : {caption.fontSize, caption.lineSpacing, caption.padding, caption.verticalPadding})
        if (!areFinite({length.value, length.pixels(size)}))
            return false;
    return areFinite({caption.letterSpacing, caption.opacity});
}

bool isFinite(const LogoConfiguration& logo)
{
    return areFinite({logo.widthPercent, logo.horizontalPadding, logo.verticalPadding, logo.opacity});
}

bool isFinite(const SideLengths& lengths)
{
    return areFinite({lengths.top, lengths.right, lengths.bottom, lengths.left});
}

/// Whether every number can be drawn for a photo of `size`: a length in percent may go beyond all numbers by the
/// photo's size alone.
bool isDrawable(const Border& border, PixelSize size)
{
    const auto isLength = [&](const Length& length) { return areFinite({length.value, length.pixels(size)}); };
    const BlurredBackground background = border.blurredBackground.value_or(BlurredBackground());
    const FrameLine line = border.line.value_or(FrameLine());
    const FrameShape shape = border.shape.value_or(FrameShape());
    const double ratio = shape.ratioFor(size);
    return std::isfinite(border.width) && isFinite(border.sides.value_or(SideLengths())) &&
           isFinite(border.around(size)) && areFinite({background.blur, background.dim}) && isLength(line.thickness) &&
           isLength(line.distance) && isLength(border.photoEdge.cornerRadius) && shape.width > 0 && shape.height > 0 &&
           ratio > 0 && areFinite({ratio, shape.balance});
}

/// Photo and border, and what the shape adds to one of their sides.
QSizeF grownToShape(const QSizeF& framed, const Border& border, PixelSize photo)
{
    if (!border.shape)
        return framed;
    const double ratio = border.shape->ratioFor(photo);
    return {std::max(framed.width(), framed.height() * ratio), std::max(framed.height(), framed.width() / ratio)};
}

/// What of the room added lies on the photo's left, or above it.
std::int64_t roomBefore(std::int64_t added, const Border& border)
{
    const double balance = border.shape ? std::clamp(border.shape->balance, -100.0, 100.0) : 0;
    return std::llround(double(added) * (100 + balance) / 200);
}

/// The multiple of `step` next to `length` that is not beyond `most`.
std::int64_t nearestStep(std::int64_t length, std::int64_t step, std::int64_t most)
{
    return std::min((length + step / 2) / step, most / step) * step;
}

/// The place next to `length` that is `first` or whole steps beyond it.
std::int64_t nearest(std::int64_t length, std::int64_t step, std::int64_t first)
{
    return first + nearestStep(std::max<std::int64_t>(length - first, 0), step, length + step);
}

/// Gives a side another width, and the opposite one where it has the same.
void moveTo(std::int64_t width, std::int64_t& side, std::int64_t& opposite)
{
    opposite = opposite == side ? width : opposite;
    side = width;
}

/// Whole pixels that a border of this length takes.
std::int64_t wholePixels(double length)
{
    return std::max<std::int64_t>(std::int64_t(std::ceil(length)), 0);
}

} // namespace

RenderLayout RenderLayout::framedLayout(PixelSize imageSize, const RenderRecipe& recipe, const BlockGrid& grid)
{
    const SideLengths border = recipe.border.around(imageSize);
    std::int64_t top = wholePixels(border.top);
    std::int64_t right = wholePixels(border.right);
    std::int64_t bottom = wholePixels(border.bottom);
    std::int64_t left = wholePixels(border.left);
    // What is as wide on all sides stays so: both ways go by the longer step.
    const std::int64_t common = left == top ? std::lcm(grid.width, grid.height) : 1;
    moveTo(nearest(left, std::lcm(grid.width, common), grid.x), left, right);
    moveTo(nearest(top, std::lcm(grid.height, common), grid.y), top, bottom);
    const PixelSize framed{left + imageSize.width + right, top + imageSize.height + bottom};
    const QSizeF grown = grownToShape(QSizeF(double(framed.width), double(framed.height)), recipe.border, imageSize);
    const std::int64_t addedWidth = std::llround(grown.width()) - framed.width;
    const std::int64_t addedHeight = std::llround(grown.height()) - framed.height;
    left += nearestStep(roomBefore(addedWidth, recipe.border), grid.width, addedWidth);
    top += nearestStep(roomBefore(addedHeight, recipe.border), grid.height, addedHeight);

    RenderLayout layout;
    layout.canvasSize = {framed.width + addedWidth, framed.height + addedHeight};
    right = layout.canvasSize.width - left - imageSize.width;
    bottom = layout.canvasSize.height - top - imageSize.height;
    layout.imageRect = QRectF(double(left), double(bottom), double(imageSize.width), double(imageSize.height));
    layout.drawRect = layout.imageRect;
    layout.borderThickness = double(std::max({top, right, bottom, left}));
    return layout;
}

RenderLayout RenderLayout::calculate(PixelSize sourceSize, const RenderRecipe& recipe, double scale)
{
    return framedLayout(sourceSize, recipe).scaled(std::max(scale, 0.000001));
}

RenderLayout RenderLayout::scaled(double scale) const
{
    RenderLayout layout;
    layout.canvasSize = {scaledSide(canvasSize.width, scale), scaledSide(canvasSize.height, scale)};
    layout.imageRect = scaledRect(imageRect, scale);
    layout.drawRect = scaledRect(drawRect, scale);
    layout.borderThickness = borderThickness * scale;
    return layout;
}

QRectF RenderLayout::canvasRect() const
{
    return {0, 0, double(canvasSize.width), double(canvasSize.height)};
}

QRectF RenderLayout::fromTop(const QRectF& rect) const
{
    return {rect.x(), double(canvasSize.height) - rect.y() - rect.height(), rect.width(), rect.height()};
}

QRectF captionArea(CaptionPosition position, const QRectF& imageRect, const QRectF& canvasRect,
                   double horizontalPadding, double verticalPadding)
{
    if (!isInBorder(position))
        return {imageRect.x() + horizontalPadding, imageRect.y() + verticalPadding,
                imageRect.width() - 2 * horizontalPadding, imageRect.height() - 2 * verticalPadding};

    const double x = canvasRect.x() + horizontalPadding;
    const double width = std::max(canvasRect.width() - 2 * horizontalPadding, 0.0);
    if (rowOf(position) == Row::bottom) {
        const double available = imageRect.y() - canvasRect.y();
        if (available <= 0)
            return {x, canvasRect.y(), width, 0};
        const double inset = std::min(available, verticalPadding);
        return {x, canvasRect.y() + inset, width, std::max(available - inset, 0.0)};
    }
    const double imageTop = imageRect.y() + imageRect.height();
    const double available = canvasRect.y() + canvasRect.height() - imageTop;
    const double inset = std::min(available, verticalPadding);
    return {x, imageTop, width, std::max(available - inset, 0.0)};
}

QRectF anchoredRect(const QSizeF& size, const QRectF& area, CaptionPosition position)
{
    QRectF rect(area.topLeft(), size);
    switch (columnOf(position)) {
    case Column::left:
        break;
    case Column::center:
        rect.moveLeft(area.x() + area.width() / 2 - size.width() / 2);
        break;
    case Column::right:
        rect.moveLeft(area.x() + area.width() - size.width());
        break;
    }
    // y grows upwards: the rectangle's own "top" is its lower edge.
    switch (rowOf(position)) {
    case Row::top:
        rect.moveTop(area.y() + area.height() - size.height());
        break;
    case Row::middle:
        rect.moveTop(area.y() + area.height() / 2 - size.height() / 2);
        break;
    case Row::bottom:
        break;
    }
    return rect;
}

std::optional<QRectF> logoRect(PixelSize logoSize, const RenderLayout& layout, const LogoConfiguration& configuration,
                               double scale)
{
    const QRectF area = captionArea(configuration.position, layout.imageRect, layout.canvasRect(),
                                    std::max(scale * configuration.horizontalPadding, 0.0),
                                    std::max(scale * configuration.verticalPadding, 0.0));
    if (area.width() <= 0 || area.height() <= 0 || logoSize.width < 1 || logoSize.height < 1)
        return std::nullopt;
    const double width = layout.imageRect.width() * std::clamp(configuration.widthPercent, 1.0, 100.0) / 100.0;
    const double height = width / (double(logoSize.width) / double(logoSize.height));
    const double fit = std::min({area.width() / width, area.height() / height, 1.0});
    const QSizeF box(width * fit, height * fit);
    if (box.width() < 1 || box.height() < 1)
        return std::nullopt;
    return anchoredRect(box, area, configuration.position);
}

void validateRenderBounds(PixelSize originalSize, const RenderRecipe& recipe, double scale)
{
    const bool isValid =
        isDrawable(recipe.border, originalSize) &&
        std::ranges::all_of(recipe.captions, [&](const Caption& c) { return isFinite(c, originalSize); }) &&
        (!recipe.logo || isFinite(*recipe.logo));
    if (!isValid || !std::isfinite(scale) || scale <= 0)
        throw ImagePipelineError(ImagePipelineError::invalidRenderRecipe);
    // Of a very thin photo a preview's scale may leave less than a pixel, which is drawn as one.
    const auto scaled = [&](double full) { return full < 1 ? 0 : std::max(scale * full, 1.0); };
    const SideLengths border = recipe.border.around(originalSize);
    const QSizeF framed(border.left + border.right + double(originalSize.width),
                        border.top + border.bottom + double(originalSize.height));
    const QSizeF grown = grownToShape(framed, recipe.border, originalSize);
    const double width = scaled(grown.width());
    const double height = scaled(grown.height());
    const auto fits = [](double side) { return std::isfinite(side) && side >= 1 && side <= maximumOutputSide; };
    if (!fits(width) || !fits(height) || width * height > maximumOutputPixels)
        throw ImagePipelineError(
            ImagePipelineError::UnreasonableOutputDimensions{finiteInteger(width), finiteInteger(height)});
}

std::int64_t finiteInteger(double value)
{
    if (!std::isfinite(value) || value >= 9.2e18)
        return std::numeric_limits<std::int64_t>::max();
    return std::max<std::int64_t>(std::llround(value), 0);
}

} // namespace ferrow
