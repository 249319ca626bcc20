// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/Overlay.h"

class QHBoxLayout;
class QPushButton;
class QVBoxLayout;

namespace ferrow {

/// Where a popover of `size` goes, in window coordinates: 6 below the opener, else 6 above, clamped 8 inside the
/// window; centered in `pane` across where there is one, else at the opener's left edge.
[[nodiscard]] QRect popoverRect(const QRect& opener, const QSize& size, const QRect& pane, const QSize& window);

/// A card beside its opener for changing one thing while the rest stays in sight. Esc and a press outside close it and
/// keep what was chosen; the window's shortcuts go on working (undo). The opener wears the accent edge meanwhile.
class Popover : public Overlay {
    Q_OBJECT

public:
    /// Lives in the opener's window, so make it once the opener has one.
    Popover(QWidget* opener, const QString& title);

    /// The content, 20 from the edges, under the title.
    [[nodiscard]] QVBoxLayout* body() const { return body_; }
    /// At the end of the title's line.
    void setTitleButton(QPushButton* button);
    /// A popover over the inspector: as wide as `pane` less 24, at most 320, and centered in it. Without: 320.
    void setPane(QWidget* pane);

protected:
    QRect cardRect() override;
    void paintGround(QPainter& painter) const override;
    /// What was chosen counts already.
    bool handleEnter() override;
    void aboutToOpen() override;
    void aboutToClose() override;

private:
    QPointer<QWidget> opener_;
    QPointer<QWidget> pane_;
    QVBoxLayout* body_ = nullptr;
    QHBoxLayout* title_ = nullptr;
};

} // namespace ferrow
