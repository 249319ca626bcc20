// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/PixelSize.h"

#include <QPointF>
#include <QRect>
#include <QSizeF>

namespace ferrow {

/// Where the framed picture lies in the view, and how large: the arithmetic of zooming and panning. Lengths are device
/// pixels of the view unless they are said to be output pixels; a zoom of 1 shows one output pixel on each device
/// pixel.
class PreviewViewport {
public:
    static constexpr double greatestZoom = 8;
    /// Unless the picture fits at less.
    static constexpr double leastZoom = 0.05;

    /// `margin` stays free on all sides at fit, and is how far a picture's edge may be pulled into the view.
    void setView(QSizeF size, double margin);
    /// None for an empty size. The same spot, as seen from the picture's center, stays in the middle of the view: a
    /// border that grows leaves the photo where it is.
    void setPicture(PixelSize outputSize);

    [[nodiscard]] bool hasPicture() const;
    [[nodiscard]] PixelSize picture() const { return picture_; }
    [[nodiscard]] bool isFit() const { return isFit_; }
    /// 0 without a picture or without room for one.
    [[nodiscard]] double zoom() const;

    void fit();
    /// What lies under `anchor` stays there, as far as the edges allow.
    void setZoom(double zoom, QPointF anchor);
    [[nodiscard]] QPointF center() const { return {view_.width() / 2, view_.height() / 2}; }
    /// The next of the usual steps above or below the present zoom.
    [[nodiscard]] double stepAbove() const;
    [[nodiscard]] double stepBelow() const;

    /// Whether there is more of the picture than the view shows.
    [[nodiscard]] bool canPan() const;
    /// The picture follows the pointer by `delta`.
    void panBy(QPointF delta);

    /// The whole picture, rounded to device pixels; most of it may lie outside the view.
    [[nodiscard]] QRect pictureRect() const;
    /// What the view shows of the picture, in whole output pixels, origin at the picture's top left.
    [[nodiscard]] QRect visibleRegion() const;

private:
    [[nodiscard]] double fitZoom() const;
    [[nodiscard]] QPointF clamped(QPointF offset) const;

    QSizeF view_;
    double margin_ = 0;
    PixelSize picture_;
    bool isFit_ = true;
    double zoom_ = 1;
    QPointF offset_; ///< Of the view's center from the picture's, in output pixels.
};

} // namespace ferrow
