// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/CaptionChips.h"
#include "Widgets/Icons.h"

#include <QPushButton>

#include <optional>

namespace ferrow {

/// Adds a chip when pressed, and lets itself be dragged to the place where the chip shall come.
class PaletteButton : public QPushButton {
    Q_OBJECT

public:
    PaletteButton(CaptionChips::Kind kind, IconName iconName, const QString& text, QWidget* parent = nullptr);

    [[nodiscard]] CaptionChips::Kind kind() const { return kind_; }
    /// Narrow rows do without icons.
    void setShowsIcon(bool shows);
    [[nodiscard]] int widthWithIcon() const;
    QSize minimumSizeHint() const override;

signals:
    void dragStarted(const QPoint& globalPointer);
    void dragMoved(const QPoint& globalPointer);
    void dropped();
    void dragGivenUp();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void giveUp();

    CaptionChips::Kind kind_;
    QIcon icon_;
    std::optional<QPoint> pressed_;
    bool isDragging_ = false;
};

} // namespace ferrow
