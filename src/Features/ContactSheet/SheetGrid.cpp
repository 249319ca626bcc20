// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ContactSheet/SheetGrid.h"

#include "Session/WindowTexts.h"
#include "Widgets/FocusRing.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Theme.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

/// A notch of the wheel, in eighths of a degree.
constexpr int notch = 120;

} // namespace

SheetGrid::SheetGrid(PhotoListModel& model, CellPictures& pictures, PhotoSession& session, EditHistory& history,
                     ExportSession& exportSession, QWidget* parent)
    : QAbstractScrollArea(parent), model_(model), pictures_(pictures), session_(session), history_(history),
      exportSession_(exportSession), painter_(model, session, exportSession, pictures)
{
    setObjectName(QStringLiteral("contactSheet"));
    setAccessibleName(QStringLiteral("Contact Sheet"));
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setFocusLook(this, FocusLook::own);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    overlayScrollBar(this);
    viewport()->setMouseTracking(true);
    viewport()->setAutoFillBackground(false);
    connectModels();
}

void SheetGrid::connectModels()
{
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(&model_, signal, this, &SheetGrid::followModel);
    connect(&model_, &QAbstractItemModel::modelReset, this, &SheetGrid::followModel);
    connect(&model_, &QAbstractItemModel::dataChanged, this, [this] {
        viewport()->update();
        notifyItemsChanged(this);
    });
    connect(&session_, &PhotoSession::selectedPhotoIDChanged, this, &SheetGrid::followSelection);
    for (const auto signal : {&PhotoSession::batchRecipeChanged, &PhotoSession::correctionsChanged})
        connect(&session_, signal, viewport(), qOverload<>(&QWidget::update));
    connect(&exportSession_, &ExportSession::settingsChanged, viewport(), qOverload<>(&QWidget::update));
    connect(&exportSession_, &ExportSession::isPlanningChanged, viewport(), qOverload<>(&QWidget::update));
    connect(&pictures_, &CellPictures::changed, this,
            [this](const FileUrl& photoID) { repaintCell(model_.rowOf(photoID)); });
    connect(&Theme::current(), &Theme::changed, this, &SheetGrid::layOut);
}

void SheetGrid::setBackdrop(const QColor& backdrop)
{
    painter_.setBackdrop(backdrop);
    viewport()->update();
}

void SheetGrid::setTileWidth(int width)
{
    width = std::clamp(width, SheetLayout::leastTile, SheetLayout::greatestTile);
    if (std::exchange(tileWidth_, width) == width)
        return;
    layOut();
    emit tileWidthChanged(width);
}

void SheetGrid::grow()
{
    setTileWidth(std::max(layout_.tileForColumns(-1), tileWidth_));
}

void SheetGrid::shrink()
{
    setTileWidth(std::min(layout_.tileForColumns(1), tileWidth_));
}

int SheetGrid::current() const
{
    return model_.rowOf(session_.selectedPhotoID());
}

std::pair<int, int> SheetGrid::range() const
{
    const int here = current();
    const int from = anchor_ && here >= 0 ? model_.rowOf(anchor_) : -1;
    return from < 0 ? std::pair(here, here) : std::pair(std::min(from, here), std::max(from, here));
}

bool SheetGrid::isInRange(int row) const
{
    const auto [first, last] = range();
    return first >= 0 && row >= first && row <= last;
}

std::vector<FileUrl> SheetGrid::rangePhotos() const
{
    std::vector<FileUrl> photos;
    const auto [first, last] = range();
    for (int row = std::max(first, 0); row <= last; ++row)
        photos.push_back(model_.photoID(row));
    return photos;
}

QRect SheetGrid::cellInView(int row) const
{
    return layout_.cell(row).translated(0, -verticalScrollBar()->value());
}

int SheetGrid::rowAt(const QPoint& inViewport) const
{
    return layout_.cellAt(inViewport + QPoint(0, verticalScrollBar()->value()));
}

void SheetGrid::followModel()
{
    hovered_ = -1;
    layOut();
    notifyItemsReplaced(this);
}

