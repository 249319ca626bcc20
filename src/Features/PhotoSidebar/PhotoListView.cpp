// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PhotoSidebar/PhotoListView.h"

#include "Widgets/FocusRing.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Theme.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <utility>

namespace ferrow {

PhotoListView::PhotoListView(PhotoListModel& model, ThumbnailCache& thumbnails, QWidget* parent)
    : QListView(parent), AccessibleRows(static_cast<QListView&>(*this)),
      delegate_(new PhotoRowDelegate(model, thumbnails, this))
{
    setObjectName(QStringLiteral("photoList"));
    setAccessibleName(QStringLiteral("Photos"));
    // Before the model's own connections: the row that becomes current when its photo goes is nobody's choice.
    connect(&model, &PhotoListModel::rowsAboutToBeRemoved, this, [this] { isFollowing_ = true; });
    setModel(&model);
    followModel();
    connect(&model, &PhotoListModel::rowsRemoved, this, [this] { isFollowing_ = false; });
    setItemDelegate(delegate_);
    setUniformItemSizes(true);
    setMouseTracking(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    overlayScrollBar(this);
    // The rows' own inset is as wide as the bar: a little more keeps it off the fill of the selected one.
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this,
            [this](int least, int most) { setViewportMargins(0, 0, most > least ? Space::iconEdge : 0, 0); });
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setFocusLook(this, FocusLook::own);
    viewport()->setAutoFillBackground(false);
    // Enter and a press of the mouse, on the row that is current already as well.
    connect(this, &QAbstractItemView::clicked, this, &PhotoListView::rowChosen);
    verticalScrollBar()->setSingleStep(Theme::current().scaled(20));
    connect(&Theme::current(), &Theme::changed, this, [this] {
        scheduleDelayedItemsLayout();
        viewport()->update();
    });
    connect(&thumbnails, &ThumbnailCache::ready, this, [this, &model](const FileUrl& photoID) {
        if (const int row = model.rowOf(photoID); row >= 0)
            update(model.index(row));
    });
}

void PhotoListView::setLocked(bool locked)
{
    locked_ = locked;
    delegate_->setLocked(locked);
    viewport()->update();
}

void PhotoListView::showSelected(int row)
{
    if (currentIndex().row() == row)
        return;
    const QScopedValueRollback following(isFollowing_, true);
    if (row < 0) {
        selectionModel()->clear();
        return;
    }
    setCurrentIndex(model()->index(row, 0));
    scrollTo(currentIndex());
}

void PhotoListView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QListView::currentChanged(current, previous);
    if (!isFollowing_ && current.isValid())
        emit rowSelected(current.row());
}

void PhotoListView::pressItem(int index)
{
    if (!locked_)
        toggle(index);
}

void PhotoListView::keyPressEvent(QKeyEvent* event)
{
    const int row = currentIndex().row();
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (plain && row >= 0 && !locked_) {
        if (event->key() == Qt::Key_Space)
            return toggle(row);
        if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace)
            return emit removeRequested(row);
        if (event->key() == Qt::Key_Minus || event->key() == Qt::Key_Plus)
            return emit cullRequested(event->key() == Qt::Key_Plus);
    }
    // On most keyboards plus is above another sign.
    if (event->key() == Qt::Key_Plus && event->modifiers() == Qt::ShiftModifier && row >= 0 && !locked_)
        return emit cullRequested(true);
    if (plain && row >= 0 && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        return emit rowChosen();
    // As over the preview.
    if (plain && (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right)) {
        const QModelIndex next = model()->index(event->key() == Qt::Key_Left ? row - 1 : row + 1, 0);
        if (next.isValid())
            setCurrentIndex(next);
        return;
    }
    QListView::keyPressEvent(event);
}

void PhotoListView::showEvent(QShowEvent* event)
{
    QListView::showEvent(event);
    // Photos may have been stepped through while the list was away.
    scrollTo(currentIndex());
}

void PhotoListView::toggle(int row)
{
    ticked_ = model()->index(row, 0);
    emit toggleRequested(row);
}

void PhotoListView::toggleUpTo(int row)
{
    const QModelIndex from = ticked_.isValid() ? QModelIndex(ticked_) : currentIndex();
    ticked_ = model()->index(row, 0);
    emit rangeToggleRequested(from.isValid() ? from.row() : row, row);
}

bool PhotoListView::pressPart(const QMouseEvent& event)
{
    const QModelIndex index = indexAt(event.pos());
    if (!index.isValid() || event.button() != Qt::LeftButton || locked_)
        return false;
    const QRect row = visualRect(index);
    if (PhotoRowDelegate::checkTarget(row).contains(event.pos())) {
        event.modifiers().testFlag(Qt::ShiftModifier) ? toggleUpTo(index.row()) : toggle(index.row());
        return true;
    }
    if (PhotoRowDelegate::removeButton(row).contains(event.pos())) {
        emit removeRequested(index.row());
        return true;
    }
    return false;
}

void PhotoListView::mousePressEvent(QMouseEvent* event)
{
    pressedPart_ = pressPart(*event);
    if (!pressedPart_)
        QListView::mousePressEvent(event);
}

void PhotoListView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!std::exchange(pressedPart_, false))
        QListView::mouseReleaseEvent(event);
}

void PhotoListView::mouseDoubleClickEvent(QMouseEvent* event)
{
    mousePressEvent(event); // Two quick ticks are two ticks.
}

void PhotoListView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = byKey ? currentIndex() : indexAt(event->pos());
    if (!index.isValid())
        return;
    const QPoint place = byKey ? viewport()->mapToGlobal(visualRect(index).center()) : event->globalPos();
    emit contextMenuRequestedAt(index.row(), place);
}

} // namespace ferrow
