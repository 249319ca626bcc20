// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PreviewPicture.h"

#include "Imaging/ExportLayout.h"
#include "Imaging/ImageRenderer.h"
#include "Imaging/RenderLayout.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/Cancellation.h"
#include "Session/ScreenImage.h"
#include "Widgets/ColorWell.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

/// Least contrast of border and backdrop that needs no line between them.
constexpr double visibleContrast = 1.2;
const QColor hairlineColor(128, 128, 128, 89); // 35 %.

/// A picture is brought to its size on screen unless that is this many times the view's: beyond it, most of the work
/// would never be seen.
constexpr double worthScaling = 1.5;
/// From this many device pixels for an output pixel on, pixels are shown as squares.
constexpr double squarePixels = 2;

/// Relative luminance after WCAG 2.
double luminance(double red, double green, double blue)
{
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
}

std::optional<RenderLayout> layoutOf(const ImportedPhoto& photo, const RenderRecipe& recipe, const OutputSize& size)
{
    try {
        return largestLayout(photo.pixelSize, recipe, size).layout;
    } catch (const ImagePipelineError&) {
        return {};
    }
}

QRectF fromTop(const QRectF& rect, const PixelSize& canvas)
{
    return {rect.x(), double(canvas.height) - rect.y() - rect.height(), rect.width(), rect.height()};
}

QSize sizeOf(const Bitmap& picture)
{
    return {int(picture.size().width), int(picture.size().height)};
}

} // namespace

bool needsHairline(const RGBAColor& border, const QColor& backdrop)
{
    const QColor color = ColorText::toQColor(border);
    const double alpha = color.alphaF();
    const auto over = [alpha](double front, double back) { return front * alpha + back * (1 - alpha); };
    const double frame = luminance(over(color.redF(), backdrop.redF()), over(color.greenF(), backdrop.greenF()),
                                   over(color.blueF(), backdrop.blueF()));
    const double ground = luminance(backdrop.redF(), backdrop.greenF(), backdrop.blueF());
    return (std::max(frame, ground) + 0.05) / (std::min(frame, ground) + 0.05) < visibleContrast;
}

std::optional<PixelSize> framedSize(const ImportedPhoto& photo, const RenderRecipe& recipe, const OutputSize& size)
{
    const std::optional<RenderLayout> layout = layoutOf(photo, recipe, size);
    return layout ? std::optional(layout->canvasSize) : std::nullopt;
}

PreviewPicture::PreviewPicture(QObject* parent) : QObject(parent)
{
    connect(&regions_, &RegionLoader::loaded, this, &PreviewPicture::changed);
}

void PreviewPicture::clear()
{
    scaling_.stop();
    bareScaling_.stop();
    lettering_.stop();
    regions_.setSubject({});
    photo_.reset();
    newest_.reset();
    shown_.reset();
    askedScaling_ = {};
    askedBareScaling_ = {};
    pixels_ = {};
    bare_ = {};
    barePixels_ = {};
    thumbnail_ = {};
    caption_ = {};
    captionSize_ = {};
    emit outputSizeChanged();
    emit changed();
}

void PreviewPicture::showStandIn(const ImportedPhoto& photo, const RenderRecipe& recipe, const OutputSize& size,
                                 const QImage& thumbnail)
{
    const std::optional<RenderLayout> layout = layoutOf(photo, recipe, size);
    clear();
    if (!layout)
        return;
    photo_ = photo;
    photo_->previewSource = {};
    recipe_ = recipe;
    standInSize_ = layout->canvasSize;
    standInPhoto_ = fromTop(layout->drawRect, layout->canvasSize);
    thumbnail_ = paintableImage(thumbnail);
    emit outputSizeChanged();
    emit changed();
}

void PreviewPicture::showRendered(const PreviewResult& result)
{
    if (!photo_ || photo_->id() != result.photoID || result.picture.isNull())
        return;
    newest_ = std::make_shared<PreviewResult>(result);
    scaleNewest();
}

void PreviewPicture::setCorrections(const MetadataCorrections& corrections)
{
    if (!photo_ || photo_->corrections == corrections)
        return;
    photo_->corrections = corrections;
    captionSize_ = {};
    prepareCaption();
}

void PreviewPicture::setBare(const Bitmap& picture)
{
    bareScaling_.stop();
    askedBareScaling_ = {};
    bare_ = picture;
    barePixels_ = {};
    prepareBare();
}

