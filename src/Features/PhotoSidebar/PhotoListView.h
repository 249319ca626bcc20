// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/PhotoSidebar/PhotoRowDelegate.h"
#include "Widgets/AccessibleRows.h"

namespace ferrow {

/// The list of photos: arrows move, typing finds, Space ticks, Delete removes; the mouse ticks without selecting, with
/// Shift all rows from the last ticked one on.
class PhotoListView : public QListView, public AccessibleRows {
    Q_OBJECT

public:
    PhotoListView(PhotoListModel& model, ThumbnailCache& thumbnails, QWidget* parent = nullptr);

    /// While an export runs: photos can be looked through but not changed.
    void setLocked(bool locked);
    /// Selects a row and scrolls to it without telling rowSelected(); -1 for none.
    void showSelected(int row);
    /// Ticks, as Space does.
    void pressItem(int index) override;

signals:
    /// By the user: not when the model changes under the current row.
    void rowSelected(int row);
    /// The user is done looking: by a click or Enter, not by walking through.
    void rowChosen();
    void toggleRequested(int row);
    /// `from` is the row that was ticked last, else the current one; `to` is the pressed row. All rows between get the
    /// state that the pressed one gets.
    void rangeToggleRequested(int from, int to);
    void removeRequested(int row);
    /// The current photo is to be included, or left out, and the next to be shown.
    void cullRequested(bool included);
    void contextMenuRequestedAt(int row, const QPoint& globalPosition);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void toggle(int row);
    void toggleUpTo(int row);
    /// Whether the press was on a tick or a remove button, and has been acted on.
    bool pressPart(const QMouseEvent& event);

    PhotoRowDelegate* delegate_ = nullptr;
    bool locked_ = false;
    bool isFollowing_ = false; ///< The current row moves with the models.
    bool pressedPart_ = false;
    QPersistentModelIndex ticked_; ///< Where a range of ticks begins.
};

} // namespace ferrow
