// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollArea>

namespace ferrow {

/// Lays a bar of 6 over the right edge of what scrolls, so that nothing shifts when it comes.
void overlayScrollBar(QAbstractScrollArea* area);

/// Scrolls upright only, with its bar over the right inset of the page. Follows the focus of the keyboard.
class ScrollPane : public QScrollArea {
    Q_OBJECT

public:
    explicit ScrollPane(QWidget* parent = nullptr);
    ~ScrollPane() override;
    /// The page is as wide as the pane and as high as it asks to be.
    void setPage(QWidget* page);
    /// Scrolls as little as brings the whole of `part` into sight, in the pane that it lies in, if any.
    static void reveal(const QWidget* part);

    /// None: what stands beside it keeps its height.
    QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    void wheelEvent(QWheelEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showFocused(QWidget* focused);
};

} // namespace ferrow