void SheetGrid::followSelection()
{
    if (!isMoving_ || model_.rowOf(anchor_) < 0)
        anchor_.reset();
    if (isVisible())
        reveal(current());
    viewport()->update();
    notifyItemsChanged(this);
    notifyItemFocused(this);
}

/// Keeps in sight what is in sight: the current cell, else the first one.
void SheetGrid::layOut()
{
    const int height = viewport()->height();
    QScrollBar* bar = verticalScrollBar();
    const int row = current();
    const bool isCurrentSeen =
        row >= 0 && row < layout_.rows() * layout_.columns() && cellInView(row).intersects(viewport()->rect());
    const int kept = isCurrentSeen ? row : layout_.cellsBetween(bar->value(), bar->value() + height).first;
    const int offset = layout_.cell(kept).top() - bar->value();
    layout_ = SheetLayout(viewport()->width(), tileWidth_, CellPainter::textHeight(), model_.rowCount());
    bar->setPageStep(height);
    bar->setSingleStep(layout_.rowPitch() / 3);
    bar->setRange(0, std::max(layout_.height() - height, 0));
    bar->setValue(kept < model_.rowCount() ? layout_.cell(kept).top() - offset : bar->maximum());
    viewport()->update();
    renewSight();
}

/// Asks for the pictures of the cells in sight, those of the first row first.
void SheetGrid::renewSight()
{
    if (!isVisible()) {
        pictures_.setInSight({}, {});
        return;
    }
    const int top = verticalScrollBar()->value();
    const auto [first, end] = layout_.cellsBetween(top, top + viewport()->height());
    std::vector<FileUrl> seen;
    for (int row = first; row < std::min(end, model_.rowCount()); ++row)
        seen.push_back(model_.photoID(row));
    const QSize room = SheetLayout::pictureRoom(QRect(QPoint(), layout_.tileSize())).size();
    const double scale = devicePixelRatioF();
    pictures_.setInSight(std::move(seen),
                         QSize(qRound(room.width() * scale), qRound(room.height() * scale)).expandedTo({1, 1}));
}

void SheetGrid::reveal(int row)
{
    if (row < 0)
        return;
    const QRect cell = cellInView(row);
    QScrollBar* bar = verticalScrollBar();
    if (cell.top() < 0)
        bar->setValue(bar->value() + cell.top() - Space::iconEdge);
    else if (cell.bottom() >= viewport()->height())
        bar->setValue(bar->value() + cell.bottom() - viewport()->height() + 1 + Space::iconEdge);
}

void SheetGrid::repaintCell(int row)
{
    if (row >= 0)
        viewport()->update(cellInView(row));
}

void SheetGrid::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    const int top = verticalScrollBar()->value();
    const auto [first, end] = layout_.cellsBetween(top + event->rect().top(), top + event->rect().bottom() + 1);
    const bool isPressed = QGuiApplication::mouseButtons().testFlag(Qt::LeftButton);
    for (int row = first; row < std::min(end, model_.rowCount()); ++row) {
        const CellPainter::State state{
            .isSelected = isInRange(row),
            .hasFocusRing = row == current() && hasFocus() && FocusRing::isKeyboardFocus(),
            .isHovered = row == hovered_,
            .isOverBox = row == hovered_ && isOverBox_,
            .isBoxPressed = row == hovered_ && isOverBox_ && isPressed,
            .isLocked = isLocked(),
        };
        painter_.paint(painter, cellInView(row), row, state, *this);
    }
}

void SheetGrid::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    layOut();
}

void SheetGrid::showEvent(QShowEvent* event)
{
    QAbstractScrollArea::showEvent(event);
    layOut();
    reveal(current());
}

void SheetGrid::hideEvent(QHideEvent* event)
{
    QAbstractScrollArea::hideEvent(event);
    pictures_.setInSight({}, {});
}

void SheetGrid::scrollContentsBy(int dx, int dy)
{
    viewport()->scroll(dx, dy);
    renewSight();
}

