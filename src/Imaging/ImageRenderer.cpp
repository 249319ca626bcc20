// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ImageRenderer.h"

#include "Engine/Compositor.h"
#include "Imaging/ExportLayout.h"
#include "Metadata/MetadataTemplateExpander.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Pixels/ColorTransform.h"
#include "Platform/Pixels/Resampler.h"

#include <QRect>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>

namespace ferrow::ImageRenderer {

namespace {

/// Distance and blur of a caption's shadow on the photo, in pixels at full size, and its darkness.
constexpr double shadowOffset = 1;
constexpr double shadowBlurRadius = 3;
constexpr double shadowAlpha = 0.55;

/// The photo's shadow on the background, as shares of the photo's shorter side: a print lying on a mat, lit from above.
constexpr double photoShadowSigma = 0.012;
constexpr double photoShadowOffset = 0.008;
constexpr double photoShadowAlpha = 0.45;

/// Room around a text box for glyphs that overhang it (slanted or ornate ones), in font sizes.
constexpr double glyphOverhang = 0.5;

/// From the layout's coordinates to pixel rows counted from the top.
QRectF fromTop(const QRectF& rect, const RenderLayout& layout)
{
    return {rect.x(), double(layout.canvasSize.height) - rect.y() - rect.height(), rect.width(), rect.height()};
}

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
    QRectF box;  ///< Of the text.
    QRectF clip; ///< Beyond it nothing of the text is seen.
};

/// Absent where there is no room at all.
std::optional<PlacedCaption> placeCaption(const QString& text, const RenderLayout& layout, const Caption& caption,
                                          double scale)
{
    const double fontSize = std::max(caption.fontSize * scale, 1.0);
    TextStyle style = captionFont(caption.font, fontSize);
    style.alignment = textAlignment(caption.alignment);
    style.lineSpacing = std::max(caption.lineSpacing * scale, 0.0);

    const QRectF area =
        captionArea(caption.position, layout.imageRect, layout.canvasRect(), std::max(caption.padding * scale, 0.0),
                    std::max(caption.verticalPadding * scale, 0.0));
    if (area.width() <= 0 || area.height() <= 0)
        return std::nullopt;

    TextFrame frame(text, style);
    const double width = wrappingWidth(caption.position, area.width(), fontSize);
    const QSizeF suggested = frame.suggestedSize({width, area.height()});
    // Whole pixels of the export, so that a preview's text stands where the export's does.
    const auto wholePixels = [scale](double extent) { return std::ceil(extent / scale) * scale; };
    const QSizeF boxSize(std::min(std::max(wholePixels(suggested.width()), fontSize), area.width()),
                         std::min(std::max(wholePixels(suggested.height()), 1.2 * fontSize), area.height()));
    const QRectF box = fromTop(anchoredRect(boxSize, area, caption.position), layout);
    return PlacedCaption{std::move(frame), fontSize, box, fromTop(area, layout)};
}

/// What surrounds the photo, which lies at `photo`, rows counted from the top.
void surround(Engine::Composition& composition, const QRectF& photo, const Border& border, double scale)
{
    const PixelSize fullSize{std::llround(photo.width() / scale), std::llround(photo.height() / scale)};
    // What is longer than any canvas looks the same at any length.
    const auto pixels = [&](const Length& length) {
        return std::min(length.pixels(fullSize), maximumOutputSide) * scale;
    };
    const double shorterSide = std::min(photo.width(), photo.height());
    composition.photoArea = {photo.left(), photo.top(), photo.right(), photo.bottom(),
                             std::min(pixels(border.photoEdge.cornerRadius), shorterSide / 2)};
    if (const auto& background = border.blurredBackground) {
        const double enlarged = std::max(double(composition.canvasSize.width) / photo.width(),
                                         double(composition.canvasSize.height) / photo.height());
        composition.blurredPhoto = {.sigma = std::clamp(background->blur, 0.0, 100.0) / 1000 * shorterSide * enlarged,
                                    .light = 1 - std::clamp(background->dim, 0.0, 100.0) / 100};
    }
    if (border.photoEdge.hasShadow)
        composition.shadow = {.sigma = photoShadowSigma * shorterSide,
                              .offset = photoShadowOffset * shorterSide,
                              .opacity = photoShadowAlpha};
    if (border.line)
        composition.line = {.distance = pixels(border.line->distance),
                            .thickness = pixels(border.line->thickness),
                            .color = border.line->color};
}

/// The background for a composition with the blurred photo, of whatever size the photo is there.
BlurredPicture blurredBackground(const Bitmap& photo, PixelSize originalSize, const Engine::Composition& composition,
                                 const ColorProfile& space)
{
    const Engine::BlurredPhoto& blurred = *composition.blurredPhoto;
    const std::int64_t enough = BlurredPicture::enoughDimension(originalSize, composition.canvasSize, blurred.sigma);
    const Bitmap reduced = Resampler::scaled(photo, Resampler::fitted(photo.size(), enough));
    return {inColorSpace(reduced, space), originalSize, composition.canvasSize, blurred.sigma, blurred.light};
}

double scaleOf(PixelSize picture, PixelSize original)
{
    return std::min(double(picture.width) / double(original.width), double(picture.height) / double(original.height));
}

/// The rows of a picture in memory, in another color space, cut off on the right and below at `size`.
class BitmapRows : public Engine::RowSource {
public:
    BitmapRows(const Bitmap& source, PixelSize size, const ColorProfile& space)
        : source_(source), size_(size), format_(source.format().hasAlpha() ? rgba8 : rgb8),
          transform_(source.profile(), source.format(), space, format_)
    {
    }

