// SPDX-License-Identifier: GPL-3.0-or-later
#include "Imaging/ImageRenderer.h"

#include "Engine/Compositor.h"
#include "Imaging/CaptionDrawing.h"
#include "Imaging/ExportLayout.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Pixels/ColorTransform.h"
#include "Platform/Pixels/Resampler.h"

#include <QRect>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>
#include <optional>

namespace ferrow::ImageRenderer {

namespace {

/// The photo's shadow on the background, as shares of the photo's shorter side: a print lying on a mat, lit from above.
constexpr double photoShadowSigma = 0.012;
constexpr double photoShadowOffset = 0.008;
constexpr double photoShadowAlpha = 0.45;

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

/// A photo in memory and where it lies.
struct PlacedPhoto {
    const Bitmap& source;
    PixelSize originalSize;
    const RenderLayout& layout;
    double scale = 1;
    std::optional<QRect> wholePixels; ///< None where it lies between pixels, just where the layout has it.
    bool hasSmallLetters = false;
};

/// Letters a few pixels high are drawn four times as large and reduced: drawn as they are, they would be as legible but
/// not what reducing the export makes of them.
std::vector<Engine::Overlay> smallCaptions(const RenderLayout& layout, const RenderRecipe& recipe,
                                           const PhotoMetadata& metadata, double scale, const std::stop_token& stop)
{
    constexpr int detail = 4;
    std::vector<Engine::Overlay> captions =
        CaptionDrawing::draw(layout.scaled(detail), recipe, metadata, scale * detail, stop);
    for (Engine::Overlay& caption : captions) {
        if (caption.picture.isNull())
            continue;
        const QRectF box(double(caption.x) / detail, double(caption.y) / detail,
                         double(caption.picture.size().width) / detail, double(caption.picture.size().height) / detail);
        caption.picture = Resampler::drawn(caption.picture, box);
        caption.x = std::int64_t(std::floor(box.x()));
        caption.y = std::int64_t(std::floor(box.y()));
    }
    return captions;
}

Engine::Composition smallComposition(const PlacedPhoto& placed, const RenderRecipe& recipe,
                                     const PhotoMetadata& metadata, const Bitmap& logo, const std::stop_token& stop)
{
    RenderRecipe bare = recipe;
    bare.captions.clear();
    Engine::Composition parts = composition(placed.layout, bare, metadata, logo, placed.scale, stop);
    std::vector<Engine::Overlay> captions = smallCaptions(placed.layout, recipe, metadata, placed.scale, stop);
    std::ranges::move(captions, std::back_inserter(parts.overlays));
    return parts;
}

Bitmap composed(const PlacedPhoto& placed, const RenderRecipe& recipe, const PhotoMetadata& metadata,
                const Bitmap& logo, const std::stop_token& stop)
{
    const Bitmap& source = placed.source;
    const RenderLayout& layout = placed.layout;
    throwIfCanceled(stop);
    try {
        Engine::Composition parts = placed.hasSmallLetters
                                        ? smallComposition(placed, recipe, metadata, logo, stop)
                                        : composition(layout, recipe, metadata, logo, placed.scale, stop);
        const ColorProfile space =
            Engine::outputColorSpace(source.profile(), source.format().model, recipe.outputColorProfile);
        std::optional<BitmapRows> photo;
        if (const std::optional<QRect>& place = placed.wholePixels) {
            parts.photoX = place->x();
            parts.photoY = place->y();
            const QRectF area(*place);
            parts.photoArea = {area.left(), area.top(), area.right(), area.bottom(), parts.photoArea.radius};
            photo.emplace(source, PixelSize{place->width(), place->height()}, space);
        } else {
            Engine::Overlay overlay = photoOverlay(source, layout.fromTop(layout.drawRect));
            Engine::cutCorners(overlay, parts.photoArea);
            parts.overlays.insert(parts.overlays.begin(), overlay);
        }
        Engine::Compositor compositor(parts, photo ? &*photo : nullptr, space,
                                      Engine::needsAlpha(parts, source.format()));
        if (parts.blurredPhoto)
            compositor.setBackground(blurredBackground(source, placed.originalSize, parts, space));
        Bitmap result(compositor.size(), compositor.format(), space);
        compositor.compose(result.size().height, result.row(0), result.stride());
        return result;
    } catch (const std::bad_alloc&) {
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    }
}

} // namespace

std::vector<Engine::Overlay> drawLogo(const Bitmap& logo, const RenderLayout& layout,
                                      const LogoConfiguration& configuration, double scale)
{
    const std::optional<QRectF> rect = logoRect(logo.size(), layout, configuration, scale);
    if (!rect)
        return {};
    const QRectF box = layout.fromTop(*rect);
    Engine::Overlay overlay;
    overlay.picture = Resampler::drawn(logo, box);
    overlay.x = std::int64_t(std::floor(box.x()));
    overlay.y = std::int64_t(std::floor(box.y()));
    overlay.opacity = std::clamp(configuration.opacity, 0.0, 1.0);
    return {overlay};
}

Engine::Composition composition(const RenderLayout& layout, const RenderRecipe& recipe, const PhotoMetadata& metadata,
                                const Bitmap& logo, double scale, const std::stop_token& stop)
{
    Engine::Composition composition;
    composition.canvasSize = layout.canvasSize;
    composition.borderColor = recipe.border.color;
    composition.colorProfile = recipe.outputColorProfile;
    const QRectF photo = layout.fromTop(layout.drawRect);
    composition.photoX = std::llround(photo.x());
    composition.photoY = std::llround(photo.y());
    surround(composition, photo, recipe.border, scale);
    if (recipe.logo && recipe.logo->isEnabled && !logo.isNull())
        composition.overlays = drawLogo(logo, layout, *recipe.logo, scale);
    std::vector<Engine::Overlay> captions = CaptionDrawing::draw(layout, recipe, metadata, scale, stop);
    std::ranges::move(captions, std::back_inserter(composition.overlays));
    return composition;
}

Engine::Composition exportComposition(PixelSize pixelSize, const RenderRecipe& recipe, const PhotoMetadata& metadata,
                                      const Bitmap& logo, const OutputSize& size, const std::stop_token& stop,
                                      const BlockGrid& grid)
{
    const auto [layout, scale] = exportLayout(pixelSize, recipe, size, grid);
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
    const std::optional<QRect> place =
        wholePixelPlace(source.size(), layout.fromTop(layout.drawRect), layout.canvasSize);
    return composed({source, originalSize, layout, scale, place}, recipe, metadata, logo, stop);
}

PixelSize fittedCanvas(PixelSize originalSize, const RenderRecipe& recipe, PixelSize box)
{
    validateRenderBounds(originalSize, recipe, smallestScale);
    const PixelSize full = RenderLayout::framedLayout(originalSize, recipe).canvasSize;
    const double scale =
        std::min({double(box.width) / double(full.width), double(box.height) / double(full.height), 1.0});
    const auto scaled = [scale](std::int64_t side) { return std::max(std::llround(double(side) * scale), 1LL); };
    return {scaled(full.width), scaled(full.height)};
}

Bitmap renderReduced(const Bitmap& source, PixelSize originalSize, const RenderRecipe& recipe,
                     const PhotoMetadata& metadata, const Bitmap& logo, PixelSize canvas, const std::stop_token& stop)
{
    if (source.isNull() || originalSize.width < 1 || originalSize.height < 1 || canvas.width < 1 || canvas.height < 1)
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    throwIfCanceled(stop);
    validateRenderBounds(originalSize, recipe, smallestScale);
    const RenderLayout full = RenderLayout::framedLayout(originalSize, recipe);
    const double across = double(canvas.width) / double(full.canvasSize.width);
    const double down = double(canvas.height) / double(full.canvasSize.height);
    const QRectF photo(full.drawRect.x() * across, full.drawRect.y() * down, full.drawRect.width() * across,
                       full.drawRect.height() * down);
    const double scale = std::sqrt(across * down);
    const RenderLayout layout{canvas, photo, photo, full.borderThickness * scale};
    return composed({source, originalSize, layout, scale, std::nullopt, true}, recipe, metadata, logo, stop);
}

} // namespace ferrow::ImageRenderer
