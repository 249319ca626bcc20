// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/CaptionDrawing.h"

#include "Imaging/ExportLayout.h"
#include "Metadata/MetadataTemplateExpander.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace ferrow::CaptionDrawing {

namespace {

/// Distance and blur of a caption's shadow on the photo, in pixels at full size, and its darkness.
constexpr double shadowOffset = 1;
constexpr double shadowBlurRadius = 3;
constexpr double shadowAlpha = 0.55;

/// Room around a text box for glyphs that overhang it (slanted or ornate ones), in font sizes.
constexpr double glyphOverhang = 0.5;

/// Captions that shrink to fit do so by steps of this many pixels at full size.
constexpr double shrinkingStep = 0.125;

/// Lines that share less than this, in pixels at full size, merely touch.
constexpr double leastOverlap = 1;

/// `overlay` without the pixels outside `area` (rows counted from the top); partly covered edge pixels stay.
Engine::Overlay clipped(const Engine::Overlay& overlay, const QRectF& area)
{
    const PixelSize size = overlay.picture.size();
    const std::int64_t left = std::max(overlay.x, std::int64_t(std::floor(area.left())));
    const std::int64_t top = std::max(overlay.y, std::int64_t(std::floor(area.top())));
    const std::int64_t right = std::min(overlay.x + size.width, std::int64_t(std::ceil(area.right())));
    const std::int64_t bottom = std::min(overlay.y + size.height, std::int64_t(std::ceil(area.bottom())));
    if (left == overlay.x && top == overlay.y && right == overlay.x + size.width && bottom == overlay.y + size.height)
        return overlay;

    Engine::Overlay result = overlay;
    result.x = left;
    result.y = top;
    result.picture = Bitmap({right - left, bottom - top}, overlay.picture.format(), overlay.picture.profile());
    const auto pixelBytes = std::size_t(overlay.picture.format().bytesPerPixel());
    for (std::int64_t y = 0; !result.picture.isNull() && y < bottom - top; ++y)
        std::memcpy(result.picture.row(y),
                    overlay.picture.row(top - overlay.y + y) + std::size_t(left - overlay.x) * pixelBytes,
                    std::size_t(right - left) * pixelBytes);
    return result;
}

/// The text in its box, whose corner may lie anywhere inside a pixel. `box` counts rows from the top.
Engine::Overlay textOverlay(const TextFrame& frame, const QRectF& box, int margin, const RGBAColor& color)
{
    const double x = std::floor(box.x());
    const double y = std::floor(box.y());
    Engine::Overlay overlay;
    overlay.picture = frame.drawn(box.size(), QPointF(box.x() - x, box.y() - y), margin, color.red, color.green,
                                  color.blue, color.alpha);
    overlay.x = std::int64_t(x) - margin;
    overlay.y = std::int64_t(y) - margin;
    return overlay;
}

TextStyle typeface(const Caption& caption)
{
    TextStyle style;
    if (caption.face) {
        style.families = FontFamilies::chainForInstalled(caption.face->family);
        style.face = caption.face->style;
        return style;
    }
    switch (caption.font) {
    case CaptionFont::system:
        style.families = QStringList{FontFamilies::system()} + FontFamilies::chainFor(QStringLiteral("Helvetica Neue"));
        break;
    case CaptionFont::rounded:
        style.families = FontFamilies::chainFor(QStringLiteral("Arial Rounded MT Bold"));
        style.bold = true;
        break;
    case CaptionFont::serif:
        style.families = FontFamilies::chainFor(QStringLiteral("New York"));
        break;
    case CaptionFont::monospaced:
        style.families = FontFamilies::chainFor(QStringLiteral("SF Mono"));
        break;
    case CaptionFont::avenirNext:
        style.families = FontFamilies::chainFor(QStringLiteral("Avenir Next"));
        break;
    }
    return style;
}

/// How far `outer` reaches beyond `inner` at most: glyphs that overhang by more are cut off anyway.
double widestGap(const QRectF& inner, const QRectF& outer)
{
    return std::max({inner.left() - outer.left(), outer.right() - inner.right(), inner.top() - outer.top(),
                     outer.bottom() - inner.bottom(), 1.0});
}

double wrappingWidth(CaptionPosition position, double areaWidth, double fontSize)
{
    if (isInBorder(position))
        return areaWidth;
    return std::max(0.62 * areaWidth, std::min(8 * fontSize, areaWidth));
}

TextAlignment textAlignment(CaptionAlignment alignment)
{
    switch (alignment) {
    case CaptionAlignment::left:
        return TextAlignment::left;
    case CaptionAlignment::center:
        return TextAlignment::center;
    case CaptionAlignment::right:
        break;
    }
    return TextAlignment::right;
}

/// A caption on its way to the canvas. Rows count from the top.
struct PlacedCaption {
    TextFrame frame;
    double fontSize = 1;
    QSizeF room; ///< What its lines may take.
    QRectF box;  ///< Of the text.
    QRectF clip; ///< Beyond it nothing of the text is seen.
};

/// Absent where there is no room at all. The caption's lengths are in pixels at full size.
std::optional<PlacedCaption> place(const QString& text, const RenderLayout& layout, const Caption& caption,
                                   double scale)
{
    const double fontSize = std::max(caption.fontSize.value * scale, 1.0);
    TextStyle style = typeface(caption);
    style.pixelSize = fontSize;
    style.letterSpacing =
        std::clamp(caption.letterSpacing, -Caption::mostLetterSpacing, Caption::mostLetterSpacing) / 100;
    style.alignment = textAlignment(caption.alignment);
    style.lineSpacing = std::max(caption.lineSpacing.value * scale, 0.0);

    const QRectF area =
        captionArea(caption.position, layout.imageRect, layout.canvasRect(),
                    std::max(caption.padding.value * scale, 0.0), std::max(caption.verticalPadding.value * scale, 0.0));
    if (area.width() <= 0 || area.height() <= 0)
        return std::nullopt;

    TextFrame frame(text, style);
    const QSizeF room(wrappingWidth(caption.position, area.width(), fontSize), area.height());
    const QSizeF suggested = frame.suggestedSize(room);
    // Whole pixels of the export, so that a preview's text stands where the export's does.
    const auto wholePixels = [scale](double extent) { return std::ceil(extent / scale) * scale; };
    const QSizeF boxSize(std::min(std::max(wholePixels(suggested.width()), fontSize), area.width()),
                         std::min(std::max(wholePixels(suggested.height()), 1.2 * fontSize), area.height()));
    const QRectF box = layout.fromTop(anchoredRect(boxSize, area, caption.position));
    return PlacedCaption{std::move(frame), fontSize, room, box, layout.fromTop(area)};
}

TextCut cutOf(const PlacedCaption& placed)
{
    return placed.frame.cutIn(placed.box.size(), placed.clip.translated(-placed.box.topLeft()));
}

/// With lengths in pixels of a photo of `size`, and no larger than it fits. One that fits at no size keeps its own.
Caption fitted(const QString& text, const Caption& caption, PixelSize size, const RenderLayout& fullSize)
{
    Caption result = caption;
    result.convert(BorderUnit::pixels, size);
    if (!result.shrinksToFit)
        return result;
    const auto sized = [&](double fontSize) {
        Caption smaller = result;
        smaller.fontSize.value = fontSize;
        smaller.lineSpacing.value *= fontSize / result.fontSize.value;
        return smaller;
    };
    const auto fits = [&](const Caption& tried) {
        const auto placed = place(text, fullSize, tried, 1);
        return placed && placed->frame.fits(placed->room) && !cutOf(*placed).isCut();
    };
    if (fits(result))
        return result;
    // Measured in letters, a place only grows as they shrink: sizes that fit lie below those that don't.
    auto small = std::int64_t(1 / shrinkingStep);
    auto large = std::int64_t(std::clamp(result.fontSize.value, 1.0, TextStyle::largestSize) / shrinkingStep) + 1;
    if (!fits(sized(double(small) * shrinkingStep)))
        return result;
    while (large - small > 1) {
        const std::int64_t middle = (small + large) / 2;
        (fits(sized(double(middle) * shrinkingStep)) ? small : large) = middle;
    }
    return sized(double(small) * shrinkingStep);
}

void drawOne(const QString& text, const RenderLayout& layout, const Caption& caption, double scale,
             std::vector<Engine::Overlay>& overlays)
{
    const std::optional<PlacedCaption> placed = place(text, layout, caption, scale);
    if (!placed)
        return;
    RGBAColor color = caption.color;
    color.alpha = std::clamp(caption.opacity, 0.0, 1.0);
    const int overhang =
        int(std::ceil(std::min(glyphOverhang * placed->fontSize, widestGap(placed->box, placed->clip))));
    if (!isInBorder(caption.position)) {
        const double sigma = shadowBlurRadius * scale / 2;
        const int margin = overhang + int(std::ceil(3 * sigma));
        Engine::Overlay shadow =
            textOverlay(placed->frame, placed->box.translated(0, shadowOffset * scale), margin, color);
        shadow.picture = dropShadow(shadow.picture, sigma, shadowAlpha);
        overlays.push_back(clipped(shadow, placed->clip));
    }
    overlays.push_back(clipped(textOverlay(placed->frame, placed->box, overhang, color), placed->clip));
}

/// A caption as an export of a photo of `size` has it; absent where nothing of it is drawn for want of room.
std::optional<PlacedCaption> placedInExport(const QString& text, const Caption& caption, PixelSize size,
                                            const RenderRecipe& recipe, const ExportLayout& drawn)
{
    const Caption fit = fitted(text, caption, size, RenderLayout::framedLayout(size, recipe));
    return place(text, drawn.layout, fit, drawn.scale);
}

/// The lines that are seen, in rows counted from the top.
std::vector<QRectF> linesOf(const PlacedCaption& placed)
{
    std::vector<QRectF> lines = placed.frame.lineRects(placed.box.size());
    for (QRectF& line : lines)
        line = line.translated(placed.box.topLeft()).intersected(placed.clip);
    return lines;
}

std::vector<QRectF> linesInExport(const Caption& caption, const PhotoMetadata& metadata, PixelSize size,
                                  const RenderRecipe& recipe, const ExportLayout& drawn)
{
    const QString shown = text(caption, metadata);
    const auto placed = shown.isEmpty() ? std::nullopt : placedInExport(shown, caption, size, recipe, drawn);
    return placed ? linesOf(*placed) : std::vector<QRectF>();
}

bool overlap(const std::vector<QRectF>& some, const std::vector<QRectF>& others)
{
    return std::ranges::any_of(some, [&](const QRectF& one) {
        return std::ranges::any_of(others, [&](const QRectF& other) {
            const QRectF shared = one.intersected(other);
            return shared.width() >= leastOverlap && shared.height() >= leastOverlap;
        });
    });
}

} // namespace

