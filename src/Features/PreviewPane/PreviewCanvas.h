// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/PreviewPane/PreviewPicture.h"
#include "Features/PreviewPane/PreviewViewport.h"

#include <QColor>
#include <QWidget>

#include <optional>

namespace ferrow {

/// The backdrop with the picture on it, and the mouse, touchpad and keys that zoom, pan and compare.
class PreviewCanvas : public QWidget {
    Q_OBJECT

public:
    explicit PreviewCanvas(QWidget* parent = nullptr);

    [[nodiscard]] PreviewPicture& picture() { return picture_; }
    [[nodiscard]] const PreviewViewport& viewport() const { return viewport_; }

    void setBackdrop(const QColor& backdrop);
    void fit();
    /// The middle of the view stays where it is.
    void setZoom(double zoom);
    void setComparing(bool isComparing);

signals:
    /// Zoom, or whether it is the one that fits.
    void zoomChanged();
    /// The photo so many places further down the list.
    void stepRequested(int places);
    void removeRequested();
    /// The photo is to be included, or left out, and the next to be shown.
    void cullRequested(bool included);
    /// Enter or Esc: back to the sheet of all photos.
    void sheetRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void followSize();
    /// Changes the viewport, then brings everything into line with it.
    template <class Change>
    void change(Change apply);
    void zoomTo(double zoom, QPointF position);
    [[nodiscard]] bool moveByKey(int key);
    void updateCursor();

    PreviewViewport viewport_;
    PreviewPicture picture_;
    QColor backdrop_;
    double scale_ = 1;               ///< Device pixels for a logical one.
    std::optional<QPointF> dragged_; ///< Where the pointer was last during a drag, in logical pixels.
};

} // namespace ferrow
