// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/ContactSheet/CellPainter.h"
#include "Features/ContactSheet/SheetLayout.h"
#include "Session/EditHistory.h"
#include "Widgets/AccessibleItems.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>

#include <optional>

namespace ferrow {

/// The framed photos as cells of a grid, painted for what is in sight. The current cell is the session's selected
/// photo; Shift stretches a range from it for ticking and removing. Typing finds a name, Ctrl and the wheel change the
/// size.
class SheetGrid : public QAbstractScrollArea, public AccessibleItems {
    Q_OBJECT

public:
    SheetGrid(PhotoListModel& model, CellPictures& pictures, PhotoSession& session, EditHistory& history,
              ExportSession& exportSession, QWidget* parent = nullptr);

    void setBackdrop(const QColor& backdrop);
    /// The width that a tile has at least, in logical pixels; whole columns fill the sheet.
    [[nodiscard]] int tileWidth() const { return tileWidth_; }
    void setTileWidth(int width);
    /// One column fewer, so that the cells grow, or one more.
    void grow();
    void shrink();

    int itemCount() const override;
    AccessibleItem item(int index) const override;
    int focusedItem() const override { return current(); }
    /// Ticks, as Space does.
    void pressItem(int index) override;
    QAccessible::Role itemsRole() const override { return QAccessible::List; }
    int itemAt(const QPoint& point) const override;

signals:
    void tileWidthChanged(int width);
    /// Enter or a double click on the current cell.
    void openRequested();
    /// The current photo is to be included, or left out, and the next to be shown.
    void cullRequested(bool included);
    void contextMenuRequestedAt(const ferrow::FileUrl& photoID, const QPoint& globalPosition);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    void connectModels();
    [[nodiscard]] bool isLocked() const { return exportSession_.isBusy(); }
    /// The row of the selected photo, or -1.
    [[nodiscard]] int current() const;
    /// The first and the last row of what Shift has stretched, or of the current cell alone.
    [[nodiscard]] std::pair<int, int> range() const;
    [[nodiscard]] bool isInRange(int row) const;
    [[nodiscard]] std::vector<FileUrl> rangePhotos() const;
    [[nodiscard]] QRect cellInView(int row) const;
    [[nodiscard]] int rowAt(const QPoint& inViewport) const;

    void followModel();
    void followSelection();
    void layOut();
    void renewSight();
    void reveal(int row);
    void repaintCell(int row);
    void hover(const QPoint& inViewport);

    [[nodiscard]] std::optional<int> target(int key) const;
    void moveTo(int row, bool stretches);
    void toggleRange();
    void toggleUpTo(int row);
    void removeRange();
    [[nodiscard]] bool find(const QString& typed);
    /// The user is in the middle of a name.
    [[nodiscard]] bool isTyping() const;

    PhotoListModel& model_;
    CellPictures& pictures_;
    PhotoSession& session_;
    EditHistory& history_;
    ExportSession& exportSession_;
    CellPainter painter_;
    SheetLayout layout_;
    int tileWidth_ = 180;
    std::optional<FileUrl> anchor_; ///< Where a range begins; none for the current cell alone.
    bool isMoving_ = false;         ///< The selection moves by a key or press here.
    int hovered_ = -1;
    bool isOverBox_ = false;
    int wheelRest_ = 0;
    QString typed_;
    QElapsedTimer sinceTyped_;
};

} // namespace ferrow
