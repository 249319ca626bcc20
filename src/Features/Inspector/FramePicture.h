// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FrameProportions.h"

#include <QImage>
#include <QWidget>

#include <optional>

namespace ferrow {

/// A side of a picture, in the order that sides are named and walked through.
enum class Side { top, right, bottom, left };

/// A little picture of a photo in its border, in true proportion. One of its sides can be marked.
class FramePicture : public QWidget {
    Q_OBJECT

public:
    explicit FramePicture(QWidget* parent = nullptr);

    void setFrame(const FrameProportions& frame);
    /// Absent where it has none, so that the sides stay clear.
    void setColor(const std::optional<RGBAColor>& color);
    /// Null shows a gray area.
    void setPhoto(const QImage& photo);
    void setMarkedSide(std::optional<Side> side);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintMark(QPainter& painter, const QRectF& canvas) const;

    FrameProportions frame_;
    std::optional<RGBAColor> color_;
    QImage photo_;
    std::optional<Side> marked_;
};

} // namespace ferrow