void PreviewPicture::setComparing(bool isComparing)
{
    if (isComparing_ == isComparing)
        return;
    isComparing_ = isComparing;
    prepareBare();
    wantRegion();
    emit changed();
}

PixelSize PreviewPicture::outputSize() const
{
    if (!photo_)
        return {};
    return shown_ ? shown_->outputSize : standInSize_;
}

void PreviewPicture::setView(const PreviewViewport& view)
{
    view_ = view;
    scaleNewest();
    prepareBare();
    prepareCaption();
    wantRegion();
}

QRect PreviewPicture::onScreen(const QRectF& outputRect) const
{
    const QRect picture = view_.pictureRect();
    const PixelSize output = view_.picture();
    const double x = picture.width() / double(output.width);
    const double y = picture.height() / double(output.height);
    const QPoint topLeft(picture.left() + int(std::lround(outputRect.left() * x)),
                         picture.top() + int(std::lround(outputRect.top() * y)));
    const QPoint end(picture.left() + int(std::lround(outputRect.right() * x)),
                     picture.top() + int(std::lround(outputRect.bottom() * y)));
    return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

QRect PreviewPicture::photoOnScreen() const
{
    if (!shown_)
        return onScreen(standInPhoto_);
    const double scale = double(shown_->outputSize.width) / double(shown_->picture.size().width);
    const QRectF& rect = shown_->photoRect;
    return onScreen({rect.x() * scale, rect.y() * scale, rect.width() * scale, rect.height() * scale});
}

QSize PreviewPicture::paintedSize(QSize onScreen, QSize own) const
{
    const QPointF middle = view_.center();
    const double viewPixels = 4 * middle.x() * middle.y();
    const bool isWorthIt = double(onScreen.width()) * onScreen.height() <= worthScaling * viewPixels;
    return isWorthIt && !showsSquares() && !onScreen.isEmpty() ? onScreen : own;
}

bool PreviewPicture::showsSquares() const
{
    return !view_.isFit() && view_.zoom() >= squarePixels;
}

void PreviewPicture::scaleNewest()
{
    if (!newest_ || !view_.hasPicture())
        return;
    PreviewViewport view = view_;
    view.setPicture(newest_->outputSize);
    const Scaling scaling{newest_, paintedSize(view.pictureRect().size(), sizeOf(newest_->picture))};
    if (scaling == askedScaling_)
        return;
    askedScaling_ = scaling;
    scaling_.run([this, scaling](const std::stop_token&) -> NewestTask::Deliver {
        return [this, scaling, pixels = paintableImage(scaling.result->picture, scaling.size)] {
            adopt(scaling.result, pixels);
        };
    });
}

void PreviewPicture::adopt(const std::shared_ptr<const PreviewResult>& result, const QImage& pixels)
{
    const PixelSize before = outputSize();
    shown_ = result;
    pixels_ = pixels;
    regions_.setSubject(RegionSubject{*photo_, result->recipe, result->outputSize});
    if (outputSize() != before)
        emit outputSizeChanged();
    else
        wantRegion();
    emit changed();
}

void PreviewPicture::prepareBare()
{
    if (!isComparing_ || bare_.isNull() || !isShown())
        return;
    const Scaling scaling{nullptr, paintedSize(photoOnScreen().size(), sizeOf(bare_))};
    if (scaling == askedBareScaling_)
        return;
    askedBareScaling_ = scaling;
    bareScaling_.run([this, bare = bare_, size = scaling.size](const std::stop_token&) -> NewestTask::Deliver {
        return [this, pixels = paintableImage(bare, size)] {
            barePixels_ = pixels;
            emit changed();
        };
    });
}

std::vector<PreviewPicture::Lettering> PreviewPicture::lettering(const ImportedPhoto& photo, const RenderRecipe& recipe,
                                                                 double scale, const std::stop_token& stop)
try {
    const RenderLayout layout = RenderLayout::calculate(photo.pixelSize, recipe, scale);
    std::vector<Lettering> parts;
    for (const Engine::Overlay& overlay :
         ImageRenderer::composition(layout, recipe, photo.captionMetadata(), {}, scale, stop).overlays)
        parts.push_back({paintableImage(overlay.picture), QPoint(int(overlay.x), int(overlay.y))});
    return parts;
} catch (const Canceled&) {
    return {};
}

/// Set as large as it is seen: in a render of the thumbnail nobody could read it.
void PreviewPicture::prepareCaption()
{
    const QSize size = view_.pictureRect().size();
    if (!isStandIn() || !recipe_.showsCaption() || !view_.hasPicture() || size == captionSize_)
        return;
    captionSize_ = size;
    caption_ = {};
    if (paintedSize(size, {}).isEmpty())
        return; // Zoomed in so far that most of it would not be seen.
    const double scale = double(size.width()) / double(standInSize_.width);
    lettering_.run([this, photo = *photo_, recipe = recipe_, scale](const std::stop_token& stop) {
        return [this, parts = lettering(photo, recipe, scale, stop)] {
            caption_ = parts;
            emit changed();
        };
    });
}

void PreviewPicture::wantRegion()
{
    if (!shown_ || isComparing_ || !view_.hasPicture())
        return;
    const double previewScale = double(shown_->picture.size().width) / double(shown_->outputSize.width);
    // A few percent of enlargement are not worth a decode at full size.
    if (previewScale < 1 && view_.zoom() > previewScale * 1.05)
        regions_.want(view_.visibleRegion(), view_.zoom());
    else
        regions_.release();
}

void PreviewPicture::paint(QPainter& painter, const QColor& backdrop) const
{
    if (!isShown() || !view_.hasPicture())
        return;
    if (isComparing_) {
        paintCompared(painter);
        return;
    }
    if (shown_)
        paintRendered(painter);
    else
        paintStandIn(painter);
    const Border& border = recipe().border;
    if (!border.blurredBackground && needsHairline(border.color, backdrop)) {
        painter.setPen(QPen(hairlineColor, 1));
        painter.setBrush(Qt::NoBrush);
        const QRect rect = view_.pictureRect();
        painter.drawRect(rect.adjusted(-1, -1, 0, 0));
    }
}

void PreviewPicture::paintStandIn(QPainter& painter) const
{
    const auto& blurred = recipe_.border.blurredBackground;
    if (blurred && !thumbnail_.isNull())
        paintImage(painter, view_.pictureRect(), blurredStandIn(thumbnail_, *blurred, view_.pictureRect().size()));
    else
        painter.fillRect(view_.pictureRect(), ColorText::toQColor(recipe_.border.color));
    paintBare(painter);
    for (const Lettering& part : caption_)
        painter.drawImage(view_.pictureRect().topLeft() + part.place, part.image);
}

void PreviewPicture::paintCompared(QPainter& painter) const
{
    if (isStandIn() || !barePixels_.isNull()) {
        paintBare(painter);
        return;
    }
    // Until the bare photo has been brought to its size, the framed one loses its frame at least.
    painter.setClipRect(photoOnScreen(), Qt::IntersectClip);
    paintRendered(painter);
}

void PreviewPicture::paintBare(QPainter& painter) const
{
    const QImage& image = shown_ ? barePixels_ : thumbnail_;
    if (image.isNull())
        painter.fillRect(photoOnScreen(), QColor(128, 128, 128));
    else
        paintImage(painter, photoOnScreen(), image);
}

void PreviewPicture::paintRendered(QPainter& painter) const
{
    const std::optional<LoadedRegion>& region = regions_.region();
    const bool isCovered = region && region->region.contains(view_.visibleRegion());
    if (!isCovered)
        paintImage(painter, view_.pictureRect(), pixels_);
    // Translucent pixels over their own preview would come out denser.
    if (region && (isCovered || !region->image.hasAlphaChannel()))
        paintImage(painter, onScreen(QRectF(region->region)), region->image);
}

void PreviewPicture::paintImage(QPainter& painter, const QRect& target, const QImage& image) const
{
    if (image.size() == target.size()) {
        painter.drawImage(target.topLeft(), image);
        return;
    }
    // Only what is in view: the whole may be many thousand pixels long.
    const QPointF middle = view_.center();
    const QRectF view(0, 0, 2 * middle.x(), 2 * middle.y());
    const QRectF part = QRectF(target).intersected(view);
    const double x = image.width() / double(target.width());
    const double y = image.height() / double(target.height());
    const QRectF source((part.x() - target.x()) * x, (part.y() - target.y()) * y, part.width() * x, part.height() * y);
    const bool areTruePixels = x * view_.zoom() > 0.99;
    painter.setRenderHint(QPainter::SmoothPixmapTransform, !(showsSquares() && areTruePixels));
    painter.drawImage(part, image, source);
}

} // namespace ferrow
