// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PreviewViewport.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ferrow {

namespace {

constexpr std::array zoomSteps{0.05, 0.1, 0.15, 0.25, 1.0 / 3, 0.5, 2.0 / 3, 1.0, 1.5, 2.0, 3.0, 4.0, 6.0, 8.0};
/// Zooms closer than this are one step: 33 % as typed and a third.
constexpr double sameStep = 0.005;

double clampedOffset(double offset, double pictureLength, double viewLength, double margin, double zoom)
{
    if (pictureLength * zoom <= viewLength)
        return 0;
    const double limit = ((pictureLength * zoom - viewLength) / 2 + margin) / zoom;
    return std::clamp(offset, -limit, limit);
}

} // namespace

void PreviewViewport::setView(QSizeF size, double margin)
{
    view_ = size;
    margin_ = margin;
    offset_ = clamped(offset_);
}

void PreviewViewport::setPicture(PixelSize outputSize)
{
    picture_ = outputSize;
    offset_ = clamped(offset_);
}

bool PreviewViewport::hasPicture() const
{
    return picture_.width > 0 && picture_.height > 0 && view_.width() > 0 && view_.height() > 0;
}

double PreviewViewport::fitZoom() const
{
    if (!hasPicture())
        return 0;
    // Tiny views keep a picture of some pixels rather than one turned inside out.
    const double width = std::max(view_.width() - 2 * margin_, 8.0);
    const double height = std::max(view_.height() - 2 * margin_, 8.0);
    return std::min({width / double(picture_.width), height / double(picture_.height), greatestZoom});
}

double PreviewViewport::zoom() const
{
    if (!hasPicture())
        return 0;
    return isFit_ ? fitZoom() : zoom_;
}

void PreviewViewport::fit()
{
    isFit_ = true;
    offset_ = {};
}

void PreviewViewport::setZoom(double zoom, QPointF anchor)
{
    if (!hasPicture() || !(zoom > 0))
        return;
    const QPointF fromCenter = anchor - center();
    const QPointF spot = offset_ + fromCenter / this->zoom();
    zoom_ = std::clamp(zoom, std::min(leastZoom, fitZoom()), greatestZoom);
    isFit_ = false;
    offset_ = clamped(spot - fromCenter / zoom_);
}

double PreviewViewport::stepAbove() const
{
    const double least = zoom() * (1 + sameStep);
    const auto step = std::upper_bound(zoomSteps.begin(), zoomSteps.end(), least);
    return step == zoomSteps.end() ? greatestZoom : *step;
}

double PreviewViewport::stepBelow() const
{
    const double greatest = zoom() * (1 - sameStep);
    const auto step = std::lower_bound(zoomSteps.begin(), zoomSteps.end(), greatest);
    return step == zoomSteps.begin() ? std::min(leastZoom, fitZoom()) : *std::prev(step);
}

bool PreviewViewport::canPan() const
{
    const QRect rect = pictureRect();
    return !isFit_ && (rect.width() > view_.width() || rect.height() > view_.height());
}

void PreviewViewport::panBy(QPointF delta)
{
    if (hasPicture() && !isFit_)
        offset_ = clamped(offset_ - delta / zoom_);
}

QPointF PreviewViewport::clamped(QPointF offset) const
{
    if (!hasPicture() || isFit_)
        return {};
    return {clampedOffset(offset.x(), double(picture_.width), view_.width(), margin_, zoom_),
            clampedOffset(offset.y(), double(picture_.height), view_.height(), margin_, zoom_)};
}

QRect PreviewViewport::pictureRect() const
{
    if (!hasPicture())
        return {};
    const double scale = zoom();
    const QSize size(std::max(1, int(std::lround(double(picture_.width) * scale))),
                     std::max(1, int(std::lround(double(picture_.height) * scale))));
    const QPointF corner = center() - offset_ * scale - QPointF(size.width(), size.height()) / 2;
    return {QPoint(int(std::lround(corner.x())), int(std::lround(corner.y()))), size};
}

QRect PreviewViewport::visibleRegion() const
{
    if (!hasPicture())
        return {};
    const QRect picture = pictureRect();
    const double scale = zoom();
    const int left = int(std::floor(-picture.left() / scale));
    const int top = int(std::floor(-picture.top() / scale));
    const int right = int(std::ceil((view_.width() - picture.left()) / scale));
    const int bottom = int(std::ceil((view_.height() - picture.top()) / scale));
    return QRect(QPoint(left, top), QPoint(right - 1, bottom - 1))
        .intersected(QRect(0, 0, int(picture_.width), int(picture_.height)));
}

} // namespace ferrow