std::optional<int> SheetGrid::target(int key) const
{
    const int row = std::max(current(), 0);
    const int last = model_.rowCount() - 1;
    const int columns = layout_.columns();
    const int page = std::max(viewport()->height() / layout_.rowPitch(), 1) * columns;
    const auto within = [&](int wanted) { return wanted < 0 || wanted > last ? row : wanted; };
    // By rows the column stays, but at the ends of the list.
    const auto below = [&](int step) {
        if (row + step <= last)
            return row + step;
        return row / columns == last / columns ? row : last;
    };
    const auto above = [&](int step) { return row - step >= 0 ? row - step : row % columns; };
    switch (key) {
    case Qt::Key_Left:
        return within(row - 1);
    case Qt::Key_Right:
        return within(row + 1);
    case Qt::Key_Up:
        return within(row - columns);
    case Qt::Key_Down:
        return below(columns);
    case Qt::Key_PageUp:
        return above(page);
    case Qt::Key_PageDown:
        return below(page);
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return last;
    default:
        return std::nullopt;
    }
}

void SheetGrid::moveTo(int row, bool stretches)
{
    if (!stretches)
        anchor_.reset();
    else if (!anchor_)
        anchor_ = session_.selectedPhotoID();
    const QScopedValueRollback moving(isMoving_, true);
    session_.setSelectedPhotoID(model_.photoID(row));
    viewport()->update();
}

void SheetGrid::toggleRange()
{
    if (const int row = current(); row >= 0)
        history_.setIncluded(rangePhotos(), !model_.isIncluded(row));
}

void SheetGrid::toggleUpTo(int row)
{
    const int from = current() < 0 ? row : current();
    std::vector<FileUrl> photos;
    for (int each = std::min(from, row); each <= std::max(from, row); ++each)
        photos.push_back(model_.photoID(each));
    history_.setIncluded(photos, !model_.isIncluded(row));
}

void SheetGrid::removeRange()
{
    const std::vector<FileUrl> photos = rangePhotos();
    anchor_.reset();
    if (!photos.empty())
        history_.remove(photos);
}

bool SheetGrid::isTyping() const
{
    return sinceTyped_.isValid() && sinceTyped_.elapsed() < QApplication::keyboardInputInterval();
}

bool SheetGrid::find(const QString& typed)
{
    if (typed.isEmpty() || !typed.front().isPrint() || model_.rowCount() == 0)
        return false;
    const bool goesOn = isTyping();
    if (!goesOn && typed.front().isSpace())
        return false;
    typed_ = goesOn ? typed_ + typed : typed;
    sinceTyped_.start();
    // The same letter again goes to the next name that begins with it.
    const bool isRepeated = typed_.size() > 1 && typed_.count(typed_.front(), Qt::CaseInsensitive) == typed_.size();
    const QString wanted = isRepeated ? typed_.left(1) : typed_;
    const int count = model_.rowCount();
    const int from = std::max(current(), 0) + (wanted.size() == 1 ? 1 : 0);
    for (int step = 0; step < count; ++step) {
        const int row = (from + step) % count;
        if (model_.photo(row) && model_.photo(row)->filename().startsWith(wanted, Qt::CaseInsensitive)) {
            moveTo(row, false);
            return true;
        }
    }
    return true;
}

void SheetGrid::keyPressEvent(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool isPlain = modifiers == Qt::NoModifier;
    const bool isStretching = modifiers == Qt::ShiftModifier;
    if (model_.rowCount() == 0 || (!isPlain && !isStretching))
        return QAbstractScrollArea::keyPressEvent(event);
    if (const std::optional<int> row = target(event->key()))
        return moveTo(*row, isStretching);
    // In the middle of a name a space or a dash is part of it.
    if (isPlain && isTyping() && (event->key() == Qt::Key_Space || event->key() == Qt::Key_Minus) &&
        find(event->text()))
        return;
    switch (event->key()) {
    case Qt::Key_Space:
        if (!isLocked())
            toggleRange();
        return;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (isPlain && !isLocked())
            removeRange();
        return;
    case Qt::Key_Minus:
    case Qt::Key_Plus:
        if (current() >= 0 && !isLocked())
            emit cullRequested(event->key() == Qt::Key_Plus);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (current() >= 0)
            emit openRequested();
        return;
    default:
        break;
    }
    if (!find(event->text()))
        QAbstractScrollArea::keyPressEvent(event);
}

