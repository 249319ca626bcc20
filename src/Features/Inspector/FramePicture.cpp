// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/FramePicture.h"

#include "Features/Inspector/CheckerBoard.h"
#include "Widgets/ColorWell.h"
#include "Widgets/Theme.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

/// Beyond it a side is all there is to see.
constexpr double longestSide = 1e6;

double shownLength(double length)
{
    return std::isfinite(length) ? std::clamp(length, 0.0, longestSide) : 0;
}

} // namespace

FramePicture::FramePicture(QWidget* parent) : QWidget(parent) {}

void FramePicture::setFrame(const FrameProportions& frame)
{
    frame_ = frame;
    update();
}

void FramePicture::setColor(const std::optional<RGBAColor>& color)
{
    color_ = color;
    update();
}

void FramePicture::setPhoto(const QImage& photo)
{
    photo_ = photo;
    update();
}

void FramePicture::setMarkedSide(std::optional<Side> side)
{
    marked_ = side;
    update();
}

void FramePicture::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    const double ratio = devicePixelRatioF();
    const auto snapped = [ratio](double at) { return std::round(at * ratio) / ratio; };

    const double left = shownLength(frame_.around.left);
    const double top = shownLength(frame_.around.top);
    const QSizeF photo(double(frame_.photo.width), double(frame_.photo.height));
    const QSizeF framed(left + photo.width() + shownLength(frame_.around.right),
                        top + photo.height() + shownLength(frame_.around.bottom));
    const QSizeF size = framed.scaled(QSizeF(this->size()), Qt::KeepAspectRatio);
    const double scale = size.width() / framed.width();
    const QPointF corner(snapped((width() - size.width()) / 2), snapped((height() - size.height()) / 2));
    const QRectF canvas(corner, QSizeF(snapped(size.width()), snapped(size.height())));
    const QPointF photoCorner(snapped(corner.x() + left * scale), snapped(corner.y() + top * scale));
    const QPointF photoEnd(snapped(corner.x() + (left + photo.width()) * scale),
                           snapped(corner.y() + (top + photo.height()) * scale));
    const QRectF photoRect = QRectF(photoCorner, photoEnd) & canvas;

    if (color_ && color_->alpha < 1)
        paintCheckerBoard(painter, canvas);
    painter.fillRect(canvas, color_ ? ColorText::toQColor(*color_) : themeColor(&ThemeColors::surface));
    if (photo_.isNull())
        painter.fillRect(photoRect, Theme::backdrops().lightGray);
    else
        painter.drawImage(photoRect, photo_);
    const double line = 1;
    painter.setPen(QPen(themeColor(&ThemeColors::border), line));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(canvas.adjusted(line / 2, line / 2, -line / 2, -line / 2));
    paintMark(painter, canvas);
}

void FramePicture::paintMark(QPainter& painter, const QRectF& canvas) const
{
    if (!marked_)
        return;
    QRectF mark = canvas;
    switch (*marked_) {
    case Side::top:
        mark.setHeight(Measure::focusWidth);
        break;
    case Side::right:
        mark.setLeft(mark.right() - Measure::focusWidth);
        break;
    case Side::bottom:
        mark.setTop(mark.bottom() - Measure::focusWidth);
        break;
    case Side::left:
        mark.setWidth(Measure::focusWidth);
        break;
    }
    painter.fillRect(mark, themeColor(&ThemeColors::accent));
}

} // namespace ferrow