    [[nodiscard]] PixelSize size() const override { return size_; }
    [[nodiscard]] PixelFormat format() const override { return format_; }
    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override
    {
        transform_.applyToRows(count, source_.row(nextRow_), source_.stride(), out, stride, std::size_t(size_.width));
        nextRow_ += count;
    }

private:
    const Bitmap& source_;
    PixelSize size_;
    PixelFormat format_;
    ColorTransform transform_;
    std::int64_t nextRow_ = 0;
};

/// Where a photo that fills its place but for a fraction of a pixel is drawn: on whole pixels, as an export draws it,
/// and at its own size. That costs a tenth of drawing it between pixels, which every step of a drag would pay. Absent
/// where the photo has to be scaled.
std::optional<QRect> wholePixelPlace(PixelSize photo, const QRectF& target, PixelSize canvas)
{
    if (std::abs(double(photo.width) - target.width()) >= 1 || std::abs(double(photo.height) - target.height()) >= 1)
        return std::nullopt;
    // Rounding both the canvas and the place may take the place a pixel beyond the canvas, and leave nothing of a photo
    // that is thinner than a pixel.
    const auto begin = [](double start, std::int64_t most) {
        return std::clamp<std::int64_t>(std::llround(start), 0, most - 1);
    };
    const auto length = [](double last, std::int64_t from, std::int64_t most, std::int64_t own) {
        return std::min(own, std::clamp<std::int64_t>(std::llround(last), from + 1, most) - from);
    };
    const std::int64_t x = begin(target.x(), canvas.width);
    const std::int64_t y = begin(target.y(), canvas.height);
    return QRect(int(x), int(y), int(length(target.right(), x, canvas.width, photo.width)),
                 int(length(target.bottom(), y, canvas.height, photo.height)));
}

/// A scaled photo seldom lies on whole pixels: it is drawn as the lowest overlay, its edges covered in proportion.
Engine::Overlay photoOverlay(const Bitmap& source, const QRectF& target)
{
    Engine::Overlay overlay;
    overlay.picture = Resampler::drawn(source, target);
    overlay.x = std::int64_t(std::floor(target.x()));
    overlay.y = std::int64_t(std::floor(target.y()));
    return overlay;
}

} // namespace