void SheetGrid::mousePressEvent(QMouseEvent* event)
{
    const int row = rowAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || row < 0) {
        event->ignore();
        return;
    }
    const bool isShift = event->modifiers().testFlag(Qt::ShiftModifier);
    if (CellPainter::checkTarget(cellInView(row)).contains(event->position().toPoint())) {
        if (!isLocked())
            isShift ? toggleUpTo(row) : history_.toggleIncluded(model_.photoID(row));
        return;
    }
    moveTo(row, isShift);
}

void SheetGrid::mouseReleaseEvent(QMouseEvent*)
{
    viewport()->update();
}

void SheetGrid::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QPoint place = event->position().toPoint();
    const int row = rowAt(place);
    // Two quick ticks are two ticks.
    if (row < 0 || event->button() != Qt::LeftButton || CellPainter::checkTarget(cellInView(row)).contains(place))
        return mousePressEvent(event);
    moveTo(row, false);
    emit openRequested();
}

void SheetGrid::hover(const QPoint& inViewport)
{
    const int row = viewport()->rect().contains(inViewport) ? rowAt(inViewport) : -1;
    const bool isOverBox = row >= 0 && CellPainter::checkTarget(cellInView(row)).contains(inViewport);
    if (row == hovered_ && isOverBox == isOverBox_)
        return;
    repaintCell(std::exchange(hovered_, row));
    isOverBox_ = isOverBox;
    repaintCell(row);
}

void SheetGrid::mouseMoveEvent(QMouseEvent* event)
{
    hover(event->position().toPoint());
}

void SheetGrid::wheelEvent(QWheelEvent* event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        hover(event->position().toPoint());
        return;
    }
    wheelRest_ += event->angleDelta().y();
    for (; wheelRest_ >= notch; wheelRest_ -= notch)
        grow();
    for (; wheelRest_ <= -notch; wheelRest_ += notch)
        shrink();
    event->accept();
}

void SheetGrid::contextMenuEvent(QContextMenuEvent* event)
{
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const int row = isByKey ? current() : rowAt(viewport()->mapFromGlobal(event->globalPos()));
    if (row < 0)
        return;
    const QPoint place = isByKey ? viewport()->mapToGlobal(cellInView(row).center()) : event->globalPos();
    emit contextMenuRequestedAt(model_.photoID(row), place);
}

void SheetGrid::focusInEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void SheetGrid::focusOutEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

bool SheetGrid::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Leave)
        hover({-1, -1});
    if (event->type() != QEvent::ToolTip)
        return QAbstractScrollArea::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const int row = rowAt(help->pos());
    if (row < 0) {
        QToolTip::hideText();
        return true;
    }
    QStringList lines = model_.warnings(row);
    lines.prepend(WindowTexts::place(model_.photoID(row)));
    QToolTip::showText(help->globalPos(), lines.join(u'\n'), viewport(), cellInView(row));
    return true;
}

int SheetGrid::itemCount() const
{
    return model_.rowCount();
}

AccessibleItem SheetGrid::item(int index) const
{
    AccessibleItem item;
    item.name = QStringLiteral("%1, %2").arg(model_.index(index).data(Qt::AccessibleTextRole).toString(),
                                             WindowTexts::outOf(index + 1, model_.rowCount()));
    item.description =
        QStringLiteral("Row %1, column %2").arg(index / layout_.columns() + 1).arg(index % layout_.columns() + 1);
    item.rect = cellInView(index).translated(viewport()->pos());
    item.role = QAccessible::CheckBox;
    item.isChosen = model_.isIncluded(index);
    item.isEnabled = !isLocked();
    return item;
}

void SheetGrid::pressItem(int index)
{
    if (!isLocked())
        history_.toggleIncluded(model_.photoID(index));
}

int SheetGrid::itemAt(const QPoint& point) const
{
    return rowAt(point - viewport()->pos());
}

} // namespace ferrow
