// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/PositionGrid.h"
#include "Features/Inspector/PositionScene.h"
#include "Widgets/AccessibleItems.h"

#include <QImage>
#include <QWidget>

namespace ferrow {

/// A picture of photo and border with a spot for each of the fifteen places. One tab stop; arrows choose at once.
class PositionPicker : public QWidget, public AccessibleItems {
    Q_OBJECT

public:
    /// `name` is what assistive technology calls the group: "Caption position".
    explicit PositionPicker(const QString& name, QWidget* parent = nullptr);

    /// Emits nothing.
    void setScene(const PositionScene& scene);
    [[nodiscard]] const PositionScene& scene() const { return scene_; }
    /// The photo in the picture; null shows a gray area.
    void setPhoto(const QImage& photo);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

    int itemCount() const override { return PositionGrid::spots; }
    AccessibleItem item(int index) const override;
    int focusedItem() const override;
    void pressItem(int index) override;

signals:
    /// By mouse or assistive technology: one choice. By keys: perhaps one of a run.
    void chosen(ferrow::CaptionPosition position);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    [[nodiscard]] PositionGrid::Picture picture() const;
    void choose(CaptionPosition position);
    void setHovered(int index);
    void paintPicture(QPainter& painter, const PositionGrid::Picture& picture) const;
    void paintSpot(QPainter& painter, QPointF center, int index) const;

    PositionScene scene_;
    QImage photo_;
    int hovered_ = -1;
};

} // namespace ferrow
