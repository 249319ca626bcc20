// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/FontPopover.h"

#include "Features/Inspector/FontList.h"
#include "Widgets/AccessibleEvents.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int page = 8;

} // namespace

FontPopover::FontPopover(QWidget* opener, const FontChoice& chosen)
    : Popover(opener, QStringLiteral("Caption Font")), chosen_(chosen), model_(new FontListModel(chosen, this))
{
    setDeletedAfterClose(true);
    search_ = new QLineEdit;
    search_->setObjectName(QStringLiteral("fontSearchField"));
    search_->setPlaceholderText(QStringLiteral("Search %1 families").arg(model_->familyCount()));
    search_->setAccessibleName(QStringLiteral("Search fonts"));
    search_->installEventFilter(this);
    connect(search_, &QLineEdit::textEdited, this, &FontPopover::search);
    body()->addWidget(search_);

    list_ = new FontList(*model_);
    list_->setObjectName(QStringLiteral("fontList"));
    connect(list_, &QAbstractItemView::clicked, this, [this](const QModelIndex& index) { choose(index.row()); });
    body()->addWidget(list_, 1);
}

void FontPopover::present()
{
    open(search_);
    const QModelIndex current = model_->index(std::max(model_->rowOf(chosen_), 0));
    list_->setCurrentIndex(current);
    list_->scrollTo(current, QAbstractItemView::PositionAtCenter);
}

void FontPopover::search(const QString& text)
{
    model_->search(text);
    // What is in use stays at hand where it is found; nothing is tried by typing alone.
    list_->setCurrentIndex(model_->index(std::max(model_->rowOf(chosen_), 0)));
}

void FontPopover::moveBy(int rows)
{
    if (model_->rowCount() > 0)
        tryRow(std::clamp(list_->currentIndex().row() + rows, 0, model_->rowCount() - 1));
}

void FontPopover::tryRow(int row)
{
    list_->setCurrentIndex(model_->index(row));
    list_->scrollTo(list_->currentIndex());
    announce(search_, model_->choice(row).name());
    emit tried(model_->choice(row));
}

void FontPopover::choose(int row)
{
    tryRow(row);
    dismiss();
}

bool FontPopover::handleEnter()
{
    if (list_->currentIndex().isValid())
        choose(list_->currentIndex().row());
    return true;
}

void FontPopover::aboutToClose()
{
    Popover::aboutToClose();
    if (isGivenUp_)
        emit givenUp();
    else
        emit kept();
}

void FontPopover::keyPressEvent(QKeyEvent* event)
{
    isGivenUp_ = event->key() == Qt::Key_Escape;
    Popover::keyPressEvent(event);
}

bool FontPopover::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != search_ || event->type() != QEvent::KeyPress)
        return Popover::eventFilter(watched, event);
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Up:
        moveBy(-1);
        return true;
    case Qt::Key_Down:
        moveBy(1);
        return true;
    case Qt::Key_PageUp:
        moveBy(-page);
        return true;
    case Qt::Key_PageDown:
        moveBy(page);
        return true;
    default:
        return Popover::eventFilter(watched, event);
    }
}

} // namespace ferrow
