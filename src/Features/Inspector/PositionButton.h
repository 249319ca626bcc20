// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"

#include <QPushButton>

namespace ferrow {

/// Shows a place as a little picture and in words, and asks for the popover that changes it.
class PositionButton : public QPushButton {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls it: "Caption position".
    explicit PositionButton(const QString& name, QWidget* parent = nullptr);
    void setPosition(CaptionPosition position);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintPicture(QPainter& painter, const QRectF& rect) const;

    QString name_;
    CaptionPosition position_ = CaptionPosition::borderBottomRight;
};

} // namespace ferrow