TextStyle captionFont(CaptionFont font, double size)
{
    TextStyle style;
    style.pixelSize = size;
    switch (font) {
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

std::vector<Engine::Overlay> drawLogo(const Bitmap& logo, const RenderLayout& layout,
                                      const LogoConfiguration& configuration, double scale)
{
    const std::optional<QRectF> rect = logoRect(logo.size(), layout, configuration, scale);
    if (!rect)
        return {};
    const QRectF box = fromTop(*rect, layout);
    Engine::Overlay overlay;
    overlay.picture = Resampler::drawn(logo, box);
    overlay.x = std::int64_t(std::floor(box.x()));
    overlay.y = std::int64_t(std::floor(box.y()));
    overlay.opacity = std::clamp(configuration.opacity, 0.0, 1.0);
    return {overlay};
}

std::vector<Engine::Overlay> drawCaption(const QString& text, const RenderLayout& layout, const Caption& caption,
                                         double scale)
{
    RGBAColor color = caption.color;
    color.alpha = std::clamp(caption.opacity, 0.0, 1.0);
    const std::optional<PlacedCaption> placed =
        color.alpha > 0 ? placeCaption(text, layout, caption, scale) : std::nullopt;
    if (!placed)
        return {};
    const auto& [frame, fontSize, box, clip] = *placed;

    const int overhang = int(std::ceil(std::min(glyphOverhang * fontSize, widestGap(box, clip))));
    std::vector<Engine::Overlay> overlays;
    if (!isInBorder(caption.position)) {
        const double sigma = shadowBlurRadius * scale / 2;
        const int margin = overhang + int(std::ceil(3 * sigma));
        Engine::Overlay shadow = textOverlay(frame, box.translated(0, shadowOffset * scale), margin, color);
        shadow.picture = dropShadow(shadow.picture, sigma, shadowAlpha);
        overlays.push_back(clipped(shadow, clip));
    }
    overlays.push_back(clipped(textOverlay(frame, box, overhang, color), clip));
    return overlays;
}

TextCut captionCut(PixelSize pixelSize, const RenderRecipe& recipe, const Caption& caption,
                   const PhotoMetadata& metadata)
try {
    if (!caption.isEnabled || !(caption.opacity > 0))
        return {};
    const QString text = MetadataTemplateExpander::expand(caption.captionTemplate(), metadata);
    if (text.isEmpty())
        return {};
    validateRenderBounds(pixelSize, recipe, 1.0);
    const auto placed = placeCaption(text, RenderLayout::calculate(pixelSize, recipe, 1.0), caption, 1.0);
    if (!placed)
        return {text.simplified(), false};
    return placed->frame.cutIn(placed->box.size(), placed->clip.translated(-placed->box.topLeft()));
} catch (const ImagePipelineError&) {
    return {}; // It is not framed at all, which is said elsewhere.
}

Engine::Composition composition(const RenderLayout& layout, const RenderRecipe& recipe, const PhotoMetadata& metadata,
                                const Bitmap& logo, double scale, const std::stop_token& stop)
{
    Engine::Composition composition;
    composition.canvasSize = layout.canvasSize;
    composition.borderColor = recipe.border.color;
    composition.colorProfile = recipe.outputColorProfile;
    const QRectF photo = fromTop(layout.drawRect, layout);
    composition.photoX = std::llround(photo.x());
    composition.photoY = std::llround(photo.y());
    surround(composition, photo, recipe.border, scale);
    if (recipe.logo && recipe.logo->isEnabled && !logo.isNull())
        composition.overlays = drawLogo(logo, layout, *recipe.logo, scale);
    for (const Caption& caption : recipe.captions) {
        if (!caption.isEnabled)
            continue;
        throwIfCanceled(stop);
        const QString text = MetadataTemplateExpander::expand(caption.captionTemplate(), metadata);
        if (!text.isEmpty())
            std::ranges::move(drawCaption(text, layout, caption, scale), std::back_inserter(composition.overlays));
    }
    return composition;
}

Engine::Composition exportComposition(PixelSize pixelSize, const RenderRecipe& recipe, const PhotoMetadata& metadata,
                                      const Bitmap& logo, const OutputSize& size, const std::stop_token& stop)
{
    const auto [layout, scale] = exportLayout(pixelSize, recipe, size);
    try {
        Engine::Composition result = composition(layout, recipe, metadata, logo, scale, stop);
        if (scale < 1)
            result.photoSize = {std::llround(layout.drawRect.width()), std::llround(layout.drawRect.height())};
        return result;
    } catch (const std::bad_alloc&) {
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    }
}

Bitmap render(const Bitmap& source, PixelSize originalSize, const RenderRecipe& recipe, const PhotoMetadata& metadata,
              const Bitmap& logo, SourceScale sourceScale, const std::stop_token& stop)
{
    if (source.isNull() || originalSize.width < 1 || originalSize.height < 1)
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    const double scale = sourceScale == SourceScale::fullSize ? 1.0 : scaleOf(source.size(), originalSize);
    throwIfCanceled(stop);
    validateRenderBounds(originalSize, recipe, scale);
    const RenderLayout layout = RenderLayout::calculate(originalSize, recipe, scale);
    throwIfCanceled(stop);
    try {
        Engine::Composition parts = composition(layout, recipe, metadata, logo, scale, stop);
        const ColorProfile space =
            Engine::outputColorSpace(source.profile(), source.format().model, recipe.outputColorProfile);
        std::optional<BitmapRows> photo;
        const QRectF target = fromTop(layout.drawRect, layout);
        if (const std::optional<QRect> place = wholePixelPlace(source.size(), target, layout.canvasSize)) {
            parts.photoX = place->x();
            parts.photoY = place->y();
            const QRectF area(*place);
            parts.photoArea = {area.left(), area.top(), area.right(), area.bottom(), parts.photoArea.radius};
            photo.emplace(source, PixelSize{place->width(), place->height()}, space);
        } else {
            Engine::Overlay overlay = photoOverlay(source, target);
            Engine::cutCorners(overlay, parts.photoArea);
            parts.overlays.insert(parts.overlays.begin(), overlay);
        }
        Engine::Compositor compositor(parts, photo ? &*photo : nullptr, space,
                                      Engine::needsAlpha(parts, source.format()));
        if (parts.blurredPhoto)
            compositor.setBackground(blurredBackground(source, originalSize, parts, space));
        Bitmap result(compositor.size(), compositor.format(), space);
        compositor.compose(result.size().height, result.row(0), result.stride());
        return result;
    } catch (const std::bad_alloc&) {
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    }
}

} // namespace ferrow::ImageRenderer