QString text(const Caption& caption, const PhotoMetadata& metadata)
{
    if (!caption.isEnabled || !(caption.opacity > 0))
        return {};
    const QString text = MetadataTemplateExpander::expand(caption.captionTemplate(), metadata);
    return caption.isUppercase ? text.toUpper() : text;
}

std::vector<Engine::Overlay> draw(const RenderLayout& layout, const RenderRecipe& recipe, const PhotoMetadata& metadata,
                                  double scale, const std::stop_token& stop)
{
    const PixelSize size{std::llround(layout.imageRect.width() / scale),
                         std::llround(layout.imageRect.height() / scale)};
    const RenderLayout fullSize = RenderLayout::framedLayout(size, recipe);
    std::vector<Engine::Overlay> overlays;
    for (const Caption& caption : recipe.captions) {
        throwIfCanceled(stop);
        if (const QString shown = text(caption, metadata); !shown.isEmpty())
            drawOne(shown, layout, fitted(shown, caption, size, fullSize), scale, overlays);
    }
    return overlays;
}

TextCut cut(PixelSize pixelSize, const RenderRecipe& recipe, const Caption& caption, const PhotoMetadata& metadata,
            const OutputSize& size)
try {
    const QString shown = text(caption, metadata);
    if (shown.isEmpty())
        return {};
    const auto placed = placedInExport(shown, caption, pixelSize, recipe, largestLayout(pixelSize, recipe, size));
    return placed ? cutOf(*placed) : TextCut{shown.simplified(), false};
} catch (const ImagePipelineError&) {
    return {}; // It is not framed at all, which is said elsewhere.
}

double fontSize(PixelSize pixelSize, const RenderRecipe& recipe, const Caption& caption, const PhotoMetadata& metadata)
try {
    const QString shown = text(caption, metadata);
    if (!caption.shrinksToFit || shown.isEmpty())
        return caption.fontSize.pixels(pixelSize);
    validateRenderBounds(pixelSize, recipe, 1.0);
    return fitted(shown, caption, pixelSize, RenderLayout::calculate(pixelSize, recipe, 1.0)).fontSize.value;
} catch (const ImagePipelineError&) {
    return caption.fontSize.pixels(pixelSize); // As in cut().
}

std::vector<Overlap> overlaps(PixelSize pixelSize, const RenderRecipe& recipe, const PhotoMetadata& metadata,
                              const OutputSize& size)
try {
    if (recipe.captions.size() < 2)
        return {};
    const ExportLayout drawn = largestLayout(pixelSize, recipe, size);
    std::vector<std::vector<QRectF>> lines;
    for (const Caption& caption : recipe.captions)
        lines.push_back(linesInExport(caption, metadata, pixelSize, recipe, drawn));
    std::vector<Overlap> found;
    for (std::size_t first = 0; first < lines.size(); ++first)
        for (std::size_t second = first + 1; second < lines.size(); ++second)
            if (overlap(lines[first], lines[second]))
                found.push_back({first, second});
    return found;
} catch (const ImagePipelineError&) {
    return {}; // As in cut().
}

std::vector<std::size_t> overLogo(PixelSize pixelSize, const RenderRecipe& recipe, const PhotoMetadata& metadata,
                                  PixelSize logo, const OutputSize& size)
try {
    if (!recipe.logo || !recipe.logo->isEnabled || !(recipe.logo->opacity > 0))
        return {};
    const ExportLayout drawn = largestLayout(pixelSize, recipe, size);
    const std::optional<QRectF> place = logoRect(logo, drawn.layout, *recipe.logo, drawn.scale);
    if (!place)
        return {};
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < recipe.captions.size(); ++i)
        if (overlap(linesInExport(recipe.captions[i], metadata, pixelSize, recipe, drawn),
                    {drawn.layout.fromTop(*place)}))
            found.push_back(i);
    return found;
} catch (const ImagePipelineError&) {
    return {}; // As in cut().
}

std::optional<MissingFont> missingFont(const Caption& caption)
{
    if (!caption.face || FontFamilies::isInstalled(caption.face->family))
        return std::nullopt;
    return MissingFont{caption.face->family, FontFamilies::standInFor(caption.face->family)};
}

} // namespace ferrow::CaptionDrawing
